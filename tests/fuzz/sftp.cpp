// A host that answers what it likes: the file transfer's answers, and a file of known hosts for a key that it presents.
// Connection and channel are stood in for as the program is linked; what reads the answers is the product's own.

#include "Bersagli.hpp"

#include "platform/Errore.hpp"
#include "platform/nexaro/ssh/Canale.hpp"
#include "platform/nexaro/ssh/ChiaveHost.hpp"
#include "platform/nexaro/ssh/Trasferimento.hpp"

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
  nexaro::Canale* canale = nullptr;
  std::string_view resto;   ///< what it has still to say
  std::size_t pezzo = 1;    ///< how many bytes of that arrive at once
  bool risponde = false;    ///< packet by packet, each with the number of the request that waits longest
  bool presentato = false;  ///< the packet with the version, which answers no request, is through
  std::uint32_t ultimo = 0; ///< the number of the last request
  std::size_t scritti = 0;  ///< bytes of the write requests
  std::deque<std::uint32_t> chiesti;

  void Prendi(std::string_view pacchetto) {
    Esigi(pacchetto.size() >= 9 && nexaro::LettoreSftp(pacchetto).U32() + 4 == pacchetto.size(),
          "un pacchetto di un'altra lunghezza");
    const char tipo = pacchetto[4];
    nexaro::LettoreSftp lettore(pacchetto.substr(5));
    const auto numero = lettore.U32();
    if (tipo == 1) {
      return;
    }
    Esigi(numero == ultimo + 1, "un numero fuori dall'ordine");
    ultimo = numero;
    chiesti.push_back(numero);
    if (tipo == 6) {
      Esigi(lettore.Testo().size() <= 256, "un handle troppo lungo");
      lettore.U64();
      scritti += lettore.Testo().size();
      Esigi(lettore.Finito(), "una scrittura con qualcosa in coda");
    }
  }

  /// What arrives next.
  [[nodiscard]] std::string Parla() {
    std::size_t lunghezza = std::min(pezzo, resto.size());
    if (risponde && resto.size() >= 4) {
      lunghezza = std::min<std::size_t>(nexaro::LettoreSftp(resto).U32() + std::size_t{4}, resto.size());
    }
    std::string detto(resto.substr(0, lunghezza));
    resto.remove_prefix(lunghezza);
    if (risponde && presentato && !chiesti.empty() && detto.size() >= 9) {
      detto.replace(5, 4, nexaro::CorpoSftp().U32(chiesti.front()).Byte());
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

Sessione::Sessione(const ImpostazioniSsh& impostazioni, const std::string& host)
    : host_(host), attesa_(impostazioni.attesa), termineApertura_(NuovoTermine()) {}
Sessione::~Sessione() = default;

Termine Sessione::TermineSaluto() const {
  return NuovoTermine();
}

bool Sessione::ServeEntro(Termine /*termine*/) {
  if (servizio.resto.empty()) {
    return !std::exchange(servizio.canale->finita, true);
  }
  servizio.canale->uscita += servizio.Parla();
  return true;
}

void Sessione::Serve(Termine termine) {
  if (!ServeEntro(termine)) {
    throw ConnessionePersa("nessuna risposta");
  }
}

Canale::Canale(Sessione& sessione, Termine /*termine*/, std::size_t massimoUscita, std::size_t massimoErrori)
    : sessione_(sessione), massimoUscita_(massimoUscita), massimoErrori_(massimoErrori) {
  servizio.canale = this;
}
Canale::~Canale() = default;
void Canale::AvviaSottosistema(const char* /*nome*/) {}
void Canale::Scrivi(std::string_view dati, std::optional<Termine> /*limite*/) {
  servizio.Prendi(dati);
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
  nexaro::FileRemoto file{};
  nexaro::Carica(
      sftp, "/tmp/VBX", 0600,
      [&](std::span<char> tampone) {
        const auto letti = std::min(resto, tampone.size());
        std::fill_n(tampone.begin(), letti, 'x');
        resto -= letti;
        return letti;
      },
      file);
  Esigi(file == nexaro::FileRemoto::Creato && servizio.scritti == DaInviare, "un invio riuscito a metà");
}

void Ricevi(nexaro::Sftp& sftp, const nexaro::Misura& misura, std::size_t detti) {
  std::size_t ricevuti = 0;
  nexaro::Scarica(sftp, "/tmp/VBX", misura, [&](std::string_view dati) {
    ricevuti += dati.size();
    Esigi(ricevuti <= misura.massimo, "più di quanto si chiedeva");
    Esigi(ricevuti <= detti, "più di quanto l'host ha detto");
  });
}

void Ognuna(nexaro::Sftp& sftp) {
  const auto handle = sftp.Apri("/tmp/VBX", nexaro::apertura_sftp::Lettura, 0);
  Esigi(handle.size() <= 256, "un handle troppo lungo");
  static_cast<void>(sftp.AttendiAttributi(sftp.ChiediAttributi(handle)));
  static_cast<void>(sftp.Guarda("/tmp/VBX", true));
  sftp.Rinomina("/tmp/VBX", "/tmp/VBX.dos");
  static_cast<void>(sftp.SpazioLibero("/tmp"));
  sftp.Saluta();
  sftp.Chiudi(handle);
  sftp.Cancella("/tmp/VBX.dos");
}

void EsigiMotivo(const std::string& motivo) {
  Esigi(!motivo.empty() && motivo.size() < 4000 && TestoPulito(motivo), "un motivo che non si può mostrare");
}

nexaro::ImpostazioniSsh Impostazioni() {
  nexaro::ImpostazioniSsh impostazioni;
  impostazioni.porta = 2222;
  return impostazioni;
}

/// A file that goes with the object.
class File {
 public:
  explicit File(std::string_view contenuto)
      : percorso(std::filesystem::temp_directory_path() / ("lumoscad-fuzz-" + std::to_string(::getpid()))) {
    std::ofstream(percorso, std::ios::binary) << contenuto;
  }
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  ~File() {
    std::error_code ignorato;
    std::filesystem::remove(percorso, ignorato);
  }

  const std::filesystem::path percorso;
};

bool ParlaDiUnaRiga(const nexaro::ChiaveHost& chiave, std::string_view contenuto) {
  constexpr std::string_view riga = "riga ";
  const auto righe = std::count(contenuto.begin(), contenuto.end(), '\n') + 1;
  return chiave.dettaglio.starts_with(riga) && std::strtol(chiave.dettaglio.c_str() + riga.size(), nullptr, 10) >= 1 &&
         std::strtol(chiave.dettaglio.c_str() + riga.size(), nullptr, 10) <= righe;
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
    nexaro::Sessione sessione(Impostazioni(), "127.0.0.1");
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
      Ricevi(sftp, {.massimo = 40000, .tronca = (modo & 8U) != 0}, detti);
      break;
    default:
      Ognuna(sftp);
    }
  } catch (const nexaro::ErroreSftp& errore) {
    EsigiMotivo(errore.Motivo());
  } catch (const nexaro::ConnessionePersa& errore) {
    EsigiMotivo(errore.Motivo());
  } catch (const nexaro::RichiestaRifiutata&) {
    Esigi(!presentato, "un rifiuto dopo la presentazione");
  }
  servizio.canale = nullptr;
}

