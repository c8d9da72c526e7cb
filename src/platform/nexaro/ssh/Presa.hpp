#pragma once

#include "platform/base/Descriptor.hpp"
#include "platform/nexaro/Termine.hpp"

#include <string>

namespace lumoscad::nexaro {

/// Opens a TCP connection to the first address of `host` that accepts one before `termine`; `attesa` is the whole wait,
/// for the message. `notaRicerca` receives what has to follow a message about a time that was too short: a sentence
/// behind a blank where finding the address took much of it, and nothing otherwise. Raises a run-time error that says
/// what became of the attempt.
[[nodiscard]] base::Descriptor ApriPresa(const std::string& host, unsigned porta, Termine termine,
                                         std::chrono::milliseconds attesa, std::string* notaRicerca = nullptr);

} // namespace lumoscad::nexaro
