#include "common/Stato.hpp"
#include "entry/Comandi.hpp"
#include "handlers/ModuloMain.hpp"
#include "lumoscad/LumoScadenze.hpp"
#include "support/TestBench.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace lumoscad;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

class Entry : public testing::Test {
 protected:
  std::string Esegui(const std::string& comando) { return LumoScadenze().EseguiLumoScad(comando); }
  /// With both lists taken elsewhere, every bank command answers "error" after one box that names its list.
  void OccupaListe() {
    banco_.host.file["/tmp/VBCREDITI"] = "Utente : T02\r\nieri\r\n";
    banco_.host.file["/tmp/VBDEBITI"] = "Utente : T02\r\nieri\r\n";
  }
  /// The lists named by the boxes shown, in order.
  [[nodiscard]] std::vector<std::string> Liste() const {
    std::vector<std::string> liste;
    for (const std::string& box : banco_.desktop.box) {
      liste.push_back(box.substr(0, box.find(" in ")));
    }
    return liste;
  }

  test::TestBench banco_;
};

} // namespace

TEST_F(Entry, WithoutATypeOrWithAnUnknownOneDoesNothing) {
  for (const char* comando : {"", " ", "-T FOO /A", "/CREDITI", "-T  BANCA /CREDITI", "-T BANCAX /CREDITI"}) {
    EXPECT_EQ(Esegui(comando), "") << comando;
  }
  EXPECT_THAT(banco_.desktop.box, IsEmpty());
  EXPECT_THAT(banco_.host.operazioni, IsEmpty());
}

TEST_F(Entry, OfATypeWithoutASubcommandDoesNothing) {
  for (const char* comando : {"-T BANCA", "-T BANCA /A /D", "-T EXTRA /D", "-T SOSPESO", "-T CONSEGNA /CREDITI"}) {
    EXPECT_EQ(Esegui(comando), "") << comando;
  }
  EXPECT_THAT(banco_.desktop.box, IsEmpty());
  EXPECT_THAT(banco_.host.operazioni, IsEmpty());
}

TEST_F(Entry, FailsOnATokenTWithoutAValue) {
  EXPECT_EQ(Esegui("/CREDITI -T"), "error");
  EXPECT_EQ(Esegui("-T BANCA -t"), "error");
  ASSERT_EQ(banco_.desktop.box.size(), 2U);
  EXPECT_THAT(banco_.desktop.box[0], StartsWith("9\r\nIndice"));
  EXPECT_EQ(banco_.desktop.box[0], banco_.desktop.box[1]);
}

TEST_F(Entry, UnderstandsLowerCase) {
  OccupaListe();
  EXPECT_EQ(Esegui("-t banca /crediti -d aB -h Host"), "error");
  EXPECT_THAT(Liste(), ElementsAre("Area CREDITI"));
  EXPECT_EQ(stato().azienda, "aB");
  EXPECT_EQ(stato().HostIP, "Host");
}

TEST_F(Entry, TakesTheLastOfSeveralTypes) {
  OccupaListe();
  EXPECT_EQ(Esegui("-T FOO /CREDITI -T BANCA"), "error");
  EXPECT_EQ(Esegui("-T BANCA /CREDITI -T FOO"), "");
  EXPECT_EQ(Esegui("-T -T BANCA /DEBITI"), "error");
  EXPECT_THAT(Liste(), ElementsAre("Area CREDITI", "Area DEBITI"));
}

TEST_F(Entry, RunsTheSubcommandsInTheOrderInWhichTheyAreWritten) {
  OccupaListe();
  EXPECT_EQ(Esegui("-T BANCA /CREDITI /DEBITI"), "error");
  EXPECT_EQ(Esegui("/DEBITI -T BANCA /CREDITI"), "error");
  EXPECT_THAT(Liste(), ElementsAre("Area CREDITI", "Area DEBITI", "Area DEBITI", "Area CREDITI"));
}

TEST_F(Entry, ReactivatesBeforeSuspendingWhereItIsWrittenSo) {
  EXPECT_EQ(Esegui("-T SOSPESO /D /A -DEMO"), "");
  EXPECT_THAT(banco_.desktop.box, ElementsAre("La partita è stata riattivata", "La partita è stata sospesa"));
}

