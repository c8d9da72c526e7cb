#pragma once

#include "platform/nexaro/Descrittore.hpp"

#include <chrono>
#include <string>

namespace lumoscad::nexaro {

using Orologio = std::chrono::steady_clock;
using Termine = Orologio::time_point;

/// The time left until `termine`, rounded up; not negative.
[[nodiscard]] std::chrono::milliseconds TempoRestante(Termine termine);

/// Opens a TCP connection to the first address of `host` that accepts one before `termine`; `attesa` is the whole wait,
/// for the message. Raises a run-time error that says what became of the attempt. How long a name takes to resolve is
/// the system's own setting.
[[nodiscard]] Descrittore ApriPresa(const std::string& host, unsigned porta, Termine termine,
                                    std::chrono::milliseconds attesa);

} // namespace lumoscad::nexaro
