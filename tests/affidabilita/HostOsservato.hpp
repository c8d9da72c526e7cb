#pragma once

#include "platform/HostLink.hpp"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::test {

/// Does what the real link does; makes each operation's beginning and end a step, and tells of locks and requests.
class HostOsservato final : public nexaro::HostLink {
 public:
  using Annota = std::function<void(const std::vector<std::string>&)>;

  /// `annota` takes a record of the log: the lock operations ("LETTO", "BLOCCATO", "SBLOCCATO", each with the lock's
  /// name and the times of its beginning and end) and the requests ("RICHIESTA" with the file's content and the
  /// parameters, "RISPOSTA" with the program's yes or no and
  /// the time).
  HostOsservato(std::unique_ptr<nexaro::HostLink> vero, Annota annota)
      : vero_(std::move(vero)), annota_(std::move(annota)) {}

  /// A command begins: what an earlier one has sent and not asked for is none of it.
  void Comincia() { contenuto_.clear(); }

  void EseguiProgramma(std::string_view host, std::string_view programma, const std::vector<std::string>& parametri,
                       nexaro::XMLParser& risposta) override;
  void RiceviFile(std::string_view host, std::string_view remoto, std::string_view locale, std::string& testo) override;
  void InviaFile(std::string_view host, std::string_view locale, std::string_view remoto) override;
  void RinominaFile(std::string_view host, std::string_view remoto, std::string_view nuovo,
                    std::string& testo) override;
  void CancellaFile(std::string_view host, std::string_view remoto) override;

 private:
  /// Runs an operation between its two steps, and takes it down under `annotazione` where it is one on a lock.
  template <typename Operazione>
  void Passo(const std::string& nome, std::string_view remoto, const char* annotazione, Operazione operazione);

  std::unique_ptr<nexaro::HostLink> vero_;
  Annota annota_;
  std::string contenuto_; ///< of the request sent last
};

/// Nanoseconds of the machine's clock, which its processes and its database server share.
[[nodiscard]] std::string Ora();

} // namespace lumoscad::test
