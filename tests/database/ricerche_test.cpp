#include "BaseDati.hpp"
#include "database/db2Searches.hpp"
#include "platform/RuntimeError.hpp"
#include "support/TestBench.hpp"

#include <gmock/gmock.h>

#include <functional>

namespace lumoscad::db2Searches {
namespace {

using testing::ElementsAre;

/// The failure that `ricerca` ends with.
RuntimeError Fallimento(const std::function<std::int32_t()>& ricerca) {
  try {
    ADD_FAILURE() << "found " << ricerca();
  } catch (const RuntimeError& errore) {
    return errore;
  }
  return {0, ""};
}

void AttendiFallimento(const std::function<std::int32_t()>& ricerca, const std::string& testo) {
  const RuntimeError errore = Fallimento(ricerca);
  EXPECT_EQ(errore.Number(), -2147220990);
  EXPECT_EQ(errore.Description(), "");
  EXPECT_EQ(errore.Source(), testo);
}

class KeySearch : public testing::TestWithParam<const char*> {
 protected:
  KeySearch() { base.Apri(connection); }

  test::BaseDati base{GetParam(), test::DatiDiProva()};
  ado::Connection connection;
  test::TestBench banco;
};

INSTANTIATE_TEST_SUITE_P(Databases, KeySearch, testing::ValuesIn(test::GeneriDiBase()), test::NomeDelGenere);

TEST_P(KeySearch, FindsACompanyLineByItsThreeCodes) {
  EXPECT_EQ(CercaAziendaLinea(connection, "002", " ", " "), 2);
  EXPECT_THAT(banco.statements, ElementsAre("SELECT AZIENDALINEAKEY FROM AZIENDELINEE WHERE "
                                            "CODICEAZIENDA=? AND LINEA=? AND SOTTOLINEA=?"));
  AttendiFallimento([&] { return CercaAziendaLinea(connection, "003", " ", " "); }, "AZIENDA INESISTENTE");
  AttendiFallimento([&] { return CercaAziendaLinea(connection, "001", "L", " "); }, "AZIENDA INESISTENTE");
}

TEST_P(KeySearch, FindsAMovementOfOneYear) {
  EXPECT_EQ(CercaMovimento(connection, "1", "N", "2005", "A", "3"), 303);
  EXPECT_EQ(CercaMovimento(connection, "1", "N", "2006", "A", "3"), 304);
  EXPECT_THAT(banco.statements,
              testing::Each("SELECT MOVIMENTOKEY FROM MOVIMENTOCONTABILE WHERE "
                            "AZIENDALINEAKEY=? AND TIPOMOVIMENTO=? AND SERIE=? AND NUMERO=? AND ESERCIZIO=?"));
}

TEST_P(KeySearch, FindsAMovementOfAnyYear) {
  EXPECT_EQ(CercaMovimento(connection, "1", "N", "#null#", "A", "1"), 301);
  EXPECT_THAT(banco.statements, ElementsAre("SELECT MOVIMENTOKEY FROM MOVIMENTOCONTABILE WHERE "
                                            "AZIENDALINEAKEY=? AND TIPOMOVIMENTO=? AND SERIE=? AND NUMERO=?"));
}

TEST_P(KeySearch, TakesEvenAnEmptyYearAsACondition) {
  AttendiFallimento([&] { return CercaMovimento(connection, "1", "N", "", "A", "1"); },
                    "MOVIMENTO CONTABILE INESISTENTE");
  ASSERT_EQ(banco.statements.size(), 1U);
  EXPECT_THAT(banco.statements[0], testing::EndsWith(" AND ESERCIZIO=?"));
}

TEST_P(KeySearch, FailsForAMovementThatIsMissingOrNotTheOnlyOne) {
  const std::string testo = "MOVIMENTO CONTABILE INESISTENTE";
  AttendiFallimento([&] { return CercaMovimento(connection, "1", "N", "#null#", "A", "3"); }, testo);
  AttendiFallimento([&] { return CercaMovimento(connection, "2", "N", "#null#", "A", "1"); }, testo);
  AttendiFallimento([&] { return CercaMovimento(connection, "1", "X", "#null#", "A", "1"); }, testo);
}

TEST_P(KeySearch, TakesZeroForAKey) {
  base.Esegui("INSERT INTO CONTOCONTABILE VALUES (0,'ZERO','CONTO ZERO','01',NULL,'N')");
  EXPECT_EQ(CercaContoContabile(connection, "ZERO"), 0);
}

TEST_P(KeySearch, OfAListTellsSeriesAndNumberApart) {
  base.Esegui("INSERT INTO MOVIMENTOCONTABILE VALUES (901,1,'N','Q','12','2006','01')");
  base.Esegui("INSERT INTO MOVIMENTOCONTABILE VALUES (902,1,'N','Q1','2','2006','01')");
  RicercaMovimenti movimenti(connection, "1", "N");
  EXPECT_EQ(movimenti.Cerca("Q", "12"), 901);
  EXPECT_EQ(movimenti.Cerca("Q1", "2"), 902);
}

TEST_P(KeySearch, FindsAnAccountByItsCode) {
  EXPECT_EQ(CercaContoContabile(connection, "B07"), 107);
  EXPECT_THAT(banco.statements, ElementsAre("SELECT CONTOCONTABILE_KEY FROM CONTOCONTABILE WHERE CODICECONTO=? "));
}

TEST_P(KeySearch, FailsForAnAccountThatIsMissingOrComesTwice) {
  AttendiFallimento([&] { return CercaContoContabile(connection, "Z99"); }, "CONTO CONTABILE INESISTENTE");
  base.Esegui(base.Contesto().DropIndex("CONTO_CODICE", "CONTOCONTABILE"));
  base.Esegui("INSERT INTO CONTOCONTABILE VALUES (199,'B07','BANCA DOPPIA','07',NULL,'N')");
  AttendiFallimento([&] { return CercaContoContabile(connection, "B07"); }, "CONTO CONTABILE INESISTENTE");
}

TEST_P(KeySearch, TakesANegativeKeyForNone) {
  base.Esegui("INSERT INTO CONTOCONTABILE VALUES (-5,'NEG','NEGATIVO','01',NULL,'N')");
  AttendiFallimento([&] { return CercaContoContabile(connection, "NEG"); }, "CONTO CONTABILE INESISTENTE");
}

TEST_P(KeySearch, FindsAnOpenItemByAccountAndNumber) {
  EXPECT_EQ(CercaPartitaContabile(connection, "103", "2006   3"), 203);
  EXPECT_THAT(banco.statements, ElementsAre("SELECT PARTITACONTABILEKEY FROM PARTITACONTABILE WHERE "
                                            "CONTOCONTABILE_KEY=? AND NUMEROPARTITA=?"));
  AttendiFallimento([&] { return CercaPartitaContabile(connection, "101", "2006   3"); },
                    "PARTITA CONTABILE INESISTENTE");
}

TEST_P(KeySearch, BindsACodeAsAValueWhateverItHolds) {
  AttendiFallimento([&] { return CercaContoContabile(connection, "B07' OR '1'='1"); }, "CONTO CONTABILE INESISTENTE");
}

TEST_P(KeySearch, TellsAnAccountsDescriptionOnAConnectionOfItsOwn) {
  stato().ComandoCorrente = "BANCA /CREDITI " + base.Opzioni();
  MsgAnnulla msg;
  EXPECT_EQ(DescrizioneConto("C01", msg), "ROSSI SRL");
  EXPECT_EQ(msg.Errore, "");
  EXPECT_THAT(banco.statements, ElementsAre("SELECT DESCRIZIONEVOCE FROM CONTOCONTABILE WHERE CODICECONTO=?"));
}

TEST_P(KeySearch, ReportsAnAccountWithoutDescriptionRow) {
  stato().ComandoCorrente = base.Opzioni();
  MsgAnnulla msg;
  EXPECT_EQ(DescrizioneConto("Z99", msg), "error");
  EXPECT_EQ(msg.Errore, "ERRORE: -2147220990\r\nCONTO CONTABILE INESISTENTE");
}

TEST_P(KeySearch, ReportsAnAccountWhoseCodeComesTwice) {
  base.Esegui(base.Contesto().DropIndex("CONTO_CODICE", "CONTOCONTABILE"));
  base.Esegui("INSERT INTO CONTOCONTABILE VALUES (199,'B07','BANCA DOPPIA','07',NULL,'N')");
  stato().ComandoCorrente = base.Opzioni();
  MsgAnnulla msg;
  EXPECT_EQ(DescrizioneConto("B07", msg), "error");
  EXPECT_EQ(msg.Errore, "ERRORE: -2147220990\r\nCONTO CONTABILE INESISTENTE");
}

TEST_P(KeySearch, RaisesADatabaseFailureAsItIs) {
  base.Esegui("DROP TABLE AZIENDELINEE");
  EXPECT_NE(Fallimento([&] { return CercaAziendaLinea(connection, "001", " ", " "); }).Number(), -2147220990);
}

} // namespace
} // namespace lumoscad::db2Searches
