#include "common/Stato.hpp"
#include "host/RichiestaScadenze.hpp"
#include "host/Risposte.hpp"
#include "platform/RuntimeError.hpp"
#include "support/Files.hpp"
#include "support/TestBench.hpp"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace lumoscad;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

namespace {

const RigaScadenze Prima = {"C10", "2006   15", "31/03/2006", "28/02/2006", "5/4/06"};
const RigaScadenze Seconda = {"C10", "2006   15", "30/04/2006", "31/03/2006", "10/05/2006"};
const RigaScadenze SenzaNuova = {"C10", "2006   15", "31/05/2006", "30/04/2006", ""};
constexpr const char* Nome = "T0120060305140709";

class DueDatesRequest : public testing::Test {
 protected:
  DueDatesRequest() {
    stato().HostIP = "10.0.0.1";
    stato().azienda = "01";
    stato().tipoComando = "BANCA";
  }
  /// Without a database the reply actions answer "error", which tells that they ran.
  std::string Invia(const std::vector<RigaScadenze>& righe) { return ScriviRichiestaScadenze(righe); }
  [[nodiscard]] std::string FileLocale() const { return banco_.environment.CartellaLocale + "/" + Nome; }
  int Fallisce(const std::vector<RigaScadenze>& righe) {
    try {
      static_cast<void>(Invia(righe));
    } catch (const RuntimeError& errore) {
      return errore.Number();
    }
    return 0;
  }

  test::TestBench banco_;
};

} // namespace

TEST_F(DueDatesRequest, HasLinesOfAccountItemOriginalAndNewDueDateInEightDigits) {
  EXPECT_EQ(Invia({Prima, Seconda}), "error");
  EXPECT_THAT(banco_.host.uploads, ElementsAre("C10,2006   15,20060228,20060405\r\n"
                                               "C10,2006   15,20060331,20060510\r\n"));
}

TEST_F(DueDatesRequest, LeavesOutRowsWithoutANewDueDate) {
  RigaScadenze inBianco = SenzaNuova;
  inBianco.nuovaScadenza = "  ";
  EXPECT_EQ(Invia({SenzaNuova, Prima, inBianco}), "error");
  EXPECT_THAT(banco_.host.uploads, ElementsAre("C10,2006   15,20060228,20060405\r\n"));
}

TEST_F(DueDatesRequest, WithoutRowsLeavesAFileThatHasItsNameAlone) {
  std::ofstream(FileLocale()) << "di un altro";
  EXPECT_EQ(Invia({}), "");
  EXPECT_EQ(test::FileText(FileLocale()), "di un altro");
}

TEST_F(DueDatesRequest, SendsARowWhoseNewDateEqualsThePresentOne) {
  RigaScadenze uguale = Prima;
  uguale.nuovaScadenza = uguale.scadenza;
  EXPECT_EQ(Invia({uguale}), "error");
  EXPECT_THAT(banco_.host.uploads, ElementsAre("C10,2006   15,20060228,20060331\r\n"));
  const ElenchiScadenze elenchi = ComponiRichiestaScadenze({Seconda, uguale}, "");
  EXPECT_THAT(std::vector<std::string>(elenchi.database.begin() + 5, elenchi.database.begin() + 12),
              ElementsAre("1", "20060430", "20060510", "1", "20060331", "20060331", ""));
}

TEST_F(DueDatesRequest, GivesTheReplyActionsAListOfTheirOwn) {
  stato().contoScadenze = "C10";
  stato().partitaScadenze = "2006   15";
  const ElenchiScadenze elenchi = ComponiRichiestaScadenze({SenzaNuova, Prima}, "/tmp/X.dos");
  std::vector<std::string> attesi = {"01", "SCRIVISCADENZE", "C10", "2006   15", "BANCA", "1", "20060331", "20060405"};
  attesi.resize(101);
  EXPECT_EQ(elenchi.database, attesi);
  EXPECT_EQ(elenchi.chiamata[4], "/tmp/X.dos");
  EXPECT_EQ(elenchi.contenuto, "C10,2006   15,20060228,20060405\r\n");
}

TEST_F(DueDatesRequest, HasAHundredAndOneParameters) {
  banco_.environment.CodicePostazione = " T01 ";
  EXPECT_EQ(Invia({Prima}), "error");
  std::vector<std::string> attesi(101);
  attesi[0] = "01";
  attesi[1] = "SCRIVISCADENZE";
  attesi[2] = "BANCA";
  attesi[3] = " T01 ";
  attesi[4] = "/tmp/T0120060305140709.dos";
  EXPECT_THAT(banco_.host.calls, ElementsAre(attesi));
}

TEST_F(DueDatesRequest, HasItsOperationsInThisOrder) {
  EXPECT_EQ(Invia({Prima}), "error");
  const std::string remoto = std::string("/tmp/") + Nome;
  EXPECT_THAT(banco_.host.operazioni,
              ElementsAre("Invia " + remoto, "Rinomina " + remoto + " " + remoto + ".dos", "Esegui VB0001",
                          "Cancella " + remoto, "Cancella " + remoto + ".dos"));
  EXPECT_THAT(banco_.host.host, Each("10.0.0.1"));
  EXPECT_THAT(banco_.desktop.pointers, ElementsAre(Pointer::Hourglass, Pointer::Standard));
  EXPECT_EQ(banco_.desktop.breaths, 2U);
}

TEST_F(DueDatesRequest, LeavesTheLocalFile) {
  EXPECT_EQ(Invia({Prima}), "error");
  EXPECT_EQ(test::FileText(FileLocale()), "C10,2006   15,20060228,20060405\r\n");
}

