#pragma once

#include "platform/HostLink.hpp"
#include "platform/nexaro/File.hpp"
#include "platform/nexaro/ProgramSearch.hpp"

#include <chrono>

namespace lumoscad::nexaro {

/// The link to a host that is a directory of this machine: the host's file "/tmp/x" is "tmp/x" below the directory,
/// its program NAME is "programmi/NAME". The one directory plays every host; the address is used in messages only.
class DirectoryLink final : public HostLink, public ProgramSearch {
 public:
  /// `root` is an existing directory; `timeout` limits every run of a program. Raises a run-time error when the
  /// directory cannot be used.
  DirectoryLink(const std::string& root, std::chrono::milliseconds timeout);

  void EseguiProgramma(std::string_view host, std::string_view program, const std::vector<std::string>& parameters,
                       XMLParser& reply) override;
  void RiceviFile(std::string_view host, std::string_view remote, std::string_view locale, std::string& text) override;
  void ReceiveBeginning(std::string_view host, std::string_view remote, std::string_view locale, std::size_t maximum,
                        std::string& text) override;
  void InviaFile(std::string_view host, std::string_view locale, std::string_view remote) override;
  void RinominaFile(std::string_view host, std::string_view remote, std::string_view newName,
                    std::string& text) override;
  void CancellaFile(std::string_view host, std::string_view remote) override;
  [[nodiscard]] FileState LookAt(std::string_view host, std::string_view remote) override;
  [[nodiscard]] std::string FindProgram(std::string_view host, std::string_view program) override;

 private:
  void Receive(std::string_view host, std::string_view remote, std::string_view locale, const Extent& extent,
               std::string& text) const;
  [[nodiscard]] std::string RemotePath(std::string_view remote) const;

  std::string root_;
  std::chrono::milliseconds timeout_;
};

} // namespace lumoscad::nexaro
