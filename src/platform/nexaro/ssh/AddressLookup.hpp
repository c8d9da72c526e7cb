#pragma once

#include "platform/RuntimeError.hpp"
#include "platform/nexaro/Deadline.hpp"

#include <memory>
#include <netdb.h>
#include <string>

namespace lumoscad::nexaro {

using Addresses = std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)>;

/// The addresses of a TCP port of `host`, by number or name. A name is looked up on a thread of the system's, so that a
/// name service that does not answer is given up at `deadline`; `timeout` is the whole wait and `operation` the
/// beginning, for the message. Raises a run-time error. In a process that was forked from one that has looked names up
/// the thread is not there: how long a name may take is then the system's own setting.
[[nodiscard]] Addresses FindAddresses(const std::string& host, unsigned port, Deadline deadline,
                                      std::chrono::milliseconds timeout, const std::string& operation);

/// What is said of a look-up that failed with the EAI_... value `outcome`; see getaddrinfo(3).
[[nodiscard]] RuntimeError LookUpError(int outcome, std::chrono::milliseconds timeout, const std::string& operation);

} // namespace lumoscad::nexaro
