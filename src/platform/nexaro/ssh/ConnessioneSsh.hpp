#pragma once

#include "platform/nexaro/ssh/Sessione.hpp"
#include "platform/nexaro/ssh/Sftp.hpp"

#include <memory>
#include <string>

namespace lumoscad::nexaro {

/// A connection whose host key was checked and whose user is logged in, with the file transfer service once that was
/// asked for.
class ConnessioneSsh {
 public:
  /// Raises a run-time error.
  ConnessioneSsh(const ImpostazioniSsh& impostazioni, const std::string& host);

  [[nodiscard]] Sessione& Sua() { return sessione_; }

  /// The file transfer service; it was started, or it answered a moment ago. Raises `ConnessionePersa` or
  /// `RichiestaRifiutata`.
  [[nodiscard]] Sftp& File();

 private:
  Sessione sessione_;
  std::unique_ptr<Sftp> sftp_;
};

} // namespace lumoscad::nexaro
