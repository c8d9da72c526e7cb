#pragma once

#include "platform/Errore.hpp"

#include <string>
#include <string_view>

namespace lumoscad::nexaro {

/// The numbers of the link's own errors.
inline constexpr int ErrorePermesso = 70;                 ///< permission denied
inline constexpr int ErroreCollegamento = errori::Driver; ///< a failure without a number of its own

/// The run-time error for a failed operation of the operating system: `operazione` says what was tried, and where.
[[nodiscard]] ErroreRuntime ErroreSistema(std::string_view operazione, int codice);

/// The run-time error of the link that has no other number.
[[nodiscard]] ErroreRuntime ErroreLink(std::string descrizione);

} // namespace lumoscad::nexaro
