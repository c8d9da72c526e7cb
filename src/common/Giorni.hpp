#pragma once

#include "platform/SystemClock.hpp"

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace lumoscad {

/// A day of the Gregorian calendar. Steps of days are added to it; `std::chrono` gives its year, month and weekday.
using Giorno = std::chrono::sys_days;

/// The day of a date as the screens show it, "DD/MM/YYYY", years 1 to 9999; none for any other text.
[[nodiscard]] std::optional<Giorno> LeggiGiorno(std::string_view testo) noexcept;

/// A day as the screens show it, "DD/MM/YYYY".
[[nodiscard]] std::string ScriviGiorno(Giorno giorno);

/// The day of a local time.
[[nodiscard]] Giorno GiornoDelMomento(const DateTime& momento) noexcept;

/// The last day of a day's month.
[[nodiscard]] Giorno UltimoDelMese(Giorno giorno) noexcept;

/// The day `mesi` months later, or earlier where that is less than 0. The last day of a month stays the last; any other
/// keeps its number, as far as the month has it.
[[nodiscard]] Giorno DopoMesi(Giorno giorno, int mesi) noexcept;

/// True for the years that dates are written in, 1 to 9999.
[[nodiscard]] bool Scrivibile(Giorno giorno) noexcept;

} // namespace lumoscad
