// The commands without a list window: the real program, back end and database, with its wait window and its boxes.

#include "Dimostrazione.hpp"
#include "Schermo.hpp"
#include "support/OdbcConfiguration.hpp"
#include "support/Paths.hpp"

#include <algorithm>
#include <gmock/gmock.h>

namespace lumoscad::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string Titolo = "LumoScad";

class Commands : public testing::TestWithParam<Trasporto> {
 protected:
  Commands() : demo(GetParam()), schermo(demo.Base()) {
    test::RunScript(demo.Connessione(), FileText(test::SourcePath("demo/comandi.sql")));
  }

  std::unique_ptr<Figlio> Avvia(const std::string& comando) {
    Scrivi(demo.Base() / "comando",
           comando + " -H " + demo.Indirizzo() + " -D 01 -DB2SOURCE CONTABILITA -DB2SCHEMA main\n");
    return std::make_unique<Figlio>(
        std::vector<std::string>{"sh", "-c", ". \"$1\"; exec \"$2\" -", "sh", (demo.Base() / "ambiente.sh").string(),
                                 test::ProgramPath("lumoscad").string()},
        schermo.Ambiente(), demo.Base() / "comando", demo.Base() / "risultato", demo.Base() / "errori");
  }
  /// Runs the command, closes its boxes with keys, and returns its result and its exit status.
  std::string Esegui(const std::string& comando) {
    std::filesystem::remove(demo.Registro());
    const auto programma = Avvia(comando);
    while (!schermo.AspettaFinestra(Titolo, *programma).empty()) {
      static_cast<void>(schermo.Tasti({"Return"}));
    }
    const auto stato = programma->Attendi();
    return FileText(demo.Base() / "risultato") + (stato ? std::to_string(*stato) : "fermo");
  }
  /// What the back end logged for the last command: outcome, answer, number of parameters, parameters and an empty
  /// file.
  [[nodiscard]] Righe Chiamata() const {
    auto riga = FileText(demo.Registro());
    if (riga.ends_with('\n')) {
      riga.pop_back();
    }
    Righe campi;
    for (std::size_t inizio = 0; !riga.empty() && inizio <= riga.size();) {
      const auto fine = std::min(riga.find('\t', inizio), riga.size());
      campi.push_back(riga.substr(inizio, fine - inizio));
      inizio = fine + 1;
    }
    return campi;
  }
  /// The command succeeds, with the change that `sql` alone would make.
  void RiesceCome(const std::string& comando, const std::string& sql) {
    const auto prima = demo.Stato();
    const auto attesa = demo.StatoDopo(sql);
    EXPECT_EQ(Esegui(comando), "0") << FileText(demo.Base() / "errori");
    EXPECT_THAT(Differenze(attesa, demo.Stato()), IsEmpty());
    EXPECT_NE(prima, demo.Stato());
  }

  Dimostrazione demo;
  Schermo schermo;
};

TEST_P(Commands, SuspendAndReactivateAnOpenItem) {
  RiesceCome("-T SOSPESO /A -C 20100001 -P AB   123",
             "UPDATE EVENTOCONTABILE SET SOSPESA='S' WHERE EVENTOCONTABILEKEY IN (900001,900002)");
  EXPECT_THAT(Chiamata(), ElementsAre("ACCETTATA", "Sospesa la partita AB123 del conto 20100001", "6", "01",
                                      "SOSPESOCREA", "20100001", "AB123", "T01", "", ""));
  RiesceCome("-T SOSPESO /D -C 20100001 -P AB   123",
             "UPDATE EVENTOCONTABILE SET SOSPESA='N' WHERE EVENTOCONTABILEKEY IN (900001,900002)");
  EXPECT_THAT(Chiamata(), ElementsAre("ACCETTATA", "Riattivata la partita AB123 del conto 20100001", "5", "01",
                                      "SOSPESOCANCELLA", "20100001", "AB123", "", ""));
}

TEST_P(Commands, SuspendAndReactivateAPresumedDocument) {
  RiesceCome("-T PRESUNTO /A -S OC -A 06 -N 123 -E 2006",
             "UPDATE EVENTOCONTABILE SET SOSPESA='S' WHERE EVENTOCONTABILEKEY=900004");
  EXPECT_THAT(Chiamata(), ElementsAre("ACCETTATA", "Sospeso il documento OC 123/06", "7", "01", "PRESUNTOCREA", "OC",
                                      "06", "123", "T01", "", ""));
  RiesceCome("-T PRESUNTO /D -S OC -A 06 -N 123 -E 2006",
             "UPDATE EVENTOCONTABILE SET SOSPESA='N' WHERE EVENTOCONTABILEKEY=900004");
  EXPECT_THAT(Chiamata(), ElementsAre("ACCETTATA", "Riattivato il documento OC 123/06", "7", "01", "PRESUNTOCANCELLA",
                                      "OC", "06", "123", "T01", "", ""));
}

