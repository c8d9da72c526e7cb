#pragma once

#include <string>
#include <string_view>

namespace lumoscad {

/// What a caller tells of itself with a command, and what it learns besides the result.
struct Chiamata {
  unsigned long finestraMadre = 0; ///< the native window over which the windows open; 0 for none
  bool rifiutata = false;          ///< the command was refused before it was read
  std::string_view perche;         ///< why, for good
  std::string messaggio;           ///< what the person was told last
};

/// Runs one command line and returns its result: the empty text, "closed" or "error". Never throws.
std::string EseguiLumoScad(std::string_view comando, Chiamata* chiamata = nullptr) noexcept;

} // namespace lumoscad
