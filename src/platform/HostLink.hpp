#pragma once

#include "platform/XMLParser.hpp"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::nexaro {

/// What a message says where the host may have done what it was asked and gave no answer to rely on.
inline constexpr std::string_view UnknownOutcome =
    "L'esito sull'host non è noto: verificarlo prima di ripetere il comando.";

/// What a host says of one of its files; nothing for what it does not say.
struct FileState {
  std::optional<unsigned> permissions;   ///< the nine bits of owner, group and others
  std::optional<std::int64_t> writtenAt; ///< tells two files of one name apart; in a unit of the host's own
};

/// The link to the host. Every operation names the host by its address and raises a run-time error with an
/// Italian description when it fails.
class HostLink {
 public:
  HostLink() = default;
  HostLink(const HostLink&) = delete;
  HostLink& operator=(const HostLink&) = delete;
  virtual ~HostLink() = default;

  /// Runs `program` on the host with one argument an element of `parameters`, empty ones included, and hands
  /// its XML answer to `reply`. Returns when the answer was delivered. A failure whose text says what became of the
  /// program carries that as its outcome.
  virtual void EseguiProgramma(std::string_view host, std::string_view program,
                               const std::vector<std::string>& parameters, XMLParser& reply) = 0;
  /// Copies the host's file `remote` to the local path `locale`; a missing file is a failure.
  virtual void RiceviFile(std::string_view host, std::string_view remote, std::string_view locale,
                          std::string& text) = 0;
  /// Copies the first `maximum` bytes of the host's file `remote`, or the whole where it is no longer, as `RiceviFile`
  /// does. A link that cannot receive a part receives the whole.
  virtual void ReceiveBeginning(std::string_view host, std::string_view remote, std::string_view locale,
                                std::size_t /*massimo*/, std::string& text) {
    RiceviFile(host, remote, locale, text);
  }
  /// Copies the local file `locale` to the host's path `remote`, replacing what is there.
  virtual void InviaFile(std::string_view host, std::string_view locale, std::string_view remote) = 0;
  /// Renames a file on the host in one step; `text` receives the host's text, if any.
  virtual void RinominaFile(std::string_view host, std::string_view remote, std::string_view newName,
                            std::string& text) = 0;
  /// Deletes a file on the host; a file that is not there is no failure.
  virtual void CancellaFile(std::string_view host, std::string_view remote) = 0;
  /// Looks at the host's file `remote` without reading it; a missing file is a failure. A link that cannot look says
  /// nothing of it.
  [[nodiscard]] virtual FileState LookAt(std::string_view /*host*/, std::string_view /*remote*/) { return {}; }
};

} // namespace lumoscad::nexaro
