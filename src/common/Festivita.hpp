#pragma once

#include "common/Giorni.hpp"

#include <string_view>

namespace lumoscad {

/// Easter Sunday of a year of the Gregorian calendar, from 1583 on.
[[nodiscard]] Giorno Pasqua(int anno) noexcept;

/// The public holiday of Italy that falls on a day, by its name; empty for none. Sundays are holidays without a name.
/// The days are those of law 260 of 27 May 1949 (normattiva.it), as it stands since law 54 of 1977, presidential decree
/// 792 of 1985, law 336 of 2000 and law 151 of 8 October 2025, which adds 4 October from 2026 on. What was a holiday in
/// earlier years alone is left out, and so are the patrons of towns.
[[nodiscard]] std::string_view Festivita(Giorno giorno) noexcept;

/// True for a Saturday or a Sunday.
[[nodiscard]] bool FineSettimana(Giorno giorno) noexcept;

} // namespace lumoscad