TEST_F(DueDatesRequest, WithoutNewDueDatesDoesNotContactTheHost) {
  EXPECT_EQ(Invia({}), "");
  EXPECT_EQ(Invia({SenzaNuova, SenzaNuova}), "");
  EXPECT_THAT(banco_.host.operazioni, IsEmpty());
  EXPECT_EQ(stato().rispostaPartita, nullptr);
  EXPECT_TRUE(std::filesystem::exists(FileLocale()));
  EXPECT_EQ(test::FileText(FileLocale()), "");
}

TEST_F(DueDatesRequest, TakesThirtyTwoRows) {
  const std::vector<RigaScadenze> righe(32, Prima);
  EXPECT_EQ(Invia(righe), "error");
  ASSERT_THAT(banco_.host.uploads, SizeIs(1));
  EXPECT_EQ(banco_.host.uploads[0].size(), 32 * std::string("C10,2006   15,20060228,20060405\r\n").size());
}

TEST_F(DueDatesRequest, RaisesAnIndexErrorAtTheThirtyThird) {
  EXPECT_EQ(Fallisce(std::vector<RigaScadenze>(33, Prima)), 9);
  EXPECT_THAT(banco_.host.operazioni, IsEmpty());
}

TEST_F(DueDatesRequest, DoesNotCountBlankRowsTowardsItsLimit) {
  std::vector<RigaScadenze> righe(32, Prima);
  righe.insert(righe.begin(), 50, SenzaNuova);
  EXPECT_EQ(Invia(righe), "error");
  EXPECT_THAT(banco_.host.calls, SizeIs(1));
}

TEST_F(DueDatesRequest, StopsBeforeTheHostAtADateThatCannotBeSplit) {
  RigaScadenze riga = Prima;
  riga.nuovaScadenza = "050406";
  EXPECT_EQ(Fallisce({riga}), 9);
  EXPECT_THAT(banco_.host.operazioni, IsEmpty());
}

TEST_F(DueDatesRequest, WritesAMissingOriginalDueDateAsEightZeros) {
  RigaScadenze riga = Prima;
  riga.scadenzaOrig = "";
  EXPECT_EQ(Invia({riga}), "error");
  EXPECT_THAT(banco_.host.uploads, ElementsAre("C10,2006   15,00000000,20060405\r\n"));
}

TEST_F(DueDatesRequest, WritesACommaInAFieldAsItIs) {
  RigaScadenze riga = Prima;
  riga.conto = "C1,0";
  EXPECT_EQ(Invia({riga}), "error");
  EXPECT_THAT(banco_.host.uploads, ElementsAre("C1,0,2006   15,20060228,20060405\r\n"));
}

TEST_F(DueDatesRequest, StopsBeforeTheHostAtALineBreakInAField) {
  RigaScadenze riga = Prima;
  riga.conto = "C1\r\n0";
  EXPECT_EQ(Fallisce({riga}), 13);
  EXPECT_THAT(banco_.host.operazioni, IsEmpty());
}

TEST_F(DueDatesRequest, GivesTheReplyToANewItemAndTheActionsToANewMessage) {
  banco_.host.reply = "<R><CONTO>C10</CONTO><ERRORE>no</ERRORE><SCADENZE><S><IMPORTO>5</IMPORTO></S></SCADENZE></R>";
  EXPECT_EQ(Invia({Prima}), "error");
  const auto risposta = stato().risposta;
  const auto partita = stato().rispostaPartita;
  ASSERT_NE(risposta, nullptr);
  ASSERT_NE(partita, nullptr);
  EXPECT_EQ(partita->Conto, "C10");
  ASSERT_THAT(partita->Scadenze, SizeIs(1));
  EXPECT_EQ(partita->Scadenze[0]->Importo, "5");
  EXPECT_THAT(risposta->Errore, StartsWith("ERRORE: ")) << "l'errore delle azioni, non quello della risposta";
  EXPECT_EQ(Invia({Prima}), "error");
  EXPECT_NE(stato().risposta, risposta);
  EXPECT_NE(stato().rispostaPartita, partita);
}

TEST_F(DueDatesRequest, LetsAFaultRiseAndLeavesTheFilesOnTheHost) {
  banco_.host.fault = [](const std::string& operazione) {
    if (operazione.rfind("Esegui", 0) == 0) {
      throw RuntimeError(errors::FileAccess, "Guasto");
    }
  };
  EXPECT_EQ(Fallisce({Prima}), 75);
  EXPECT_THAT(banco_.host.file, ElementsAre(testing::Key("/tmp/" + std::string(Nome) + ".dos")));
  EXPECT_TRUE(std::filesystem::exists(FileLocale()));
}

TEST_F(DueDatesRequest, SaysAfterAFailedCleanUpThatTheHostAcceptedThoughTheDatabaseDidNot) {
  banco_.host.fault = [](const std::string& operazione) {
    if (operazione.starts_with("Cancella")) {
      throw RuntimeError(errors::FileAccess, "Guasto.");
    }
  };
  try {
    static_cast<void>(Invia({Prima}));
    FAIL() << "no failure";
  } catch (const RuntimeError& errore) {
    EXPECT_EQ(errore.Description(), "Guasto.");
  }
  EXPECT_THAT(stato().andamento.Frase(), StartsWith("L'host ha già accettato la modifica; la base dati non ne ha "
                                                    "registrato nulla. Da allineare: partita "));
  EXPECT_THAT(stato().risposta->Errore, StartsWith("ERRORE: ")) << "the database was not changed either";
}
