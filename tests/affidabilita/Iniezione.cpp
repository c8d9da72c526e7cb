#include "Iniezione.hpp"

#include "Campi.hpp"
#include "Iniettore.hpp"
#include "common/Nota.hpp"
#include "support/Files.hpp"
#include "support/Paths.hpp"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <utility>

namespace lumoscad::test {

namespace fs = std::filesystem;

namespace {

constexpr const char* Terminale = "T01";

void Svuota(const fs::path& cartella) {
  for (const std::string& nome : Contenuto(cartella)) {
    fs::remove(cartella / nome);
  }
}

/// The driver manager's files: data sources and drivers. It empties one that it cannot open for reading.
class FileOdbc {
 public:
  /// Puts back what they held at first.
  void Ripristina() const {
    for (const auto& [file, testo] : primi_) {
      std::ofstream(file, std::ios::binary | std::ios::trunc) << testo;
    }
  }

  static const FileOdbc& Unici() {
    static const FileOdbc Unici;
    return Unici;
  }

 private:
  FileOdbc() {
    const fs::path cartella = std::getenv("ODBCSYSINI");
    for (const fs::path& file : {fs::path(std::getenv("ODBCINI")), cartella / "odbcinst.ini"}) {
      primi_.emplace_back(file, FileText(file));
    }
  }

  std::vector<std::pair<fs::path, std::string>> primi_;
};

/// What the texts claim of host and database.
struct Affermazioni {
  explicit Affermazioni(const std::string& letto)
      : ignoto(Ha(letto, "L'esito sull'host non è noto: verificarlo prima di ripetere il comando.")),
        nulla(
            Ha(letto, "L'host ha già accettato la modifica; la base dati non ne ha registrato nulla. Da allineare: ")),
        dubbia(Ha(letto, "L'host ha già accettato la modifica; non si sa se la base dati l'ha registrata. Da ")),
        tutta(Ha(letto, "L'host e la base dati hanno registrato la modifica: ")) {}

  [[nodiscard]] int Quante() const { return int{ignoto} + int{nulla} + int{dubbia} + int{tutta}; }

  bool ignoto;
  bool nulla;
  bool dubbia;
  bool tutta;

 private:
  static bool Ha(const std::string& letto, const char* frase) { return letto.find(frase) != std::string::npos; }
};

/// What is wrong with the message of a command that failed; empty where it is true.
std::string ErroreNelRacconto(const Prova& prova) {
  const Affermazioni dice(prova.letto);
  if (prova.letto.empty()) {
    return "no message";
  }
  if (dice.Quante() > 1) {
    return "the message says two things at once";
  }
  if (dice.nulla && !(prova.accettata && prova.intatta)) {
    return "said accepted and not applied";
  }
  if (dice.dubbia && !prova.accettata) {
    return "said accepted, and unknown in the database";
  }
  if (dice.tutta && !(prova.accettata && prova.applicata)) {
    return "said accepted and applied";
  }
  if (dice.ignoto && !prova.intatta) {
    return "said unknown on the host, and the database is changed";
  }
  if (dice.Quante() == 0 && (prova.accettata || !prova.intatta)) {
    return "nothing said of what host and database hold";
  }
  return "";
}

std::string Scorrettezza(const Prova& prova, bool conHost) {
  if (!prova.morte.empty()) {
    return "died: " + prova.morte;
  }
  if (!prova.intatta && !prova.applicata) {
    return "the database is half changed";
  }
  if (!conHost) {
    return prova.risultato == "error" && prova.letto.empty() ? "no message" : "";
  }
  if (prova.risultato.empty()) {
    return prova.accettata && prova.applicata ? "" : "said done";
  }
  if (prova.risultato == "closed") {
    return !prova.accettata && prova.intatta ? "" : "said closed";
  }
  return ErroreNelRacconto(prova);
}

/// The page that the run and this test share.
class Foglio {
 public:
  explicit Foglio(fs::path percorso) : percorso_(std::move(percorso)) {
    std::ofstream(percorso_, std::ios::binary | std::ios::trunc) << std::string(sizeof(PaginaIniezione), '\0');
  }

  [[nodiscard]] const fs::path& Percorso() const { return percorso_; }
  void Leggi(PaginaIniezione& pagina) const {
    const std::string byte = FileText(percorso_);
    std::memcpy(static_cast<void*>(&pagina), byte.data(), std::min(byte.size(), sizeof pagina));
  }

