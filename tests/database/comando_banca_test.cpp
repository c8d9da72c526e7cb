#include "common/Nota.hpp"
#include "common/Stato.hpp"
#include "lumoscad/LumoScadenze.hpp"
#include "platform/RuntimeError.hpp"
#include "platform/ado/Ado.hpp"
#include "screens/frmLumoScadenzeBanche.hpp"
#include "support/Files.hpp"
#include "support/OdbcSqlite.hpp"
#include "support/Paths.hpp"
#include "support/TestBench.hpp"

#include <algorithm>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace lumoscad;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Key;
using testing::Not;
using testing::StartsWith;

namespace {

constexpr const char* Dati =
    "INSERT INTO AZIENDELINEE VALUES (1, '12', ' ', ' ');"
    "INSERT INTO CONTOCONTABILE VALUES (10, 'C10', 'Alfa Mobili', '01', 'INT10', 'N');"
    "INSERT INTO CONTOCONTABILE VALUES (11, 'C11', 'Beta Tessuti', '01', NULL, 'N');"
    "INSERT INTO CONTOCONTABILE VALUES (20, 'F20', 'Gamma Legnami', '03', NULL, 'N');"
    "INSERT INTO CONTOCONTABILE VALUES (30, 'B1', 'Banca Prima', '06', NULL, 'N');"
    "INSERT INTO CONTOCONTABILE VALUES (31, 'B2', 'Banca Seconda', '06', NULL, 'N');"
    "INSERT INTO PARTITACONTABILE VALUES (100, 10, '2006 15', 'A');"
    "INSERT INTO PARTITACONTABILE VALUES (110, 11, '2006 16', 'A');"
    "INSERT INTO PARTITACONTABILE VALUES (120, 11, '2006 17', 'A');"
    "INSERT INTO PARTITACONTABILE VALUES (200, 20, '2006 90', 'A');"
    "INSERT INTO MOVIMENTOCONTABILE VALUES (1000, 1, 'N', 'A', '1', '2006', '01');"
    "INSERT INTO EVENTOCONTABILE VALUES (1, 1, 1000, 100, 10, 'C', 'N', '2006-03-31', '2006-03-31', 1, 30, 100.10,"
    " NULL, NULL, NULL, NULL, 'N');"
    "INSERT INTO EVENTOCONTABILE VALUES (2, 1, 1000, 100, 10, 'C', 'N', '2006-04-30', '2006-04-30', 2, 30, 200,"
    " NULL, NULL, NULL, NULL, 'N');"
    "INSERT INTO EVENTOCONTABILE VALUES (3, 1, 1000, 110, 11, 'C', 'N', '2006-05-31', NULL, 1, 30, 300.50,"
    " NULL, NULL, NULL, NULL, 'N');"
    "INSERT INTO EVENTOCONTABILE VALUES (4, 1, 1000, 120, 11, 'C', 'N', '2006-06-30', NULL, 1, NULL, 400,"
    " NULL, NULL, NULL, NULL, 'N');"
    "INSERT INTO EVENTOCONTABILE VALUES (5, 1, 1000, 200, 20, 'C', 'N', '2006-03-31', '2006-03-31', 1, 30, 500,"
    " NULL, NULL, NULL, NULL, 'N')";

/// The due dates and banks of the five instalments as the data put them there.
const std::vector<std::string> Prima = {"1 2006-03-31 30", "2 2006-04-30 30", "3 2006-05-31 30", "4 2006-06-30 NULL",
                                        "5 2006-03-31 30"};

/// Clicks the cell in `colonna` of the row whose due date is `scadenza`.
void Clicca(ListWindow& finestra, const std::string& scadenza, int colonna) {
  int x = 1;
  for (int i = 0; i < colonna; ++i) {
    x += finestra.Description().columns[static_cast<std::size_t>(i)].width;
  }
  for (std::size_t riga = 0; riga < finestra.RowCount(); ++riga) {
    if (finestra.CellText(riga, frmLumoScadenzeBanche::Scadenza) == scadenza) {
      finestra.Seleziona(static_cast<std::ptrdiff_t>(riga));
      finestra.LVScadenze_MouseDown(x, 1);
      finestra.LVScadenze_Click(0);
      return;
    }
  }
  ADD_FAILURE() << "nessuna riga scade il " << scadenza;
}

void DaiScadenza(ListWindow& finestra, const std::string& scadenza, const std::string& nuova) {
  Clicca(finestra, scadenza, frmLumoScadenzeBanche::NuovaScadenza);
  finestra.TextScad_Change(nuova);
  finestra.TextScad_KeyPress(13);
}

void DaiBanca(ListWindow& finestra, const std::string& scadenza, const std::string& banca) {
  Clicca(finestra, scadenza, frmLumoScadenzeBanche::NuovaBanca);
  const auto voce = std::find(finestra.Description().cellBanks.begin(), finestra.Description().cellBanks.end(), banca);
  ASSERT_NE(voce, finestra.Description().cellBanks.end()) << banca;
  finestra.cmbBanche2_Click(static_cast<int>(voce - finestra.Description().cellBanks.begin()));
  finestra.cmbBanche2_LostFocus();
}

class BankCommand : public testing::Test {
 protected:
  BankCommand() : db_(test::FileText(test::SourcePath("demo/schema.sql")) + ";" + Dati) {}

