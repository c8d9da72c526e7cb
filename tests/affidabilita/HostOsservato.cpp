#include "HostOsservato.hpp"

#include "Passi.hpp"
#include "support/Files.hpp"

#include <chrono>
#include <fstream>

namespace lumoscad::test {
namespace {

constexpr std::string_view CartellaHost = "/tmp/";

bool Blocco(std::string_view remoto) {
  return remoto.starts_with("/tmp/VB");
}

/// An operation of the link is running.
class InOperazione {
 public:
  explicit InOperazione(std::string_view nome) { passi::OperazioneHost(nome); }
  InOperazione(const InOperazione&) = delete;
  InOperazione& operator=(const InOperazione&) = delete;
  ~InOperazione() { passi::OperazioneHost(""); }
};

} // namespace

std::string Ora() {
  return std::to_string(
      std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::system_clock::now().time_since_epoch())
          .count());
}

template <typename Operazione>
void HostOsservato::Passo(const std::string& nome, std::string_view remoto, const char* annotazione,
                          Operazione operazione) {
  const std::string inizio = Ora();
  passi::Punto(nome + ": before");
  std::string esito = "riuscito";
  try {
    const InOperazione in(nome);
    operazione();
  } catch (...) {
    passi::Punto(nome + ": failed");
    if (Blocco(remoto)) {
      annota_({annotazione, std::string(remoto.substr(CartellaHost.size())), inizio, Ora(), "fallito"});
    }
    throw;
  }
  passi::Punto(nome + ": done");
  if (Blocco(remoto)) {
    annota_({annotazione, std::string(remoto.substr(CartellaHost.size())), inizio, Ora(), esito});
  }
}

void HostOsservato::EseguiProgramma(std::string_view host, std::string_view programma,
                                    const std::vector<std::string>& parametri, nexaro::XMLParser& risposta) {
  std::vector<std::string> richiesta{"RICHIESTA", contenuto_};
  richiesta.insert(richiesta.end(), parametri.begin(), parametri.end());
  annota_(richiesta);
  contenuto_.clear();
  nexaro::XMLParser ascolto;
  ascolto.Parse = [&](const xml::Nodo& nodo) {
    std::string detto = "ACCETTATA";
    for (const xml::Nodo& figlio : nodo.children) {
      detto = figlio.name == "ERRORE" ? "RIFIUTATA" : detto;
    }
    annota_({"RISPOSTA", detto, Ora()});
    passi::Punto("program: answer read");
    risposta.Consegna(nodo);
  };
  Passo("program", "", "", [&] {
    try {
      vero_->EseguiProgramma(host, programma, parametri, ascolto);
    } catch (...) {
      risposta.started = ascolto.started;
      throw;
    }
  });
}

void HostOsservato::RiceviFile(std::string_view host, std::string_view remoto, std::string_view locale,
                               std::string& testo) {
  Passo("read the lock", remoto, "LETTO", [&] { vero_->RiceviFile(host, remoto, locale, testo); });
}

void HostOsservato::InviaFile(std::string_view host, std::string_view locale, std::string_view remoto) {
  if (!Blocco(remoto)) {
    contenuto_ = FileText(locale);
  }
  Passo(Blocco(remoto) ? "take the lock" : "upload the request", remoto, "BLOCCATO",
        [&] { vero_->InviaFile(host, locale, remoto); });
}

void HostOsservato::RinominaFile(std::string_view host, std::string_view remoto, std::string_view nuovo,
                                 std::string& testo) {
  Passo("rename the request", remoto, "", [&] { vero_->RinominaFile(host, remoto, nuovo, testo); });
}

void HostOsservato::CancellaFile(std::string_view host, std::string_view remoto) {
  const bool completo = remoto.ends_with(".dos");
  Passo(Blocco(remoto) ? "release the lock"
        : completo     ? "remove the request (.dos)"
                       : "remove the request (first name)",
        remoto, "SBLOCCATO", [&] { vero_->CancellaFile(host, remoto); });
}

} // namespace lumoscad::test
