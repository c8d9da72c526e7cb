#include "platform/nexaro/ssh/Sftp.hpp"

#include "platform/nexaro/Chiamata.hpp"
#include "platform/nexaro/Testi.hpp"

#include <sys/stat.h>

namespace lumoscad::nexaro {

namespace {

/// The packet types (draft-ietf-secsh-filexfer-02, section 3).
enum Tipo : std::uint8_t {
  Presentazione = 1,
  Versione = 2,
  Apertura = 3,
  Chiusura = 4,
  Lettura = 5,
  Scrittura = 6,
  AttributiSenzaSeguire = 7,
  AttributiAperto = 8,
  Rimozione = 13,
  PercorsoReale = 16,
  AttributiSeguendo = 17,
  CambioNome = 18,
  Stato = 101,
  Handle = 102,
  Dati = 103,
  Attributi = 105,
  Estensione = 200,
  RispostaEstensione = 201
};

constexpr std::uint32_t VersioneParlata = 3;
constexpr std::uint32_t ConDimensione = 0x01;
constexpr std::uint32_t ConUtente = 0x02;
constexpr std::uint32_t ConPermessi = 0x04;
/// A server's packets are no longer than this: blocks of 256 KiB and their frame.
constexpr std::uint32_t PacchettoMassimo = (256U + 16U) * 1024U;
/// No handle is longer than this (section 6.2): every later request carries it.
constexpr std::size_t HandleMassimo = 256;
/// More than all the answers that are ever due at once.
constexpr std::size_t MassimoInArrivo = std::size_t{32} * 1024 * 1024;

// Extensions of the OpenSSH server (OpenSSH, file PROTOCOL, section 4).
constexpr const char* CambioNomeSostituendo = "posix-rename@openssh.com";
constexpr const char* ScaricoSuDisco = "fsync@openssh.com";
constexpr const char* StatoFileSystem = "statvfs@openssh.com";

[[noreturn]] void RispostaInattesa() {
  throw ConnessionePersa("il servizio SFTP dell'host ha dato una risposta inattesa");
}

std::string MotivoUsuale(std::uint32_t codice, std::string_view messaggio) {
  switch (codice) {
  case stato_sftp::FileInesistente:
    return "file inesistente";
  case stato_sftp::PermessoNegato:
    return "permesso negato";
  case stato_sftp::NonOfferta:
    return "operazione non offerta dall'host";
  default:
    return "l'host non ha potuto eseguire l'operazione (" +
           (messaggio.empty() ? "errore SFTP " + std::to_string(codice) : TestoAltrui(messaggio)) +
           "); avvertire l'amministratore dell'host";
  }
}

/// Raises the error of a status answer, unless it tells of success.
void VerificaStatoSftp(const Sftp::Risposta& risposta) {
  if (risposta.tipo != Stato) {
    RispostaInattesa();
  }
  LettoreSftp lettore(risposta.corpo);
  const auto codice = lettore.U32();
  if (codice != stato_sftp::Ok) {
    throw ErroreSftp(codice, lettore.Finito() ? std::string_view() : lettore.Testo());
  }
}

AttributiSftp LeggiAttributi(const Sftp::Risposta& risposta) {
  if (risposta.tipo != Attributi) {
    VerificaStatoSftp(risposta);
    RispostaInattesa();
  }
  LettoreSftp lettore(risposta.corpo);
  AttributiSftp attributi;
  const auto presenti = lettore.U32();
  if ((presenti & ConDimensione) != 0) {
    attributi.dimensione = lettore.U64();
  }
  if ((presenti & ConUtente) != 0) {
    lettore.U64();
  }
  if ((presenti & ConPermessi) != 0) {
    attributi.permessi = lettore.U32();
  }
  return attributi;
}

} // namespace

ErroreSftp::ErroreSftp(std::uint32_t codice, std::string_view messaggio, std::string motivo)
    : codice_(codice), motivo_(motivo.empty() ? MotivoUsuale(codice, messaggio) : std::move(motivo)) {}

bool AttributiSftp::IsCartella() const {
  return permessi && S_ISDIR(*permessi);
}

bool AttributiSftp::IsOrdinario() const {
  return !permessi || (*permessi & S_IFMT) == 0 || S_ISREG(*permessi);
}

Sftp::Sftp(Sessione& sessione) : canale_(sessione, sessione.NuovoTermine(), MassimoInArrivo, MassimoErroriMostrati) {
  canale_.AvviaSottosistema("sftp");
  Presentati();
}

void Sftp::Presentati() {
  CorpoSftp corpo;
  corpo.U32(5);
  canale_.Scrivi(corpo.Byte() + static_cast<char>(Presentazione) + CorpoSftp().U32(VersioneParlata).Byte());
  const auto termine = canale_.SuaSessione().NuovoTermine();
  std::optional<Risposta> risposta;
  while (!(risposta = PrendiPacchetto())) {
    if (canale_.finita) {
      throw RichiestaRifiutata();
    }
    canale_.Serve(termine);
  }
  LettoreSftp lettore(risposta->corpo);
  if (risposta->tipo != Versione || lettore.U32() < VersioneParlata) {
    throw RichiestaRifiutata();
  }
  while (!lettore.Finito()) {
    estensioni_.emplace(lettore.Testo());
    lettore.Testo();
  }
}

/// Takes the next whole packet off the channel's stream.
std::optional<Sftp::Risposta> Sftp::PrendiPacchetto() {
  static constexpr std::size_t Frontespizio = 4;
  auto& flusso = canale_.uscita;
  const auto resto = std::string_view(flusso).substr(letto_);
  if (resto.size() >= Frontespizio) {
    const auto lunghezza = LettoreSftp(resto).U32();
    if (lunghezza == 0 || lunghezza > PacchettoMassimo || canale_.uscitaEccessiva) {
      RispostaInattesa();
    }
    if (resto.size() >= Frontespizio + lunghezza) {
      letto_ += Frontespizio + lunghezza;
      return Risposta{static_cast<std::uint8_t>(resto[Frontespizio]),
                      std::string(resto.substr(Frontespizio + 1, lunghezza - 1))};
    }
  }
  flusso.erase(0, letto_);
  letto_ = 0;
  return std::nullopt;
}

void Sftp::Smista() {
  while (auto pacchetto = PrendiPacchetto()) {
    const auto numero = LettoreSftp(pacchetto->corpo).U32();
    if (attese_.erase(numero) == 0) {
      RispostaInattesa();
    }
    pacchetto->corpo.erase(0, 4);
    arrivate_.emplace(numero, std::move(*pacchetto));
    ultimaRisposta_ = Orologio::now();
  }
}

std::uint32_t Sftp::Chiedi(std::uint8_t tipo, const CorpoSftp& corpo, std::string_view dati) {
  const auto numero = ++ultimo_;
  const auto lunghezza = 5 + corpo.Byte().size() + dati.size();
  auto pacchetto = CorpoSftp().U32(static_cast<std::uint32_t>(lunghezza)).Byte();
  pacchetto.reserve(4 + lunghezza);
  pacchetto += static_cast<char>(tipo);
  pacchetto += CorpoSftp().U32(numero).Byte();
  pacchetto += corpo.Byte();
  pacchetto += dati;
  attese_.insert(numero);
  canale_.Scrivi(pacchetto, comune_);
  return numero;
}

Sftp::Risposta Sftp::Attendi(std::uint32_t numero, Termine termine) {
  for (;;) {
    Smista();
    if (auto nodo = arrivate_.extract(numero)) {
      return std::move(nodo.mapped());
    }
    if (canale_.finita) {
      throw ConnessionePersa("il servizio SFTP dell'host si è chiuso");
    }
    Serve(termine);
  }
}

void Sftp::Serve(Termine termine) {
  if (canale_.ServeEntro(termine)) {
    return;
  }
  const auto attesa = canale_.SuaSessione().Attesa();
  throw ConnessionePersa(comune_ && ultimaRisposta_ > inizio_ ? MotivoTroppoLento(attesa)
                                                              : "nessuna risposta entro " + Secondi(attesa));
}

Termine Sftp::ProssimoTermine() const {
  return comune_.value_or(canale_.SuaSessione().NuovoTermine());
}

Sftp::Risposta Sftp::Attendi(std::uint32_t numero) {
  return Attendi(numero, ProssimoTermine());
}

std::string Sftp::Apri(std::string_view percorso, std::uint32_t apertura, std::uint32_t modo) {
  const auto risposta = Attendi(Chiedi(Apertura, CorpoSftp().Testo(percorso).U32(apertura).U32(ConPermessi).U32(modo)));
  if (risposta.tipo != Handle) {
    VerificaStatoSftp(risposta);
    RispostaInattesa();
  }
  auto handle = std::string(LettoreSftp(risposta.corpo).Testo());
  if (handle.size() > HandleMassimo) {
    RispostaInattesa();
  }
  return handle;
}

void Sftp::Chiudi(std::string_view handle) {
  AttendiEsito(ChiediChiusura(handle));
}

std::optional<AttributiSftp> Sftp::Guarda(std::string_view percorso, bool segue) {
  const auto risposta = Attendi(Chiedi(segue ? AttributiSeguendo : AttributiSenzaSeguire, CorpoSftp().Testo(percorso)));
  try {
    return LeggiAttributi(risposta);
  } catch (const ErroreSftp& errore) {
    if (errore.Codice() == stato_sftp::FileInesistente) {
      return std::nullopt;
    }
    throw;
  }
}

void Sftp::Cancella(std::string_view percorso) {
  AttendiEsito(Chiedi(Rimozione, CorpoSftp().Testo(percorso)));
}

void Sftp::Rinomina(std::string_view percorso, std::string_view nuovo) {
  if (Offre(CambioNomeSostituendo)) {
    AttendiEsito(Chiedi(Estensione, CorpoSftp().Testo(CambioNomeSostituendo).Testo(percorso).Testo(nuovo)));
    return;
  }
  AttendiEsito(Chiedi(CambioNome, CorpoSftp().Testo(percorso).Testo(nuovo)));
}

void Sftp::Saluta() {
  const auto termine = canale_.SuaSessione().TermineSaluto();
  static_cast<void>(Attendi(Chiedi(PercorsoReale, CorpoSftp().Testo(".")), termine));
}

std::uint32_t Sftp::ChiediScrittura(std::string_view handle, std::uint64_t posto, std::string_view dati) {
  return Chiedi(Scrittura, CorpoSftp().Testo(handle).U64(posto).U32(static_cast<std::uint32_t>(dati.size())), dati);
}

std::uint32_t Sftp::ChiediLettura(std::string_view handle, std::uint64_t posto, std::uint32_t lunghezza) {
  return Chiedi(Lettura, CorpoSftp().Testo(handle).U64(posto).U32(lunghezza));
}

std::uint32_t Sftp::ChiediAttributi(std::string_view handle) {
  return Chiedi(AttributiAperto, CorpoSftp().Testo(handle));
}

std::uint32_t Sftp::ChiediChiusura(std::string_view handle) {
  return Chiedi(Chiusura, CorpoSftp().Testo(handle));
}

std::optional<std::uint32_t> Sftp::ChiediScaricoSuDisco(std::string_view handle) {
  if (!Offre(ScaricoSuDisco)) {
    return std::nullopt;
  }
  return Chiedi(Estensione, CorpoSftp().Testo(ScaricoSuDisco).Testo(handle));
}

void Sftp::AttendiEsito(std::uint32_t numero) {
  VerificaStatoSftp(Attendi(numero));
}

AttributiSftp Sftp::AttendiAttributi(std::uint32_t numero) {
  return LeggiAttributi(Attendi(numero));
}

std::optional<std::string> Sftp::AttendiDati(std::uint32_t numero) {
  const auto risposta = Attendi(numero);
  if (risposta.tipo == Dati) {
    return std::string(LettoreSftp(risposta.corpo).Testo());
  }
  try {
    VerificaStatoSftp(risposta);
  } catch (const ErroreSftp& errore) {
    if (errore.Codice() == stato_sftp::FineFile) {
      return std::nullopt;
    }
    throw;
  }
  RispostaInattesa();
}

void Sftp::AttendiTutte() {
  while (!attese_.empty()) {
    static_cast<void>(Attendi(*attese_.begin()));
  }
  arrivate_.clear();
}

std::optional<std::uint64_t> Sftp::SpazioLibero(std::string_view percorso) {
  if (!Offre(StatoFileSystem)) {
    return std::nullopt;
  }
  const auto risposta = Attendi(Chiedi(Estensione, CorpoSftp().Testo(StatoFileSystem).Testo(percorso)));
  if (risposta.tipo != RispostaEstensione) {
    return std::nullopt;
  }
  // Block size, fragment size, then blocks in all, free, and free for this user.
  LettoreSftp lettore(risposta.corpo);
  lettore.U64();
  const auto frammento = lettore.U64();
  lettore.U64();
  lettore.U64();
  return frammento * lettore.U64();
}

} // namespace lumoscad::nexaro
