#pragma once

#include <string>
#include <string_view>

/// Text conversions of dates and amounts. Their century rules are part of the data contract with the host and
/// the database.
namespace lumoscad::Utilities {

/// Checks a date as typed (GGMMAA, GGMMAAAA, or day/month/year with "/") and returns it as "dd/MM/yyyy". For an
/// empty text returns " " silently; for a wrong one shows why in a box and returns " ".
/// The leap-year test adds 2000 to a year below 50 and 1900 to any other, four-digit years included, so that
/// "29/02/2000" is refused while "29/02/00" is taken.
[[nodiscard]] std::string ControllaData(std::string_view testo) noexcept;

/// What `ControllaData` makes of a text, without a word: empty for a text that it refuses or that is empty.
[[nodiscard]] std::string ControllaDataSenzaMessaggi(std::string_view testo);

/// Day/month/year text as "yyyymmdd"; "00000000" for an empty text. A year of two digits lies in 2000-2099.
/// Raises error 9 when the text has fewer than three parts.
[[nodiscard]] std::string DataPerHost(std::string_view testo);

/// "yyyymmdd" as "yyyy-mm-dd"; empty when the text does not have exactly 8 characters.
[[nodiscard]] std::string DataIsoDaCompatta(std::string_view testo);

/// "dd/mm/yyyy" as "yyyy-mm-dd"; empty when the text does not have exactly 10 characters in three parts.
[[nodiscard]] std::string DataIsoDaTesto(std::string_view testo);

/// The last day of a month as year, "-", month, "-", day; `mese` has two digits.
[[nodiscard]] std::string FineMese(std::string_view mese, std::string_view anno);

/// Checks and reformats an amount as typed. Returns true, leaving `importo` as it was, when it holds a character
/// that is not allowed; otherwise false, with `importo` as "1.234,50". The decimals begin behind the first ",", or
/// else behind the first "."; any other "." behind the first digit groups thousands, and a text that then is no number
/// stays as typed. A blank amount becomes empty. With `conSegno` a leading sign is taken off and not put back.
[[nodiscard]] bool ControllaImporto(std::string& importo, bool conDecimali, bool conSegno);

/// Splits an amount at its first ",", or else at its first "."; without either the decimals are "00", and a
/// single decimal digit gets a "0" behind it.
void SeparaImporto(std::string_view importo, std::string& intero, std::string& decimali);

/// A decimal number of the database ("-1234.5", "1e3") as "-1.234,50", rounded half away from zero on its digits;
/// zero never has a sign. Raises error 13 for a text that is no number.
[[nodiscard]] std::string FormattaImporto(std::string_view numero);

/// True for a day of the calendar, years 1 to 9999, as the database gives it: "yyyy-mm-dd", with or without a time
/// behind it.
[[nodiscard]] bool DataDellaBaseDati(std::string_view iso) noexcept;

/// A date of the database in the layouts of the screens; an empty text stays empty. Raises error 13 for any other text.
[[nodiscard]] std::string FormattaData(std::string_view iso);       ///< "DD/MM/YYYY"
[[nodiscard]] std::string FormattaDataBreve(std::string_view iso);  ///< "DD/MM/YY"
[[nodiscard]] std::string FormattaDataOrdine(std::string_view iso); ///< "YYYY/MM/DD", which sorts by time

} // namespace lumoscad::Utilities
