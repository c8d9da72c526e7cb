#pragma once

#include "platform/base/Descriptor.hpp"

#include <string>

namespace lumoscad::test {

/// A socket that listens on the loopback address; with `port` 0 on a free port. The system keeps about `waiting`
/// connections that nobody has taken yet and leaves further ones without an answer. Not open when the port is taken.
[[nodiscard]] base::Descriptor Listen(int port = 0, int waiting = 16);
/// The local port of a socket.
[[nodiscard]] int PortOf(const base::Descriptor& socket);
/// A port that was free a moment ago.
[[nodiscard]] int FreePort();
/// A connection to a port of a loopback address; not open when it is refused.
[[nodiscard]] base::Descriptor Attach(int port, const std::string& host = "127.0.0.1");

} // namespace lumoscad::test