  std::string Esegui(const std::string& opzioni, const std::string& azienda = "12") {
    return LumoScadenze().EseguiLumoScad("-T BANCA " + opzioni + " -H 10.0.0.1 -D " + azienda + " -DB2SOURCE " +
                                         db_.Source() + " -DB2USER u -DB2PASS p");
  }
  void Recita(test::ScriptedDesktop::Script copione) { banco_.desktop.scripts.push_back(std::move(copione)); }
  void RecitaCambio() {
    Recita([](ListWindow& finestra) {
      DaiScadenza(finestra, "31/03/2006", "050406");
      finestra.PictureOk_Click();
    });
  }
  void EsegueSql(const std::string& sql) const {
    const ReplacedServices silenzio(Services{});
    ado::Connection connection;
    connection.ConnectionString = db_.ConnectionText();
    connection.Open();
    connection.Execute(sql);
  }
  /// Key, due date and bank of every instalment.
  [[nodiscard]] std::vector<std::string> Scadenze() const {
    ado::Connection connection;
    connection.ConnectionString = db_.ConnectionText();
    connection.Open();
    ado::Command comando;
    comando.ActiveConnection = &connection;
    comando.CommandText = "SELECT EVENTOCONTABILEKEY, DATASCADENZA, BANCAPRESENTAZIONE_KEY FROM EVENTOCONTABILE "
                          "ORDER BY EVENTOCONTABILEKEY";
    ado::Recordset righe = comando.Execute();
    std::vector<std::string> scadenze;
    for (; !righe.Eof(); righe.MoveNext()) {
      const auto valore = [&](std::size_t i) { return std::string(righe.ValueAt(i).value_or("NULL")); };
      scadenze.push_back(valore(0) + " " + valore(1) + " " + valore(2));
    }
    return scadenze;
  }
  [[nodiscard]] bool ListaPresa() const { return banco_.host.file.count("/tmp/VBCREDITI") != 0; }
  /// The first statement sent that begins with `inizio`; empty for none.
  [[nodiscard]] std::string Istruzione(const std::string& inizio) const {
    const auto trovata = std::find_if(banco_.statements.begin(), banco_.statements.end(),
                                      [&](const std::string& sql) { return sql.rfind(inizio, 0) == 0; });
    return trovata == banco_.statements.end() ? "" : *trovata;
  }
  [[nodiscard]] std::string Elenco() const { return Istruzione("SELECT CONTO.CODICECONTO"); }

  test::OdbcSqlite db_;
  test::TestBench banco_;
};

const std::string Nome = "/tmp/T0120060305140709";

} // namespace

