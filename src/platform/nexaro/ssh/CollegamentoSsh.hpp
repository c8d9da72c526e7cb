#pragma once

#include "platform/HostLink.hpp"
#include "platform/nexaro/File.hpp"
#include "platform/nexaro/RicercaProgramma.hpp"
#include "platform/nexaro/ssh/ImpostazioniSsh.hpp"

#include <functional>
#include <map>
#include <memory>

namespace lumoscad::nexaro {

class Canale;
class ConnessioneSsh;
class Sftp;
struct EsitoRemoto;

/// The link to hosts on the network: programs are run and files moved over SSH. One connection a host is opened on
/// first use and kept. Before each operation it is looked at, and opened once more where it has died in the meantime;
/// nothing that was begun is begun again.
class CollegamentoSsh final : public HostLink, public RicercaProgramma {
 public:
  explicit CollegamentoSsh(ImpostazioniSsh impostazioni);
  CollegamentoSsh(const CollegamentoSsh&) = delete;
  CollegamentoSsh& operator=(const CollegamentoSsh&) = delete;
  ~CollegamentoSsh() override;

  void EseguiProgramma(std::string_view host, std::string_view programma, const std::vector<std::string>& parametri,
                       XMLParser& risposta) override;
  void RiceviFile(std::string_view host, std::string_view remoto, std::string_view locale, std::string& testo) override;
  void RiceviInizio(std::string_view host, std::string_view remoto, std::string_view locale, std::size_t massimo,
                    std::string& testo) override;
  void InviaFile(std::string_view host, std::string_view locale, std::string_view remoto) override;
  /// Replaces what has the new name where the host can do that in one step, as an OpenSSH server can; elsewhere a name
  /// that is taken is refused.
  void RinominaFile(std::string_view host, std::string_view remoto, std::string_view nuovo,
                    std::string& testo) override;
  void CancellaFile(std::string_view host, std::string_view remoto) override;
  [[nodiscard]] std::string CercaProgramma(std::string_view host, std::string_view programma) override;

 private:
  using Azione = std::function<void(Sftp&)>;
  /// Settles what is to be said when the connection was lost in the middle; the argument is the reason.
  using Ripiego = std::function<void(const std::string&)>;

  void Ricevi(std::string_view host, std::string_view remoto, std::string_view locale, const Misura& misura,
              std::string& testo);
  ConnessioneSsh& Connetti(const std::string& host);
  Sftp& FilePronti(const std::string& host);
  [[nodiscard]] std::unique_ptr<Canale> CanalePronto(const std::string& host);
  [[nodiscard]] EsitoRemoto Avvia(const std::string& host, const std::string& riga, const std::string& soggetto,
                                  const std::function<bool(const std::string&)>& completa, bool* avviato = nullptr);
  void ConFile(const std::string& host, const std::string& operazione, const Azione& azione, const Ripiego& ripiego);
  [[nodiscard]] std::string PercorsoHost(std::string_view remoto) const;
  [[nodiscard]] std::string Decodifica(std::string uscita, const std::string& soggetto) const;

  ImpostazioniSsh impostazioni_;
  std::map<std::string, std::unique_ptr<ConnessioneSsh>, std::less<>> connessioni_;
};

} // namespace lumoscad::nexaro
