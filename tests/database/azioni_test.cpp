#include "BaseDelleAzioni.hpp"

using namespace lumoscad;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

namespace {

class Actions : public test::BaseDelleAzioni {};
INSTANTIATE_TEST_SUITE_P(Databases, Actions, testing::ValuesIn(test::GeneriDiBase()), test::NomeDelGenere);

const std::vector<std::string> Presunto = {"01", "PRESUNTOCREA", "OC", "06", "123", "T01", ""};

std::vector<std::string> Con(std::vector<std::string> parametri, std::size_t indice, const std::string& valore) {
  parametri.at(indice) = valore;
  return parametri;
}

std::vector<std::string> ScadenzePartita(const std::vector<std::string>& gruppi) {
  std::vector<std::string> parametri = {"01", "SCRIVISCADENZE", "C10", "AB   123", "BANCA"};
  parametri.insert(parametri.end(), gruppi.begin(), gruppi.end());
  parametri.resize(101);
  return parametri;
}

std::vector<std::string> ScadenzeMovimento(const std::vector<std::string>& gruppi) {
  std::vector<std::string> parametri = {"01", "EXTRASCRIVISCAD", "A", "2006", "15"};
  parametri.insert(parametri.end(), gruppi.begin(), gruppi.end());
  parametri.resize(101);
  return parametri;
}

} // namespace

TEST_P(Actions, SuspendingAnItemTouchesItsInstalmentsAlone) {
  EXPECT_EQ(Azione({"01", "SOSPESOCREA", "C10", "AB   123", ""}), "");
  CambiatoCome("UPDATE EVENTOCONTABILE SET SOSPESA='S' WHERE EVENTOCONTABILEKEY IN (1,2,3)");
  EXPECT_THAT(Inviate("UPDATE"), SizeIs(3)) << "anche la rata già sospesa si scrive";
}

TEST_P(Actions, ReactivatingAnItemTouchesItsInstalmentsAlone) {
  EXPECT_EQ(Azione({"01", "SOSPESOCANCELLA", "C10", "AB   123", ""}), "");
  CambiatoCome("UPDATE EVENTOCONTABILE SET SOSPESA='N' WHERE EVENTOCONTABILEKEY IN (1,2,3)");
}

TEST_P(Actions, AnItemWithoutInstalmentsIsNoError) {
  EXPECT_EQ(Azione({"01", "SOSPESOCREA", "C11", "SENZA RATE", ""}), "");
  NienteCambiato();
}

TEST_P(Actions, SuspendingAPresumedDocumentTouchesItsPresumedEventsAlone) {
  EXPECT_EQ(Azione(Presunto), "");
  CambiatoCome("UPDATE EVENTOCONTABILE SET SOSPESA='S' WHERE EVENTOCONTABILEKEY IN (11,12)");
}

TEST_P(Actions, ReactivatingAPresumedDocumentTouchesItsPresumedEventsAlone) {
  EXPECT_EQ(Azione(Con(Presunto, 1, "PRESUNTOCANCELLA")), "");
  CambiatoCome("UPDATE EVENTOCONTABILE SET SOSPESA='N' WHERE EVENTOCONTABILEKEY IN (11,12)");
}

TEST_P(Actions, ReactivatingAnActivePresumedDocumentWritesItAgainAndSucceeds) {
  EXPECT_EQ(Azione({"01", "PRESUNTOCANCELLA", "OC", "05", "123", "T01", ""}), "");
  EXPECT_THAT(Inviate("UPDATE"), SizeIs(1));
  NienteCambiato();
}

TEST_P(Actions, ThePresumedNumberIsFollowedByTheTwoDigitsOfTheYear) {
  EXPECT_EQ(Azione(Con(Presunto, 3, "2006")), "");
  CambiatoCome("UPDATE EVENTOCONTABILE SET SOSPESA='S' WHERE EVENTOCONTABILEKEY IN (11,12)");
}

TEST_P(Actions, WithoutAYearThePresumedNumberStandsAlone) {
  EXPECT_EQ(Azione(Con(Presunto, 3, "")), "");
  CambiatoCome("UPDATE EVENTOCONTABILE SET SOSPESA='S' WHERE EVENTOCONTABILEKEY=17");
}