TEST_F(BankCommand, ConfirmedChangesGoToTheHostAndIntoTheDatabase) {
  Recita([](ListWindow& finestra) {
    EXPECT_EQ(finestra.RowCount(), 3U);
    DaiScadenza(finestra, "31/03/2006", "050406");
    DaiBanca(finestra, "31/05/2006", "Banca Seconda");
    finestra.PictureOk_Click();
  });
  EXPECT_EQ(Esegui("/CREDITI"), "");
  EXPECT_THAT(banco_.host.operazioni,
              ElementsAre("Ricevi /tmp/VBCREDITI", "Invia /tmp/VBCREDITI", "Invia " + Nome,
                          "Rinomina " + Nome + " " + Nome + ".dos", "Esegui VB0001", "Cancella " + Nome,
                          "Cancella " + Nome + ".dos", "Cancella /tmp/VBCREDITI"));
  EXPECT_THAT(banco_.host.host, Each("10.0.0.1"));
  EXPECT_THAT(banco_.host.calls, ElementsAre(ElementsAre("12", "CANALIZZAZIONE", "CREDITI", "T01", Nome + ".dos", "",
                                                         "", "", "", "", "")));
  EXPECT_EQ(banco_.host.uploads.at(1), "C10,2006 15,,,,20060331,20060331,20060405,B1,,1\r\n"
                                       "C11,2006 16,,,,00000000,20060531,,B1,B2,1\r\n");
  EXPECT_THAT(Scadenze(), ElementsAre("1 2006-04-05 30", "2 2006-04-30 30", "3 2006-05-31 31", "4 2006-06-30 NULL",
                                      "5 2006-03-31 30"));
  EXPECT_THAT(banco_.host.file, IsEmpty());
  EXPECT_THAT(banco_.desktop.box, IsEmpty());
  EXPECT_EQ(banco_.desktop.pointers.back(), Pointer::Standard);
}

TEST_F(BankCommand, ARowMayChangeDueDateAndBankAtOnce) {
  Recita([](ListWindow& finestra) {
    DaiScadenza(finestra, "30/04/2006", "1/5/06");
    DaiBanca(finestra, "30/04/2006", " ");
    finestra.PictureOk_Click();
  });
  EXPECT_EQ(Esegui("/CREDITI"), "");
  EXPECT_EQ(banco_.host.uploads.at(1), "C10,2006 15,,,,20060430,20060430,20060501,B1,#null#,2\r\n");
  EXPECT_THAT(Scadenze(), Contains("2 2006-05-01 NULL"));
}

TEST_F(BankCommand, DebitsAreThoseOfSuppliers) {
  Recita([](ListWindow& finestra) {
    EXPECT_EQ(finestra.RowCount(), 1U);
    DaiScadenza(finestra, "31/03/2006", "050406");
    finestra.PictureOk_Click();
  });
  EXPECT_EQ(Esegui("/DEBITI"), "");
  EXPECT_EQ(banco_.host.operazioni.front(), "Ricevi /tmp/VBDEBITI");
  EXPECT_EQ(banco_.host.calls.at(0).at(2), "DEBITI");
  EXPECT_THAT(Scadenze(), Contains("5 2006-04-05 30"));
}

TEST_F(BankCommand, ClosedWithoutConfirmingItSendsNothing) {
  Recita([](ListWindow& finestra) {
    DaiScadenza(finestra, "31/03/2006", "050406");
    finestra.Form_QueryUnload();
  });
  EXPECT_EQ(Esegui("/CREDITI"), "closed");
  EXPECT_THAT(banco_.host.operazioni,
              ElementsAre("Ricevi /tmp/VBCREDITI", "Invia /tmp/VBCREDITI", "Cancella /tmp/VBCREDITI"));
  EXPECT_THAT(Istruzione("UPDATE"), "");
  EXPECT_THAT(Scadenze(), ElementsAreArray(Prima));
  EXPECT_THAT(banco_.desktop.pointers, ElementsAre(Pointer::Hourglass, Pointer::Standard));
  EXPECT_THAT(banco_.desktop.box, IsEmpty());
}

