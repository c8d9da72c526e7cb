#include "common/Stato.hpp"
#include "database/procedureLumoDB2.hpp"
#include "handlers/ModuloMain.hpp"
#include "lumoscad/LumoScadenze.hpp"
#include "platform/RuntimeError.hpp"
#include "support/TestBench.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace lumoscad;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

namespace {

constexpr const char* Rifiuto = "<R><ERRORE>Conto bloccato</ERRORE></R>";

/// The commands that send parameters only. The host refuses, so that no database is needed; what a database does is
/// tested with one.
class WithoutAScreen : public testing::Test {
 protected:
  WithoutAScreen() { banco_.host.reply = Rifiuto; }

  std::string Esegui(const std::string& comando) { return LumoScadenze().EseguiLumoScad(comando); }
  /// The parameters of the one call that `comando` makes.
  std::vector<std::string> Chiamata(const std::string& comando) {
    banco_.host.calls.clear();
    EXPECT_EQ(Esegui(comando), "error");
    EXPECT_THAT(banco_.host.calls, SizeIs(1)) << comando;
    return banco_.host.calls.empty() ? std::vector<std::string>() : banco_.host.calls.front();
  }
  void NienteInviato() const {
    EXPECT_THAT(banco_.host.operazioni, IsEmpty());
    EXPECT_THAT(banco_.desktop.waits, IsEmpty());
  }

  test::TestBench banco_;
};

} // namespace

TEST_F(WithoutAScreen, SuspendingSendsSixParametersWithTheWorkstation) {
  EXPECT_THAT(Chiamata("-T SOSPESO /A -H 10.0.0.1 -D 01 -C C10 -P AB 123"),
              ElementsAre("01", "SOSPESOCREA", "C10", "AB123", "T01", ""));
  EXPECT_THAT(banco_.host.host, ElementsAre("10.0.0.1"));
  EXPECT_THAT(banco_.host.operazioni, ElementsAre("Esegui VB0001")) << "nessun file viaggia";
}

TEST_F(WithoutAScreen, ReactivatingSendsFiveParametersWithoutTheWorkstation) {
  EXPECT_THAT(Chiamata("-T SOSPESO /D -H 10.0.0.1 -D 01 -C C10 -P AB 123"),
              ElementsAre("01", "SOSPESOCANCELLA", "C10", "AB123", ""));
}

TEST_F(WithoutAScreen, BothPresumedCommandsSendSevenParametersWithoutTheFinancialYear) {
  EXPECT_THAT(Chiamata("-T PRESUNTO /A -H h -D 01 -S OC -A 06 -N 123 -E 2006"),
              ElementsAre("01", "PRESUNTOCREA", "OC", "06", "123", "T01", ""));
  EXPECT_THAT(Chiamata("-T PRESUNTO /D -H h -D 01 -S OC -A 06 -N 123 -E 2006"),
              ElementsAre("01", "PRESUNTOCANCELLA", "OC", "06", "123", "T01", ""));
}

TEST_F(WithoutAScreen, TheExtraSendsSixParameters) {
  EXPECT_THAT(Chiamata("-T EXTRA /A -D 01 -H 10.1.1.1 -S A -E 2006 -N 15"),
              ElementsAre("01", "EXTRADEL", "A", "2006", "15", ""));
  EXPECT_THAT(banco_.host.host, ElementsAre("10.1.1.1"));
}

TEST_F(WithoutAScreen, TheWorkstationGoesAsWritten) {
  banco_.environment.CodicePostazione = " T 9 ";
  EXPECT_EQ(Chiamata("-T SOSPESO /A -C C -P A 1")[4], " T 9 ");
  EXPECT_EQ(Chiamata("-T PRESUNTO /A -S A -A 06 -N 1")[5], " T 9 ");
}

TEST_F(WithoutAScreen, TheItemGoesCompactWhateverItsBlanks) {
  EXPECT_EQ(Chiamata("-T SOSPESO /A -C C -P AB   123")[3], "AB123");
  EXPECT_EQ(Chiamata("-T SOSPESO /D -C C -P AB   123")[3], "AB123");
  EXPECT_EQ(Chiamata("-T SOSPESO /A -C C -P AB 123 -P CD  4")[3], "CD4");
}

