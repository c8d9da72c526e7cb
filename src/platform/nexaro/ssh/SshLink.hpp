#pragma once

#include "platform/HostLink.hpp"
#include "platform/nexaro/File.hpp"
#include "platform/nexaro/ProgramSearch.hpp"
#include "platform/nexaro/ssh/SshSettings.hpp"

#include <functional>
#include <map>
#include <memory>

namespace lumoscad::nexaro {

class Channel;
class SshConnection;
class Sftp;
struct RemoteOutcome;

/// The link to hosts on the network: programs are run and files moved over SSH. One connection a host is opened on
/// first use and kept. Before each operation it is looked at, and opened once more where it has died in the meantime;
/// nothing that was begun is begun again.
class SshLink final : public HostLink, public ProgramSearch {
 public:
  explicit SshLink(SshSettings settings);
  SshLink(const SshLink&) = delete;
  SshLink& operator=(const SshLink&) = delete;
  ~SshLink() override;

  void EseguiProgramma(std::string_view host, std::string_view program, const std::vector<std::string>& parameters,
                       XMLParser& reply) override;
  void RiceviFile(std::string_view host, std::string_view remote, std::string_view locale, std::string& text) override;
  void ReceiveBeginning(std::string_view host, std::string_view remote, std::string_view locale, std::size_t maximum,
                        std::string& text) override;
  void InviaFile(std::string_view host, std::string_view locale, std::string_view remote) override;
  /// Replaces what has the new name where the host can do that in one step, as an OpenSSH server can; elsewhere a name
  /// that is taken is refused.
  void RinominaFile(std::string_view host, std::string_view remote, std::string_view newName,
                    std::string& text) override;
  void CancellaFile(std::string_view host, std::string_view remote) override;
  [[nodiscard]] FileState LookAt(std::string_view host, std::string_view remote) override;
  [[nodiscard]] std::string FindProgram(std::string_view host, std::string_view program) override;

 private:
  using Action = std::function<void(Sftp&)>;
  /// Settles what is to be said when the connection was lost in the middle; the argument is the reason.
  using Fallback = std::function<void(const std::string&)>;

  void Receive(std::string_view host, std::string_view remote, std::string_view locale, const Extent& extent,
               std::string& text);
  SshConnection& Connected(const std::string& host);
  Sftp& ReadyFiles(const std::string& host, std::string_view toLookAt = {});
  [[nodiscard]] std::unique_ptr<Channel> ReadyChannel(const std::string& host);
  [[nodiscard]] RemoteOutcome Start(const std::string& host, const std::string& line, const std::string& subject,
                                    const std::function<bool(const std::string&)>& complete, bool* started = nullptr);
  /// `toLookAt`: what `action` looks at first, following links, if that is what it begins with.
  void WithFiles(const std::string& host, const std::string& operation, const Action& action, const Fallback& fallback,
                 std::string_view toLookAt = {});
  [[nodiscard]] std::string HostPath(std::string_view remote) const;
  [[nodiscard]] std::string Decode(std::string output, const std::string& subject) const;

  SshSettings settings_;
  std::map<std::string, std::unique_ptr<SshConnection>, std::less<>> connections_;
};

} // namespace lumoscad::nexaro
