#pragma once

#include "platform/Errore.hpp"
#include "platform/nexaro/Termine.hpp"

#include <memory>
#include <netdb.h>
#include <string>

namespace lumoscad::nexaro {

using Indirizzi = std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)>;

/// The addresses of a TCP port of `host`, by number or name. A name is looked up on a thread of the system's, so that a
/// name service that does not answer is given up at `termine`; `attesa` is the whole wait and `operazione` the
/// beginning, for the message. Raises a run-time error. In a process that was forked from one that has looked names up
/// the thread is not there: how long a name may take is then the system's own setting.
[[nodiscard]] Indirizzi TrovaIndirizzi(const std::string& host, unsigned porta, Termine termine,
                                       std::chrono::milliseconds attesa, const std::string& operazione);

/// What is said of a look-up that failed with the EAI_... value `esito`; see getaddrinfo(3).
[[nodiscard]] ErroreRuntime ErroreRicerca(int esito, std::chrono::milliseconds attesa, const std::string& operazione);

} // namespace lumoscad::nexaro
