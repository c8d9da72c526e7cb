#pragma once

#include "platform/HostLink.hpp"
#include "platform/nexaro/File.hpp"
#include "platform/nexaro/RicercaProgramma.hpp"

#include <chrono>

namespace lumoscad::nexaro {

/// The link to a host that is a directory of this machine: the host's file "/tmp/x" is "tmp/x" below the directory,
/// its program NAME is "programmi/NAME". The one directory plays every host; the address is used in messages only.
class CollegamentoCartella final : public HostLink, public RicercaProgramma {
 public:
  /// `radice` is an existing directory; `attesa` limits every run of a program. Raises a run-time error when the
  /// directory cannot be used.
  CollegamentoCartella(const std::string& radice, std::chrono::milliseconds attesa);

  void EseguiProgramma(std::string_view host, std::string_view programma, const std::vector<std::string>& parametri,
                       XMLParser& risposta) override;
  void RiceviFile(std::string_view host, std::string_view remoto, std::string_view locale, std::string& testo) override;
  void RiceviInizio(std::string_view host, std::string_view remoto, std::string_view locale, std::size_t massimo,
                    std::string& testo) override;
  void InviaFile(std::string_view host, std::string_view locale, std::string_view remoto) override;
  void RinominaFile(std::string_view host, std::string_view remoto, std::string_view nuovo,
                    std::string& testo) override;
  void CancellaFile(std::string_view host, std::string_view remoto) override;
  [[nodiscard]] std::string CercaProgramma(std::string_view host, std::string_view programma) override;

 private:
  void Ricevi(std::string_view host, std::string_view remoto, std::string_view locale, const Misura& misura,
              std::string& testo) const;
  [[nodiscard]] std::string PercorsoRemoto(std::string_view remoto) const;

  std::string radice_;
  std::chrono::milliseconds attesa_;
};

} // namespace lumoscad::nexaro
