#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace lumoscad {

/// A set of rows, by their numbers: a bit a row.
class InsiemeRighe {
 public:
  [[nodiscard]] bool Contiene(std::size_t riga) const {
    return riga / Bit < parole_.size() && (parole_[riga / Bit] >> riga % Bit & 1U) != 0;
  }
  void Aggiungi(std::size_t riga) {
    if (riga / Bit >= parole_.size()) {
      parole_.resize(riga / Bit + 1, 0);
    }
    quante_ += Contiene(riga) ? 0U : 1U;
    parole_[riga / Bit] |= std::uint64_t{1} << riga % Bit;
  }
  void Togli(std::size_t riga) {
    if (Contiene(riga)) {
      parole_[riga / Bit] &= ~(std::uint64_t{1} << riga % Bit);
      --quante_;
    }
  }
  void Svuota() {
    std::fill(parole_.begin(), parole_.end(), 0);
    quante_ = 0;
  }
  [[nodiscard]] std::size_t Quante() const noexcept { return quante_; }

  /// Calls `azione` with each row of the set, ascending.
  void Ognuna(const auto& azione) const {
    for (std::size_t i = 0; i < parole_.size(); ++i) {
      for (std::uint64_t resto = parole_[i]; resto != 0; resto &= resto - 1) {
        azione(i * Bit + static_cast<std::size_t>(std::countr_zero(resto)));
      }
    }
  }

 private:
  static constexpr std::size_t Bit = 64;

  std::vector<std::uint64_t> parole_;
  std::size_t quante_ = 0;
};

} // namespace lumoscad
