// A request over SSH, from the upload to the clean-up, against the OpenSSH client doing the same.

#include "Misure.hpp"
#include "platform/nexaro/Nexaro.hpp"
#include "platform/nexaro/cartella/Processo.hpp"
#include "platform/xml/Nodo.hpp"
#include "support/Paths.hpp"
#include "support/ServerSsh.hpp"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

namespace lumoscad::bench {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t Piccolo = 2000;
constexpr std::size_t Grande = 64U << 20U;
constexpr std::size_t RispostaGrande = 15U << 20U;
constexpr std::size_t MassimoUscita = 32U << 20U;

void Scrivi(const fs::path& file, const std::string& testo) {
  std::ofstream(file, std::ios::binary) << testo;
}

/// The host: a server, a program that answers with the file "risposta", the files of the two sides.
class Host {
 public:
  Host() : base_(test::buildFolder() / "bench/ssh"), server_(base_ / "server") {
    for (const char* nome : {"tmp", "programmi"}) {
      fs::remove_all(base_ / nome);
      fs::create_directory(base_ / nome);
    }
    Scrivi(base_ / "programmi/VB0001", "#!/bin/sh\nexec cat '" + (base_ / "risposta").string() + "'\n");
    fs::permissions(base_ / "programmi/VB0001", fs::perms::owner_all);
    for (const auto& voce : server_.Ambiente()) {
      const auto segno = voce.find('=');
      ::setenv(voce.substr(0, segno).c_str(), voce.substr(segno + 1).c_str(), 1);
    }
    ::setenv("NEXARO_PROGRAMMI", (base_ / "programmi").c_str(), 1);
  }

  /// What the next requests send and get.
  void Prepara(std::size_t richiesta, std::size_t risposta) const {
    Scrivi(base_ / "richiesta", std::string(richiesta, 'r'));
    Scrivi(base_ / "risposta", "<RISPOSTA><MESSAGGIO>" + std::string(risposta, 'x') + "</MESSAGGIO></RISPOSTA>\n");
  }

  [[nodiscard]] std::string Locale() const { return (base_ / "richiesta").string(); }
  [[nodiscard]] std::string Remoto() const { return (base_ / "tmp/T01").string(); }
  [[nodiscard]] std::string Programma() const { return (base_ / "programmi/VB0001").string(); }
  [[nodiscard]] const fs::path& Base() const { return base_; }
  [[nodiscard]] const prova::ServerSsh& Server() const { return server_; }

 private:
  fs::path base_;
  prova::ServerSsh server_;
};

/// The request as the component makes it.
void Richiedi(const Host& host, nexaro::HostLink& link) {
  const auto indirizzo = prova::ServerSsh::Indirizzo();
  std::string testo;
  std::size_t ricevuti = 0;
  nexaro::XMLParser parser;
  parser.Parse = [&ricevuti](const xml::Nodo& nodo) { ricevuti = nodo.valore.size(); };
  link.InviaFile(indirizzo, host.Locale(), host.Remoto());
  link.RinominaFile(indirizzo, host.Remoto(), host.Remoto() + ".dos", testo);
  link.EseguiProgramma(indirizzo, "VB0001", {"01", "CANALIZZAZIONE", "CREDITI"}, parser);
  link.CancellaFile(indirizzo, host.Remoto());
  link.CancellaFile(indirizzo, host.Remoto() + ".dos");
  if (ricevuti == 0) {
    throw std::runtime_error("no reply");
  }
}

using Argomenti = std::vector<std::string>;

std::string Avvia(const Argomenti& argomenti) {
  auto esito = nexaro::Esegui({"/usr/bin/env", argomenti, {}, "/", std::chrono::seconds(60), MassimoUscita, 2000});
  if (esito.fine != nexaro::FineProcesso::Uscito || esito.stato != 0) {
    throw std::runtime_error(argomenti.front() + ": " + esito.errori);
  }
  return std::move(esito.uscita);
}

/// The OpenSSH client: a connection for each of its programs, or one that is kept and shared by them.
class Cliente {
 public:
  explicit Cliente(const Host& host) : host_(host) {
    const auto& server = host.Server();
    opzioni_ = {"-F", "none", "-i", server.Chiave().string()};
    for (const auto& opzione :
         {"BatchMode=yes", "IdentitiesOnly=yes", "IdentityAgent=none", "GlobalKnownHostsFile=none"}) {
      opzioni_.insert(opzioni_.end(), {"-o", opzione});
    }
    opzioni_.insert(opzioni_.end(), {"-o", "UserKnownHostsFile=" + server.Noti().string(), "-o",
                                     "Port=" + std::to_string(server.Porta())});
    Scrivi(host.Base() / "prima", "put -f " + host.Locale() + " " + host.Remoto() + "\nrename " + host.Remoto() + " " +
                                      host.Remoto() + ".dos\n");
    Scrivi(host.Base() / "dopo", "-rm " + host.Remoto() + "\nrm " + host.Remoto() + ".dos\n");
  }

