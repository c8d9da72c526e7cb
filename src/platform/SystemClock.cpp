#include "platform/SystemClock.hpp"

#include <ctime>

namespace lumoscad {

DateTime SystemTime() {
  const std::time_t localTime = std::time(nullptr);
  std::tm locale{};
  localtime_r(&localTime, &locale);
  return {locale.tm_year + 1900, locale.tm_mon + 1, locale.tm_mday, locale.tm_hour, locale.tm_min, locale.tm_sec};
}

} // namespace lumoscad