TEST_P(Actions, APresumedDocumentIsLookedForInEveryFinancialYear) {
  EXPECT_EQ(Azione(Presunto), "");
  EXPECT_THAT(Inviate("SELECT MOVIMENTOKEY"),
              ElementsAre("SELECT MOVIMENTOKEY FROM MOVIMENTOCONTABILE WHERE AZIENDALINEAKEY=? AND TIPOMOVIMENTO=? AND "
                          "SERIE=? AND NUMERO=?"));
}

TEST_P(Actions, DeletingAnExtraRemovesTheMovementAndItsEvents) {
  EXPECT_EQ(Azione({"01", "EXTRADEL", "A", "2006", "15", ""}), "");
  const auto dopo = Tutto(base_);
  auto attese = prima_;
  std::erase_if(attese, [](const std::string& riga) {
    return riga.starts_with("MOVIMENTOCONTABILE 2000|") || riga.starts_with("EVENTOCONTABILE 21|") ||
           riga.starts_with("EVENTOCONTABILE 22|") || riga.starts_with("EVENTOCONTABILE 23|");
  });
  EXPECT_EQ(attese.size() + 4, prima_.size());
  EXPECT_THAT(dopo, testing::ElementsAreArray(attese));
}

TEST_P(Actions, OnlyTheDeletionOfTheMovementCarriesTheSchema) {
  EXPECT_EQ(Azione({"01", "EXTRADEL", "A", "2006", "15", ""}), "");
  EXPECT_THAT(Inviate("DELETE"), ElementsAre("DELETE FROM EVENTOCONTABILE WHERE MOVIMENTOKEY=?",
                                             "DELETE FROM " + Schema() + ".MOVIMENTOCONTABILE WHERE MOVIMENTOKEY=?"));
}

TEST_P(Actions, AnExtraWithoutEventsIsDeleted) {
  EXPECT_EQ(Azione({"01", "EXTRADEL", "A", "2006", "16", ""}), "");
  CambiatoCome("DELETE FROM MOVIMENTOCONTABILE WHERE MOVIMENTOKEY=2004");
}

TEST_P(Actions, WhereTheSchemaDoesNotExistTheEventsStayToo) {
  stato().ComandoCorrente = base_.Opzioni() + " -DB2SCHEMA manca";
  EXPECT_EQ(Azione({"01", "EXTRADEL", "A", "2006", "15", ""}), "error");
  EXPECT_THAT(msg_.Errore, StartsWith("ERRORE: "));
  NienteCambiato();
}

TEST_P(Actions, InstalmentsOfAnItemAreFoundByTheirOriginalDateWhichStays) {
  EXPECT_EQ(Azione(ScadenzePartita({"1", "20060228", "20060705", "1", "20060430", "20060801"})), "");
  CambiatoCome("UPDATE EVENTOCONTABILE SET DATASCADENZA='2006-07-05' WHERE EVENTOCONTABILEKEY IN (1,4)");
}

TEST_P(Actions, InstalmentsOfAnExtraAreFoundByTheirPresentDateAndChangeTheOriginalToo) {
  EXPECT_EQ(Azione(ScadenzeMovimento({"1", "20060331", "20060705", "1", "20060430", "20060801"})), "");
  const auto attesa = test::BaseDati(GetParam(), test::DatiDelleAzioni());
  attesa.Esegui("UPDATE EVENTOCONTABILE SET DATASCADENZA='2006-07-05',DATASCADENZAORIGINALE='2006-07-05' WHERE "
                "EVENTOCONTABILEKEY=21");
  attesa.Esegui("UPDATE EVENTOCONTABILE SET DATASCADENZA='2006-08-01',DATASCADENZAORIGINALE='2006-08-01' WHERE "
                "EVENTOCONTABILEKEY=22");
  EXPECT_THAT(Tutto(base_), testing::ElementsAreArray(Tutto(attesa)));
}