  /// Opens the connection that the programs share from now on. The name of its socket has to be short.
  void Mantieni() {
    std::string modello = (fs::temp_directory_path() / "lumoscad-bench-XXXXXX").string();
    if (::mkdtemp(modello.data()) == nullptr) {
      throw std::runtime_error("mkdtemp");
    }
    presa_ = fs::path(modello) / "presa";
    opzioni_.insert(opzioni_.end(), {"-o", "ControlPath=" + presa_.string()});
    auto argomenti = opzioni_;
    argomenti.insert(argomenti.end(), {"-M", "-N", "-f", Posto()});
    std::string riga = "ssh";
    for (const auto& argomento : argomenti) {
      riga += " '" + argomento + "'";
    }
    if (std::system((riga + " >/dev/null 2>&1").c_str()) != 0) {
      throw std::runtime_error("ssh does not open a connection to keep");
    }
  }
  Cliente(const Cliente&) = delete;
  Cliente& operator=(const Cliente&) = delete;
  ~Cliente() {
    if (!presa_.empty()) {
      try {
        Ssh({"-q", "-O", "exit", Posto()});
      } catch (const std::exception& errore) {
        std::fprintf(stderr, "%s\n", errore.what());
      }
      std::error_code ignorato;
      fs::remove_all(presa_.parent_path(), ignorato);
    }
  }

  void Richiedi() const {
    Sftp("prima");
    if (Ssh({Posto(), host_.Programma() + " 01 CANALIZZAZIONE CREDITI"}).empty()) {
      throw std::runtime_error("no reply to ssh");
    }
    Sftp("dopo");
  }

 private:
  [[nodiscard]] std::string Posto() const { return host_.Server().Utente() + "@" + prova::ServerSsh::Indirizzo(); }
  std::string Ssh(const Argomenti& poi) const {
    Argomenti argomenti{"ssh"};
    argomenti.insert(argomenti.end(), opzioni_.begin(), opzioni_.end());
    argomenti.insert(argomenti.end(), poi.begin(), poi.end());
    return Avvia(argomenti);
  }
  void Sftp(const char* lotto) const {
    Argomenti argomenti{"sftp", "-q", "-b", (host_.Base() / lotto).string()};
    argomenti.insert(argomenti.end(), opzioni_.begin(), opzioni_.end());
    argomenti.push_back(Posto());
    Avvia(argomenti);
  }

  const Host& host_;
  Argomenti opzioni_;
  fs::path presa_;
};

/// The medians of the two sides, measured in turns so that a busy moment of the machine meets both.
void Confronta(const char* nome, int prove, const std::function<void()>& nostra, const std::function<void()>& sua) {
  std::vector<double> nostri;
  std::vector<double> suoi;
  for (int prova = 0; prova <= prove; ++prova) {
    auto inizio = Orologio::now();
    nostra();
    const double nostro = Millisecondi(inizio);
    inizio = Orologio::now();
    sua();
    // The first time warms both up.
    if (prova > 0) {
      nostri.push_back(nostro);
      suoi.push_back(Millisecondi(inizio));
    }
  }
  std::printf("%-44s collegamento %8.1f ms  OpenSSH %8.1f ms  rapporto %.2f\n", nome, Mediana(nostri), Mediana(suoi),
              Mediana(nostri) / Mediana(suoi));
}

/// The part of the component's time that goes into reading the reply, which the other side does not do.
double LetturaXml(const Host& host) {
  std::ifstream file(host.Base() / "risposta", std::ios::binary);
  const std::string documento{std::istreambuf_iterator<char>(file), {}};
  std::vector<double> tempi;
  for (int prova = 0; prova < 7; ++prova) {
    const auto inizio = Orologio::now();
    if (xml::Leggi(documento).valore.size() < RispostaGrande) {
      throw std::runtime_error("the reply is not whole");
    }
    tempi.push_back(Millisecondi(inizio));
  }
  return Mediana(tempi);
}

void Misura() {
  const Host host;
  const auto link = nexaro::CreaHostLink();
  const auto conNuova = [&host] { Richiedi(host, *nexaro::CreaHostLink()); };
  const auto conMantenuta = [&host, &link] { Richiedi(host, *link); };
  Cliente cliente(host);
  const auto sua = [&cliente] { cliente.Richiedi(); };
  host.Prepara(Piccolo, Piccolo);
  Confronta("Richiesta, connessioni nuove", 15, conNuova, sua);
  cliente.Mantieni();
  Confronta("Richiesta, connessione mantenuta", 25, conMantenuta, sua);
  host.Prepara(Grande, Piccolo);
  Confronta("File di 64 MiB, connessione mantenuta", 7, conMantenuta, sua);
  host.Prepara(Piccolo, RispostaGrande);
  Confronta("Risposta di 15 MiB, connessione mantenuta", 7, conMantenuta, sua);
  std::printf("  di cui lettura dell'XML %.1f ms\n", LetturaXml(host));
}

} // namespace
} // namespace lumoscad::bench

int main() {
  if (!lumoscad::prova::ServerSsh::Disponibile()) {
    std::puts("Richiesta: OpenSSH non è installato, misura saltata");
    return 0;
  }
  try {
    lumoscad::bench::Misura();
    return 0;
  } catch (const std::exception& errore) {
    std::fprintf(stderr, "%s\n", errore.what());
    return 2;
  }
}