 private:
  fs::path percorso_;
};

} // namespace

Iniezione::Iniezione(Sistema& sistema, Bersaglio bersaglio) : sistema_(sistema), bersaglio_(std::move(bersaglio)) {
  FileOdbc::Unici().Ripristina();
  Ripristina();
  prima_ = Stato();
  if (sistema_.Avvia({Terminale, {bersaglio_.comando}}).Attendi() != 0) {
    throw std::runtime_error("the command cannot be run");
  }
  dopo_ = Stato();
}

void Iniezione::Ripristina() {
  sistema_.Esegui("DELETE FROM EVENTOCONTABILE;DELETE FROM MOVIMENTOCONTABILE;"
                  "INSERT INTO EVENTOCONTABILE SELECT * FROM EVENTI_INIZIALI;"
                  "INSERT INTO MOVIMENTOCONTABILE SELECT * FROM MOVIMENTI_INIZIALI;"
                  "UPDATE ERRORE SET FILEXML='';" +
                  bersaglio_.preparazione);
  Svuota(sistema_.Tmp());
  fs::remove(sistema_.RegistroHost());
  fs::remove(sistema_.Registro(Terminale));
  fs::remove(sistema_.Errori(Terminale));
  fs::remove_all(sistema_.Locale(Terminale));
}

/// Without the row of the writing test, which runs after the command.
Testi Iniezione::Stato() {
  Testi righe = sistema_.Interroga("SELECT * FROM EVENTOCONTABILE ORDER BY EVENTOCONTABILEKEY");
  const Testi altre = sistema_.Interroga("SELECT * FROM MOVIMENTOCONTABILE ORDER BY MOVIMENTOKEY");
  righe.insert(righe.end(), altre.begin(), altre.end());
  return righe;
}

long Iniezione::Chiamate(const std::string& genere) {
  PaginaIniezione pagina{};
  Ripristina();
  const Foglio foglio(sistema_.Base() / "iniezione");
  Sistema::Lancio lancio{Terminale, {bersaglio_.comando}};
  lancio.ambiente = {"LD_PRELOAD=" + test::LibraryPath("iniettore").string(), "LUMOSCAD_INIEZIONE=" + genere + ":0",
                     "LUMOSCAD_INIEZIONE_FILE=" + foglio.Percorso().string()};
  static_cast<void>(sistema_.Avvia(lancio).Attendi());
  foglio.Leggi(pagina);
  return pagina.chiamate;
}

Prova Iniezione::A(const std::string& genere, long numero) {
  Ripristina();
  Prova prova = Esegui(genere, numero);
  const Testi stato = Stato();
  prova.intatta = stato == prima_;
  prova.applicata = stato == dopo_;
  prova.note = LeggiNote(sistema_.Locale(Terminale)).size();
  prova.scorrettezza = Scorrettezza(prova, bersaglio_.conHost);
  // unixODBC, which reads its files by fopen, keeps for a while what it did not find in them.
  const bool senzaSorgenti = prova.chiamata.starts_with("fopen") || prova.seguito.find("[IM002]") != std::string::npos;
  if (prova.scorrettezza.empty() && !prova.seguito.empty() && !senzaSorgenti) {
    prova.scorrettezza = "the next command fails: " + prova.seguito;
  }
  return prova;
}

Prova Iniezione::Esegui(const std::string& genere, long numero) {
  const Foglio foglio(sistema_.Base() / "iniezione");
  Sistema::Lancio lancio{Terminale, {bersaglio_.comando, "-T TEST"}};
  lancio.ambiente = {"LD_PRELOAD=" + test::LibraryPath("iniettore").string(),
                     "LUMOSCAD_INIEZIONE=" + genere + ":" + std::to_string(numero),
                     "LUMOSCAD_INIEZIONE_FILE=" + foglio.Percorso().string(), "NEXARO_ATTESA=5",
                     "LUMOSCAD_ATTESA_SQL=3"};
  const int uscita = sistema_.Avvia(lancio).Attendi();
  FileOdbc::Unici().Ripristina();
  PaginaIniezione pagina{};
  foglio.Leggi(pagina);
  Prova prova;
  prova.scattata = pagina.scattate > 0;
  prova.chiamata = pagina.chiamata.data();
  prova.morte = uscita == 0                    ? ""
                : pagina.morte.front() == '\0' ? "exit " + std::to_string(uscita)
                                               : pagina.morte.data();
  const Testi host = LeggiRighe(sistema_.RegistroHost());
  prova.accettata =
      std::any_of(host.begin(), host.end(), [](const std::string& riga) { return riga.starts_with("ACCETTATA"); });
  int fini = 0;
  for (const std::string& riga : LeggiRighe(sistema_.Registro(Terminale))) {
    const Testi campi = Separa(riga);
    if (campi[0] != "FINE") {
      continue;
    }
    (fini == 0 ? prova.risultato : prova.seguito) = campi.at(3);
    for (std::size_t box = 4; box < campi.size(); ++box) {
      (fini == 0 ? prova.letto : prova.seguito) += campi[box] + "\n";
    }
    ++fini;
  }
  prova.letto += FileText(sistema_.Errori(Terminale));
  return prova;
}

} // namespace lumoscad::test
