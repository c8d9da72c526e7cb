#pragma once

#include "platform/nexaro/ssh/Session.hpp"

namespace lumoscad::nexaro {

/// Logs in with a key: the one that `settings` names, or else the agent's, or else the user's usual ones. Never
/// asks for anything and never sends a password. Raises a run-time error that lists what was tried.
void Authenticate(const Session& session, const SshSettings& settings);

} // namespace lumoscad::nexaro
