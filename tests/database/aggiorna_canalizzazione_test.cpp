#include "BaseDati.hpp"
#include "database/procedureLumoDB2.hpp"
#include "support/TestBench.hpp"

#include <gmock/gmock.h>

#include <algorithm>

namespace lumoscad::procedureLumoDB2 {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

const std::string CercaConto = "SELECT CONTOCONTABILE_KEY FROM CONTOCONTABILE WHERE CODICECONTO=? ";
const std::string Seleziona =
    "SELECT * FROM MOVIMENTOCONTABILE RIGHT JOIN EVENTOCONTABILE ON MOVIMENTOCONTABILE.MOVIMENTOKEY = "
    "EVENTOCONTABILE.MOVIMENTOKEY WHERE (MOVIMENTOCONTABILE.TIPOMOVIMENTO='N') AND EVENTOCONTABILE.SOSPESA='N' AND "
    "EVENTOCONTABILE.TIPOEVENTO='C' AND EVENTOCONTABILE.PARTITACONTABILEKEY=? AND ";
const std::string ConBanca =
    Seleziona + "EVENTOCONTABILE.DATASCADENZA='2006-03-04' AND EVENTOCONTABILE.NUMERORATA=1 AND "
                "EVENTOCONTABILE.BANCAPRESENTAZIONE_KEY=106 AND EVENTOCONTABILE.DATASCADENZAORIGINALE='2006-01-31' ";

/// Two instalments that one row of the screen sums up (1, 2), and others that differ from them in one column each.
std::string Eventi() {
  using test::Rata;
  return Rata("1,1,301,201,101,'C','N','2006-03-04','2006-01-31',1,106,100.10") +
         Rata("2,1,301,201,101,'C','N','2006-03-04','2006-01-31',1,106,50.15") +
         Rata("3,1,301,201,101,'C','N','2006-03-04','2006-01-31',2,106,1") +
         Rata("4,1,301,201,101,'C','N','2006-03-05','2006-01-31',1,106,1") +
         Rata("5,1,301,201,101,'C','N','2006-03-04','2006-02-28',1,106,1") +
         Rata("6,1,301,201,101,'C','N','2006-03-04','2006-01-31',1,107,1") +
         Rata("7,1,301,201,101,'C','N','2006-03-04','2006-01-31',1,NULL,1") +
         Rata("8,1,301,201,101,'C','S','2006-03-04','2006-01-31',1,106,1") +
         Rata("9,1,301,201,101,'P','N','2006-03-04','2006-01-31',1,106,1") +
         Rata("10,1,302,201,101,'C','N','2006-03-04','2006-01-31',1,106,1") +
         Rata("11,1,301,202,101,'C','N','2006-03-04','2006-01-31',1,106,1") +
         Rata("12,1,301,201,101,'C','N',NULL,'2006-01-31',1,106,1") +
         Rata("13,1,301,201,101,'C','N','2006-03-04',NULL,1,106,1") +
         Rata("14,1,304,203,103,'P','N',NULL,NULL,1,NULL,1");
}

/// What the screen would hand over for instalments 1 and 2, without a change.
VariazioneCanalizzazione Invariata() {
  VariazioneCanalizzazione v;
  v.idPartitaKey = "201";
  v.CodiceConto = "C01";
  v.NumeroPartita = "2006   1";
  v.VecchiaBanca = "B06";
  v.ScadenzaOriginale = "31/01/2006";
  v.NumeroRata = "1";
  v.VecchiaScadenza = "04/03/2006";
  v.NuovaScadenza = "#null#";
  return v;
}

VariazioneCanalizzazione SoloBanca(const std::string& nuova) {
  VariazioneCanalizzazione v = Invariata();
  v.NuovaBanca = nuova;
  v.isBancaChanged = true;
  return v;
}

VariazioneCanalizzazione SoloData(const std::string& nuova) {
  VariazioneCanalizzazione v = Invariata();
  v.NuovaScadenza = nuova;
  v.isScadenzaChanged = true;
  return v;
}

VariazioneCanalizzazione Presunto(const std::string& movimento, const std::string& partita) {
  VariazioneCanalizzazione v = SoloBanca("B07");
  v.idMovimentoKey = movimento;
  v.idPartitaKey = partita;
  return v;
}

class BankUpdate : public testing::TestWithParam<const char*> {
 protected:
  BankUpdate() { stato().ComandoCorrente = "BANCA /CREDITI " + base.Opzioni(); }

