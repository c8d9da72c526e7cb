#pragma once

#include "platform/nexaro/ssh/Channel.hpp"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace lumoscad::nexaro {

/// What a program on the host answered, byte for byte.
struct RemoteOutcome {
  std::string output;       ///< standard output
  std::string errors;       ///< the beginning of standard error
  std::optional<int> state; ///< the exit status; nothing when a signal killed the program
  std::string signal;       ///< the signal's name without "SIG"
  std::string interruption; ///< why the call was given up, to stand behind the program's name; the outcome on the
                            ///< host is not known then, and the connection must not be used any more
};

/// Asks for the channel of one program; nothing is started yet.
[[nodiscard]] std::unique_ptr<Channel> PrepareProgram(Session& session);

/// Whether the output of a program that exited with status 0 is all that is to be expected.
using Completeness = std::function<bool(const std::string& output)>;

/// Runs a command line with an empty standard input and waits for its end and for the end of its output. Where another
/// process of the host holds the output open, it is enough that the program ended and that its output has been silent
/// for `Silence`; of a program that exited with status 0 it must be complete too. Raises `RequestRefused` when the
/// host did not start it. Every other failure is told in the result: the program may have been started.
[[nodiscard]] RemoteOutcome RunRemotely(Channel& channel, const std::string& line, const Completeness& complete);

} // namespace lumoscad::nexaro
