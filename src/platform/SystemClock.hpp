#pragma once

namespace lumoscad {

/// A local date and time, to the second.
struct DateTime {
  int year = 1970;
  int month = 1; ///< 1-12
  int day = 1;   ///< 1-31
  int hour = 0;  ///< 0-23
  int minute = 0;
  int second = 0;
};

/// The machine's local date and time.
[[nodiscard]] DateTime SystemTime();

} // namespace lumoscad