TEST_F(BankCommand, GivenUpWhileTheListIsReadItShowsNothingAndReleasesTheList) {
  banco_.desktop.givenUpAt = 2;
  EXPECT_EQ(Esegui("/CREDITI"), "closed");
  EXPECT_EQ(banco_.desktop.breaths, 2U + 2U) << "two rows, and each of the two pointers";
  EXPECT_EQ(banco_.desktop.readings, 1U);
  EXPECT_EQ(banco_.desktop.windows, 0U);
  EXPECT_THAT(banco_.desktop.box, IsEmpty());
  EXPECT_THAT(banco_.host.operazioni,
              ElementsAre("Ricevi /tmp/VBCREDITI", "Invia /tmp/VBCREDITI", "Cancella /tmp/VBCREDITI"));
  EXPECT_THAT(Istruzione("UPDATE"), "");
  EXPECT_FALSE(ListaPresa());

  banco_.desktop.givenUpAt = 0;
  Recita([](ListWindow& finestra) {
    DaiScadenza(finestra, "31/03/2006", "050406");
    finestra.PictureOk_Click();
  });
  EXPECT_EQ(Esegui("/CREDITI"), "") << "the next list is read to its end, and confirms";
}

TEST_F(BankCommand, SaysAtTheHeadOfAListThatItIsNotWhole) {
  std::vector<std::string> avvisi;
  const auto leggi = [&](ListWindow& finestra) { avvisi.push_back(finestra.Description().warning); };
  Recita(leggi);
  EXPECT_EQ(Esegui("/CREDITI"), "closed");
  db_.Run("DROP TABLE EVENTOCONTABILE");
  Recita(leggi);
  EXPECT_EQ(Esegui("/CREDITI"), "error");
  EXPECT_THAT(avvisi, ElementsAre("", "Elenco incompleto: il motivo è mostrato alla chiusura"));
}

TEST_F(BankCommand, ItsNoteIsWrittenRightBeforeTheProgramAndHoldsEveryRow) {
  std::vector<Nota> viste;
  std::vector<std::size_t> quante;
  banco_.host.fault = [&](const std::string& operazione) {
    viste = LeggiNote(banco_.environment.CartellaLocale);
    quante.push_back(operazione.starts_with("Esegui") ? viste.size() : 10 + viste.size());
    if (operazione.starts_with("Esegui") && viste.size() == 1) {
      banco_.host.fault = nullptr;
    }
  };
  Recita([](ListWindow& finestra) {
    DaiScadenza(finestra, "31/03/2006", "050406");
    DaiBanca(finestra, "31/05/2006", "Banca Seconda");
    finestra.PictureOk_Click();
  });
  EXPECT_EQ(Esegui("/CREDITI"), "");
  EXPECT_THAT(quante, ElementsAre(10, 10, 10, 10, 1)) << "before the program there is none";
  ASSERT_EQ(viste.size(), 1U);
  EXPECT_EQ(viste[0].tipoComando, "BANCA /CREDITI");
  EXPECT_EQ(viste[0].richiesta, Nome + ".dos");
  EXPECT_EQ(viste[0].modifica.tipo, "CREDITI");
  ASSERT_EQ(viste[0].modifica.canalizzazioni.size(), 2U);
  EXPECT_EQ(viste[0].modifica.canalizzazioni[0].NuovaScadenza, "05/04/2006");
  EXPECT_EQ(viste[0].modifica.canalizzazioni[1].NuovaBanca, "B2");
  EXPECT_THAT(LeggiNote(banco_.environment.CartellaLocale), IsEmpty());
}

TEST_F(BankCommand, ItsNoteStaysForRowsThatSomebodyElseHadChanged) {
  banco_.host.fault = [this](const std::string& operazione) {
    if (operazione.starts_with("Esegui")) {
      db_.Run("UPDATE EVENTOCONTABILE SET BANCAPRESENTAZIONE_KEY=31 WHERE EVENTOCONTABILEKEY=1");
    }
  };
  RecitaCambio();
  EXPECT_EQ(Esegui("/CREDITI"), "");
  const std::vector<Nota> note = LeggiNote(banco_.environment.CartellaLocale);
  ASSERT_EQ(note.size(), 1U);
  EXPECT_EQ(note[0].fase, FaseNota::Applicata);
  EXPECT_THAT(note[0].righeRimaste, ElementsAre("conto C10 partita 2006 15 rata 1 del 31/03/2006"));
  EXPECT_FALSE(note[0].inCorso);
}

