#include "PresuntiDiProva.hpp"
#include "database/procedureLumoDB2.hpp"
#include "support/TestBench.hpp"

#include <gmock/gmock.h>

#include <algorithm>

namespace lumoscad::procedureLumoDB2 {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

const std::string CercaConto = "SELECT CONTOCONTABILE_KEY FROM CONTOCONTABILE WHERE CODICECONTO=? ";

/// The bank change of document AB123/06 of customer C01.
VariazioneConsegna Banca(const std::string& vecchia, const std::string& nuova) {
  VariazioneConsegna v;
  v.idMovimentoKey = 401;
  v.CodiceConto = "C01";
  v.Serie = "AB";
  v.Anno = "06";
  v.Numero = "123";
  v.VecchiaBanca = vecchia;
  v.NuovaBanca = nuova;
  v.isBancaChanged = true;
  return v;
}

VariazioneConsegna Consegna(std::int32_t movimento, const std::string& attuale, const std::string& nuova) {
  VariazioneConsegna v;
  v.idMovimentoKey = movimento;
  v.CodiceConto = "C01";
  v.Consegna = attuale;
  v.NuovaConsegna = nuova;
  v.isConsegnaChanged = true;
  return v;
}

class PresumedUpdate : public testing::TestWithParam<const char*> {
 protected:
  PresumedUpdate() { stato().ComandoCorrente = "BANCA /PRESUNTI " + base.Opzioni(); }

