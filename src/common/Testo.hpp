#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad {

/// The component's text for no value in change records, request lines and look-up arguments.
inline constexpr std::string_view Nullo = "#null#";

/// True when `testo`, without the blanks and control characters at its ends, is not empty: the domain's
/// "greater than a single blank". "Not empty" is another question, for which " " is text.
[[nodiscard]] bool MaggioreDiSpazio(std::string_view testo) noexcept;

/// True for a value that stands for none: empty or "#null#".
[[nodiscard]] bool SenzaValore(std::string_view testo) noexcept;

/// `testo` without leading and trailing blanks.
[[nodiscard]] std::string_view SenzaSpaziAiLati(std::string_view testo) noexcept;

/// `testo` with the ASCII letters in upper case.
[[nodiscard]] std::string Maiuscolo(std::string_view testo);

/// Splits `testo` on every single `separatore`; an empty text gives one empty piece.
[[nodiscard]] std::vector<std::string> Dividi(std::string_view testo, char separatore);

/// The first `quanti` characters of a UTF-8 text; all of it when it has fewer.
[[nodiscard]] std::string_view Primi(std::string_view testo, std::size_t quanti) noexcept;

/// The last `quanti` characters of a UTF-8 text; all of it when it has fewer.
[[nodiscard]] std::string_view Ultimi(std::string_view testo, std::size_t quanti) noexcept;

/// Of `quanti` texts, which `testo` gives by their place, the first `mostrati`, separated by "; ", and how many more
/// there are. The others are not asked for.
[[nodiscard]] std::string Elenca(std::size_t quanti, std::size_t mostrati,
                                 const std::function<std::string(std::size_t)>& testo);

/// Element `indice` of a list. Raises error 9 when the list ends before it.
[[nodiscard]] const std::string& Elemento(const std::vector<std::string>& lista, std::size_t indice);

/// Reads a whole decimal number with an optional sign. Raises error 13 when `testo` is anything else.
[[nodiscard]] int Intero(std::string_view testo);

/// `valore` in decimal, with zeros in front up to `cifre` digits.
[[nodiscard]] std::string ConZeri(int valore, int cifre);

/// `valore` as Italian writes it, with a point between the thousands: "2.421".
[[nodiscard]] std::string Migliaia(std::size_t valore);

} // namespace lumoscad
