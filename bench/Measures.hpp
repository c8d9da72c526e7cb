#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::bench {

using Clock = std::chrono::steady_clock;

/// Milliseconds since `begin`.
inline double Milliseconds(Clock::time_point begin) {
  return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
}

/// Milliseconds on the machine's clock, the same for every process.
inline double Now() {
  return std::chrono::duration<double, std::milli>(Clock::now().time_since_epoch()).count();
}

inline double Median(std::vector<double> times) {
  const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
  std::nth_element(times.begin(), middle, times.end());
  return *middle;
}

/// How far a measure goes.
enum class Sizes {
  All,
  Smallest ///< the smallest size alone, and each side a few times: shows that the measure still works
};

/// A row of the table. Every figure wants to be small.
struct Row {
  std::string what;
  std::string size;   ///< with its unit, "1,000 rows"; empty where there is none
  double figure = 0;  ///< the ratio of the two sides' medians, or a quantity in `unit`
  double target = 0;  ///< the figure wants to be no more than this; 0 where there is no target
  std::string detail; ///< what the figure was made of, medians of both sides, to be read
  std::string unit = {};

  [[nodiscard]] bool Missed() const { return target > 0 && figure > target; }
};

using Rows = std::vector<Row>;

/// The load of the schedule screen, without its window, against a bare fetch of the same query and against Qt's model;
/// at the largest size, with its window, the wait for it, a page of it, and the memory of a whole process.
[[nodiscard]] Rows Load(Sizes sizes);
/// The load of the presumed-documents screen against a bare program that sends the same statements.
[[nodiscard]] Rows LoadPresumed(Sizes sizes);
/// The database update of a confirmed list (credits, presumed banks, deliveries) against a bare program that sends the
/// same statements in the same order.
[[nodiscard]] Rows Confirm(Sizes sizes);
/// The sort of the grid against std::stable_sort of the same texts, and the memory of a row.
[[nodiscard]] Rows OrderAndMemory(Sizes sizes);
/// The rows that pass a filter, letter by letter as it is typed.
[[nodiscard]] Rows FilterByKey(Sizes sizes);
/// How long a gesture in a long list's window keeps the event loop, beside the same gesture in a plain table of Qt; and
/// what the list holds in memory with one change of all its rows to be undone.
[[nodiscard]] Rows GesturesOfALongList(Sizes sizes);

/// From the start of a program to the window, against an empty window; and a command without one, against an empty
/// program. Both are programs linked with Qt, and whole processes.
[[nodiscard]] Rows Start(Sizes sizes);
/// The request file of a list's changes against fwrite of the same bytes.
[[nodiscard]] Rows RequestFile(Sizes sizes);

/// A confirmation over SSH, the whole command without the person, against the round trips that it needs.
[[nodiscard]] Rows ConfirmRemotely(Sizes sizes);

/// Where a measure's server keeps its data; a quick run may play beside a whole one.
[[nodiscard]] std::filesystem::path Folder(Sizes sizes, std::string_view name);

/// "1,234,567".
[[nodiscard]] std::string Grouped(std::size_t number);
/// "screen 12.30 ms, bare 10.10 ms".
[[nodiscard]] std::string Sides(const char* ours, double ourMilliseconds, const char* other, double otherMilliseconds);

} // namespace lumoscad::bench
