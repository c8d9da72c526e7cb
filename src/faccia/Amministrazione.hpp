#pragma once

#include "lumoscad/Host.hpp"

#include <functional>
#include <string>
#include <string_view>

namespace lumoscad {

// What of the administrator's work asks the link itself; the composition root has it.

/// Connects to a host and asks for its key. Raises what the link raises.
[[nodiscard]] ChiavePresentata ChiediChiave(std::string_view host);

/// Makes a key known in a file of known hosts. Raises why it failed.
void RegistraChiave(const std::string& riga, const std::string& file);

/// Tries the operations of the link, a lock and a note, and hands each outcome to `mostra`. True when everything works.
/// Raises what `mostra` raises, and what the settings do.
[[nodiscard]] bool ProvaCollegamento(std::string_view host, std::string_view programma,
                                     const std::function<void(const PassoProva&)>& mostra);

} // namespace lumoscad