TEST_P(Commands, DeleteAnExtraMovementWithItsEvents) {
  RiesceCome("-T EXTRA /A -S A -E 2006 -N 15", "DELETE FROM EVENTOCONTABILE WHERE MOVIMENTOKEY=900003;"
                                               "DELETE FROM MOVIMENTOCONTABILE WHERE MOVIMENTOKEY=900003");
  EXPECT_THAT(Chiamata(), ElementsAre("ACCETTATA", "Annullato il movimento A 15 dell'esercizio 2006", "6", "01",
                                      "EXTRADEL", "A", "2006", "15", "", ""));
}

TEST_P(Commands, TestTheDatabaseWithoutTheHost) {
  RiesceCome("-T TEST", "UPDATE ERRORE SET FILEXML='FILEccccc' WHERE ERROREKEY=100");
  EXPECT_THAT(Chiamata(), IsEmpty());
}

TEST_P(Commands, LeaveTheDatabaseAloneWhenTheBackEndRefuses) {
  const auto prima = demo.Stato();
  EXPECT_EQ(Esegui("-T SOSPESO /A -C BLOCCATO -P AB   123"), "error\n1");
  EXPECT_THAT(Chiamata(), ElementsAre("RIFIUTATA", "Parametro 3: «BLOCCATO» è un conto bloccato.", "6", "01",
                                      "SOSPESOCREA", "BLOCCATO", "AB123", "T01", "", ""));
  EXPECT_THAT(Differenze(prima, demo.Stato()), IsEmpty());
}

TEST_P(Commands, SayWhatTheDatabaseDoesNotHaveAfterTheBackEndAccepted) {
  const auto prima = demo.Stato();
  EXPECT_EQ(Esegui("-T EXTRA /A -S A -E 2006 -N 99"), "error\n1");
  EXPECT_THAT(Chiamata(), ElementsAre("ACCETTATA", "Annullato il movimento A 99 dell'esercizio 2006", "6", "01",
                                      "EXTRADEL", "A", "2006", "99", "", ""));
  EXPECT_THAT(Differenze(prima, demo.Stato()), IsEmpty());
}

TEST_P(Commands, SendNothingInADemonstrationRun) {
  const auto prima = demo.Stato();
  for (const char* comando : {"-T SOSPESO /A -C 20100001 -P AB   123 -DEMO", "-T PRESUNTO /D -S OC -A 06 -N 123 -DEMO",
                              "-T EXTRA /A -S A -E 2006 -N 15 -DEMO"}) {
    EXPECT_EQ(Esegui(comando), "0") << comando;
    EXPECT_THAT(Chiamata(), IsEmpty()) << comando;
  }
  EXPECT_THAT(Differenze(prima, demo.Stato()), IsEmpty());
}

TEST_P(Commands, ShowAWindowThatKeysDoNotCloseWhileTheBackEndWorks) {
  std::filesystem::rename(demo.VB0001(), demo.VB0001().string() + ".vero");
  ScriviProgramma(demo.VB0001(), R"(until [ -e "$NEXARO_RADICE/via" ]; do sleep 0.1; done
exec "$NEXARO_RADICE/programmi/VB0001.vero" "$@")");
  const auto programma = Avvia("-T SOSPESO /A -C 20100001 -P AB   123");
  ASSERT_FALSE(schermo.AspettaFinestra(Titolo, *programma).empty());
  ASSERT_TRUE(schermo.Tasti({"Escape", "Return", "alt+F4"}));
  EXPECT_FALSE(Finche([&] { return !programma->Vivo(); }, std::chrono::milliseconds(700)));
  EXPECT_FALSE(schermo.AspettaFinestra(Titolo, *programma).empty());
  EXPECT_FALSE(std::filesystem::exists(demo.Registro())) << "the back end has not answered yet";
  Scrivi(demo.Host() / "via", "");
  ASSERT_TRUE(Finche([&] { return std::filesystem::exists(demo.Registro()); }));
  while (!schermo.AspettaFinestra(Titolo, *programma).empty()) {
    static_cast<void>(schermo.Tasti({"Return"}));
  }
  EXPECT_EQ(programma->Attendi(), 0);
  EXPECT_EQ(Interroga(demo.Connessione(), "SELECT SOSPESA FROM EVENTOCONTABILE WHERE EVENTOCONTABILEKEY=900001"),
            Righe{"S"});
}

INSTANTIATE_TEST_SUITE_P(Transports, Commands, testing::Values(Trasporto::Cartella, Trasporto::Ssh),
                         [](const auto& caso) { return NomeTrasporto(caso.param); });

} // namespace
} // namespace lumoscad::test