TEST_F(BankCommand, CancelledItSendsNothing) {
  Recita([](ListWindow& finestra) {
    DaiScadenza(finestra, "31/03/2006", "050406");
    finestra.PictureAnnulla_Click();
  });
  EXPECT_EQ(Esegui("/CREDITI"), "closed");
  EXPECT_THAT(banco_.host.calls, IsEmpty());
  EXPECT_THAT(Scadenze(), ElementsAreArray(Prima));
}

TEST_F(BankCommand, ConfirmedWithoutChangesItCountsAsClosed) {
  Recita([](ListWindow& finestra) { finestra.PictureOk_Click(); });
  EXPECT_EQ(Esegui("/CREDITI"), "closed");
  EXPECT_THAT(banco_.host.calls, IsEmpty());
  EXPECT_FALSE(ListaPresa());
}

TEST_F(BankCommand, AListTakenElsewhereDoesNotOpen) {
  banco_.host.file["/tmp/VBCREDITI"] = "Utente : T02\r\nData : 04/03/2006   Ora : 09:00\r\n";
  EXPECT_EQ(Esegui("/CREDITI"), "error");
  EXPECT_EQ(banco_.desktop.windows, 0U);
  EXPECT_THAT(banco_.desktop.box, ElementsAre("Area CREDITI in manutenzione presso un altro terminale\r"
                                              "Utente : T02\rData : 04/03/2006   Ora : 09:00"));
  EXPECT_THAT(banco_.host.operazioni, ElementsAre("Ricevi /tmp/VBCREDITI"));
  EXPECT_TRUE(ListaPresa());
  EXPECT_THAT(banco_.statements, IsEmpty());
  EXPECT_THAT(banco_.desktop.pointers, IsEmpty());
}

TEST_F(BankCommand, TheListIsTakenWhileTheScreenIsOpen) {
  Recita([this](ListWindow&) { EXPECT_TRUE(ListaPresa()); });
  EXPECT_EQ(Esegui("/CREDITI"), "closed");
  EXPECT_FALSE(ListaPresa());
}

TEST_F(BankCommand, WithoutAHostOneWorksButDoesNotConfirm) {
  banco_.host.fault = [](const std::string&) { throw RuntimeError(errors::FileAccess, "Host irraggiungibile"); };
  RecitaCambio();
  EXPECT_EQ(Esegui("/CREDITI"), "error");
  EXPECT_THAT(banco_.desktop.box, ElementsAre("-2147220905\r\n75 Host irraggiungibile"));
  EXPECT_THAT(Scadenze(), ElementsAreArray(Prima));
}

TEST_F(BankCommand, TheHostsRefusalLeavesTheListTakenAndTheDatabaseAsItWas) {
  banco_.host.reply = "<R><ERRORE>Riga 1: conto inesistente</ERRORE></R>";
  RecitaCambio();
  EXPECT_EQ(Esegui("/CREDITI"), "error");
  EXPECT_THAT(banco_.desktop.box, ElementsAre("-2147220905\r\nRiga 1: conto inesistente"));
  EXPECT_THAT(Scadenze(), ElementsAreArray(Prima));
  EXPECT_EQ(Istruzione("UPDATE"), "");
  EXPECT_THAT(banco_.host.file, ElementsAre(Key("/tmp/VBCREDITI")));
}

