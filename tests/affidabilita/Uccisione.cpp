#include "Uccisione.hpp"

#include "Campi.hpp"

#include <algorithm>
#include <regex>
#include <stdexcept>

namespace lumoscad::prova {

namespace fs = std::filesystem;

namespace {

constexpr const char* Ucciso = "T01";
constexpr const char* Secondo = "T02";

void Svuota(const fs::path& cartella) {
  for (const std::string& nome : Contenuto(cartella)) {
    fs::remove(cartella / nome);
  }
}

bool Accettata(const fs::path& registro) {
  const Testi righe = LeggiRighe(registro);
  return std::any_of(righe.begin(), righe.end(), [](const std::string& r) { return r.starts_with("ACCETTATA"); });
}

/// Names without what differs from run to run: process numbers and times.
Testi Anonimi(const Testi& nomi) {
  static const std::regex tempo(R"((T\d\d)\d{14})");
  static const std::regex provvisorio(R"(\.lumoscad-\d+-\d+)");
  Testi anonimi;
  for (const std::string& nome : nomi) {
    anonimi.push_back(std::regex_replace(std::regex_replace(nome, tempo, "$1…"), provvisorio, ".lumoscad-…"));
  }
  return anonimi;
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
  dopo_ = Stato();
}

void Uccisione::Ripristina() {
  sistema_.Esegui("DELETE FROM EVENTOCONTABILE;DELETE FROM MOVIMENTOCONTABILE;"
                  "INSERT INTO EVENTOCONTABILE SELECT * FROM EVENTI_INIZIALI;"
                  "INSERT INTO MOVIMENTOCONTABILE SELECT * FROM MOVIMENTI_INIZIALI;"
                  "UPDATE ERRORE SET FILEXML='';" +
                  vittima_.preparazione);
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

std::string Uccisione::Anonimo(std::string testo) const {
  testo = std::regex_replace(testo, std::regex(R"(\d\d/\d\d/\d{4}   Ora : \d\d:\d\d)"), "…");
  return std::regex_replace(testo, std::regex("[\r\n]+"), " ");
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

void Uccisione::TogliResti() const {
  Svuota(sistema_.Tmp());
  Svuota(sistema_.Locale(Ucciso));
}

Osservazione Uccisione::A(long passo) {
  Ripristina();
  constexpr int Sigkill = 128 + 9;
  Sistema::Lancio lancio{Ucciso, {vittima_.comando}};
  lancio.morte = passo;
  if (sistema_.Avvia(lancio).Attendi() != Sigkill) {
    throw std::runtime_error("the terminal was not killed");
  }
  if (!sistema_.SenzaSessioni()) {
    throw std::runtime_error("a session of the killed terminal is left");
  }
  Osservazione vista;
  vista.sullHost = Anonimi(Contenuto(sistema_.Tmp()));
  vista.inLocale = Anonimi(Contenuto(sistema_.Locale(Ucciso)));
  vista.accettata = Accettata(sistema_.RegistroHost());
  const Testi stato = Stato();
  vista.applicata = stato == dopo_;
  vista.intatta = stato == prima_;
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

} // namespace lumoscad::prova