TEST_F(WithoutAScreen, ADemonstrationShowsItsMessageAndSendsNothing) {
  EXPECT_EQ(Esegui("-T SOSPESO /A -H h -D 01 -C C10 -P A 1 -DEMO"), "");
  EXPECT_EQ(Esegui("-T SOSPESO /D -H h -D 01 -C C10 -P A 1 -demo"), "");
  EXPECT_EQ(Esegui("-T EXTRA /A -D 01 -H 10.1.1.1 -S A -E 2006 -N 15 -DEMO"), "");
  EXPECT_EQ(Esegui("-T PRESUNTO /A -H h -D 01 -S A -A 06 -N 1 -DEMO"), "");
  EXPECT_EQ(Esegui("-T PRESUNTO /D -H h -D 01 -S A -A 06 -N 1 -DEMO"), "");
  EXPECT_THAT(banco_.desktop.box, ElementsAre("La partita è stata sospesa", "La partita è stata riattivata",
                                              "Il movimento è stato annullato", "Il documento è stato sospeso ",
                                              "Il documento è stato riattivato"));
  EXPECT_THAT(banco_.desktop.titles, Each("LumoScad"));
  NienteInviato();
}

TEST_F(WithoutAScreen, TheDemonstrationOfSuspensionAndExtraGoesWithItsCommand) {
  EXPECT_EQ(Esegui("-T SOSPESO /A -C C10 -P A 1 -DEMO"), "");
  EXPECT_EQ(Esegui("-T EXTRA /A -DEMO"), "");
  EXPECT_THAT(Chiamata("-T SOSPESO /A -C C10 -P A 1"), SizeIs(6));
  EXPECT_THAT(Chiamata("-T SOSPESO /D -C C10 -P A 1"), SizeIs(5));
  EXPECT_THAT(Chiamata("-T EXTRA /A -S A"), SizeIs(6));
  EXPECT_THAT(Chiamata("-T PRESUNTO /A -S A"), SizeIs(7));
}

TEST_F(WithoutAScreen, TheDemonstrationOfAPresumedDocumentStaysForThoseThatFollow) {
  EXPECT_EQ(Esegui("-T PRESUNTO /D -S A -A 06 -N 1 -DEMO"), "");
  EXPECT_EQ(Esegui("-T PRESUNTO /A -S A -A 06 -N 1"), "");
  EXPECT_EQ(Esegui("-T PRESUNTO /D -S A -A 06 -N 1"), "");
  EXPECT_THAT(banco_.desktop.box, ElementsAre("Il documento è stato riattivato", "Il documento è stato sospeso ",
                                              "Il documento è stato riattivato"));
  NienteInviato();
  EXPECT_THAT(Chiamata("-T SOSPESO /A -C C10 -P A 1"), SizeIs(6));
  EXPECT_THAT(Chiamata("-T EXTRA /A -S A"), SizeIs(6));
}

TEST_F(WithoutAScreen, ThePresumedDemonstrationCountsAlsoWhereItsLineFailsLater) {
  EXPECT_EQ(Esegui("-T PRESUNTO /A -DEMO -S A -N"), "error");
  EXPECT_THAT(banco_.desktop.box, ElementsAre(StartsWith("9\r\n")));
  EXPECT_EQ(Esegui("-T PRESUNTO /D -S A -A 06 -N 1"), "");
  EXPECT_THAT(banco_.desktop.box, ElementsAre(StartsWith("9\r\n"), "Il documento è stato riattivato"));
  NienteInviato();
}

TEST_F(WithoutAScreen, TheTypeOfASuspensionIsKeptInUpperCaseAlsoWhereItsLineFailsLater) {
  EXPECT_EQ(Esegui("-t sospeso /a -C"), "error");
  EXPECT_EQ(stato().tipoComando, "SOSPESO");
  EXPECT_EQ(Esegui("-t extra /a -N"), "error");
  EXPECT_EQ(stato().tipoComando, "extra") << "the extra command keeps it as typed";
  NienteInviato();
}

TEST_F(WithoutAScreen, TheRequestsOfAnOpenItemTakeTheirValuesAsArguments) {
  EXPECT_EQ(ModuloMain::RichiestaSospensione("07", "10.0.0.9", "C77", "AB9", "AB   9"), "error");
  EXPECT_EQ(ModuloMain::RichiestaRiattivazione("07", "10.0.0.9", "C77", "AB9", "AB   9"), "error");
  EXPECT_THAT(banco_.host.calls, ElementsAre(ElementsAre("07", "SOSPESOCREA", "C77", "AB9", "T01", ""),
                                             ElementsAre("07", "SOSPESOCANCELLA", "C77", "AB9", "")));
}

