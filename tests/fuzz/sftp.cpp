// A host that answers what it likes: the file transfer's answers, and a file of known hosts for a key that it presents.
// Connection and channel are stood in for as the program is linked; what reads the answers is the product's own.

#include "Bersagli.hpp"

#include "platform/RuntimeError.hpp"
#include "platform/nexaro/ssh/Channel.hpp"
#include "platform/nexaro/ssh/HostKey.hpp"
#include "platform/nexaro/ssh/Transfer.hpp"
#include "support/Files.hpp"

#include <algorithm>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <fstream>
#include <memory>
#include <unistd.h>

namespace lumoscad::fuzz {
namespace {

/// The service at the other end of the channel.
struct Servizio {
  nexaro::Channel* canale = nullptr;
  std::string_view resto;   ///< what it has still to say
  std::size_t pezzo = 1;    ///< how many bytes of that arrive at once
  bool risponde = false;    ///< packet by packet, each with the number of the request that waits longest
  bool presentato = false;  ///< the packet with the version, which answers no request, is through
  std::uint32_t ultimo = 0; ///< the number of the last request
  std::size_t scritti = 0;  ///< bytes of the write requests
  std::deque<std::uint32_t> chiesti;

  void Prendi(std::string_view pacchetto) {
    Esigi(pacchetto.size() >= 9 && nexaro::SftpReader(pacchetto).U32() + 4 == pacchetto.size(),
          "un pacchetto di un'altra lunghezza");
    const char tipo = pacchetto[4];
    nexaro::SftpReader lettore(pacchetto.substr(5));
    const auto numero = lettore.U32();
    if (tipo == 1) {
      return;
    }
    Esigi(numero == ultimo + 1, "un numero fuori dall'ordine");
    ultimo = numero;
    chiesti.push_back(numero);
    if (tipo == 6) {
      Esigi(lettore.Text().size() <= 256, "un handle troppo lungo");
      lettore.U64();
      scritti += lettore.Text().size();
      Esigi(lettore.Finished(), "una scrittura con qualcosa in coda");
    }
  }

  /// What arrives next.
  [[nodiscard]] std::string Parla() {
    std::size_t lunghezza = std::min(pezzo, resto.size());
    if (risponde && resto.size() >= 4) {
      lunghezza = std::min<std::size_t>(nexaro::SftpReader(resto).U32() + std::size_t{4}, resto.size());
    }
    std::string detto(resto.substr(0, lunghezza));
    resto.remove_prefix(lunghezza);
    if (risponde && presentato && !chiesti.empty() && detto.size() >= 9) {
      detto.replace(5, 4, nexaro::SftpBody().U32(chiesti.front()).Bytes());
      chiesti.pop_front();
    }
    presentato = true;
    return detto;
  }
};

Servizio servizio;

/// The key that the host presents.
constexpr const char* ChiavePresentata = "AAAAC3NzaC1lZDI1NTE5AAAAIMsG6X5jx5wt+jdevT3LVX7DhXqK0zADJAN4qXpJ8j9u";

} // namespace
} // namespace lumoscad::fuzz

namespace lumoscad::nexaro {

using fuzz::servizio;

Session::Session(const SshSettings& settings, const std::string& host)
    : host_(host), timeout_(settings.timeout), openingDeadline_(NewDeadline()) {}
Session::~Session() = default;

bool Session::Alive() const {
  return true;
}

Deadline Session::GreetingDeadline() const {
  return NewDeadline();
}

bool Session::HandleEventsUntil(Deadline /*termine*/) {
  if (servizio.resto.empty()) {
    return !std::exchange(servizio.canale->eof, true);
  }
  servizio.canale->output += servizio.Parla();
  return true;
}

void Session::HandleEvents(Deadline deadline) {
  if (!HandleEventsUntil(deadline)) {
    throw ConnectionLost("nessuna risposta");
  }
}

Channel::Channel(Session& session, std::size_t maxOutput, std::size_t maxErrors)
    : session_(session), maxOutput_(maxOutput), maxErrors_(maxErrors) {
  servizio.canale = this;
}
Channel::~Channel() = default;
void Channel::AwaitOpening(Deadline /*termine*/) {}
void Channel::StartSubsystem(const char* /*nome*/) {}
void Channel::Write(std::string_view data, std::optional<Deadline> /*limite*/) {
  servizio.Prendi(data);
}

} // namespace lumoscad::nexaro

// In the library's place: no host is there to present a key.
extern "C" int ssh_get_server_publickey(ssh_session /*sessione*/, ssh_key* chiave) {
  return ssh_pki_import_pubkey_base64(lumoscad::fuzz::ChiavePresentata, SSH_KEYTYPE_ED25519, chiave);
}

