#include "common/MsgAnnulla.hpp"
#include "common/Stato.hpp"
#include "host/FormAspetta.hpp"
#include "platform/Errore.hpp"
#include "support/Prova.hpp"

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

  prova::Banco banco_;
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
  banco_.host.risposta = "<R><ERRORE> </ERRORE></R>";
  EXPECT_EQ(Visualizza(), "error");
  EXPECT_THAT(stato().andamento.Frase(), testing::StartsWith("L'host ha già accettato la modifica; la base dati non"));
}

TEST_F(WaitForTheHost, HandsTheProgramItsParametersAsTheyAre) {
  EXPECT_EQ(Visualizza(), "");
  EXPECT_THAT(banco_.host.operazioni, ElementsAre("Esegui PROGRAMMA"));
  EXPECT_THAT(banco_.host.chiamate, ElementsAre(ElementsAre("a", "", "b ")));
}

TEST_F(WaitForTheHost, DoesItsWorkInsideTheWindowAfterTwoHundredMilliseconds) {
  std::size_t attese = 0;
  banco_.host.guasto = [&](const std::string&) { attese = banco_.desktop.attese.size(); };
  EXPECT_EQ(Visualizza(), "");
  EXPECT_EQ(attese, 1U);
  EXPECT_THAT(banco_.desktop.attese, ElementsAre("Attendere, sto variando il movimento"));
  EXPECT_THAT(banco_.desktop.intervalli, ElementsAre(200));
}

TEST_F(WaitForTheHost, GivesTheReplyToTheCallersObject) {
  banco_.host.risposta = "<R><MESSAGGIO>fatto</MESSAGGIO></R>";
  EXPECT_EQ(Visualizza(), "");
  EXPECT_EQ(risposta_.Messaggio, "fatto");
  EXPECT_EQ(risposta_.Errore, "");
}

TEST_F(WaitForTheHost, KeepsAnEnormousMessageWhole) {
  const std::string lungo(1U << 20U, 'x');
  banco_.host.risposta = "<R><MESSAGGIO>" + lungo + "</MESSAGGIO></R>";
  EXPECT_EQ(Visualizza(), "");
  EXPECT_EQ(risposta_.Messaggio, lungo);
}

TEST_F(WaitForTheHost, FailsWithoutABoxOnARefusal) {
  banco_.host.risposta = "<R><ERRORE>no</ERRORE></R>";
  EXPECT_EQ(Visualizza(), "error");
  EXPECT_THAT(banco_.desktop.box, IsEmpty()) << "mostrare spetta al chiamante";
}

TEST_F(WaitForTheHost, FailsOnAnErrorOfASingleBlank) {
  banco_.host.risposta = "<R><ERRORE> </ERRORE></R>";
  EXPECT_EQ(Visualizza(), "error");
  EXPECT_EQ(risposta_.Errore, " ");
}

TEST_F(WaitForTheHost, HasTheResultOfTheActions) {
  stato().ComandoCorrente = "-DB2SOURCE CHE-NON-ESISTE";
  EXPECT_EQ(Visualizza({"01", "SOSPESOCREA", "C", "P", ""}), "error");
  EXPECT_THAT(risposta_.Errore, testing::StartsWith("ERRORE: "));
}

TEST_F(WaitForTheHost, HandsAFaultToTheCallerAndDoesNotBeginTheActions) {
  banco_.host.guasto = [](const std::string&) { throw ErroreRuntime(75, "Guasto"); };
  try {
    static_cast<void>(Visualizza({"01", "SOSPESOCREA", "C", "P", ""}));
    FAIL() << "nessun errore";
  } catch (const ErroreRuntime& errore) {
    EXPECT_EQ(errore.Numero(), 75);
  }
  EXPECT_EQ(risposta_.Errore, "");
  EXPECT_THAT(banco_.istruzioni, IsEmpty());
}

TEST_F(WaitForTheHost, TakesAWindowThatEndsWithoutItsWorkForAnErrorAndNotForAYes) {
  banco_.desktop.attesaInterrotta = true;
  try {
    static_cast<void>(Visualizza());
    FAIL() << "nessun errore";
  } catch (const ErroreRuntime& errore) {
    EXPECT_THAT(errore.Testo(), testing::HasSubstr("L'host non è stato interpellato"));
  }
  EXPECT_THAT(banco_.host.operazioni, IsEmpty());
}

TEST_F(WaitForTheHost, ForgetsTheLastResultWhenItsWindowIsUsedAgain) {
  FormAspetta finestra;
  banco_.host.risposta = "<R><ERRORE>no</ERRORE></R>";
  EXPECT_EQ(finestra.Visualizza("h", "P", {}, {"", "ALTRO"}, risposta_), "error");
  banco_.host.risposta = "<R/>";
  MsgAnnulla seconda;
  EXPECT_EQ(finestra.Visualizza("h", "P", {}, {"", "ALTRO"}, seconda), "");
}