TEST_F(BankCommand, AnInstalmentNumberThatIsNoneStopsEverythingBeforeTheHost) {
  for (const std::string rata : {"1 OR 1=1", "1.5", "2147483648", "-2147483649", " ", "#null#"}) {
    EsegueSql("UPDATE EVENTOCONTABILE SET NUMERORATA='" + rata + "' WHERE EVENTOCONTABILEKEY=2");
    banco_.host.file.clear();
    banco_.host.operazioni.clear();
    banco_.desktop.box.clear();
    Recita([](ListWindow& finestra) {
      DaiScadenza(finestra, "31/03/2006", "050406");
      DaiScadenza(finestra, "30/04/2006", "050406");
      finestra.PictureOk_Click();
    });
    EXPECT_EQ(Esegui("/CREDITI"), "error");
    EXPECT_THAT(banco_.desktop.box, ElementsAre("13\r\nNumero di rata non valido: conto C10, partita 2006 15, rata «" +
                                                rata + "».\r\nLa richiesta non è stata inviata all'host."));
    EXPECT_THAT(banco_.desktop.pointers, IsEmpty()) << "the hourglass would stay with the calling program";
    EXPECT_THAT(banco_.host.operazioni, ElementsAre("Ricevi /tmp/VBCREDITI", "Invia /tmp/VBCREDITI")) << rata;
    EXPECT_THAT(Scadenze(), ElementsAreArray(Prima));
  }
  EXPECT_EQ(Istruzione("UPDATE"), "");
}

TEST_F(BankCommand, AnInstalmentWithoutANumberChangesAlone) {
  EsegueSql("UPDATE EVENTOCONTABILE SET NUMERORATA=NULL WHERE EVENTOCONTABILEKEY=2");
  Recita([](ListWindow& finestra) {
    DaiScadenza(finestra, "30/04/2006", "050406");
    finestra.PictureOk_Click();
  });
  EXPECT_EQ(Esegui("/CREDITI"), "");
  EXPECT_THAT(Istruzione("SELECT * FROM MOVIMENTOCONTABILE"),
              HasSubstr("AND EVENTOCONTABILE.NUMERORATA IS NULL AND EVENTOCONTABILE.BANCAPRESENTAZIONE_KEY=30 "));
  EXPECT_EQ(banco_.host.uploads.at(1), "C10,2006 15,,,,20060430,20060430,20060405,B1,,\r\n");
  EXPECT_THAT(Scadenze(), ElementsAre("1 2006-03-31 30", "2 2006-04-05 30", "3 2006-05-31 30", "4 2006-06-30 NULL",
                                      "5 2006-03-31 30"));
}

TEST_F(BankCommand, AfterAnErrorTheListStaysTakenUntilReleasedByHand) {
  banco_.host.reply = "<R><ERRORE>no</ERRORE></R>";
  RecitaCambio();
  EXPECT_EQ(Esegui("/CREDITI"), "error");
  EXPECT_EQ(Esegui("/CREDITI"), "error");
  EXPECT_EQ(banco_.desktop.windows, 1U);
  banco_.host.file.erase("/tmp/VBCREDITI");
  EXPECT_EQ(Esegui("/CREDITI"), "closed");
}

TEST_F(BankCommand, TheHostsMessageIsShownBeforeAnythingIsWritten) {
  banco_.host.reply = "<R><MESSAGGIO>Variate 1 scadenze</MESSAGGIO></R>";
  RecitaCambio();
  EXPECT_EQ(Esegui("/CREDITI"), "");
  EXPECT_THAT(banco_.desktop.box, ElementsAre("Variate 1 scadenze"));
}

TEST_F(BankCommand, AnUnknownBankUndoesTheChangesAlreadyWrittenToo) {
  Recita([this](ListWindow& finestra) {
    DaiScadenza(finestra, "31/03/2006", "050406");
    DaiBanca(finestra, "31/05/2006", "Banca Seconda");
    db_.Run("DELETE FROM CONTOCONTABILE WHERE CODICECONTO='B2'");
    finestra.PictureOk_Click();
  });
  EXPECT_EQ(Esegui("/CREDITI"), "error");
  EXPECT_THAT(banco_.desktop.box,
              ElementsAre(StartsWith("-2147220954\r\nERRORE: -2147220990\r\nCONTO CONTABILE INESISTENTE\r\n")));
  EXPECT_NE(Istruzione("UPDATE"), "") << "la prima variazione era stata scritta";
  EXPECT_THAT(Scadenze(), ElementsAreArray(Prima));
  EXPECT_TRUE(ListaPresa());
}