  /// The keys of the events in which anything changed.
  [[nodiscard]] std::vector<std::string> Cambiati() const {
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
  [[nodiscard]] std::vector<std::string> Evento(const std::string& chiave) const {
    return base.Righe("SELECT BANCAPRESENTAZIONE_KEY, DATACONSEGNA, TITOLOIVA FROM EVENTOCONTABILE WHERE "
                      "EVENTOCONTABILEKEY=" +
                      chiave);
  }

  test::BaseDati base{GetParam(), test::DatiPresunti()};
  std::vector<std::string> prima = test::Rate(base);
  test::TestBench banco;
  MsgAnnulla msg;
};

class PresumedUpdateStatements : public PresumedUpdate {};
class PresumedUpdateRows : public PresumedUpdate {};

INSTANTIATE_TEST_SUITE_P(Databases, PresumedUpdateStatements, testing::ValuesIn(test::GeneriDiBase()),
                         test::NomeDelGenere);
INSTANTIATE_TEST_SUITE_P(Databases, PresumedUpdateRows, testing::ValuesIn(test::GeneriDiBase()), test::NomeDelGenere);

TEST_P(PresumedUpdateStatements, ABankChangeIsOneStatementADocument) {
  EXPECT_EQ(AggiornaBancaPresunti({Banca("B06", "B07")}, msg, "PRESUNTI"), "");
  EXPECT_THAT(banco.statements,
              ElementsAre(CercaConto, CercaConto, CercaConto,
                          "UPDATE EVENTOCONTABILE SET BANCAPRESENTAZIONE_KEY=107 WHERE MOVIMENTOKEY=? AND "
                          "CONTOCONTABILE_KEY= 101 AND BANCAPRESENTAZIONE_KEY=106 AND EVENTOCONTABILE.SOSPESA='N' "));
}

TEST_P(PresumedUpdateStatements, AMissingBankIsNullAndIsNotLookedUp) {
  EXPECT_EQ(AggiornaBancaPresunti({Banca("#null#", "B07")}, msg, "PRESUNTI"), "");
  EXPECT_EQ(
      test::SenzaDomande(banco.statements).back(),
      "UPDATE EVENTOCONTABILE SET BANCAPRESENTAZIONE_KEY=107 WHERE MOVIMENTOKEY=? AND CONTOCONTABILE_KEY= 101 AND "
      "BANCAPRESENTAZIONE_KEY IS NULL AND EVENTOCONTABILE.SOSPESA='N' ");
  banco.statements.clear();
  EXPECT_EQ(AggiornaBancaPresunti({Banca("B06", "#null#")}, msg, "PRESUNTI"), "");
  EXPECT_THAT(banco.statements,
              ElementsAre(CercaConto, CercaConto,
                          "UPDATE EVENTOCONTABILE SET BANCAPRESENTAZIONE_KEY=NULL WHERE MOVIMENTOKEY=? AND "
                          "CONTOCONTABILE_KEY= 101 AND BANCAPRESENTAZIONE_KEY=106 AND EVENTOCONTABILE.SOSPESA='N' "));
}

TEST_P(PresumedUpdateStatements, ARecordWithoutABankChangeSendsNothing) {
  VariazioneConsegna senza = Banca("B06", "B07");
  senza.isBancaChanged = false;
  EXPECT_EQ(AggiornaBancaPresunti({senza}, msg, "PRESUNTI"), "");
  EXPECT_THAT(banco.statements, IsEmpty());
}

TEST_P(PresumedUpdateStatements, OtherModesChangeNothing) {
  for (const char* modo : {"CREDITI", "DEBITI", "", "presunti"}) {
    EXPECT_EQ(AggiornaBancaPresunti({Banca("B06", "B07")}, msg, modo), "") << modo;
    EXPECT_EQ(AggiornaConsegna({Consegna(401, "10/03/2006", "11/03/2006")}, msg, modo), "") << modo;
  }
  EXPECT_THAT(banco.statements, IsEmpty());
  EXPECT_THAT(Cambiati(), IsEmpty());
}

TEST_P(PresumedUpdateStatements, AnEmptyListDoesNotEvenConnect) {
  stato().ComandoCorrente = "BANCA /PRESUNTI -DB2SOURCE NESSUNA";
  EXPECT_EQ(AggiornaBancaPresunti({}, msg, "PRESUNTI"), "");
  EXPECT_EQ(AggiornaConsegna({}, msg, "PRESUNTI"), "");
  EXPECT_EQ(msg.Errore, "");
}

TEST_P(PresumedUpdateStatements, ADeliveryChangeIsOneStatementARecord) {
  EXPECT_EQ(AggiornaConsegna({Consegna(401, "10/03/2006", "11/03/2006")}, msg, "PRESUNTI"), "");
  EXPECT_THAT(banco.statements,
              ElementsAre("UPDATE EVENTOCONTABILE SET DATACONSEGNA= '2006-03-11',  TITOLOIVA= ' ' WHERE MOVIMENTOKEY=? "
                          "AND DATACONSEGNA= '2006-03-10' AND EVENTOCONTABILE.SOSPESA='N' "));
}

TEST_P(PresumedUpdateStatements, AMissingDeliveryDateIsMatchedAsNull) {
  EXPECT_EQ(AggiornaConsegna({Consegna(402, "#null#", "11/03/2006")}, msg, "PRESUNTI"), "");
  EXPECT_THAT(banco.statements,
              ElementsAre("UPDATE EVENTOCONTABILE SET DATACONSEGNA= '2006-03-11',  TITOLOIVA= ' ' WHERE MOVIMENTOKEY=? "
                          "AND DATACONSEGNA IS NULL AND EVENTOCONTABILE.SOSPESA='N' "));
}

TEST_P(PresumedUpdateStatements, AMissingNewDeliveryDateIsWrittenAsNull) {
  EXPECT_EQ(AggiornaConsegna({Consegna(401, "10/03/2006", "#null#")}, msg, "PRESUNTI"), "");
  EXPECT_THAT(banco.statements,
              ElementsAre("UPDATE EVENTOCONTABILE SET DATACONSEGNA= NULL,  TITOLOIVA= ' ' WHERE MOVIMENTOKEY=? "
                          "AND DATACONSEGNA= '2006-03-10' AND EVENTOCONTABILE.SOSPESA='N' "));
}

TEST_P(PresumedUpdateStatements, ADateThatIsNoneNeverReachesAStatement) {
  EXPECT_EQ(AggiornaConsegna({Consegna(401, "10/03/2006", "2006-03-11")}, msg, "PRESUNTI"), "error");
  EXPECT_THAT(msg.Errore, StartsWith("ERRORE: 13\r\nData non valida: 2006-03-11"));
  EXPECT_THAT(banco.statements, IsEmpty());
}

TEST_P(PresumedUpdateRows, OnlyTheRowsWithTheOldBankChange) {
  EXPECT_EQ(AggiornaBancaPresunti({Banca("B06", "B08")}, msg, "PRESUNTI"), "");
  // Rows 1 and 3 carry the old bank; 2 another one, 8 is suspended; 12 is an instalment of the same movement.
  EXPECT_THAT(Cambiati(), ElementsAre("1", "3", "12"));
  EXPECT_THAT(Evento("1"), ElementsAre("108|2006-03-10|X"));
  EXPECT_EQ(msg.Errore, "");
}

TEST_P(PresumedUpdateRows, ABankIsRemovedAndGivenToADocumentWithoutOne) {
  VariazioneConsegna data = Banca("#null#", "B07");
  data.idMovimentoKey = 402;
  data.CodiceConto = "C02";
  EXPECT_EQ(AggiornaBancaPresunti({Banca("B07", "#null#"), data}, msg, "PRESUNTI"), "");
  EXPECT_THAT(Cambiati(), ElementsAre("2", "4", "11"));
  EXPECT_THAT(Evento("2"), ElementsAre("NULL|2006-03-10|X"));
  EXPECT_THAT(Evento("4"), ElementsAre("107|NULL|X"));
}

TEST_P(PresumedUpdateRows, AnUnknownBankKeepsNothingOfTheList) {
  EXPECT_EQ(AggiornaBancaPresunti({Banca("B06", "B07"), Banca("B07", "Z99")}, msg, "PRESUNTI"), "error");
  EXPECT_EQ(msg.Errore, "ERRORE: -2147220990\r\nCONTO CONTABILE INESISTENTE\r\n");
  EXPECT_THAT(Cambiati(), IsEmpty());
}

TEST_P(PresumedUpdateRows, ADeliveryChangeResetsTheVatTitle) {
  EXPECT_EQ(AggiornaConsegna({Consegna(401, "10/03/2006", "11/03/2006")}, msg, "PRESUNTI"), "");
  EXPECT_THAT(Cambiati(), ElementsAre("1", "2"));
  EXPECT_THAT(Evento("1"), ElementsAre("106|2006-03-11|" + base.Contesto().TextFor(" ", 1)));
  EXPECT_THAT(Evento("3"), ElementsAre("106|2006-04-10|X"));
}

TEST_P(PresumedUpdateRows, ADocumentWithoutADeliveryDateReceivesOne) {
  EXPECT_EQ(AggiornaConsegna({Consegna(402, "#null#", "11/03/2006")}, msg, "PRESUNTI"), "");
  EXPECT_THAT(Cambiati(), ElementsAre("4", "11"));
  EXPECT_THAT(Evento("4"), ElementsAre("NULL|2006-03-11|" + base.Contesto().TextFor(" ", 1)));
}

TEST_P(PresumedUpdateRows, TheOrderKeyCountsBeforeTheMovementKey) {
  VariazioneConsegna v = Consegna(401, "28/02/2006", "01/03/2006");
  v.idOrdineKey = "403";
  EXPECT_EQ(AggiornaConsegna({v}, msg, "PRESUNTI"), "");
  EXPECT_THAT(Cambiati(), ElementsAre("5"));
  v.idOrdineKey = "#null#";
  v.Consegna = "10/04/2006";
  EXPECT_EQ(AggiornaConsegna({v}, msg, "PRESUNTI"), "");
  EXPECT_THAT(Cambiati(), ElementsAre("3", "5"));
}

TEST_P(PresumedUpdateRows, AFailureNamesTheStatementsOfItsRecordAlone) {
  base.Impedisci("EVENTOCONTABILE", "OLD.EVENTOCONTABILEKEY=3", "documento fatturato");
  EXPECT_EQ(AggiornaConsegna({Consegna(401, "10/03/2006", "11/03/2006"), Consegna(401, "10/04/2006", "12/04/2006")},
                             msg, "PRESUNTI"),
            "error");
  EXPECT_THAT(msg.Errore, StartsWith("ERRORE: -"));
  EXPECT_THAT(msg.Errore, HasSubstr("documento fatturato"));
  EXPECT_THAT(msg.Errore, HasSubstr("\r\n\r\nUPDATE EVENTOCONTABILE SET DATACONSEGNA= '2006-04-12',"));
  EXPECT_THAT(msg.Errore, Not(HasSubstr("2006-03-11")));
  EXPECT_THAT(Cambiati(), IsEmpty());
}

// The records are applied one after the other, each to the rows that carry its old date by then.
TEST_P(PresumedUpdateRows, ADateMovedOntoAnothersOldDateMovesOnWithIt) {
  EXPECT_EQ(AggiornaConsegna({Consegna(401, "10/03/2006", "10/04/2006"), Consegna(401, "10/04/2006", "20/04/2006")},
                             msg, "PRESUNTI"),
            "");
  EXPECT_THAT(Cambiati(), ElementsAre("1", "2", "3"));
  EXPECT_THAT(Evento("1"), ElementsAre("106|2006-04-20|" + base.Contesto().TextFor(" ", 1)));
}

TEST_P(PresumedUpdateRows, OfTwoNewDatesForOneOldDateTheFirstCounts) {
  EXPECT_EQ(AggiornaConsegna({Consegna(401, "10/03/2006", "11/03/2006"), Consegna(401, "10/03/2006", "12/03/2006")},
                             msg, "PRESUNTI"),
            "");
  EXPECT_THAT(Evento("1"), ElementsAre("106|2006-03-11|" + base.Contesto().TextFor(" ", 1)));
  EXPECT_THAT(Evento("2"), ElementsAre("107|2006-03-11|" + base.Contesto().TextFor(" ", 1)));
}

} // namespace
} // namespace lumoscad::procedureLumoDB2
