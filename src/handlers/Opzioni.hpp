#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace lumoscad {

/// The two forms of an item number, whose value takes two tokens of the command line.
struct NumeroPartita {
  std::string compatta; ///< the tokens joined with nothing between them
  std::string spaziata; ///< the tokens with the blanks that stood between them
};

/// Reads a command line's options. Every token is compared, values included, upper-cased; the last occurrence of an
/// option wins, and an option that does not occur leaves its target as it is. A value is the next token as typed.
/// `partita`, when given, receives "-P". Raises error 9 for an option without its value.
void LeggiOpzioni(std::string_view comando, std::initializer_list<std::pair<std::string_view, std::string*>> opzioni,
                  NumeroPartita* partita = nullptr);

/// True when `comando` has the token `opzione`, in any case.
[[nodiscard]] bool HaOpzione(std::string_view comando, std::string_view opzione);

} // namespace lumoscad
