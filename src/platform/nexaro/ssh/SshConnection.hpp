#pragma once

#include "platform/nexaro/ssh/Session.hpp"
#include "platform/nexaro/ssh/Sftp.hpp"

#include <memory>
#include <string>
#include <string_view>

namespace lumoscad::nexaro {

/// A connection whose host key was checked and whose user is logged in, with the file transfer service once that was
/// asked for.
class SshConnection {
 public:
  /// Raises a run-time error.
  SshConnection(const SshSettings& settings, const std::string& host);

  /// The file transfer service; it was started, or the host was heard a moment ago. Where the host has to be asked for
  /// a sign of life, it is asked for a look at `toLookAt`, if that is the first thing that the caller needs. Raises
  /// `ConnectionLost` or `RequestRefused`.
  [[nodiscard]] Sftp& File(std::string_view toLookAt = {});

  /// Asks for the next program's channel ahead of its call, while other answers are waited for anyway.
  void OpenAhead();
  /// A channel for one program; the host has given it, or was heard, a moment ago. A connection that was in use before
  /// (`kept`) has to give its sign of life sooner. Raises `ConnectionLost` or `RequestRefused`.
  [[nodiscard]] std::unique_ptr<Channel> ForProgram(bool kept);

 private:
  Session session_;
  std::unique_ptr<Sftp> sftp_;
  std::unique_ptr<Channel> ahead_; ///< the next program's
};

} // namespace lumoscad::nexaro
