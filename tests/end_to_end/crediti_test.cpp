#include "Dimostrazione.hpp"
#include "Figlio.hpp"
#include "Schermo.hpp"
#include "platform/nexaro/Nexaro.hpp"
#include "support/Paths.hpp"

#include <gmock/gmock.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <fstream>
#include <sys/inotify.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace lumoscad::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;
namespace fs = std::filesystem;

const std::string TitoloElenco = "LumoScad - Scadenze e banche dei clienti";
const std::string TitoloMessaggio = "LumoScad";

// Pixels of the list window: where the rows begin, and the middles of the cells that are clicked.
constexpr int PrimaRiga = 134;
constexpr int AltezzaRiga = 24;
constexpr int SpuntaData = 848;
constexpr int SpuntaBanca = 976;
constexpr int TestataScadenza = 380;
// The middles of the two buttons, from the right and bottom edges.
constexpr int Conferma = -200;
constexpr int Annulla = -75;
constexpr int Pulsanti = -30;

/// What happens to the names in a directory, as it happens.
class Osservatore {
 public:
  explicit Osservatore(const fs::path& cartella) : coda_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    if (coda_ < 0 || ::inotify_add_watch(coda_, cartella.c_str(), IN_CREATE | IN_MOVE | IN_DELETE) < 0) {
      throw std::system_error(errno, std::generic_category(), "inotify");
    }
  }
  Osservatore(const Osservatore&) = delete;
  Osservatore& operator=(const Osservatore&) = delete;
  ~Osservatore() { ::close(coda_); }

  /// "+name" for a name that appeared and "-name" for one that went, without the private names of unfinished copies.
  [[nodiscard]] Righe Avvenuti() {
    alignas(inotify_event) std::array<char, 64 * (sizeof(inotify_event) + NAME_MAX + 1)> dati{};
    for (ssize_t letti = 0; (letti = ::read(coda_, dati.data(), dati.size())) > 0;) {
      for (const char* posto = dati.data(); posto < dati.data() + letti;) {
        const auto* evento = reinterpret_cast<const inotify_event*>(posto);
        const std::string nome = evento->name;
        if (!nome.starts_with('.')) {
          avvenuti_.push_back(((evento->mask & (IN_CREATE | IN_MOVED_TO)) != 0 ? "+" : "-") + nome);
        }
        posto += sizeof(inotify_event) + evento->len;
      }
    }
    return avvenuti_;
  }

 private:
  int coda_;
  Righe avvenuti_;
};

class Crediti : public testing::Test {
 protected:
  explicit Crediti(Trasporto trasporto, const std::string& misura = "1280x800")
      : demo(trasporto), schermo(demo.Base(), misura) {}

  static fs::path Schermata(const std::string& nome) {
    return test::OutputPath("end_to_end/schermate") / (nome + ".png");
  }

  /// Starts the program; it reads its command line on standard input.
  std::unique_ptr<Figlio> Avvia(const std::string& opzioni, const std::vector<std::string>& aggiunte = {}) {
    Scrivi(demo.Base() / "comando", "-T BANCA /CREDITI -D 01 -H " + demo.Indirizzo() + " " + opzioni +
                                        " -DB2SOURCE CONTABILITA -DB2SCHEMA main\n");
    auto ambiente = schermo.Ambiente();
    // The keyboard library copies names out of replies that end without a null: allowed, but not to the strict check.
    const char* controlli = std::getenv("ASAN_OPTIONS");
    ambiente.push_back("ASAN_OPTIONS=" + std::string(controlli == nullptr ? "" : controlli) +
                       ":strict_string_checks=0");
    ambiente.insert(ambiente.end(), aggiunte.begin(), aggiunte.end());
    return std::make_unique<Figlio>(
        std::vector<std::string>{"sh", "-c", ". \"$1\"; exec \"$2\" -", "sh", (demo.Base() / "ambiente.sh").string(),
                                 test::ProgramPath("lumoscad").string()},
        ambiente, demo.Base() / "comando", demo.Base() / "risultato", demo.Base() / "errori");
  }