TEST_F(BankCommand, AnErrorOfTheLoadIsToldAfterTheClosing) {
  db_.Run("DROP TABLE EVENTOCONTABILE");
  Recita([this](ListWindow& finestra) {
    EXPECT_EQ(finestra.RowCount(), 0U);
    EXPECT_THAT(banco_.desktop.box, IsEmpty());
    finestra.PictureOk_Click();
  });
  EXPECT_EQ(Esegui("/CREDITI"), "error");
  EXPECT_EQ(banco_.desktop.windows, 1U);
  EXPECT_THAT(banco_.desktop.box, ElementsAre(StartsWith("-2147220954\r\nERRORE: -")));
  EXPECT_THAT(banco_.host.calls, IsEmpty());
  EXPECT_TRUE(ListaPresa());
}

TEST_F(BankCommand, AnUnknownCompanyIsToldAfterTheClosing) {
  EXPECT_EQ(Esegui("/CREDITI", "99"), "error");
  EXPECT_THAT(banco_.desktop.box, ElementsAre("-2147220954\r\nERRORE: -2147220990\r\nAZIENDA INESISTENTE"));
  EXPECT_EQ(banco_.desktop.windows, 1U);
}

TEST_F(BankCommand, WithoutOptionBTheInstalmentsWithABankAreShown) {
  EXPECT_EQ(Esegui("/CREDITI"), "closed");
  EXPECT_THAT(Elenco(), HasSubstr("AND EVENTOCONTABILE.BANCAPRESENTAZIONE_KEY IS NOT NULL "));
}

TEST_F(BankCommand, WithOptionBNTheInstalmentsWithoutABankAreShown) {
  Recita([](ListWindow& finestra) {
    EXPECT_EQ(finestra.RowCount(), 1U);
    DaiBanca(finestra, "30/06/2006", "Banca Prima");
    finestra.PictureOk_Click();
  });
  EXPECT_EQ(Esegui("/CREDITI -B N"), "");
  EXPECT_EQ(banco_.host.uploads.at(1), "C11,2006 17,,,,00000000,20060630,,#null#,B1,1\r\n");
  EXPECT_THAT(Scadenze(), Contains("4 2006-06-30 30"));
}

TEST_F(BankCommand, TheOptionsDoNotStayForTheNextCommand) {
  EXPECT_EQ(Esegui("/CREDITI -B N -C C11 -SC SCADUTO"), "closed");
  banco_.statements.clear();
  EXPECT_EQ(Esegui("/CREDITI"), "closed");
  EXPECT_THAT(Elenco(), HasSubstr("IS NOT NULL"));
  EXPECT_THAT(Elenco(), Not(HasSubstr("CONTO.CODICECONTO =")));
  EXPECT_THAT(Elenco(), Not(HasSubstr("DATASCADENZA <")));
}

TEST_F(BankCommand, TheItemArrivesWithItsBlanks) {
  EXPECT_EQ(Esegui("/CREDITI -P 2006  15"), "closed");
  EXPECT_THAT(Elenco(), HasSubstr("PARTITACONTABILE.NUMEROPARTITA='2006  15' "));
}

TEST_F(BankCommand, EveryFilterReachesTheList) {
  Recita([](ListWindow& finestra) { EXPECT_EQ(finestra.RowCount(), 1U); });
  EXPECT_EQ(Esegui("/CREDITI -SC DASCADERE -C C10 -P 2006 15 -M 032006 -CODINT INT10 -S A -A 2006 -E 2006 -N 1"),
            "closed");
  for (const char* condizione :
       {"CONTO.CODICECONTO = 'C10'", "NUMEROPARTITA='2006 15'", "CODICEINTERNO = 'INT10'",
        "DATASCADENZA >= '2006-03-05'", "DATASCADENZA >='2006-03-01'", "DATASCADENZA <='2006-03-31'"}) {
    EXPECT_THAT(Elenco(), HasSubstr(condizione));
  }
}

