#include "Uccisione.hpp"

#include "Campi.hpp"
#include "common/Nota.hpp"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string_view>

namespace lumoscad::test {

namespace fs = std::filesystem;

namespace {

constexpr const char* Ucciso = "T01";
constexpr const char* Secondo = "T02";
constexpr std::string_view ProgrammaChiesto = "program: before";

void Svuota(const fs::path& cartella) {
  for (const std::string& nome : Contenuto(cartella)) {
    fs::remove(cartella / nome);
  }
}

bool Accettata(const fs::path& registro) {
  const Testi righe = LeggiRighe(registro);
  return std::any_of(righe.begin(), righe.end(), [](const std::string& r) { return r.starts_with("ACCETTATA"); });
}

/// Names without what differs from run to run: times and process numbers.
Testi Anonimi(Testi nomi) {
  constexpr std::size_t Sigla = 3;
  constexpr std::size_t CifreTempo = 14;
  constexpr std::string_view Provvisorio = ".lumoscad-";
  constexpr std::string_view Nota = "sospeso-";
  for (std::string& nome : nomi) {
    if (nome.starts_with(Ucciso)) {
      nome.replace(Sigla, CifreTempo, "…");
    } else if (nome.starts_with(Provvisorio)) {
      nome = std::string(Provvisorio) + "…";
    } else if (nome.starts_with(Nota)) {
      nome = std::string(Nota) + "…" + nome.substr(nome.rfind('.'));
    }
  }
  return nomi;
}

/// What the notes of a directory say: as a rule there is one at most.
std::string Note(const fs::path& cartella) {
  constexpr std::array<std::string_view, 7> Fasi = {"program started", "accepted",    "refused", "COMMIT sent",
                                                    "applied",         "not applied", "unknown"};
  std::string testo;
  for (const Nota& nota : LeggiNote(cartella)) {
    testo += testo.empty() ? "" : ", ";
    testo += nota.inCorso           ? "still running"
             : !nota.errore.empty() ? nota.errore
                                    : std::string(Fasi.at(static_cast<std::size_t>(nota.fase)));
  }
  return testo.empty() ? "none" : testo;
}

/// The states that stand before the rows of a list of notes, each once.
std::string StatiDelleRighe(const std::string& elenco) {
  std::string stati;
  for (const std::string_view stato : {"come prima", "fatta", "cambiata da altri"}) {
    if (elenco.find("\n    " + std::string(stato) + "  ") != std::string::npos) {
      stati.append(stati.empty() ? "" : ", ").append(stato);
    }
  }
  return stati.empty() ? "none" : stati;
}

/// A box on one line, without the time at which a lock was taken.
std::string Anonimo(const std::string& box) {
  constexpr std::string_view Data = "Data : ";
  constexpr std::size_t LunghezzaOra = std::string_view("21/11/2026   Ora : 16:42").size();
  std::string testo;
  for (const char c : box) {
    const bool fine = c == '\r' || c == '\n';
    if (!fine || !testo.ends_with(' ')) {
      testo += fine ? ' ' : c;
    }
  }
  if (const auto posto = testo.find(Data); posto != std::string::npos) {
    testo.replace(posto + Data.size(), LunghezzaOra, "…");
  }
  return testo;
}

} // namespace

Uccisione::Uccisione(Sistema& sistema, Vittima vittima) : sistema_(sistema), vittima_(std::move(vittima)) {
  Ripristina();
  prima_ = Stato();
  fs::remove(sistema_.Passi(Ucciso));
  fs::remove(sistema_.Registro(Ucciso));
  Sistema::Lancio lancio{Ucciso, {vittima_.comando}, true};
  if (sistema_.Avvia(lancio).Attendi() != 0 || !sistema_.SenzaSessioni()) {
    throw std::runtime_error("the command cannot be run");
  }
  passi_ = LeggiRighe(sistema_.Passi(Ucciso));
  resti_ = Contenuto(sistema_.Locale(Ucciso));
  dopo_ = Stato();
}

void Uccisione::RipristinaDati() {
  sistema_.Esegui("DELETE FROM EVENTOCONTABILE;DELETE FROM MOVIMENTOCONTABILE;"
                  "INSERT INTO EVENTOCONTABILE SELECT * FROM EVENTI_INIZIALI;"
                  "INSERT INTO MOVIMENTOCONTABILE SELECT * FROM MOVIMENTI_INIZIALI;"
                  "UPDATE ERRORE SET FILEXML='';" +
                  vittima_.preparazione);
}

void Uccisione::Ripristina() {
  RipristinaDati();
  Svuota(sistema_.Tmp());
  fs::remove(sistema_.RegistroHost());
  for (const char* postazione : {Ucciso, Secondo}) {
    fs::remove_all(sistema_.Locale(postazione));
  }
}

Testi Uccisione::Stato() {
  Testi righe = sistema_.Interroga("SELECT * FROM EVENTOCONTABILE ORDER BY EVENTOCONTABILEKEY");
  for (const char* tabella : {"SELECT * FROM MOVIMENTOCONTABILE ORDER BY MOVIMENTOKEY", "SELECT * FROM ERRORE"}) {
    const Testi altre = sistema_.Interroga(tabella);
    righe.insert(righe.end(), altre.begin(), altre.end());
  }
  return righe;
}

std::string Uccisione::Altro() {
  fs::remove(sistema_.Registro(Secondo));
  if (sistema_.Avvia({Secondo, {vittima_.comando}}).Attendi() != 0 || !sistema_.SenzaSessioni()) {
    throw std::runtime_error("the second terminal failed");
  }
  for (const std::string& riga : LeggiRighe(sistema_.Registro(Secondo))) {
    const Testi campi = Separa(riga);
    if (campi[0] != "FINE") {
      continue;
    }
    std::string detto = campi.at(3).empty() ? "done" : campi[3];
    for (std::size_t box = 4; box < campi.size(); ++box) {
      detto += (box == 4 ? ": «" : " «") + Anonimo(campi[box]) + "»";
    }
    return detto;
  }
  throw std::runtime_error("the second terminal said nothing");
}

void Uccisione::Chiudi(Osservazione& vista) {
  std::string elenco = sistema_.Amministra(Ucciso, {"--in-sospeso", "-"});
  vista.righe = StatiDelleRighe(elenco);
  const auto note = LeggiNote(sistema_.Locale(Ucciso));
  for (const Nota& nota : note) {
    // Where the host has not carried out the request there is nothing to align.
    static_cast<void>(vista.accettata
                          ? sistema_.Amministra(Ucciso, {"--riallinea", nota.nome, "-", "--si"})
                          : sistema_.Amministra(Ucciso, {"--archivia", nota.nome, "l'host non l'ha eseguita"}));
  }
  if (!note.empty()) {
    elenco = sistema_.Amministra(Ucciso, {"--in-sospeso", "-"});
  }
  vista.chiusa = elenco.starts_with("0\nNon c'è nulla in sospeso.\n");
  const bool conHost =
      std::any_of(passi_.begin(), passi_.end(), [](const std::string& p) { return p == ProgrammaChiesto; });
  vista.pari = Stato() == (vista.accettata || (!conHost && vista.applicata) ? dopo_ : prima_);
  if (vista.intatta) {
    RipristinaDati();
  }
}

void Uccisione::TogliResti() const {
  Svuota(sistema_.Tmp());
  Svuota(sistema_.Locale(Ucciso));
}

std::optional<Osservazione> Uccisione::A(long passo) {
  Ripristina();
  constexpr int Sigkill = 128 + 9;
  fs::remove(sistema_.Passi(Ucciso));
  Sistema::Lancio lancio{Ucciso, {vittima_.comando}, true};
  lancio.morte = passo;
  const int uscita = sistema_.Avvia(lancio).Attendi();
  if (uscita == 0) {
    return std::nullopt;
  }
  if (uscita != Sigkill) {
    throw std::runtime_error("the terminal was not killed");
  }
  if (!sistema_.SenzaSessioni()) {
    throw std::runtime_error("a session of the killed terminal is left");
  }
  Osservazione vista;
  vista.passi = LeggiRighe(sistema_.Passi(Ucciso));
  vista.sullHost = Anonimi(Contenuto(sistema_.Tmp()));
  vista.inLocale = Anonimi(Contenuto(sistema_.Locale(Ucciso)));
  vista.nota = Note(sistema_.Locale(Ucciso));
  vista.accettata = Accettata(sistema_.RegistroHost());
  const Testi stato = Stato();
  vista.applicata = stato == dopo_;
  vista.intatta = stato == prima_;
  Chiudi(vista);
  vista.successivo = Altro();
  vista.fermato = vista.successivo.find("«Area ") != std::string::npos ||
                  vista.successivo.find("«Il movimento è in uso") != std::string::npos;
  TogliResti();
  if (vista.fermato) {
    vista.ripetuto = Altro();
  }
  vista.allineati = Stato() == dopo_;
  vista.senzaResti = Contenuto(sistema_.Tmp()).empty();
  return vista;
}

} // namespace lumoscad::test
