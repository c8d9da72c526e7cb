#pragma once

#include "screens/InsiemeRighe.hpp"
#include "screens/RigheGriglia.hpp"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace lumoscad {

/// Which rows of a grid are in sight, in the order in which they show: all of them, or those that were chosen. A place
/// counts the rows in sight.
class VistaGriglia {
 public:
  explicit VistaGriglia(const RigheGriglia& righe) : righe_(righe) {}

  /// True where not all rows are in sight.
  [[nodiscard]] bool Ristretta() const noexcept { return ristretta_; }
  [[nodiscard]] std::size_t Quante() const { return ristretta_ ? inOrdine_.size() : righe_.Quante(); }
  [[nodiscard]] std::size_t Riga(std::size_t posto) const {
    return ristretta_ ? inOrdine_[posto] : righe_.RigaAlPosto(posto);
  }
  [[nodiscard]] bool Contiene(std::size_t riga) const { return !ristretta_ || insieme_.Contiene(riga); }
  /// Calls `azione` with each row in sight by its number, ascending, which is how they lie in memory.
  void OgnunaPerNumero(const auto& azione) const {
    if (ristretta_) {
      insieme_.Ognuna(azione);
      return;
    }
    for (std::size_t riga = 0; riga < righe_.Quante(); ++riga) {
      azione(riga);
    }
  }
  /// The place of a row; nothing for one that is not in sight.
  [[nodiscard]] std::optional<std::size_t> Posto(std::size_t riga) const;

  /// The place of a row, or of the next one in sight, or of the last; nothing where none is in sight.
  [[nodiscard]] std::optional<std::size_t> PostoDa(std::size_t riga) const;

  void MostraTutte();
  /// Shows the rows of `insieme` alone.
  void Mostra(InsiemeRighe insieme);
  /// The order of the rows changed.
  void Riordina();

 private:
  /// How many rows in sight stand before this one.
  [[nodiscard]] std::size_t Prima(std::size_t riga) const;

  const RigheGriglia& righe_;
  InsiemeRighe insieme_;
  std::vector<std::uint32_t> inOrdine_; ///< the rows in sight, by their places
  bool ristretta_ = false;
};

} // namespace lumoscad
