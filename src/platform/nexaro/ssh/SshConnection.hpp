#pragma once

#include "platform/nexaro/ssh/Session.hpp"
#include "platform/nexaro/ssh/Sftp.hpp"

#include <memory>
#include <string>

namespace lumoscad::nexaro {

/// A connection whose host key was checked and whose user is logged in, with the file transfer service once that was
/// asked for.
class SshConnection {
 public:
  /// Raises a run-time error.
  SshConnection(const SshSettings& settings, const std::string& host);

  [[nodiscard]] Session& Own() { return session_; }

  /// The file transfer service; it was started, or it answered a moment ago. Raises `ConnectionLost` or
  /// `RequestRefused`.
  [[nodiscard]] Sftp& File();

 private:
  Session session_;
  std::unique_ptr<Sftp> sftp_;
};

} // namespace lumoscad::nexaro