TEST_F(BankCommand, TheChangesOfACommandDoNotComeBackInTheNext) {
  RecitaCambio();
  EXPECT_EQ(Esegui("/CREDITI"), "");
  Recita([](ListWindow& finestra) { finestra.Form_QueryUnload(); });
  EXPECT_EQ(Esegui("/CREDITI"), "closed");
  Recita([](ListWindow& finestra) { finestra.PictureOk_Click(); });
  EXPECT_EQ(Esegui("/CREDITI"), "closed");
  EXPECT_EQ(banco_.host.calls.size(), 1U);
}

TEST_F(BankCommand, TheTitleSaysWhoseInstalmentsTheyAre) {
  std::vector<std::string> titoli;
  const auto annota = [&titoli](ListWindow& finestra) {
    titoli.push_back(finestra.Description().title);
    finestra.PictureAnnulla_Click();
  };
  for (const char* sottocomando : {"/CREDITI", "/DEBITI", "/CREDITI"}) {
    Recita(annota);
    EXPECT_EQ(Esegui(sottocomando), "closed");
  }
  EXPECT_THAT(titoli,
              ElementsAre("LumoScad - Scadenze e banche dei clienti", "LumoScad - Scadenze e banche dei fornitori",
                          "LumoScad - Scadenze e banche dei clienti"));
}

TEST_F(BankCommand, TheScreenIsUsedAgain) {
  EXPECT_EQ(Esegui("/CREDITI"), "closed");
  const auto schermata = stato().scadenzeBanche;
  ASSERT_NE(schermata, nullptr);
  EXPECT_EQ(Esegui("/DEBITI"), "closed");
  EXPECT_EQ(stato().scadenzeBanche, schermata);
}

TEST_F(BankCommand, RefusedChangesDoNotComeBackInTheNext) {
  banco_.host.reply = "<R><ERRORE>no</ERRORE></R>";
  RecitaCambio();
  EXPECT_EQ(Esegui("/CREDITI"), "error");
  banco_.host.file.clear();
  Recita([](ListWindow& finestra) { finestra.Form_QueryUnload(); });
  EXPECT_EQ(Esegui("/CREDITI"), "closed");
  EXPECT_EQ(banco_.host.calls.size(), 1U);
}

TEST_F(BankCommand, OfCreditsAndDebitsInOneCommandTheLastAnswers) {
  RecitaCambio();
  EXPECT_EQ(Esegui("/CREDITI /DEBITI"), "closed");
  EXPECT_EQ(banco_.desktop.windows, 2U);
  EXPECT_THAT(Scadenze(), Contains("1 2006-04-05 30"));
  EXPECT_THAT(banco_.host.file, IsEmpty());
}

TEST_F(BankCommand, SaysNothingOfTheListBeforeWhereTheNextOneFails) {
  db_.Run("UPDATE EVENTOCONTABILE SET DATASCADENZA='mai' WHERE EVENTOCONTABILEKEY=5");
  RecitaCambio();
  EXPECT_EQ(Esegui("/CREDITI /DEBITI"), "error");
  EXPECT_THAT(Scadenze(), Contains("1 2006-04-05 30"));
  ASSERT_EQ(banco_.desktop.box.size(), 1U);
  EXPECT_THAT(banco_.desktop.box[0], StartsWith("-2147220954\r\nERRORE: 13\r\n"));
  EXPECT_THAT(banco_.desktop.box[0], Not(HasSubstr("host")));
}

TEST_F(BankCommand, AfterAnErrorOfTheDatabaseNobodyRemovesTheCommandsHourglass) {
  Recita([this](ListWindow& finestra) {
    DaiBanca(finestra, "31/03/2006", "Banca Seconda");
    db_.Run("DELETE FROM CONTOCONTABILE WHERE CODICECONTO='B2'");
    finestra.PictureOk_Click();
  });
  EXPECT_EQ(Esegui("/CREDITI"), "error");
  // The command's own hourglass, then those of the request and of the call, each of which takes its own away.
  EXPECT_THAT(banco_.desktop.pointers, ElementsAre(Pointer::Hourglass, Pointer::Hourglass, Pointer::Hourglass,
                                                   Pointer::Standard, Pointer::Standard));
}