  [[nodiscard]] std::string Risultato() const { return FileText(demo.Base() / "risultato"); }
  [[nodiscard]] std::string Errori() const { return FileText(demo.Base() / "errori"); }

  Dimostrazione demo;
  Schermo schermo;
};

/// The same rules whichever way the host is reached.
class CreditsOverATransport : public Crediti, public testing::WithParamInterface<Trasporto> {
 protected:
  CreditsOverATransport() : Crediti(GetParam()) {}
};

std::string NomeCaso(const testing::TestParamInfo<Trasporto>& caso) {
  return NomeTrasporto(caso.param);
}

/// The back end keeps what it saw for the test: the number of its parameters, the names beside the request, its bytes.
constexpr std::string_view Registratore = R"(cd "$NEXARO_RADICE" || exit 1
echo $# >registro/parametri
ls tmp >registro/nomi
cp tmp/*.dos registro/richiesta
exec programmi/VB0001.vero "$@")";

const std::string RichiestaAttesa = "20100023,2025/46,,,,20251219,20251219,20260415,60100002,,2\r\n"
                                    "20100023,2026/119,,,,20260201,20260201,,60100005,60100001,1\r\n"
                                    "20100023,2025/57,,,,20260210,20260225,20260520,60100005,60100001,2\r\n";

constexpr std::string_view VariazioniAttese = R"(
  UPDATE EVENTOCONTABILE SET DATASCADENZA='2026-04-15' WHERE EVENTOCONTABILEKEY=111;
  UPDATE EVENTOCONTABILE SET BANCAPRESENTAZIONE_KEY=1 WHERE EVENTOCONTABILEKEY=291;
  UPDATE EVENTOCONTABILE SET DATASCADENZA='2026-05-20', BANCAPRESENTAZIONE_KEY=1 WHERE EVENTOCONTABILEKEY=137)";

TEST_P(CreditsOverATransport, FromTheCommandLineToTheDatabaseAndBack) {
  const auto prima = demo.Stato();
  const auto attesa = demo.StatoDopo(VariazioniAttese);
  fs::rename(demo.VB0001(), demo.VB0001().string() + ".vero");
  ScriviProgramma(demo.VB0001(), Registratore);
  Osservatore tmp(demo.Tmp());

  const auto programma = Avvia("-C 20100023");
  const auto elenco = schermo.AspettaFinestra(TitoloElenco, *programma);
  ASSERT_FALSE(elenco.empty()) << Risultato() << Errori();
  EXPECT_THAT(FileText(demo.Tmp() / "VBCREDITI"),
              MatchesRegex("Utente : T01\r\nData : [0-9]{2}/[0-9]{2}/[0-9]{4}   Ora : [0-9]{2}:[0-9]{2}\r\n"));
  EXPECT_THAT(tmp.Avvenuti(), ElementsAre("+VBCREDITI"));

  // The date and the bank for the ticks, then the list by due date.
  ASSERT_TRUE(schermo.Tasti({"alt+n"}) && schermo.Digita("15/04/26"));
  ASSERT_TRUE(schermo.Tasti({"Tab", "Down", "Down", "Down"}));
  ASSERT_TRUE(schermo.Clicca(elenco, TestataScadenza, PrimaRiga - AltezzaRiga));
  // The second row gets the date, the fifth the bank; the seventh a date of its own in the cell, and the bank.
  ASSERT_TRUE(schermo.Clicca(elenco, SpuntaData, PrimaRiga + AltezzaRiga));
  ASSERT_TRUE(schermo.Clicca(elenco, SpuntaBanca, PrimaRiga + 4 * AltezzaRiga));
  ASSERT_TRUE(schermo.Tasti({"Down", "Down", "space", "Left", "F2", "ctrl+a"}) && schermo.Digita("20/05/26"));
  ASSERT_TRUE(schermo.Tasti({"Return"}));
  ASSERT_TRUE(schermo.Fotografa(elenco, Schermata("crediti")));
  EXPECT_THAT(Differenze(prima, demo.Stato()), IsEmpty());
  ASSERT_TRUE(schermo.Clicca(elenco, Conferma, Pulsanti));

  const auto messaggio = schermo.AspettaFinestra(TitoloMessaggio, *programma);
  ASSERT_FALSE(messaggio.empty()) << Risultato() << Errori();
  ASSERT_TRUE(schermo.Fotografa(messaggio, Schermata("crediti_messaggio")));
  EXPECT_TRUE(fs::exists(demo.Tmp() / "VBCREDITI"));
  ASSERT_TRUE(schermo.Tasti({"Return"}));

  EXPECT_EQ(programma->Attendi(), 0);
  EXPECT_EQ(Risultato(), "");
  EXPECT_EQ(Errori(), "");
  EXPECT_EQ(FileText(demo.Host() / "registro/richiesta"), RichiestaAttesa);
  EXPECT_EQ(FileText(demo.Host() / "registro/parametri"), "11\n");
  EXPECT_THAT(FileText(demo.Registro()), testing::StartsWith("ACCETTATA\tVariate 3 scadenze\t11\t01\tCANALIZZAZIONE\t"
                                                             "CREDITI\tT01\t/tmp/T01"));
  EXPECT_THAT(FileText(demo.Host() / "registro/nomi"), MatchesRegex("T01[0-9]{14}\\.dos\nVBCREDITI\n"));
  const auto avvenuti = tmp.Avvenuti();
  ASSERT_EQ(avvenuti.size(), 6U) << testing::PrintToString(avvenuti);
  const std::string nome = avvenuti[1].substr(1);
  EXPECT_THAT(nome, MatchesRegex("T01[0-9]{14}"));
  EXPECT_THAT(avvenuti, ElementsAre("+VBCREDITI", "+" + nome, "-" + nome, "+" + nome + ".dos", "-" + nome + ".dos",
                                    "-VBCREDITI"));
  EXPECT_THAT(Contenuto(demo.Tmp()), IsEmpty());
  EXPECT_THAT(Contenuto(demo.Locale()), ElementsAre("VBCREDITI"));
  EXPECT_THAT(Differenze(attesa, demo.Stato()), IsEmpty());
  EXPECT_EQ(Differenze(prima, demo.Stato()).size(), 6U);
}

/// The screen is left without confirming, after a change that a confirmation would send.
class CreditsLeft : public CreditsOverATransport {
 protected:
  template <typename Gesto> void Lascia(Gesto gesto) {
    const auto prima = demo.Stato();
    Osservatore tmp(demo.Tmp());
    const auto programma = Avvia("-C 20100023");
    const auto elenco = schermo.AspettaFinestra(TitoloElenco, *programma);
    ASSERT_FALSE(elenco.empty()) << Risultato() << Errori();
    ASSERT_TRUE(schermo.Tasti({"alt+n"}) && schermo.Digita("15/04/26"));
    ASSERT_TRUE(schermo.Clicca(elenco, SpuntaData, PrimaRiga));
    ASSERT_TRUE(gesto(elenco));
    EXPECT_EQ(programma->Attendi(), 3);
    EXPECT_EQ(Risultato(), "closed\n");
    EXPECT_EQ(Errori(), "");
    EXPECT_FALSE(fs::exists(demo.Registro()));
    EXPECT_THAT(tmp.Avvenuti(), ElementsAre("+VBCREDITI", "-VBCREDITI"));
    EXPECT_THAT(Contenuto(demo.Locale()), ElementsAre("VBCREDITI"));
    EXPECT_THAT(Differenze(prima, demo.Stato()), IsEmpty());
  }
};

TEST_P(CreditsLeft, AnnullaSendsNothing) {
  Lascia([this](const std::string& elenco) { return schermo.Clicca(elenco, Annulla, Pulsanti); });
}

TEST_P(CreditsLeft, TheCloseBoxSendsNothing) {
  Lascia([this](const std::string&) { return schermo.Tasti({"alt+F4"}); });
}

TEST_P(CreditsLeft, ConfirmingWithoutAChangeSendsNothing) {
  // The tick goes again: what counts is the value, which is then the old one.
  Lascia([this](const std::string& elenco) {
    return schermo.Clicca(elenco, SpuntaData, PrimaRiga) && schermo.Clicca(elenco, Conferma, Pulsanti);
  });
}

INSTANTIATE_TEST_SUITE_P(Transports, CreditsOverATransport, testing::Values(Trasporto::Cartella, Trasporto::Ssh),
                         NomeCaso);
INSTANTIATE_TEST_SUITE_P(Transports, CreditsLeft, testing::Values(Trasporto::Cartella, Trasporto::Ssh), NomeCaso);

class CreditsForTwo : public Crediti {
 protected:
  CreditsForTwo() : Crediti(Trasporto::Cartella) {}
};

TEST_F(CreditsForTwo, ARequestWaitsForAnotherProgramOfItsWorkstation) {
  const std::string postazione = "DUE" + std::to_string(::getpid());
  std::ofstream(demo.Base() / "ambiente.sh", std::ios::app) << "export NEXARO_POSTAZIONE=" << postazione << "\n";
  const auto altra = nexaro::CreateProcessLock();
  ASSERT_FALSE(altra->Wait(postazione, [] {}));
  const auto programma = Avvia("-C 20100023");
  const auto elenco = schermo.AspettaFinestra(TitoloElenco, *programma);
  ASSERT_FALSE(elenco.empty()) << Risultato() << Errori();
  ASSERT_TRUE(schermo.Tasti({"alt+n"}) && schermo.Digita("15/04/26"));
  ASSERT_TRUE(schermo.Clicca(elenco, SpuntaData, PrimaRiga));
  ASSERT_TRUE(schermo.Clicca(elenco, Conferma, Pulsanti));
  std::this_thread::sleep_for(std::chrono::seconds(2));
  EXPECT_THAT(Contenuto(demo.Tmp()), ElementsAre("VBCREDITI"));
  EXPECT_FALSE(fs::exists(demo.Registro()));
  EXPECT_TRUE(programma->Vivo());
  altra->LetGo();
  ASSERT_FALSE(schermo.AspettaFinestra(TitoloMessaggio, *programma).empty()) << Risultato() << Errori();
  ASSERT_TRUE(schermo.Tasti({"Return"}));
  EXPECT_EQ(programma->Attendi(), 0);
  EXPECT_THAT(FileText(demo.Registro()), testing::StartsWith("ACCETTATA\tVariata 1 scadenza\t"));
}

class CreditsAtDoubleScale : public Crediti {
 protected:
  CreditsAtDoubleScale() : Crediti(Trasporto::Cartella, "2560x1600") {}
};

TEST_F(CreditsAtDoubleScale, TheWindowOpensAtTwiceTheScale) {
  const auto programma = Avvia("", {"QT_SCALE_FACTOR=2"});
  const auto elenco = schermo.AspettaFinestra(TitoloElenco, *programma);
  ASSERT_FALSE(elenco.empty()) << Risultato() << Errori();
  EXPECT_TRUE(schermo.Fotografa(elenco, Schermata("crediti_2x")));
  const auto misure = schermo.MisureFinestra(elenco);
  EXPECT_GT(misure.larghezza, 2 * 1100);
  EXPECT_LE(misure.larghezza, 2560);
  EXPECT_GT(misure.altezza, 2 * 600);
  EXPECT_LE(misure.altezza, 1600);
  ASSERT_TRUE(schermo.Clicca(elenco, 2 * Annulla, 2 * Pulsanti));
  EXPECT_EQ(programma->Attendi(), 3);
  EXPECT_EQ(Risultato(), "closed\n");
}

} // namespace
} // namespace lumoscad::test
