#pragma once

#include "platform/base/Descriptor.hpp"
#include "platform/nexaro/Deadline.hpp"

#include <string>

namespace lumoscad::nexaro {

/// Opens a TCP connection to the first address of `host` that accepts one before `deadline`; `timeout` is the whole
/// wait, for the message. `lookUpNote` receives what has to follow a message about a time that was too short: a
/// sentence behind a blank where finding the address took much of it, and nothing otherwise. Raises a run-time error
/// that says what became of the attempt.
[[nodiscard]] base::Descriptor OpenSocket(const std::string& host, unsigned port, Deadline deadline,
                                          std::chrono::milliseconds timeout, std::string* lookUpNote = nullptr);

} // namespace lumoscad::nexaro
