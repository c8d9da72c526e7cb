#include "common/MsgAnnulla.hpp"
#include "common/Stato.hpp"
#include "host/FormAspetta.hpp"
#include "platform/RuntimeError.hpp"
#include "support/TestBench.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace lumoscad;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class WaitForTheHost : public testing::Test {
 protected:
  /// An action without a database side, unless another is given.
  std::string Visualizza(const std::vector<std::string>& parametriDB2 = {"01", "ALTRO"}) {
    return FormAspetta().Visualizza("copia", "PROGRAMMA", {"a", "", "b "}, parametriDB2, risposta_);
  }

  test::TestBench banco_;
  MsgAnnulla risposta_;
};

} // namespace

TEST_F(WaitForTheHost, GoesByTheCommandsAddressAndNotByTheWindowsCopy) {
  stato().HostIP = "10.0.0.7";
  EXPECT_EQ(Visualizza(), "");
  EXPECT_THAT(banco_.host.host, ElementsAre("10.0.0.7"));
}

TEST_F(WaitForTheHost, KeepsACopyOfWhatTheWindowWasGiven) {
  stato().HostIP = "10.0.0.7";
  FormAspetta finestra;
  EXPECT_EQ(finestra.Visualizza("copia", "PROGRAMMA", {"a", "", "b "}, {"01", "ALTRO"}, risposta_), "");
  EXPECT_EQ(finestra.HostIP, "copia");
  EXPECT_EQ(finestra.NomeProg, "PROGRAMMA");
  EXPECT_THAT(finestra.Parametri, ElementsAre("a", "", "b "));
  EXPECT_THAT(finestra.ParametriProcedureDB2, ElementsAre("01", "ALTRO"));
  EXPECT_EQ(finestra.MsgAnnulla, &risposta_);
}

TEST_F(WaitForTheHost, TakesARefusalOfBlanksForAnAcceptedChange) {
  banco_.host.reply = "<R><ERRORE> </ERRORE></R>";
  EXPECT_EQ(Visualizza(), "error");
  EXPECT_THAT(stato().andamento.Frase(), testing::StartsWith("L'host ha già accettato la modifica; la base dati non"));
}

TEST_F(WaitForTheHost, HandsTheProgramItsParametersAsTheyAre) {
  EXPECT_EQ(Visualizza(), "");
  EXPECT_THAT(banco_.host.operazioni, ElementsAre("Esegui PROGRAMMA"));
  EXPECT_THAT(banco_.host.calls, ElementsAre(ElementsAre("a", "", "b ")));
}

TEST_F(WaitForTheHost, DoesItsWorkInsideTheWindowAfterTwoHundredMilliseconds) {
  std::size_t attese = 0;
  banco_.host.fault = [&](const std::string&) { attese = banco_.desktop.waits.size(); };
  EXPECT_EQ(Visualizza(), "");
  EXPECT_EQ(attese, 1U);
  EXPECT_THAT(banco_.desktop.waits, ElementsAre("Attendere, sto variando il movimento"));
  EXPECT_THAT(banco_.desktop.intervals, ElementsAre(200));
}

TEST_F(WaitForTheHost, GivesTheReplyToTheCallersObject) {
  banco_.host.reply = "<R><MESSAGGIO>fatto</MESSAGGIO></R>";
  EXPECT_EQ(Visualizza(), "");
  EXPECT_EQ(risposta_.Messaggio, "fatto");
  EXPECT_EQ(risposta_.Errore, "");
}

TEST_F(WaitForTheHost, KeepsAnEnormousMessageWhole) {
  const std::string lungo(1U << 20U, 'x');
  banco_.host.reply = "<R><MESSAGGIO>" + lungo + "</MESSAGGIO></R>";
  EXPECT_EQ(Visualizza(), "");
  EXPECT_EQ(risposta_.Messaggio, lungo);
}

TEST_F(WaitForTheHost, FailsWithoutABoxOnARefusal) {
  banco_.host.reply = "<R><ERRORE>no</ERRORE></R>";
  EXPECT_EQ(Visualizza(), "error");
  EXPECT_THAT(banco_.desktop.box, IsEmpty()) << "mostrare spetta al chiamante";
}

TEST_F(WaitForTheHost, FailsOnAnErrorOfASingleBlank) {
  banco_.host.reply = "<R><ERRORE> </ERRORE></R>";
  EXPECT_EQ(Visualizza(), "error");
  EXPECT_EQ(risposta_.Errore, " ");
}

TEST_F(WaitForTheHost, HasTheResultOfTheActions) {
  stato().ComandoCorrente = "-DB2SOURCE CHE-NON-ESISTE";
  EXPECT_EQ(Visualizza({"01", "SOSPESOCREA", "C", "P", ""}), "error");
  EXPECT_THAT(risposta_.Errore, testing::StartsWith("ERRORE: "));
}

TEST_F(WaitForTheHost, HandsAFaultToTheCallerAndDoesNotBeginTheActions) {
  banco_.host.fault = [](const std::string&) { throw RuntimeError(75, "Guasto"); };
  try {
    static_cast<void>(Visualizza({"01", "SOSPESOCREA", "C", "P", ""}));
    FAIL() << "nessun errore";
  } catch (const RuntimeError& errore) {
    EXPECT_EQ(errore.Number(), 75);
  }
  EXPECT_EQ(risposta_.Errore, "");
  EXPECT_THAT(banco_.statements, IsEmpty());
}

TEST_F(WaitForTheHost, TakesAWindowThatEndsWithoutItsWorkForAnErrorAndNotForAYes) {
  banco_.desktop.waitInterrupted = true;
  try {
    static_cast<void>(Visualizza());
    FAIL() << "nessun errore";
  } catch (const RuntimeError& errore) {
    EXPECT_THAT(errore.Text(), testing::HasSubstr("L'host non è stato interpellato"));
  }
  EXPECT_THAT(banco_.host.operazioni, IsEmpty());
}

TEST_F(WaitForTheHost, ForgetsTheLastResultWhenItsWindowIsUsedAgain) {
  FormAspetta finestra;
  banco_.host.reply = "<R><ERRORE>no</ERRORE></R>";
  EXPECT_EQ(finestra.Visualizza("h", "P", {}, {"", "ALTRO"}, risposta_), "error");
  banco_.host.reply = "<R/>";
  MsgAnnulla seconda;
  EXPECT_EQ(finestra.Visualizza("h", "P", {}, {"", "ALTRO"}, seconda), "");
}
