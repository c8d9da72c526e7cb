#pragma once

#include "platform/base/Descriptor.hpp"

namespace lumoscad::prova {

/// A socket that listens on the loopback address; with `porta` 0 on a free port. Not open when the port is taken.
[[nodiscard]] base::Descriptor Ascolta(int porta = 0);
/// The local port of a socket.
[[nodiscard]] int PortaDi(const base::Descriptor& presa);
/// A port that was free a moment ago.
[[nodiscard]] int PortaLibera();
/// A connection to a loopback port; not open when it is refused.
[[nodiscard]] base::Descriptor Collega(int porta);

} // namespace lumoscad::prova
