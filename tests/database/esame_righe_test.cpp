#include "PresuntiDiProva.hpp"
#include "database/EsameRighe.hpp"
#include "database/procedureLumoDB2.hpp"
#include "platform/RuntimeError.hpp"
#include "support/TestBench.hpp"

#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <vector>

// What the database holds of a change of a list that was asked of it.

namespace lumoscad::procedureLumoDB2 {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::StartsWith;

/// Instalment 1 of an item in two events, 2 in one, 3 without bank, 4 suspended, 5 without due date.
std::string RateDaEsaminare() {
  using test::Rata;
  return Rata("101,1,301,201,101,'C','N','2006-03-04','2006-01-31',1,106,100") +
         Rata("102,1,301,201,101,'C','N','2006-03-04','2006-01-31',1,106,50") +
         Rata("103,1,301,201,101,'C','N','2006-04-04','2006-02-28',2,106,1") +
         Rata("104,1,301,201,101,'C','N','2006-05-04','2006-03-31',3,NULL,1") +
         Rata("105,1,301,201,101,'C','S','2006-06-04','2006-04-30',4,106,1") +
         Rata("106,1,301,201,101,'C','N',NULL,'2006-05-31',5,106,1");
}

VariazioneCanalizzazione Instalment(const std::string& number, const std::string& originalDate,
                                    const std::string& dueDate, const std::string& oldBank,
                                    const std::string& newBank) {
  VariazioneCanalizzazione change;
  change.idPartitaKey = "201";
  change.CodiceConto = "C01";
  change.NumeroPartita = "2006   1";
  change.NumeroRata = number;
  change.ScadenzaOriginale = originalDate;
  change.VecchiaScadenza = dueDate;
  change.VecchiaBanca = oldBank;
  change.NuovaBanca = newBank;
  change.isBancaChanged = true;
  return change;
}

VariazioneCanalizzazione First(const std::string& newBank) {
  return Instalment("1", "31/01/2006", "04/03/2006", "B06", newBank);
}

VariazioneCanalizzazione FirstTo(const std::string& newDate) {
  VariazioneCanalizzazione change = First("B06");
  change.isBancaChanged = false;
  change.NuovaScadenza = newDate;
  change.isScadenzaChanged = true;
  return change;
}

VariazioneConsegna Document(const std::string& oldBank, const std::string& newBank) {
  VariazioneConsegna change;
  change.idMovimentoKey = 401;
  change.CodiceConto = "C01";
  change.Serie = "AB";
  change.Anno = "06";
  change.Numero = "123";
  change.VecchiaBanca = oldBank;
  change.NuovaBanca = newBank;
  change.isBancaChanged = true;
  return change;
}

VariazioneConsegna Delivery(const std::string& newDate) {
  VariazioneConsegna change = Document("B06", "B06");
  change.isBancaChanged = false;
  change.Consegna = "10/03/2006";
  change.ConsegnaOrigine = "01/03/2006";
  change.NuovaConsegna = newDate;
  change.isConsegnaChanged = true;
  return change;
}

ModificaChiesta Lista(const VariazioniCanalizzazione& changes, const char* tipo = "CREDITI") {
  ModificaChiesta modifica;
  modifica.genere = ModificaChiesta::Genere::Canalizzazione;
  modifica.tipo = tipo;
  modifica.canalizzazioni = changes;
  return modifica;
}

ModificaChiesta ListaPresunti(ModificaChiesta::Genere genere, const VariazioniConsegna& changes) {
  ModificaChiesta modifica;
  modifica.genere = genere;
  modifica.tipo = "PRESUNTI";
  modifica.consegne = changes;
  return modifica;
}

ModificaChiesta Banche(const VariazioniConsegna& changes) {
  return ListaPresunti(ModificaChiesta::Genere::BancaPresunti, changes);
}

ModificaChiesta Consegne(const VariazioniConsegna& changes) {
  return ListaPresunti(ModificaChiesta::Genere::Consegna, changes);
}

class ExaminedRows : public testing::TestWithParam<const char*> {
 protected:
  ExaminedRows() { stato().ComandoCorrente = "BANCA /CREDITI " + base.Opzioni(); }

  [[nodiscard]] std::vector<RigaEsaminata> Esame(const ModificaChiesta& modifica) const {
    ado::Connection connection;
    base.Apri(connection);
    return EsaminaRighe(connection, {}, modifica);
  }
  [[nodiscard]] std::vector<StatoRiga> Stati(const ModificaChiesta& modifica) const {
    std::vector<StatoRiga> stati;
    for (const RigaEsaminata& riga : Esame(modifica)) {
      stati.push_back(riga.stato);
    }
    return stati;
  }
  void Somebody(const std::string& assignment, const std::string& keys) const {
    base.Esegui("UPDATE EVENTOCONTABILE SET " + assignment + " WHERE EVENTOCONTABILEKEY IN (" + keys + ")");
  }
  /// Before the procedure, after it, and once somebody has changed what it wrote.
  void ExpectEachState(const ModificaChiesta& modifica, const std::function<std::string()>& write,
                       const std::string& others) {
    EXPECT_THAT(Stati(modifica), Each(StatoRiga::ComePrima));
    ASSERT_EQ(write(), "") << msg.Errore;
    ASSERT_TRUE(msg.righeRimaste.empty());
    EXPECT_THAT(Stati(modifica), Each(StatoRiga::Fatta));
    base.Esegui(others);
    EXPECT_THAT(Stati(modifica), Each(StatoRiga::Cambiata));
  }

