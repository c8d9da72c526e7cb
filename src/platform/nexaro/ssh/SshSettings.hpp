#pragma once

#include "platform/nexaro/Encoding.hpp"

#include <chrono>
#include <string>

namespace lumoscad::nexaro {

/// How a host on the network is reached.
struct SshSettings {
  unsigned port = 22;
  std::string user;       ///< the user on the host
  std::string key;        ///< the one private key to present; empty: the agent's keys, then the usual ones
  std::string knownHosts; ///< the file of known hosts
  std::string directory;  ///< the user's directory with the usual keys; empty where the user has no home
  std::string programs;   ///< the directory of the programs on the host; empty: the login shell finds them
  Encoding encoding;      ///< the encoding of the host's texts
  std::chrono::milliseconds timeout{60000};
};

/// Reads `NEXARO_SSH_PORTA`, `NEXARO_SSH_UTENTE` (default: the user of this process), `NEXARO_SSH_CHIAVE`,
/// `NEXARO_SSH_NOTI` (default: the user's ".ssh/known_hosts"), `NEXARO_PROGRAMMI`, `NEXARO_CODIFICA` and
/// `NEXARO_ATTESA`. Raises a run-time error that names the unfit one.
[[nodiscard]] SshSettings ReadSshSettings();

} // namespace lumoscad::nexaro