TEST_F(Entry, OfADemonstrationSaysDoneWithoutTheHost) {
  EXPECT_EQ(Esegui("-t extra /a -D 1 -H 10.0.0.1 -demo"), "");
  EXPECT_EQ(Esegui("-T EXTRA /A -D 1 -H 10.0.0.1 -DEMO"), "");
  EXPECT_EQ(Esegui("-T PRESUNTO /A /D -DEMO"), "");
  EXPECT_THAT(banco_.desktop.box, ElementsAre("Il movimento è stato annullato", "Il movimento è stato annullato",
                                              "Il documento è stato sospeso ", "Il documento è stato riattivato"));
  EXPECT_THAT(banco_.host.operazioni, IsEmpty());
  EXPECT_THAT(banco_.desktop.waits, IsEmpty());
}

TEST_F(Entry, RunsASubcommandTwiceThatIsWrittenTwice) {
  OccupaListe();
  EXPECT_EQ(Esegui("-T BANCA /CREDITI /crediti"), "error");
  EXPECT_THAT(Liste(), ElementsAre("Area CREDITI", "Area CREDITI"));
}

TEST_F(Entry, KeepsTheCommandAsAWholeText) {
  OccupaListe();
  const std::string comando = " -T BANCA  /CREDITI -DB2SOURCE Conti ";
  EXPECT_EQ(Esegui(comando), "error");
  EXPECT_EQ(stato().ComandoCorrente, comando);
  EXPECT_EQ(Esegui("-T FOO"), "");
  EXPECT_EQ(stato().ComandoCorrente, "-T FOO");
}

TEST_F(Entry, KeepsCompanyAndHostForTheNextCommands) {
  OccupaListe();
  EXPECT_EQ(Esegui("-T BANCA /CREDITI -D 12 -H 10.0.0.1"), "error");
  EXPECT_EQ(Esegui("-T BANCA /DEBITI"), "error");
  EXPECT_EQ(stato().azienda, "12");
  EXPECT_EQ(banco_.host.host.back(), "10.0.0.1");
}

TEST_F(Entry, EmptiesAnOptionThatTwoBlanksFollow) {
  OccupaListe();
  EXPECT_EQ(Esegui("-T BANCA /CREDITI -D 12"), "error");
  EXPECT_EQ(Esegui("-T BANCA /CREDITI -D  5"), "error");
  EXPECT_EQ(stato().azienda, "");
}

TEST_F(Entry, FailsOnABankOptionWithoutAValue) {
  for (const char* opzione : {"-SC", "-H", "-D", "-S", "-A", "-E", "-N", "-C", "-B", "-M", "-CODINT", "-P", "-P 1"}) {
    banco_.desktop.box.clear();
    EXPECT_EQ(Esegui("-T BANCA /CREDITI " + std::string(opzione)), "error") << opzione;
    ASSERT_EQ(banco_.desktop.box.size(), 1U) << opzione;
    EXPECT_THAT(banco_.desktop.box[0], StartsWith("9\r\n")) << opzione;
  }
  EXPECT_THAT(banco_.host.operazioni, IsEmpty()) << "nessuna lista è stata presa";
}

TEST_F(Entry, StopsTheNextSubcommandsAtAnError) {
  OccupaListe();
  EXPECT_EQ(Esegui("-T BANCA /PRESUNTI /CREDITI -S"), "error");
  EXPECT_THAT(banco_.desktop.box, ElementsAre(StartsWith("9\r\n")));
}

TEST_F(Entry, FailsOnAPresumedOptionWithoutAValue) {
  for (const char* comando : {"-T BANCA /PRESUNTI ", "-T CONSEGNA /PRESUNTI "}) {
    for (const char* opzione :
         {"-SC", "-H", "-D", "-S", "-A", "-N", "-C", "-B", "-DATA", "-SERIEESCLUSE", "-TIPOMOVIMENTI"}) {
      banco_.desktop.box.clear();
      EXPECT_EQ(Esegui(std::string(comando) + opzione), "error") << opzione;
      EXPECT_THAT(banco_.desktop.box, ElementsAre(StartsWith("9\r\n"))) << opzione;
    }
  }
  EXPECT_THAT(banco_.host.operazioni, IsEmpty()) << "nessuna lista è stata presa";
}