  std::string Applica(const VariazioniCanalizzazione& variazioni, const char* modalita = "CREDITI") {
    return AggiornaCanalizzazione(variazioni, msg, modalita);
  }
  /// The keys of the instalments in which anything changed.
  [[nodiscard]] std::vector<std::string> Cambiate() const {
    const auto dopo = test::Rate(base);
    EXPECT_EQ(dopo.size(), prima.size());
    std::vector<std::string> chiavi;
    for (std::size_t i = 0; i < std::min(prima.size(), dopo.size()); ++i) {
      if (prima[i] != dopo[i]) {
        chiavi.push_back(dopo[i].substr(0, dopo[i].find('|')));
      }
    }
    return chiavi;
  }
  [[nodiscard]] std::vector<std::string> DateEBanche(const std::string& chiavi) const {
    return base.Righe("SELECT DATASCADENZA, DATASCADENZAORIGINALE, BANCAPRESENTAZIONE_KEY FROM EVENTOCONTABILE WHERE "
                      "EVENTOCONTABILEKEY IN (" +
                      chiavi + ") ORDER BY EVENTOCONTABILEKEY");
  }

  test::BaseDati base{GetParam(), test::DatiDiProva() + Eventi()};
  std::vector<std::string> prima = test::Rate(base);
  test::TestBench banco;
  MsgAnnulla msg;
};

class BankUpdateStatements : public BankUpdate {};
class BankUpdateRows : public BankUpdate {};

INSTANTIATE_TEST_SUITE_P(Databases, BankUpdateStatements, testing::ValuesIn(test::GeneriDiBase()), test::NomeDelGenere);
INSTANTIATE_TEST_SUITE_P(Databases, BankUpdateRows, testing::ValuesIn(test::GeneriDiBase()), test::NomeDelGenere);

TEST_P(BankUpdateStatements, OfAnEmptyListAreNone) {
  EXPECT_EQ(Applica({}), "");
  EXPECT_THAT(banco.statements, IsEmpty());
  EXPECT_THAT(Cambiate(), IsEmpty());
}

TEST_P(BankUpdateStatements, OfAnEmptyListNeedNoDatabase) {
  stato().ComandoCorrente = "BANCA /CREDITI";
  EXPECT_EQ(Applica({}), "");
  EXPECT_EQ(msg.Errore, "");
}

TEST_P(BankUpdateStatements, OfABankChangeAreLookUpsSelectionAndOneUpdateAnInstalment) {
  EXPECT_EQ(Applica({SoloBanca("B07")}), "");
  EXPECT_THAT(banco.statements,
              ElementsAre(CercaConto, CercaConto, ConBanca,
                          "UPDATE EVENTOCONTABILE SET BANCAPRESENTAZIONE_KEY=107 WHERE EVENTOCONTABILEKEY=1",
                          "UPDATE EVENTOCONTABILE SET BANCAPRESENTAZIONE_KEY=107 WHERE EVENTOCONTABILEKEY=2"));
}

TEST_P(BankUpdateStatements, OfADateChangeNeverLookUpTheEmptyNewBank) {
  EXPECT_EQ(Applica({SoloData("01/04/2006")}), "");
  EXPECT_THAT(banco.statements,
              ElementsAre(CercaConto, ConBanca,
                          "UPDATE EVENTOCONTABILE SET DATASCADENZA='2006-04-01' WHERE EVENTOCONTABILEKEY=1",
                          "UPDATE EVENTOCONTABILE SET DATASCADENZA='2006-04-01' WHERE EVENTOCONTABILEKEY=2"));
}

TEST_P(BankUpdateStatements, OfAnInstalmentWithoutNumberAskForNull) {
  base.Esegui("UPDATE EVENTOCONTABILE SET NUMERORATA=NULL WHERE EVENTOCONTABILEKEY=1");
  VariazioneCanalizzazione v = SoloData("01/04/2006");
  v.NumeroRata.clear();
  EXPECT_EQ(Applica({v}), "");
  EXPECT_THAT(banco.statements,
              ElementsAre(CercaConto,
                          Seleziona + "EVENTOCONTABILE.DATASCADENZA='2006-03-04' AND EVENTOCONTABILE.NUMERORATA IS "
                                      "NULL AND EVENTOCONTABILE.BANCAPRESENTAZIONE_KEY=106 AND "
                                      "EVENTOCONTABILE.DATASCADENZAORIGINALE='2006-01-31' ",
                          "UPDATE EVENTOCONTABILE SET DATASCADENZA='2006-04-01' WHERE EVENTOCONTABILEKEY=1"));
}

TEST_P(BankUpdateStatements, OfBothChangesJoinThemWithAComma) {
  VariazioneCanalizzazione v = SoloBanca("B07");
  v.NuovaScadenza = "01/04/2006";
  v.isScadenzaChanged = true;
  EXPECT_EQ(Applica({v}), "");
  ASSERT_EQ(banco.statements.size(), 5U);
  EXPECT_EQ(banco.statements[3], "UPDATE EVENTOCONTABILE SET DATASCADENZA='2006-04-01' "
                                 ",BANCAPRESENTAZIONE_KEY=107 WHERE EVENTOCONTABILEKEY=1");
}

TEST_P(BankUpdateStatements, WriteNullForARemovedOrEmptyNewBank) {
  for (const char* nessuna : {"#null#", ""}) {
    banco.statements.clear();
    EXPECT_EQ(Applica({SoloBanca(nessuna)}), "");
    base.Esegui("UPDATE EVENTOCONTABILE SET BANCAPRESENTAZIONE_KEY=106 WHERE EVENTOCONTABILEKEY IN (1,2)");
    EXPECT_THAT(banco.statements,
                ElementsAre(CercaConto, ConBanca,
                            "UPDATE EVENTOCONTABILE SET BANCAPRESENTAZIONE_KEY=NULL WHERE EVENTOCONTABILEKEY=1",
                            "UPDATE EVENTOCONTABILE SET BANCAPRESENTAZIONE_KEY=NULL WHERE EVENTOCONTABILEKEY=2"));
  }
}

TEST_P(BankUpdateStatements, WriteNullForAMissingNewDate) {
  for (const char* nessuna : {"#null#", ""}) {
    banco.statements.clear();
    EXPECT_EQ(Applica({SoloData(nessuna)}), "");
    base.Esegui("UPDATE EVENTOCONTABILE SET DATASCADENZA='2006-03-04' WHERE EVENTOCONTABILEKEY IN (1,2)");
    EXPECT_THAT(banco.statements,
                ElementsAre(CercaConto, ConBanca,
                            "UPDATE EVENTOCONTABILE SET DATASCADENZA=NULL WHERE EVENTOCONTABILEKEY=1",
                            "UPDATE EVENTOCONTABILE SET DATASCADENZA=NULL WHERE EVENTOCONTABILEKEY=2"));
  }
}

TEST_P(BankUpdateStatements, MatchMissingOldValuesWithIsNull) {
  for (const char* nessuno : {"#null#", ""}) {
    VariazioneCanalizzazione v = SoloBanca("B07");
    v.VecchiaScadenza = v.VecchiaBanca = v.ScadenzaOriginale = nessuno;
    banco.statements.clear();
    EXPECT_EQ(Applica({v}), "");
    EXPECT_THAT(test::SenzaDomande(banco.statements),
                ElementsAre(CercaConto, Seleziona + "EVENTOCONTABILE.DATASCADENZA IS NULL AND "
                                                    "EVENTOCONTABILE.NUMERORATA=1 AND "
                                                    "EVENTOCONTABILE.BANCAPRESENTAZIONE_KEY IS NULL AND "
                                                    "EVENTOCONTABILE.DATASCADENZAORIGINALE IS NULL "));
  }
}

TEST_P(BankUpdateStatements, OfUnchangedRecordsAreNone) {
  EXPECT_EQ(Applica({Invariata(), Invariata()}), "");
  EXPECT_THAT(banco.statements, IsEmpty());
}

TEST_P(BankUpdateStatements, OfAnyOtherModeAreNone) {
  EXPECT_EQ(Applica({SoloBanca("B07")}, "ALTRO"), "");
  EXPECT_THAT(banco.statements, IsEmpty());
}

TEST_P(BankUpdateStatements, OfAPresumedDocumentGoByItsMovement) {
  EXPECT_EQ(Applica({Presunto("301", "201")}, "PRESUNTI"), "");
  EXPECT_THAT(banco.statements,
              ElementsAre(CercaConto, CercaConto,
                          "UPDATE EVENTOCONTABILE SET BANCAPRESENTAZIONE_KEY=107 WHERE DATASCADENZA='2006-03-04' AND "
                          "BANCAPRESENTAZIONE_KEY=106 AND EVENTOCONTABILE.SOSPESA='N' AND MOVIMENTOKEY=?"));
}

TEST_P(BankUpdateStatements, OfAPresumedDocumentWithoutMovementGoByItsItem) {
  for (const char* nessuno : {"#null#", ""}) {
    banco.statements.clear();
    VariazioneCanalizzazione v = Presunto(nessuno, "203");
    v.VecchiaBanca = v.VecchiaScadenza = v.NuovaBanca = "#null#";
    EXPECT_EQ(Applica({v}, "PRESUNTI"), "");
    EXPECT_THAT(test::SenzaDomande(banco.statements),
                ElementsAre("UPDATE EVENTOCONTABILE SET BANCAPRESENTAZIONE_KEY=NULL WHERE DATASCADENZA IS NULL AND "
                            "BANCAPRESENTAZIONE_KEY IS NULL AND EVENTOCONTABILE.SOSPESA='N' AND "
                            "PARTITACONTABILEKEY=?"));
  }
}

TEST_P(BankUpdateStatements, OfAPresumedDocumentWithoutKeysMatchNothingAndDoNotFail) {
  EXPECT_EQ(Applica({Presunto("#null#", "#null#")}, "PRESUNTI"), "");
  ASSERT_EQ(banco.statements.size(), 3U);
  EXPECT_THAT(banco.statements[2],
              EndsWith("AND EVENTOCONTABILE.SOSPESA='N' AND EVENTOCONTABILEKEY=-1 AND PARTITACONTABILEKEY=-1"));
  EXPECT_THAT(Cambiate(), IsEmpty());
  EXPECT_EQ(msg.Errore, "");
}

TEST_P(BankUpdateStatements, OfAPresumedDocumentIgnoreADateChange) {
  EXPECT_EQ(Applica({SoloData("01/04/2006")}, "PRESUNTI"), "");
  EXPECT_THAT(banco.statements, IsEmpty());
}

TEST_P(BankUpdateStatements, NeverHoldADateThatIsNone) {
  VariazioneCanalizzazione v = SoloData("1/4/06");
  EXPECT_EQ(Applica({v}), "error");
  EXPECT_THAT(msg.Errore, StartsWith("ERRORE: 13\r\n"));
  EXPECT_THAT(Cambiate(), IsEmpty());
}

TEST_P(BankUpdateStatements, OfTheFailedRecordFollowTheErrorAfterTwoLineBreaks) {
  base.Impedisci("EVENTOCONTABILE", "OLD.EVENTOCONTABILEKEY=2", "riga bloccata");
  EXPECT_EQ(Applica({SoloBanca("B07")}), "error");
  EXPECT_THAT(msg.Errore, StartsWith("ERRORE: -"));
  EXPECT_THAT(msg.Errore, HasSubstr("riga bloccata"));
  EXPECT_THAT(msg.Errore,
              EndsWith("\r\n\r\n" + ConBanca +
                       "\r\nUPDATE EVENTOCONTABILE SET BANCAPRESENTAZIONE_KEY=107 WHERE EVENTOCONTABILEKEY=1"
                       "\r\nUPDATE EVENTOCONTABILE SET BANCAPRESENTAZIONE_KEY=107 WHERE EVENTOCONTABILEKEY=2"));
  EXPECT_THAT(Cambiate(), IsEmpty());
}

TEST_P(BankUpdateStatements, InTheErrorStartAnewWithEachRecord) {
  VariazioneCanalizzazione seconda = SoloData("01/04/2006");
  seconda.NumeroRata = "3 TRE";
  EXPECT_EQ(Applica({SoloBanca("B07"), seconda}), "error");
  EXPECT_THAT(msg.Errore, EndsWith("\r\n\r\n" + Seleziona +
                                   "EVENTOCONTABILE.DATASCADENZA='2006-03-04' AND EVENTOCONTABILE.NUMERORATA=3 TRE "
                                   "AND EVENTOCONTABILE.BANCAPRESENTAZIONE_KEY=106 AND "
                                   "EVENTOCONTABILE.DATASCADENZAORIGINALE='2006-01-31' "));
  EXPECT_THAT(msg.Errore, Not(HasSubstr("UPDATE")));
}

TEST_P(BankUpdateStatements, OfAPresumedDocumentFollowItsError) {
  base.Impedisci("EVENTOCONTABILE", "OLD.EVENTOCONTABILEKEY>0", "riga bloccata");
  EXPECT_EQ(Applica({Presunto("301", "")}, "PRESUNTI"), "error");
  EXPECT_THAT(msg.Errore, EndsWith("\r\n\r\n" + banco.statements.back()));
}

TEST_P(BankUpdateRows, ChangeTheBankOfTheMatchingInstalmentsAlone) {
  EXPECT_EQ(Applica({SoloBanca("B07")}), "");
  EXPECT_EQ(msg.Errore, "");
  EXPECT_THAT(Cambiate(), ElementsAre("1", "2"));
  EXPECT_THAT(DateEBanche("1,2"), ElementsAre("2006-03-04|2006-01-31|107", "2006-03-04|2006-01-31|107"));
}

TEST_P(BankUpdateRows, ChangeTheDateAndKeepTheOriginalOne) {
  EXPECT_EQ(Applica({SoloData("01/04/2006")}, "DEBITI"), "");
  EXPECT_THAT(Cambiate(), ElementsAre("1", "2"));
  EXPECT_THAT(DateEBanche("1,2"), ElementsAre("2006-04-01|2006-01-31|106", "2006-04-01|2006-01-31|106"));
}

TEST_P(BankUpdateRows, RemoveTheBankWithNullNeverWithZero) {
  EXPECT_EQ(Applica({SoloBanca("#null#")}), "");
  EXPECT_THAT(DateEBanche("1,2"), ElementsAre("2006-03-04|2006-01-31|NULL", "2006-03-04|2006-01-31|NULL"));
}

TEST_P(BankUpdateRows, ChangeBothAtOnce) {
  VariazioneCanalizzazione v = SoloData("01/04/2006");
  v.NuovaBanca = "#null#";
  v.isBancaChanged = true;
  EXPECT_EQ(Applica({v}), "");
  EXPECT_THAT(Cambiate(), ElementsAre("1", "2"));
  EXPECT_THAT(DateEBanche("1"), ElementsAre("2006-04-01|2006-01-31|NULL"));
}

TEST_P(BankUpdateRows, MatchNullOnlyWhereAValueIsMissing) {
  VariazioneCanalizzazione senzaData = SoloBanca("B07");
  senzaData.VecchiaScadenza = "#null#";
  VariazioneCanalizzazione senzaOriginale = SoloBanca("B07");
  senzaOriginale.ScadenzaOriginale = "";
  VariazioneCanalizzazione senzaBanca = SoloBanca("B07");
  senzaBanca.VecchiaBanca = "#null#";
  EXPECT_EQ(Applica({senzaData, senzaOriginale, senzaBanca}), "");
  EXPECT_THAT(Cambiate(), ElementsAre("7", "12", "13"));
}

TEST_P(BankUpdateRows, StayAsTheyWereWhenOneBankOfTheListIsUnknown) {
  EXPECT_EQ(Applica({SoloBanca("B07"), SoloData("01/04/2006"), SoloBanca("Z99")}), "error");
  EXPECT_EQ(msg.Errore, "ERRORE: -2147220990\r\nCONTO CONTABILE INESISTENTE\r\n");
  EXPECT_THAT(Cambiate(), IsEmpty());
}

TEST_P(BankUpdateRows, StayAsTheyWereWhenAStatementFails) {
  VariazioneCanalizzazione seconda = SoloData("01/04/2006");
  seconda.NumeroRata = "3 TRE";
  EXPECT_EQ(Applica({SoloBanca("B07"), seconda}), "error");
  EXPECT_THAT(msg.Errore, testing::ContainsRegex("^ERRORE: -[0-9]+\r\n.+"));
  EXPECT_THAT(Cambiate(), IsEmpty());
}

TEST_P(BankUpdateRows, OfPresumedDocumentsChangeByMovementOrItem) {
  VariazioneCanalizzazione perPartita = Presunto("", "203");
  perPartita.VecchiaBanca = perPartita.VecchiaScadenza = "#null#";
  EXPECT_EQ(Applica({perPartita, Presunto("302", "")}, "PRESUNTI"), "");
  EXPECT_THAT(Cambiate(), ElementsAre("10", "14"));
}

TEST_P(BankUpdateRows, SeeWhatEarlierRecordsOfTheListWrote) {
  VariazioneCanalizzazione seguente = SoloBanca("B06");
  seguente.VecchiaBanca = "B07";
  EXPECT_EQ(Applica({SoloBanca("B07"), seguente}), "");
  EXPECT_THAT(Cambiate(), ElementsAre("6"));
}

} // namespace
} // namespace lumoscad::procedureLumoDB2