TEST_P(Actions, InstalmentsAreFoundByTheirDayWhereTheDateComesWithATime) {
  const std::string genere = GetParam();
  std::string dati = test::DatiDelleAzioni();
  for (const char* giorno : {"2006-02-28", "2006-03-31", "2006-04-30"}) {
    dati = test::Replaced(dati, giorno + std::string("'"), giorno + std::string(" 08:30:00'"));
  }
  const test::BaseDati base(
      genere, dati,
      test::Replaced(test::TabelleContabili(), " DATE", genere == "mariadb" ? " DATETIME" : " TIMESTAMP"));
  stato().ComandoCorrente = base.Opzioni() + " -DB2SCHEMA " + base.Schema();
  EXPECT_EQ(Azione(ScadenzePartita({"1", "20060228", "20060705"})), "") << msg_.Errore;
  EXPECT_EQ(Azione(ScadenzeMovimento({"1", "20060331", "20060801"})), "") << msg_.Errore;
  EXPECT_THAT(base.Righe("SELECT DATASCADENZA FROM EVENTOCONTABILE WHERE EVENTOCONTABILEKEY IN (1,4,21,22) ORDER BY "
                         "EVENTOCONTABILEKEY"),
              ElementsAre(StartsWith("2006-07-05"), StartsWith("2006-07-05"), StartsWith("2006-08-01"),
                          StartsWith("2006-04-30")));
}

TEST_P(Actions, OfSeveralGroupsForOneDateTheLastCountsForAnItemAndTheFirstForAnExtra) {
  EXPECT_EQ(Azione(ScadenzePartita({"1", "20060531", "20060901", "1", "20060531", "20061001"})), "");
  EXPECT_EQ(Azione(ScadenzeMovimento({"1", "20060331", "20060901", "1", "20060331", "20061001"})), "");
  EXPECT_THAT(base_.Righe("SELECT DATASCADENZA,DATASCADENZAORIGINALE FROM EVENTOCONTABILE WHERE EVENTOCONTABILEKEY IN "
                          "(3,21) ORDER BY EVENTOCONTABILEKEY"),
              ElementsAre("2006-10-01|2006-05-31", "2006-09-01|2006-09-01"));
}

TEST_P(Actions, ADateThatWasMovedIsNotMovedAgainInTheSameCommand) {
  EXPECT_EQ(Azione(ScadenzeMovimento({"1", "20060331", "20060430", "1", "20060430", "20060801"})), "");
  EXPECT_THAT(base_.Righe("SELECT DATASCADENZA FROM EVENTOCONTABILE WHERE MOVIMENTOKEY=2000 ORDER BY "
                          "EVENTOCONTABILEKEY"),
              ElementsAre("2006-04-30", "2006-08-01", "NULL"));
}

TEST_P(Actions, TheGroupsEndAtTheFirstWithABlankSecondDate) {
  EXPECT_EQ(Azione(ScadenzePartita({"1", "  ", "20060705", "1", "20060228", "20060801"})), "");
  EXPECT_EQ(Azione(ScadenzeMovimento({"1", "", "20060705", "1", "20060331", "20060801"})), "");
  NienteCambiato();
}

TEST_P(Actions, ANewDateThatIsNoneIsNotWrittenAndNothingOfTheListStays) {
  EXPECT_EQ(Azione(ScadenzePartita({"1", "20060531", "20060801", "1", "20060228", "5/7/06"})), "error");
  EXPECT_EQ(msg_.Errore, "ERRORE: 13\r\nData non valida: 5/7/06");
  msg_.Errore.clear();
  EXPECT_EQ(Azione(ScadenzeMovimento({"1", "20060331", "20060801", "1", "20060430", ""})), "error");
  EXPECT_EQ(msg_.Errore, "ERRORE: 13\r\nData non valida: ");
  NienteCambiato();
}

TEST_P(Actions, ANewDateThatIsNoneDoesNoHarmWhereNoInstalmentNeedsIt) {
  EXPECT_EQ(Azione(ScadenzePartita({"1", "19990101", "", "1", "20060531", "20060801"})), "") << msg_.Errore;
  CambiatoCome("UPDATE EVENTOCONTABILE SET DATASCADENZA='2006-08-01' WHERE EVENTOCONTABILEKEY=3");
}

