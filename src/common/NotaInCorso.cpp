#include "common/NotaInCorso.hpp"

#include "common/Stato.hpp"
#include "common/Testo.hpp"
#include "common/TestoNota.hpp"
#include "platform/Services.hpp"

#include <filesystem>
#include <system_error>
#include <utility>

namespace lumoscad {
namespace {

constexpr std::size_t SpazioFase = 2048; // bytes, of each of its texts
constexpr int Tentativi = 100;           // names tried
/// In a directory of more files a command leaves the rest to whoever lists the notes: it would be held up by it.
constexpr std::size_t FileGuardati = 1000;

std::string NomeBase(const DateTime& ora, std::string_view postazione, long processo) {
  std::string nome(InizioNome(postazione));
  nome += ConZeri(ora.year, 4) + ConZeri(ora.month, 2) + ConZeri(ora.day, 2) + "-";
  nome += ConZeri(ora.hour, 2) + ConZeri(ora.minute, 2) + ConZeri(ora.second, 2) + "-";
  return nome + std::to_string(processo);
}

/// Once a process: what is left of other notes is not looked for at every command.
void TogliScaduteUnaVolta(const std::string& cartella) {
  static bool fatto = false;
  if (!std::exchange(fatto, true)) {
    TogliNoteScadute(cartella, FileGuardati);
  }
}

/// Runs one step; false where it failed.
template <typename Azione> bool Prova(Azione azione) noexcept {
  try {
    azione();
    return true;
  } catch (...) {
    return false;
  }
}

} // namespace

void NotaInCorso::Dimentica() noexcept {
  ripresa_ = nullptr;
  file_.LetGo();
  percorsi_.reset();
  Lascia();
  richiesta_.clear();
  fase_ = FaseNota::Avviata;
  conBaseDati_ = false;
  risposta_.clear();
  transazione_.clear();
  rimaste_ = false;
  righeRimaste_.clear();
}

void NotaInCorso::Comincia(std::string_view tipo, std::string_view sottocomando) noexcept {
  Dimentica();
  tipoComando_.clear();
  Prova([&] {
    tipoComando_ = tipo;
    tipoComando_.append(sottocomando.empty() ? "" : " ").append(sottocomando);
  });
}

void NotaInCorso::Prepara(std::string_view tipo, const VariazioniCanalizzazione& variazioni) noexcept {
  Dimentica();
  Prova([&] {
    tipo_ = tipo;
    canalizzazioni_ = &variazioni;
  });
}

void NotaInCorso::Prepara(ModificaChiesta::Genere genere, std::string_view tipo,
                          const VariazioniConsegna& variazioni) noexcept {
  Dimentica();
  Prova([&] {
    tipo_ = tipo;
    genere_ = genere;
    consegne_ = &variazioni;
  });
}

void NotaInCorso::Prepara(const std::vector<std::string>& parametri) noexcept {
  Dimentica();
  Prova([&] { azione_ = testoNota::DiModifica(parametri); });
}

void NotaInCorso::Lascia() noexcept {
  azione_.clear();
  canalizzazioni_ = nullptr;
  consegne_ = nullptr;
}

std::string NotaInCorso::TestoModifica() const {
  if (canalizzazioni_ != nullptr) {
    return testoNota::DiModifica(tipo_, *canalizzazioni_);
  }
  return consegne_ != nullptr ? testoNota::DiModifica(genere_, tipo_, *consegne_) : azione_;
}

void NotaInCorso::SegnaRichiesta(std::string_view richiesta) noexcept {
  Prova([&] { richiesta_ = richiesta; });
}

void NotaInCorso::Avviata(std::string_view host, std::string_view programma,
                          const std::vector<std::string>& parametri) noexcept {
  // Without what is asked a note would be of no use to whoever finishes it.
  if (!azione_.empty() || canalizzazioni_ != nullptr || consegne_ != nullptr) {
    Prova([&] { Pubblica(host, programma, parametri); });
  }
  Lascia();
}

void NotaInCorso::Pubblica(std::string_view host, std::string_view programma,
                           const std::vector<std::string>& parametri) {
  const nexaro::Environment& ambiente = ActiveServices().environment();
  TogliScaduteUnaVolta(ambiente.CartellaLocale);
  const long processo = ProcessNumber();
  const DateTime ora = ActiveServices().localTime();
  const AccessoComando accesso(stato().ComandoCorrente);
  const std::string modifica = TestoModifica();
  const std::string testo =
      testoNota::DiNota({ora, ambiente.CodicePostazione, processo, tipoComando_, stato().azienda, host, programma,
                         richiesta_, accesso.Origine(), parametri, modifica, accesso.Utente(), accesso.Schema()});
  testoFase_.reserve(SpazioFase);
  transazione_.reserve(SpazioFase);
  risposta_.reserve(SpazioFase);
  const std::string base = NomeBase(ora, ambiente.CodicePostazione, processo);
  for (int volta = 0; volta < Tentativi; ++volta) {
    PercorsiNota percorsi(ambiente.CartellaLocale, volta == 0 ? base : base + "-" + std::to_string(volta));
    // Looked at first: a name that is taken costs no flush.
    std::error_code errore;
    if (std::filesystem::exists(std::filesystem::symlink_status(percorsi.nota, errore))) {
      continue;
    }
    if (auto file = HeldFile::Publish(percorsi.nota, percorsi.parte, testo)) {
      file_ = std::move(*file);
      percorsi_ = std::move(percorsi);
      return;
    }
  }
}

/// Whether there is a note to go on with: a child forked meanwhile leaves its parent's alone.
bool NotaInCorso::Scritta() noexcept {
  if (percorsi_ && !file_.Held()) {
    Dimentica();
  }
  return percorsi_.has_value();
}

void NotaInCorso::Scrivi(FaseNota fase, std::string_view risposta, std::string_view transazione,
                         const std::vector<std::string>& righe) {
  testoFase_.clear();
  testoNota::ComponiFase(testoFase_, {fase, ActiveServices().localTime(), risposta, transazione}, righe);
  // COMMIT must not be on its way before the note says so.
  ReplaceLocalFile(percorsi_->fase, percorsi_->parte, testoFase_,
                   fase == FaseNota::ConfermaInviata ? Durable::NameToo : Durable::Content);
}

void NotaInCorso::SegnaFase(FaseNota fase) noexcept {
  if (!Scritta()) {
    return;
  }
  fase_ = fase;
  static const std::vector<std::string> Nessuna;
  // Memory that is too short for the texts may do for the phase.
  const bool scritta = Prova([&] { Scrivi(fase, risposta_, transazione_, righeRimaste_); }) ||
                       Prova([&] { Scrivi(fase, {}, transazione_, Nessuna); });
  // Of the other phases each is told safely by the one before it; this one would be told as a change never tried.
  if (!scritta && fase == FaseNota::ConfermaInviata && !MarkLocalFile(percorsi_->fase, percorsi_->conferma)) {
    file_.MarkInPlace();
  }
}

/// Removes the note; where it cannot be, it says `fase`.
void NotaInCorso::Togli(FaseNota fase) noexcept {
  if (!Scritta()) {
    return;
  }
  if (TogliNota(*percorsi_)) {
    Dimentica();
  } else {
    SegnaFase(fase);
  }
}

void NotaInCorso::NonAvviata() noexcept {
  Togli(FaseNota::Rifiutata);
}

void NotaInCorso::Rifiutata(std::string_view motivo) noexcept {
  Prova([&] { risposta_ = motivo; });
  Togli(FaseNota::Rifiutata);
}

void NotaInCorso::SenzaRisposta(std::string_view motivo) noexcept {
  Prova([&] { risposta_ = motivo; });
  SegnaFase(FaseNota::Avviata);
}

void NotaInCorso::Accettata(std::string_view messaggio) noexcept {
  Prova([&] { risposta_ = messaggio; });
  SegnaFase(FaseNota::Accettata);
}

void NotaInCorso::ConfermaInviata(std::string_view transazione) noexcept {
  if (ripresa_) {
    Prova([&] { ripresa_(transazione); });
    return;
  }
  Prova([&] { transazione_ = transazione; });
  SegnaFase(FaseNota::ConfermaInviata);
}

void NotaInCorso::Riprendi(std::function<void(std::string_view)> allaConferma) noexcept {
  Dimentica();
  ripresa_ = std::move(allaConferma);
}

void NotaInCorso::RigheRimaste(const std::vector<std::string>& righe) noexcept {
  rimaste_ = rimaste_ || !righe.empty();
  Prova([&] { righeRimaste_ = righe; });
}

void NotaInCorso::Registrata(TransactionOutcome esito) noexcept {
  switch (esito) {
  case TransactionOutcome::NotApplied:
    SegnaFase(FaseNota::NonApplicata);
    break;
  case TransactionOutcome::Unknown:
    SegnaFase(FaseNota::Sconosciuta);
    break;
  case TransactionOutcome::Applied:
    rimaste_ ? SegnaFase(FaseNota::Applicata) : Togli(FaseNota::Applicata);
    break;
  }
}

void NotaInCorso::Concludi(bool riuscito) noexcept {
  // Where nothing was to be changed in the database, the change is done when the host has said yes.
  if (riuscito && (fase_ == FaseNota::NonApplicata || (fase_ == FaseNota::Accettata && !conBaseDati_))) {
    Togli(FaseNota::Applicata);
  }
  Dimentica();
}

} // namespace lumoscad