TEST_F(WithoutAScreen, ADemonstrationReadsTheOptionsAllTheSame) {
  EXPECT_EQ(Esegui("-T PRESUNTO /A -D 07 -H altro -DEMO"), "");
  EXPECT_EQ(Esegui("-T EXTRA /A -S B -DEMO"), "");
  EXPECT_EQ(stato().azienda, "07");
  EXPECT_EQ(stato().HostIP, "altro");
  EXPECT_EQ(stato().Serie, "B");
}

TEST_F(WithoutAScreen, TheTypeStaysUpperCaseFromTheSuspensionAndAsWrittenFromTheExtra) {
  Chiamata("-t sospeso /a -c C -p A 1");
  EXPECT_EQ(stato().tipoComando, "SOSPESO");
  Chiamata("-t extra /a -s A");
  EXPECT_EQ(stato().tipoComando, "extra");
  Chiamata("-t Sospeso /d -c C -p A 1");
  EXPECT_EQ(stato().tipoComando, "SOSPESO");
  Chiamata("-t presunto /a -s A");
  EXPECT_EQ(stato().tipoComando, "SOSPESO") << "il presunto non tocca il tipo";
}

TEST_F(WithoutAScreen, TheModulesValuesStayForTheNextCommands) {
  Chiamata("-T EXTRA /A -D 01 -H 10.1.1.1 -S A -E 2006 -N 15");
  EXPECT_THAT(Chiamata("-T EXTRA /A -N 16"), ElementsAre("01", "EXTRADEL", "A", "2006", "16", ""));
  EXPECT_THAT(Chiamata("-T SOSPESO /D -C C -P A 1"), ElementsAre("01", "SOSPESOCANCELLA", "C", "A1", ""));
  EXPECT_EQ(banco_.host.host.back(), "10.1.1.1");
}

TEST_F(WithoutAScreen, TheValuesAreEmptyOnceLoaded) {
  EXPECT_THAT(Chiamata("-T EXTRA /A"), ElementsAre("", "EXTRADEL", "", "", "", ""));
}

TEST_F(WithoutAScreen, AccountItemAndDocumentDoNotStay) {
  Chiamata("-T SOSPESO /A -D 01 -C C10 -P AB 123");
  EXPECT_THAT(Chiamata("-T SOSPESO /A"), ElementsAre("01", "SOSPESOCREA", "", "", "T01", ""));
  Chiamata("-T PRESUNTO /A -S OC -A 06 -N 123");
  EXPECT_THAT(Chiamata("-T PRESUNTO /A"), ElementsAre("01", "PRESUNTOCREA", "", "", "", "T01", ""));
}

TEST_F(WithoutAScreen, SeriesAndNumberOfThePresumedDocumentAreNotThoseOfTheExtra) {
  Chiamata("-T EXTRA /A -S A -E 2006 -N 15");
  Chiamata("-T PRESUNTO /A -S OC -A 06 -N 123 -E 2005");
  EXPECT_THAT(Chiamata("-T EXTRA /A"), ElementsAre("", "EXTRADEL", "A", "2006", "15", ""));
}

TEST_F(WithoutAScreen, AValueIsTakenAsAnOptionToo) {
  EXPECT_THAT(Chiamata("-T EXTRA /A -S -E -N 3"), ElementsAre("", "EXTRADEL", "-E", "-N", "3", ""));
}

TEST_F(WithoutAScreen, AnOptionWithoutAValueIsAnErrorAndSendsNothing) {
  for (const char* comando : {"-T EXTRA /A -S", "-T SOSPESO /A -C", "-T SOSPESO /A -P", "-T SOSPESO /D -P A",
                              "-T PRESUNTO /D -A", "-T PRESUNTO /A -E"}) {
    banco_.desktop.box.clear();
    EXPECT_EQ(Esegui(comando), "error") << comando;
    EXPECT_THAT(banco_.desktop.box, ElementsAre(StartsWith("9\r\n"))) << comando;
  }
  NienteInviato();
}

TEST_F(WithoutAScreen, ASubcommandWrittenTwiceSendsTwoRequests) {
  EXPECT_EQ(Esegui("-T SOSPESO /A /D -D 01 -C C -P A 1"), "error");
  ASSERT_THAT(banco_.host.calls, SizeIs(2));
  EXPECT_EQ(banco_.host.calls[0][1], "SOSPESOCREA");
  EXPECT_EQ(banco_.host.calls[1][1], "SOSPESOCANCELLA");
}

