#pragma once

#include <algorithm>
#include <chrono>
#include <vector>

namespace lumoscad::bench {

using Clock = std::chrono::steady_clock;

/// Milliseconds since `begin`.
inline double Milliseconds(Clock::time_point begin) {
  return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
}

inline double Median(std::vector<double> times) {
  const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
  std::nth_element(times.begin(), middle, times.end());
  return *middle;
}

/// The load of the schedule screen against a bare fetch of the same query; false when it missed its target.
[[nodiscard]] bool Load();
/// The load of the presumed-documents screen against a bare program that sends the same statements; false when it
/// missed its target.
[[nodiscard]] bool LoadPresumed();
/// The sort of the grid against std::stable_sort of the same texts, and the memory of a row.
void OrderAndMemory();

} // namespace lumoscad::bench
