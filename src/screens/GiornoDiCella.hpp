#pragma once

#include <optional>
#include <string_view>

namespace lumoscad {

/// The day that a cell shows, "DD/MM/YYYY" or "DD/MM/YY", as the number YYYYMMDD, which orders by time; nothing for any
/// other text. A year of two digits below 50 lies in 2000-2049, any other in 1950-1999, as where a date is typed.
[[nodiscard]] std::optional<int> GiornoDiCella(std::string_view testo) noexcept;

/// Reads day, month and year, which may be absent, with "/" between them, and a day and a month of one digit or two; a
/// day of the calendar or nothing. A date without year lies in `anno`.
[[nodiscard]] std::optional<int> GiornoScritto(std::string_view testo, int anno) noexcept;

} // namespace lumoscad
