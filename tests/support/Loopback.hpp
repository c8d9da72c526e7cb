#pragma once

#include "platform/nexaro/Descrittore.hpp"

namespace lumoscad::prova {

/// A socket that listens on the loopback address; with `porta` 0 on a free port. Not open when the port is taken.
[[nodiscard]] nexaro::Descrittore Ascolta(int porta = 0);
/// The local port of a socket.
[[nodiscard]] int PortaDi(const nexaro::Descrittore& presa);
/// A port that was free a moment ago.
[[nodiscard]] int PortaLibera();
/// A connection to a loopback port; not open when it is refused.
[[nodiscard]] nexaro::Descrittore Collega(int porta);

} // namespace lumoscad::prova
