#pragma once

#include <algorithm>
#include <chrono>
#include <vector>

namespace lumoscad::bench {

using Orologio = std::chrono::steady_clock;

/// Milliseconds since `inizio`.
inline double Millisecondi(Orologio::time_point inizio) {
  return std::chrono::duration<double, std::milli>(Orologio::now() - inizio).count();
}

inline double Mediana(std::vector<double> tempi) {
  const auto mezzo = tempi.begin() + static_cast<std::ptrdiff_t>(tempi.size() / 2);
  std::nth_element(tempi.begin(), mezzo, tempi.end());
  return *mezzo;
}

/// The load of the schedule screen against a bare fetch of the same query; false when it missed its target.
[[nodiscard]] bool Carico();
/// The load of the presumed-documents screen against a bare program that sends the same statements; false when it
/// missed its target.
[[nodiscard]] bool CaricoPresunti();
/// The sort of the grid against std::stable_sort of the same texts, and the memory of a row.
void OrdineEMemoria();

} // namespace lumoscad::bench
