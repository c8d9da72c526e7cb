#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <variant>

namespace lumoscad {

/// The two forms of an item number, whose value takes two tokens of the command line.
struct NumeroPartita {
  std::string compatta; ///< the tokens joined with nothing between them
  std::string spaziata; ///< the tokens with the blanks that stood between them
};

/// How the value of an option is kept.
enum class Forma { ComeScritta, Maiuscola };

/// An option that a handler knows, and what takes it: a text the next token, an item number the next two, a flag
/// nothing but the truth that the option was there.
struct Opzione {
  std::string_view nome; ///< in upper case
  std::variant<std::string*, NumeroPartita*, bool*> destinazione;
  Forma forma = Forma::ComeScritta; ///< of a text
};

/// Walks the tokens of a command line from the first to the last, values included, and stores each option as it is met:
/// the last occurrence wins, and an option that does not occur leaves its target as it is. Names count in any case.
/// Raises error 9 at an option without its value; what the walk had stored before then stays stored.
void LeggiOpzioni(std::string_view comando, std::initializer_list<Opzione> opzioni);

} // namespace lumoscad