TEST_F(Entry, HasOneLockForBothPresumedCommands) {
  banco_.host.file["/tmp/VBPRESUNTI"] = "Utente : T02\r\nieri\r\n";
  EXPECT_EQ(Esegui("-T BANCA /PRESUNTI -H h"), "error");
  EXPECT_EQ(Esegui("-t consegna /presunti -H h"), "error");
  const auto* occupata = "Il movimento è in uso su un altro terminare\rUtente : T02\rieri";
  EXPECT_THAT(banco_.desktop.box, ElementsAre(occupata, occupata));
  EXPECT_THAT(banco_.host.operazioni, ElementsAre("Ricevi /tmp/VBPRESUNTI", "Ricevi /tmp/VBPRESUNTI"));
}

TEST_F(Entry, SaysErrorWithoutADataSource) {
  EXPECT_EQ(Esegui("-T BANCA /CREDITI -D 12 -H h"), "error");
  ASSERT_EQ(banco_.desktop.box.size(), 1U);
  EXPECT_THAT(banco_.desktop.box[0], StartsWith("-2147220954\r\nERRORE: "));
}

TEST_F(Entry, OfTheTestIgnoresSubcommands) {
  EXPECT_EQ(Esegui("/A -T TEST /A /CREDITI -H h"), "error");
  EXPECT_THAT(banco_.desktop.box, ElementsAre(StartsWith("testScrittura\r\n"))) << "una volta sola";
  EXPECT_THAT(banco_.host.operazioni, IsEmpty());
}

TEST_F(Entry, NeitherLocksNorShowsAListOfAnotherKind) {
  const std::string comando = "-H h -D 12";
  EXPECT_EQ(ModuloMain::ComandoBanca(comando, "PRESUNTI"), "closed");
  EXPECT_EQ(ModuloMain::ComandoBanca(comando, "crediti"), "closed");
  EXPECT_EQ(ModuloMain::ComandoBancaPresunti(comando, "CREDITI"), "closed");
  EXPECT_EQ(ModuloMain::ComandoConsegna(comando, "CREDITI"), "closed");
  EXPECT_THAT(banco_.host.operazioni, IsEmpty());
  EXPECT_EQ(banco_.desktop.windows, 0U);
  EXPECT_THAT(banco_.statements, IsEmpty());
  EXPECT_EQ(banco_.desktop.pointers.size(), 8U) << "la clessidra e il suo ritorno, per ogni comando";
}

TEST_F(Entry, RunsPendingEventsWithThePointer) {
  EXPECT_EQ(ModuloMain::ComandoBanca("-H h", "ALTRO"), "closed");
  EXPECT_THAT(banco_.desktop.pointers, ElementsAre(Pointer::Hourglass, Pointer::Standard));
  EXPECT_EQ(banco_.desktop.breaths, 2U);
}

TEST_F(Entry, DoesNotCarryAnErrorIntoTheNextCommand) {
  EXPECT_EQ(Esegui("-T"), "error");
  EXPECT_EQ(Esegui("-T BANCA"), "");
  EXPECT_EQ(banco_.desktop.box.size(), 1U);
}

TEST_F(Entry, ServesSeveralCommandsWithOneObject) {
  LumoScadenze lumo;
  EXPECT_EQ(lumo.EseguiLumoScad("-T"), "error");
  EXPECT_EQ(lumo.EseguiLumoScad("-T FOO"), "");
}

TEST(CommandTable, HasEveryRow) {
  std::vector<std::string> righe;
  for (const Comando& comando : Comandi()) {
    righe.push_back(std::string(comando.tipo) + std::string(comando.sottocomando));
  }
  EXPECT_THAT(righe, ElementsAre("TEST", "EXTRA/A", "SOSPESO/A", "SOSPESO/D", "PRESUNTO/A", "PRESUNTO/D",
                                 "BANCA/CREDITI", "BANCA/DEBITI", "BANCA/PRESUNTI", "CONSEGNA/PRESUNTI"));
}
