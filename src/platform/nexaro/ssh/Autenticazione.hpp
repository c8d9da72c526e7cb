#pragma once

#include "platform/nexaro/ssh/Sessione.hpp"

namespace lumoscad::nexaro {

/// Logs in with a key: the one that `impostazioni` names, or else the agent's, or else the user's usual ones. Never
/// asks for anything and never sends a password. Raises a run-time error that lists what was tried.
void Autentica(const Sessione& sessione, const ImpostazioniSsh& impostazioni);

} // namespace lumoscad::nexaro