TEST_F(WithoutAScreen, EachRequestShowsTheWaitAndHasAReplyOfItsOwn) {
  std::vector<std::shared_ptr<MsgAnnulla>> risposte;
  for (const char* comando : {"-T SOSPESO /A", "-T SOSPESO /D", "-T PRESUNTO /A", "-T PRESUNTO /D", "-T EXTRA /A"}) {
    EXPECT_EQ(Esegui(comando), "error");
    EXPECT_THAT(risposte, testing::Not(testing::Contains(stato().risposta))) << comando;
    ASSERT_NE(stato().risposta, nullptr);
    EXPECT_EQ(stato().risposta->Errore, "Conto bloccato");
    risposte.push_back(stato().risposta);
  }
  EXPECT_THAT(banco_.desktop.waits, testing::AllOf(SizeIs(5), Each("Attendere, sto variando il movimento")));
  EXPECT_THAT(banco_.desktop.intervals, Each(200));
}

TEST_F(WithoutAScreen, ARefusalIsShownAndIsAnError) {
  EXPECT_EQ(Esegui("-T SOSPESO /A -C BLOCCATO -P A 1"), "error");
  EXPECT_THAT(banco_.desktop.box, ElementsAre("Conto bloccato"));
  EXPECT_THAT(banco_.statements, IsEmpty()) << "la base dati non si tocca";
}

TEST_F(WithoutAScreen, OfTwoTextsTheErrorIsShownBeforeTheMessage) {
  banco_.host.reply = "<R><MESSAGGIO>nota</MESSAGGIO><ERRORE>no</ERRORE></R>";
  for (const char* comando : {"-T SOSPESO /A", "-T SOSPESO /D", "-T PRESUNTO /A", "-T PRESUNTO /D", "-T EXTRA /A"}) {
    banco_.desktop.box.clear();
    EXPECT_EQ(Esegui(comando), "error") << comando;
    EXPECT_THAT(banco_.desktop.box, ElementsAre("no", "nota")) << comando;
  }
}

TEST_F(WithoutAScreen, AMessageOfBlanksAloneIsNotShown) {
  banco_.host.reply = "<R><MESSAGGIO>  </MESSAGGIO><ERRORE>no</ERRORE></R>";
  EXPECT_EQ(Esegui("-T EXTRA /A"), "error");
  EXPECT_THAT(banco_.desktop.box, ElementsAre("no"));
}

TEST_F(WithoutAScreen, WithABrokenLinkNumberAndTextAreTold) {
  banco_.host.fault = [](const std::string&) { throw RuntimeError(-2147024891, "Host non raggiungibile"); };
  for (const char* comando : {"-T SOSPESO /A", "-T SOSPESO /D", "-T PRESUNTO /A", "-T PRESUNTO /D", "-T EXTRA /A"}) {
    banco_.desktop.box.clear();
    EXPECT_EQ(Esegui(comando), "error") << comando;
    EXPECT_THAT(banco_.desktop.box, ElementsAre("-2147024891\r\nHost non raggiungibile")) << comando;
  }
  EXPECT_THAT(banco_.statements, IsEmpty());
}

TEST_F(WithoutAScreen, WithAnUnreadableReplyTheCommandSaysError) {
  banco_.host.reply = "<R><ERRORE>";
  EXPECT_EQ(Esegui("-T EXTRA /A"), "error");
  EXPECT_THAT(banco_.desktop.box, SizeIs(1));
  EXPECT_THAT(banco_.statements, IsEmpty());
}

TEST_F(WithoutAScreen, AcceptedByTheHostButWithoutADatabaseTheReasonIsTold) {
  banco_.host.reply = "<R><MESSAGGIO>Fatto</MESSAGGIO></R>";
  EXPECT_EQ(Esegui("-T SOSPESO /A -D 01 -C C10 -P A 1 -DB2SOURCE CHE-NON-ESISTE"), "error");
  EXPECT_THAT(banco_.desktop.box, ElementsAre(testing::AllOf(StartsWith("ERRORE: "), HasSubstr("\r\n")), "Fatto"));
}

TEST(NameOfARequest, IsTheItemForSuspensionsAndDueDatesAndTheDocumentOtherwise) {
  for (const char* azione : {"SOSPESOCREA", "SOSPESOCANCELLA", "SCRIVISCADENZE"}) {
    EXPECT_EQ(procedureLumoDB2::NomeOggetto({"01", azione, "C10", "2006   15", ""}), "partita 2006   15 del conto C10")
        << azione;
  }
  for (const char* azione : {"PRESUNTOCREA", "PRESUNTOCANCELLA", "EXTRADEL", "EXTRASCRIVISCAD"}) {
    EXPECT_EQ(procedureLumoDB2::NomeOggetto({"01", azione, "A", "2006", "15"}), "documento A/2006/15 dell'azienda 01")
        << azione;
  }
}
