#pragma once

#include "platform/nexaro/Descrittore.hpp"
#include "platform/nexaro/Termine.hpp"

#include <string>

namespace lumoscad::nexaro {

/// Opens a TCP connection to the first address of `host` that accepts one before `termine`; `attesa` is the whole wait,
/// for the message. Raises a run-time error that says what became of the attempt. How long a name takes to resolve is
/// the system's own setting.
[[nodiscard]] Descrittore ApriPresa(const std::string& host, unsigned porta, Termine termine,
                                    std::chrono::milliseconds attesa);

} // namespace lumoscad::nexaro