namespace lumoscad::fuzz {
namespace {

constexpr std::size_t DaInviare = 100000;

void Invia(nexaro::Sftp& sftp) {
  std::size_t resto = DaInviare;
  nexaro::RemoteFile file{};
  nexaro::Upload(
      sftp, "/tmp/VBX", 0600,
      [&](std::span<char> tampone) {
        const auto letti = std::min(resto, tampone.size());
        std::fill_n(tampone.begin(), letti, 'x');
        resto -= letti;
        return letti;
      },
      file);
  Esigi(file == nexaro::RemoteFile::Created && servizio.scritti == DaInviare, "un invio riuscito a metà");
}

void Ricevi(nexaro::Sftp& sftp, const nexaro::Extent& misura, std::size_t detti) {
  std::size_t ricevuti = 0;
  nexaro::Download(sftp, "/tmp/VBX", misura, [&](std::string_view dati) {
    ricevuti += dati.size();
    Esigi(ricevuti <= misura.maximum, "più di quanto si chiedeva");
    Esigi(ricevuti <= detti, "più di quanto l'host ha detto");
  });
}

void Ognuna(nexaro::Sftp& sftp) {
  const auto handle = sftp.Open("/tmp/VBX", nexaro::sftpOpen::Reading, 0);
  Esigi(handle.size() <= 256, "un handle troppo lungo");
  static_cast<void>(sftp.AwaitAttributes(sftp.RequestAttributes(handle)));
  static_cast<void>(sftp.Look("/tmp/VBX", true));
  sftp.Rename("/tmp/VBX", "/tmp/VBX.dos");
  static_cast<void>(sftp.FreeSpace("/tmp"));
  sftp.Greet();
  sftp.Close(handle);
  sftp.Erase("/tmp/VBX.dos");
}

void EsigiMotivo(const std::string& motivo) {
  Esigi(!motivo.empty() && motivo.size() < 4000 && TestoPulito(motivo), "un motivo che non si può mostrare");
}

nexaro::SshSettings Impostazioni() {
  nexaro::SshSettings impostazioni;
  impostazioni.port = 2222;
  return impostazioni;
}

/// A file that goes with the object.
class File {
 public:
  explicit File(std::string_view contenuto) { std::ofstream(percorso, std::ios::binary) << contenuto; }

 private:
  test::TemporaryFolder cartella_;

 public:
  const std::filesystem::path percorso = cartella_ / "noti";
};

bool ParlaDiUnaRiga(const nexaro::HostKey& chiave, std::string_view contenuto) {
  constexpr std::string_view Riga = "riga ";
  const auto righe = std::count(contenuto.begin(), contenuto.end(), '\n') + 1;
  return chiave.detail.starts_with(Riga) && std::strtol(chiave.detail.c_str() + Riga.size(), nullptr, 10) >= 1 &&
         std::strtol(chiave.detail.c_str() + Riga.size(), nullptr, 10) <= righe;
}

} // namespace

void RisposteSftp(Ingresso ingresso) {
  if (ingresso.size() < 2) {
    return;
  }
  const unsigned modo = ingresso[0];
  servizio = Servizio();
  servizio.resto = Testo(ingresso.subspan(2));
  servizio.pezzo = std::size_t{1} + ingresso[1];
  servizio.risponde = (modo & 1U) != 0;
  const std::size_t detti = servizio.resto.size();
  bool presentato = false;
  try {
    nexaro::Session sessione(Impostazioni(), "127.0.0.1");
    nexaro::Sftp sftp(sessione);
    presentato = true;
    switch (modo >> 1U & 3U) {
    case 0:
      Invia(sftp);
      break;
    case 1:
      Ricevi(sftp, {}, detti);
      break;
    case 2:
      Ricevi(sftp, {.maximum = 40000, .truncate = (modo & 8U) != 0}, detti);
      break;
    default:
      Ognuna(sftp);
    }
  } catch (const nexaro::SftpError& errore) {
    EsigiMotivo(errore.Reason());
  } catch (const nexaro::ConnectionLost& errore) {
    EsigiMotivo(errore.Reason());
  } catch (const nexaro::RequestRefused&) {
    Esigi(!presentato, "un rifiuto dopo la presentazione");
  }
  servizio.canale = nullptr;
}

void HostNoti(Ingresso ingresso) {
  using nexaro::KeyState;
  const std::string_view contenuto = Testo(ingresso);
  // From here on the text is the key itself; the library takes it whatever name stands in the frame around it.
  constexpr std::size_t Cornice = 26;
  const bool nominata = contenuto.find(std::string_view(ChiavePresentata).substr(Cornice)) != std::string_view::npos;
  const File file(contenuto);
  const nexaro::Session sessione(Impostazioni(), "127.0.0.1");
  const auto chiave = nexaro::ExamineKey(sessione, 2222, file.percorso);
  Esigi(chiave.state != KeyState::Unreadable, "un file ordinario che non si legge");
  Esigi(nominata || chiave.state != KeyState::Note, "nota una chiave che il file non contiene");
  Esigi(chiave.state != KeyState::Revoked || (nominata && contenuto.find("@revoked") != std::string_view::npos),
        "revocata una chiave che il file non revoca");
  Esigi(chiave.state == KeyState::Unknown ? chiave.detail.empty() : ParlaDiUnaRiga(chiave, contenuto),
        "una riga che non c'è");
  const auto motivo = nexaro::RefusalReason(chiave, sessione.Host(), file.percorso);
  Esigi(motivo.empty() == (chiave.state == KeyState::Note) && TestoPulito(motivo), "un rifiuto senza motivo");
  nexaro::AddLine(chiave.line, file.percorso);
  const auto registrata = nexaro::ExamineKey(sessione, 2222, file.percorso).state;
  Esigi(registrata == (chiave.state == KeyState::Revoked ? KeyState::Revoked : KeyState::Note),
        "una chiave registrata che non è nota");
}

} // namespace lumoscad::fuzz