void HostNoti(Ingresso ingresso) {
  using nexaro::StatoChiave;
  const std::string_view contenuto = Testo(ingresso);
  // From here on the text is the key itself; the library takes it whatever name stands in the frame around it.
  constexpr std::size_t cornice = 26;
  const bool nominata = contenuto.find(std::string_view(ChiavePresentata).substr(cornice)) != std::string_view::npos;
  const File file(contenuto);
  const nexaro::Sessione sessione(Impostazioni(), "127.0.0.1");
  const auto chiave = nexaro::EsaminaChiave(sessione, 2222, file.percorso);
  Esigi(chiave.stato != StatoChiave::Illeggibile, "un file ordinario che non si legge");
  Esigi(nominata || chiave.stato != StatoChiave::Nota, "nota una chiave che il file non contiene");
  Esigi(chiave.stato != StatoChiave::Revocata || (nominata && contenuto.find("@revoked") != std::string_view::npos),
        "revocata una chiave che il file non revoca");
  Esigi(chiave.stato == StatoChiave::Sconosciuta ? chiave.dettaglio.empty() : ParlaDiUnaRiga(chiave, contenuto),
        "una riga che non c'è");
  const auto motivo = nexaro::MotivoRifiuto(chiave, sessione.Host(), file.percorso);
  Esigi(motivo.empty() == (chiave.stato == StatoChiave::Nota) && TestoPulito(motivo), "un rifiuto senza motivo");
  nexaro::RegistraRiga(chiave.riga, file.percorso);
  const auto registrata = nexaro::EsaminaChiave(sessione, 2222, file.percorso).stato;
  Esigi(registrata == (chiave.stato == StatoChiave::Revocata ? StatoChiave::Revocata : StatoChiave::Nota),
        "una chiave registrata che non è nota");
}

} // namespace lumoscad::fuzz
