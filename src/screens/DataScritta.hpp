#pragma once

#include "common/Giorni.hpp"

#include <optional>
#include <string>
#include <string_view>

/// What a person may write into a date field besides a date, and what keys do to what is written there. A field belongs
/// to a row, whose present date counts where nothing else is said, or to none (an empty `dataDellaRiga`): then it is
/// today, from the clock service.
namespace lumoscad::dataScritta {

/// Writes out the short forms: "fm" is the last day of the month, "+" with one to three digits that many days later, of
/// the row's present date. Every other text comes back as it is, for the date check; so does a short form where the
/// row's date cannot be read, or no date is that far away.
[[nodiscard]] std::string Espandi(std::string_view testo, std::string_view dataDellaRiga, const DateTime& oggi);

/// The day that is written in a field, whatever form it has; none where the date check would refuse it.
[[nodiscard]] std::optional<Giorno> GiornoScritto(std::string_view testo, std::string_view dataDellaRiga,
                                                  const DateTime& oggi);

/// The same; where there is none, the row's present date, or else today.
[[nodiscard]] Giorno GiornoDelCampo(std::string_view testo, std::string_view dataDellaRiga, const DateTime& oggi);

/// A day in the form in which the date check takes it.
[[nodiscard]] std::string Scrivi(Giorno giorno);

enum class Passo { Giorno, Mese };

/// What a field holds after `quanti` steps from its day, later or (less than 0) earlier; unchanged at the ends of the
/// calendar.
[[nodiscard]] std::string Sposta(std::string_view testo, std::string_view dataDellaRiga, const DateTime& oggi,
                                 Passo passo, int quanti);

} // namespace lumoscad::dataScritta
