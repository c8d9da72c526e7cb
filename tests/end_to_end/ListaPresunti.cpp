#include "ListaPresunti.hpp"

#include "support/Paths.hpp"

#include <algorithm>
#include <cstdlib>

namespace lumoscad::test {
namespace {

using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::MatchesRegex;
namespace fs = std::filesystem;

const std::string Blocco = "VBPRESUNTI";

/// The back end keeps what it saw for the test: the names beside the request, and its bytes.
constexpr std::string_view Registratore = R"(cd "$NEXARO_RADICE" || exit 1
ls tmp >registro/nomi
cp tmp/*.dos registro/richiesta
exec programmi/VB0001.vero "$@")";

Righe Dividi(const std::string& testo, char separatore) {
  Righe parti;
  for (std::size_t inizio = 0; inizio <= testo.size();) {
    const auto fine = std::min(testo.find(separatore, inizio), testo.size());
    parti.push_back(testo.substr(inizio, fine - inizio));
    inizio = fine + 1;
  }
  return parti;
}

/// As the back end's log writes a file.
std::string PerRegistro(std::string testo) {
  for (std::size_t posto = 0; (posto = testo.find("\r\n", posto)) != std::string::npos; posto += 4) {
    testo.replace(posto, 2, "\\r\\n");
  }
  return testo;
}

} // namespace

ListaPresunti::ListaPresunti(std::string comando, std::string titolo)
    : demo(GetParam()), schermo(demo.Base()), comando_(std::move(comando)), titolo_(std::move(titolo)) {
  fs::rename(demo.VB0001(), demo.VB0001().string() + ".vero");
  ScriviProgramma(demo.VB0001(), Registratore);
}

void ListaPresunti::Attendi(std::string_view istruzioni, std::size_t righe) {
  attesa_ = demo.StatoDopo(istruzioni);
  ASSERT_EQ(Differenze(prima_, attesa_).size(), 2 * righe);
}

void ListaPresunti::Avvia() {
  Lancia("exec \"$2\" -", 1);
}

void ListaPresunti::AvviaSequenza(int volte) {
  Lancia("exec \"$3\"", volte);
}

void ListaPresunti::Lancia(const std::string& programma, int volte) {
  std::string righe;
  for (int volta = 0; volta < volte; ++volta) {
    righe += comando_ + " /PRESUNTI -D 01 -H " + demo.Indirizzo() +
             " -C 20100012 -TIPOMOVIMENTI V -B TUTTE -DB2SOURCE CONTABILITA "
             "-DB2SCHEMA main\n";
  }
  Scrivi(demo.Base() / "comando", righe);
  auto ambiente = schermo.Ambiente();
  // The keyboard library copies names out of replies that end without a null: allowed, but not to the strict check.
  const char* controlli = std::getenv("ASAN_OPTIONS");
  ambiente.push_back("ASAN_OPTIONS=" + std::string(controlli == nullptr ? "" : controlli) + ":strict_string_checks=0");
  programma_ = std::make_unique<Figlio>(
      std::vector<std::string>{"sh", "-c", ". \"$1\"; " + programma, "sh", (demo.Base() / "ambiente.sh").string(),
                               test::ProgramPath("lumoscad").string(), test::ProgramPath("lumoscad_sequenza").string()},
      ambiente, demo.Base() / "comando", demo.Base() / "risultato", demo.Base() / "errori");
}

void ListaPresunti::ApriLista() {
  finestra_ = schermo.AspettaFinestra(titolo_, *programma_);
  ASSERT_FALSE(finestra_.empty()) << FileText(demo.Base() / "risultato") << FileText(demo.Base() / "errori");
  EXPECT_THAT(FileText(demo.Tmp() / Blocco),
              MatchesRegex("Utente : T01\r\nData : [0-9]{2}/[0-9]{2}/[0-9]{4}   Ora : [0-9]{2}:[0-9]{2}\r\n"));
  Tasti({"ctrl+2", "Home"});
}

void ListaPresunti::Vai(int riga) {
  Righe tasti{"Home"};
  tasti.insert(tasti.end(), static_cast<std::size_t>(riga), "Down");
  Tasti(tasti);
}

void ListaPresunti::Tasti(const std::vector<std::string>& tasti) {
  ASSERT_TRUE(schermo.Tasti(tasti));
}

void ListaPresunti::Digita(const std::string& testo) {
  ASSERT_TRUE(schermo.Digita(testo));
}

void ListaPresunti::Fotografa(const std::string& nome) {
  ASSERT_TRUE(schermo.Fotografa(finestra_, test::OutputPath("end_to_end/schermate") / (nome + ".png")));
}

void ListaPresunti::Conferma() {
  Tasti({"ctrl+Return"});
  ASSERT_FALSE(schermo.AspettaFinestra("LumoScad", *programma_).empty())
      << FileText(demo.Base() / "risultato") << FileText(demo.Base() / "errori");
  EXPECT_TRUE(fs::exists(demo.Tmp() / Blocco));
  Tasti({"Return"});
  ASSERT_TRUE(schermo.Sparita("LumoScad"));
}

void ListaPresunti::VerificaFine(int stato, const std::string& risultato, const Righe& rimasti) {
  EXPECT_EQ(programma_->Attendi(), stato);
  EXPECT_EQ(FileText(demo.Base() / "risultato"), risultato);
  EXPECT_EQ(FileText(demo.Base() / "errori"), "");
  EXPECT_EQ(Contenuto(demo.Tmp()), rimasti);
}

void ListaPresunti::VerificaRichiesta(const std::string& nome, std::size_t vuoti, const std::string& file,
                                      const std::string& testo) {
  EXPECT_EQ(FileText(demo.Host() / "registro/richiesta"), file);
  EXPECT_THAT(FileText(demo.Host() / "registro/nomi"), MatchesRegex("T01[0-9]{14}\\.dos\n" + Blocco + "\n"));
  const auto chiamate = Chiamate();
  ASSERT_EQ(chiamate.size(), 1U);
  constexpr std::size_t NomeDelFile = 7;
  auto campi = chiamate.front();
  ASSERT_GT(campi.size(), NomeDelFile);
  EXPECT_THAT(campi[NomeDelFile], MatchesRegex("/tmp/T01[0-9]{14}\\.dos"));
  campi[NomeDelFile].clear();
  Righe attesi{"ACCETTATA", testo, std::to_string(5 + vuoti), "01", nome, "PRESUNTI", "T01", ""};
  attesi.insert(attesi.end(), vuoti, "");
  attesi.push_back(PerRegistro(file));
  EXPECT_THAT(campi, ElementsAreArray(attesi));
}

void ListaPresunti::VerificaBaseDati() {
  EXPECT_THAT(Differenze(attesa_, demo.Stato()), IsEmpty());
}

void ListaPresunti::VerificaNullaFatto() {
  EXPECT_FALSE(fs::exists(demo.Registro()));
  EXPECT_THAT(Differenze(prima_, demo.Stato()), IsEmpty());
}

std::vector<Righe> ListaPresunti::Chiamate() const {
  std::vector<Righe> chiamate;
  for (const auto& riga : Dividi(FileText(demo.Registro()), '\n')) {
    if (!riga.empty()) {
      chiamate.push_back(Dividi(riga, '\t'));
    }
  }
  return chiamate;
}

} // namespace lumoscad::test
