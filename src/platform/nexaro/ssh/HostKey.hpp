#pragma once

#include "platform/nexaro/ssh/Session.hpp"

#include <string>

namespace lumoscad::nexaro {

/// What the file of known hosts says of the key that a host presented.
enum class KeyState {
  Note,      ///< the file holds this key for this host
  Unknown,   ///< the file holds no key for this host, or there is no file
  Changed,   ///< the file holds another key of the same type
  OtherType, ///< the file holds keys of other types only
  Revoked,   ///< the file marks this key as revoked
  Unreadable ///< the file cannot be read
};

/// The key that a host presented.
struct HostKey {
  KeyState state = KeyState::Unknown;
  std::string type;        ///< "ssh-ed25519"
  std::string fingerprint; ///< "SHA256:..."
  std::string line;        ///< the line, without its end, that would make the key known
  std::string detail;      ///< the line of the file that speaks against the key, or why the file cannot be read
};

/// Looks the key of a connection up in the file of known hosts `knownHosts`.
[[nodiscard]] HostKey ExamineKey(const Session& session, unsigned port, const std::string& knownHosts);

/// Connects to `host` and looks its key up; nobody is logged in. Raises a run-time error.
[[nodiscard]] HostKey AskHostKey(const SshSettings& settings, const std::string& host);

/// Why a connection with this key is refused, and what the person can do; empty for a known key.
[[nodiscard]] std::string RefusalReason(const HostKey& key, const std::string& host, const std::string& knownHosts);

/// Adds `line` at the end of the file of known hosts, which is created where it is missing (with mode 0600, its
/// directory with mode 0700). Raises a run-time error.
void AddLine(const std::string& line, const std::string& knownHosts);

} // namespace lumoscad::nexaro