TEST_P(Actions, ADateThatIsNoneDoesNotFindInstalmentsWithoutADate) {
  EXPECT_EQ(Azione(ScadenzePartita({"1", "5/7/06", "20060801"})), "") << msg_.Errore;
  EXPECT_EQ(Azione(ScadenzeMovimento({"1", "5/7/06", "20060801"})), "") << msg_.Errore;
  NienteCambiato();
}

TEST_P(Actions, ThirtyTwoGroupsFillTheList) {
  std::vector<std::string> gruppi;
  for (int i = 0; i < 31; ++i) {
    gruppi.insert(gruppi.end(), {"1", "19990101", "20060705"});
  }
  gruppi.insert(gruppi.end(), {"1", "20060531", "20060801"});
  const auto parametri = ScadenzePartita(gruppi);
  ASSERT_THAT(parametri, SizeIs(101));
  EXPECT_EQ(Azione(parametri), "");
  CambiatoCome("UPDATE EVENTOCONTABILE SET DATASCADENZA='2006-08-01' WHERE EVENTOCONTABILEKEY=3");
}

TEST_P(Actions, AListThatEndsAtTheTypeDoesNothing) {
  EXPECT_EQ(Azione({"01", "SCRIVISCADENZE", "C10", "AB   123", "BANCA"}), "");
  EXPECT_EQ(Azione({"01", "EXTRASCRIVISCAD", "A", "2006", "99"}), "");
  EXPECT_THAT(banco_.statements, IsEmpty());
}

TEST_P(Actions, WhatIsMissingIsSaidAndNothingChanges) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> casi = {
      {{"99", "PRESUNTOCREA", "OC", "06", "123", "T01", ""}, "AZIENDA INESISTENTE"},
      {{"01", "PRESUNTOCREA", "OC", "07", "123", "T01", ""}, "MOVIMENTO CONTABILE INESISTENTE"},
      {{"99", "EXTRADEL", "A", "2006", "15", ""}, "AZIENDA INESISTENTE"},
      {{"01", "EXTRADEL", "A", "2007", "15", ""}, "MOVIMENTO CONTABILE INESISTENTE"},
      {{"01", "EXTRADEL", "A", "", "15", ""}, "MOVIMENTO CONTABILE INESISTENTE"},
      {Con(ScadenzeMovimento({"1", "20060331", "20060705"}), 2, "Z"), "MOVIMENTO CONTABILE INESISTENTE"},
      {{"01", "SOSPESOCREA", "C99", "AB   123", ""}, "CONTO CONTABILE INESISTENTE"},
      {{"01", "SOSPESOCANCELLA", "C10", "AB123", ""}, "PARTITA CONTABILE INESISTENTE"},
      {Con(ScadenzePartita({"1", "20060228", "20060705"}), 2, "C99"), "CONTO CONTABILE INESISTENTE"},
      {Con(ScadenzePartita({"1", "20060228", "20060705"}), 3, ""), "PARTITA CONTABILE INESISTENTE"}};
  for (const auto& [parametri, testo] : casi) {
    msg_.Errore.clear();
    EXPECT_EQ(Azione(parametri), "error") << parametri[1];
    EXPECT_EQ(msg_.Errore, "ERRORE: -2147220990\r\n" + testo) << parametri[1];
  }
  NienteCambiato();
}

TEST_P(Actions, AnActionThatIsUnknownOrInLowerCaseDoesNothing) {
  for (const char* azione : {"sospesocrea", "Extradel", "CANALIZZAZIONE", "", " SOSPESOCREA", "SOSPESO"}) {
    EXPECT_EQ(Azione({"01", azione, "C10", "AB   123", ""}), "") << azione;
  }
  EXPECT_THAT(banco_.statements, IsEmpty());
  NienteCambiato();
}

TEST_P(Actions, AfterARefusalTheDatabaseIsNotTouched) {
  msg_.Errore = " no ";
  EXPECT_EQ(Azione({"01", "SOSPESOCREA", "C10", "AB   123", ""}), "error");
  EXPECT_EQ(msg_.Errore, " no ");
  EXPECT_THAT(banco_.statements, IsEmpty());
  NienteCambiato();
}

