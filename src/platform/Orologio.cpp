#include "platform/Orologio.hpp"

#include <ctime>

namespace lumoscad {

DataOra OraDiSistema() {
  const std::time_t adesso = std::time(nullptr);
  std::tm locale{};
  localtime_r(&adesso, &locale);
  return {locale.tm_year + 1900, locale.tm_mon + 1, locale.tm_mday, locale.tm_hour, locale.tm_min, locale.tm_sec};
}

} // namespace lumoscad