  test::BaseDati base{GetParam(), test::DatiPresunti() + RateDaEsaminare()};
  test::TestBench banco;
  MsgAnnulla msg;
};

INSTANTIATE_TEST_SUITE_P(Databases, ExaminedRows, testing::ValuesIn(test::GeneriDiBase()), test::NomeDelGenere);

TEST_P(ExaminedRows, OfTheCreditsListReadAsBeforeThenDoneThenChanged) {
  VariazioneCanalizzazione both = Instalment("2", "28/02/2006", "04/04/2006", "B06", "#null#");
  both.isScadenzaChanged = true;
  both.NuovaScadenza = "05/04/2006";
  const VariazioniCanalizzazione changes = {First("B07"), both,
                                            Instalment("3", "31/03/2006", "04/05/2006", "#null#", "B07"),
                                            Instalment("5", "31/05/2006", "#null#", "B06", "B07")};
  ExpectEachState(
      Lista(changes), [&] { return AggiornaCanalizzazione(changes, msg, "CREDITI"); },
      "UPDATE EVENTOCONTABILE SET BANCAPRESENTAZIONE_KEY=108 WHERE EVENTOCONTABILEKEY BETWEEN 101 AND 106");
}

TEST_P(ExaminedRows, OfTheDebitsListReadTheSame) {
  const VariazioniCanalizzazione changes = {FirstTo("31/03/2006")};
  ExpectEachState(
      Lista(changes, "DEBITI"), [&] { return AggiornaCanalizzazione(changes, msg, "DEBITI"); },
      "UPDATE EVENTOCONTABILE SET DATASCADENZA=NULL WHERE EVENTOCONTABILEKEY IN (101,102)");
}

TEST_P(ExaminedRows, OfADueDateTakenAwayReadTheSame) {
  const VariazioniCanalizzazione changes = {FirstTo("#null#")};
  ExpectEachState(
      Lista(changes), [&] { return AggiornaCanalizzazione(changes, msg, "CREDITI"); },
      "UPDATE EVENTOCONTABILE SET DATASCADENZA='2006-12-24' WHERE EVENTOCONTABILEKEY IN (101,102)");
}

TEST_P(ExaminedRows, OfPresumedDocumentsInTheBankListReadTheSame) {
  VariazioneCanalizzazione byMovement = First("B07");
  byMovement.idMovimentoKey = "403";
  byMovement.VecchiaScadenza = "#null#";
  byMovement.VecchiaBanca = "B07";
  byMovement.NuovaBanca = "B06";
  VariazioneCanalizzazione byItem = First("B07");
  byItem.idMovimentoKey = "#null#";
  const VariazioniCanalizzazione changes = {byMovement, byItem};
  ExpectEachState(
      Lista(changes, "PRESUNTI"), [&] { return AggiornaCanalizzazione(changes, msg, "PRESUNTI"); },
      "UPDATE EVENTOCONTABILE SET BANCAPRESENTAZIONE_KEY=108 WHERE EVENTOCONTABILEKEY IN (5,101,102)");
}

TEST_P(ExaminedRows, OfPresumedDocumentsBanksReadTheSame) {
  VariazioneConsegna without = Document("#null#", "B07");
  without.idMovimentoKey = 402;
  without.CodiceConto = "C02";
  VariazioneConsegna taken = Document("B07", "#null#");
  taken.idMovimentoKey = 403;
  const VariazioniConsegna changes = {without, taken};
  ExpectEachState(
      Banche(changes), [&] { return AggiornaBancaPresunti(changes, msg, "PRESUNTI"); },
      "UPDATE EVENTOCONTABILE SET BANCAPRESENTAZIONE_KEY=108 WHERE EVENTOCONTABILEKEY IN (4,5,11)");
}

TEST_P(ExaminedRows, OfPresumedDocumentsDeliveriesReadTheSame) {
  VariazioneConsegna first = Delivery("#null#");
  VariazioneConsegna set = Delivery("24/03/2006");
  set.idMovimentoKey = 402;
  set.Consegna = "#null#";
  set.ConsegnaOrigine = "#null#";
  const VariazioniConsegna changes = {first, set};
  ExpectEachState(
      Consegne(changes), [&] { return AggiornaConsegna(changes, msg, "PRESUNTI"); },
      "UPDATE EVENTOCONTABILE SET DATACONSEGNA='2006-12-24' WHERE MOVIMENTOKEY IN (401,402)");
}

TEST_P(ExaminedRows, OfOneListMayDifferAndKeepTheirOrderAndNames) {
  Somebody("BANCAPRESENTAZIONE_KEY=107", "103");
  Somebody("BANCAPRESENTAZIONE_KEY=108", "104");
  const auto righe = Esame(Lista({First("B07"), Instalment("2", "28/02/2006", "04/04/2006", "B06", "B07"),
                                  Instalment("3", "31/03/2006", "04/05/2006", "#null#", "B07")}));
  ASSERT_EQ(righe.size(), 3U);
  EXPECT_EQ(righe[0].riga, "conto C01 partita 2006   1 rata 1 del 04/03/2006");
  EXPECT_EQ(righe[0].stato, StatoRiga::ComePrima);
  EXPECT_EQ(righe[1].stato, StatoRiga::Fatta);
  EXPECT_EQ(righe[2].riga, "conto C01 partita 2006   1 rata 3 del 04/05/2006");
  EXPECT_EQ(righe[2].stato, StatoRiga::Cambiata);
}

TEST_P(ExaminedRows, OfWhichOneIsStillAsBeforeAreAsBefore) {
  Somebody("BANCAPRESENTAZIONE_KEY=107", "101");
  EXPECT_THAT(Stati(Lista({First("B07")})), ElementsAre(StatoRiga::ComePrima));
}

TEST_P(ExaminedRows, OfWhichOneHoldsAnotherValueAreNotDone) {
  Somebody("BANCAPRESENTAZIONE_KEY=107", "101");
  Somebody("BANCAPRESENTAZIONE_KEY=108", "102");
  EXPECT_THAT(Stati(Lista({First("B07")})), ElementsAre(StatoRiga::Cambiata));
}

TEST_P(ExaminedRows, ThatAreSuspendedAreHitByNoChange) {
  const auto suspended = Instalment("4", "30/04/2006", "04/06/2006", "B06", "B07");
  EXPECT_THAT(Stati(Lista({suspended})), ElementsAre(StatoRiga::Cambiata));
  Somebody("BANCAPRESENTAZIONE_KEY=107", "105");
  EXPECT_THAT(Stati(Lista({suspended})), ElementsAre(StatoRiga::Fatta));
}

TEST_P(ExaminedRows, ThatAreSuspendedDoNotCountBesideActiveOnes) {
  Somebody("SOSPESA='S'", "102");
  Somebody("BANCAPRESENTAZIONE_KEY=107", "101");
  EXPECT_THAT(Stati(Lista({First("B07")})), ElementsAre(StatoRiga::Fatta));
}

TEST_P(ExaminedRows, ThatAreNoLongerThereAreChanged) {
  base.Esegui("DELETE FROM EVENTOCONTABILE WHERE EVENTOCONTABILEKEY IN (101,102)");
  EXPECT_THAT(Stati(Lista({First("B07")})), ElementsAre(StatoRiga::Cambiata));
}

TEST_P(ExaminedRows, OfWhichNothingIsAskedAreDone) {
  VariazioneCanalizzazione unmarked = First("B07");
  unmarked.isBancaChanged = false;
  VariazioneConsegna unmarkedBank = Document("B06", "B07");
  unmarkedBank.isBancaChanged = false;
  EXPECT_THAT(Stati(Lista({unmarked, First("B06")})), Each(StatoRiga::Fatta)) << "a bank that is the old one";
  EXPECT_THAT(Stati(Lista({First("B07")}, "ALTRO")), ElementsAre(StatoRiga::Fatta));
  EXPECT_THAT(Stati(Banche({unmarkedBank})), ElementsAre(StatoRiga::Fatta));
  EXPECT_THAT(Stati(ModificaChiesta{}), testing::IsEmpty());
  VariazioneCanalizzazione keyless = First("B07");
  keyless.idPartitaKey = "#null#";
  EXPECT_THAT(Stati(Lista({keyless}, "PRESUNTI")), ElementsAre(StatoRiga::Fatta));
}

TEST_P(ExaminedRows, ThatCannotBeWrittenAreChangedAndTheOthersAreRead) {
  EXPECT_THAT(Stati(Lista({First("Z99"), FirstTo("31/2006"), First("B07")})),
              ElementsAre(StatoRiga::Cambiata, StatoRiga::Cambiata, StatoRiga::ComePrima));
}

TEST_P(ExaminedRows, AreOnlyRead) {
  const auto before = test::Rate(base);
  banco.statements.clear();
  EXPECT_EQ(Esame(Lista({First("B07")})).size(), 1U);
  EXPECT_EQ(Esame(Consegne({Delivery("24/03/2006")})).size(), 1U);
  EXPECT_THAT(banco.statements, Each(StartsWith("SELECT ")));
  EXPECT_EQ(test::Rate(base), before);
}

TEST_P(ExaminedRows, OfADatabaseThatFailsAreNotGuessed) {
  ado::Connection connection;
  base.Apri(connection);
  base.Esegui("DROP TABLE EVENTOCONTABILE");
  EXPECT_THROW(static_cast<void>(EsaminaRighe(connection, {}, Lista({First("B07")}))), RuntimeError);
}

} // namespace
} // namespace lumoscad::procedureLumoDB2