TEST_P(Actions, AnErrorOfBlanksAloneIsNoRefusal) {
  msg_.Errore = "  ";
  EXPECT_EQ(Azione({"01", "SOSPESOCREA", "C10", "AB   123", ""}), "");
  CambiatoCome("UPDATE EVENTOCONTABILE SET SOSPESA='S' WHERE EVENTOCONTABILEKEY IN (1,2,3)");
}

TEST_P(Actions, AnErrorMadeOfALineBreakIsARefusal) {
  msg_.Errore = " \r\n ";
  EXPECT_EQ(Azione({"01", "SOSPESOCREA", "C10", "AB   123", ""}), "error");
  EXPECT_EQ(msg_.Errore, " \r\n ");
  EXPECT_THAT(banco_.statements, IsEmpty());
  NienteCambiato();
}

TEST_P(Actions, WithoutAReplyObjectTheActionsAreDoneAllTheSame) {
  EXPECT_EQ(procedureLumoDB2::EseguiAzioneDB2({"01", "SOSPESOCREA", "C10", "AB   123", ""}, nullptr), "");
  EXPECT_EQ(procedureLumoDB2::EseguiAzioneDB2({"01", "SOSPESOCREA", "C99", "AB   123", ""}, nullptr), "error");
}

TEST_P(Actions, TheTestWritesRowOneHundred) {
  EXPECT_EQ(Esegui("-T TEST"), "");
  CambiatoCome("UPDATE ERRORE SET FILEXML='FILEccccc' WHERE ERROREKEY=100");
  EXPECT_THAT(Inviate("SELECT"), ElementsAre("SELECT * FROM " + Schema() + ".ERRORE WHERE ERROREKEY=?"));
  EXPECT_THAT(Inviate("UPDATE"), ElementsAre(StartsWith("UPDATE " + Schema() + ".ERRORE SET FILEXML=?")));
  EXPECT_EQ(Esegui("-T TEST"), "") << "anche con il valore che c'è già";
  EXPECT_THAT(banco_.desktop.box, IsEmpty());
  EXPECT_THAT(banco_.host.operazioni, IsEmpty());
}

TEST_P(Actions, WithoutRowOneHundredTheTestSucceedsAndWritesNothing) {
  base_.Esegui("UPDATE ERRORE SET ERROREKEY=101 WHERE ERROREKEY=100");
  const auto righe = Tutto(base_);
  EXPECT_EQ(Esegui("-T TEST"), "");
  EXPECT_EQ(Tutto(base_), righe);
}

TEST_P(Actions, WithSeveralRowsOneHundredTheTestSucceedsAndWritesNothing) {
  base_.Esegui("DROP TABLE ERRORE");
  base_.Esegui("CREATE TABLE ERRORE (ERROREKEY INTEGER NOT NULL, FILEXML VARCHAR(20))");
  base_.Esegui("INSERT INTO ERRORE VALUES (100,'prima')");
  base_.Esegui("INSERT INTO ERRORE VALUES (100,'seconda')");
  const auto righe = base_.Righe("SELECT FILEXML FROM ERRORE ORDER BY FILEXML");
  EXPECT_EQ(Esegui("-T TEST"), "");
  EXPECT_EQ(base_.Righe("SELECT FILEXML FROM ERRORE ORDER BY FILEXML"), righe);
  EXPECT_THAT(banco_.desktop.box, IsEmpty());
}

TEST_P(Actions, AFailedTestSaysWhereWithNumberAndDescription) {
  EXPECT_EQ(LumoScadenze().EseguiLumoScad("-T TEST " + base_.Opzioni() + " -DB2SCHEMA manca"), "error");
  ASSERT_THAT(banco_.desktop.box, SizeIs(1));
  EXPECT_THAT(banco_.desktop.box[0], testing::MatchesRegex("testScrittura\r\n-[0-9]+\r\n.+"));
  EXPECT_THAT(banco_.desktop.box[0], HasSubstr("manca"));
  EXPECT_EQ(banco_.desktop.titles[0], "LumoScad");
  NienteCambiato();
}
