#pragma once

#include "platform/ListGestures.hpp"
#include "screens/InsiemeRighe.hpp"
#include "screens/VistaGriglia.hpp"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace lumoscad {

/// The selected rows of a grid, by their numbers, so that no order and no filter moves the selection to others. The
/// anchor is the row from which it is extended.
class SelezioneGriglia {
 public:
  explicit SelezioneGriglia(const VistaGriglia& vista) : vista_(vista) {}

  [[nodiscard]] bool Contiene(std::size_t riga) const { return righe_.Contiene(riga); }
  [[nodiscard]] std::size_t Quante() const noexcept { return righe_.Quante(); }
  [[nodiscard]] std::optional<std::size_t> Ancora() const noexcept { return ancora_; }
  /// Grows whenever the selection changed.
  [[nodiscard]] std::uint64_t Volta() const noexcept { return volta_; }
  /// The selected rows in sight, from top to bottom.
  [[nodiscard]] std::vector<std::size_t> InVista() const;
  /// The same by their numbers, ascending, which is how they lie in memory: for what their order does not matter to.
  [[nodiscard]] std::vector<std::size_t> InVistaPerNumero() const;
  /// Their places, ascending, as stretches without a gap.
  [[nodiscard]] std::vector<ListGestures::Places> Posti() const;

  void Svuota();
  /// Selects this row alone; it is the anchor.
  void Solo(std::size_t riga);
  /// Takes a row into the selection, or out of it; it is the anchor.
  void Cambia(std::size_t riga);
  /// Selects the rows in sight from the anchor to this row, beside those that are selected or instead of them. An
  /// anchor that is not in sight gives way to this row.
  void Estendi(std::size_t riga, bool aggiungi);
  /// Selects those rows in sight for which `scegli` is true, and no other. The anchor stays.
  void Scegli(const auto& scegli) {
    righe_.Svuota();
    vista_.OgnunaPerNumero([&](std::size_t riga) {
      if (scegli(riga)) {
        righe_.Aggiungi(riga);
      }
    });
    ++volta_;
  }

 private:
  const VistaGriglia& vista_;
  InsiemeRighe righe_;
  std::optional<std::size_t> ancora_;
  std::uint64_t volta_ = 0;
};

} // namespace lumoscad
