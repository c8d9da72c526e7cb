#include "BaseDati.hpp"
#include "common/Utilities.hpp"
#include "database/procedureLumoDB2.hpp"
#include "support/TestBench.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <initializer_list>
#include <utility>

namespace lumoscad::procedureLumoDB2 {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

const std::string Inizio =
    "SELECT CONTO.CODICECONTO AS CODICECONTO, CONTO.DESCRIZIONEVOCE AS DESCRIZIONECONTO, "
    "PARTITACONTABILE.PARTITACONTABILEKEY AS IDPARTITA, PARTITACONTABILE.NUMEROPARTITA, EVENTOCONTABILE.DATASCADENZA, "
    "EVENTOCONTABILE.NUMERORATA, EVENTOCONTABILE.DATASCADENZAORIGINALE, BANCA.CODICECONTO AS CODICEBANCA, "
    "BANCA.DESCRIZIONEVOCE AS DESCRIZIONEBANCA, Sum(EVENTOCONTABILE.IMPORTOEURO) AS IMPORTOEURO FROM CONTOCONTABILE "
    "AS CONTO RIGHT JOIN (MOVIMENTOCONTABILE RIGHT JOIN (CONTOCONTABILE AS BANCA RIGHT JOIN (PARTITACONTABILE LEFT "
    "JOIN EVENTOCONTABILE ON PARTITACONTABILE.PARTITACONTABILEKEY = EVENTOCONTABILE.PARTITACONTABILEKEY) ON "
    "BANCA.CONTOCONTABILE_KEY = EVENTOCONTABILE.BANCAPRESENTAZIONE_KEY) ON MOVIMENTOCONTABILE.MOVIMENTOKEY = "
    "EVENTOCONTABILE.MOVIMENTOKEY) ON CONTO.CONTOCONTABILE_KEY = EVENTOCONTABILE.CONTOCONTABILE_KEY WHERE "
    "EVENTOCONTABILE.AZIENDALINEAKEY=? ";
const std::string Sempre = "AND PARTITACONTABILE.STATO='A' AND EVENTOCONTABILE.SOSPESA='N' AND "
                           "EVENTOCONTABILE.TIPOEVENTO='C' AND MOVIMENTOCONTABILE.TIPOMOVIMENTO='N' ";
const std::string Fine = "GROUP BY CONTO.CODICECONTO, CONTO.DESCRIZIONEVOCE, PARTITACONTABILE.PARTITACONTABILEKEY, "
                         "PARTITACONTABILE.NUMEROPARTITA, EVENTOCONTABILE.DATASCADENZA, EVENTOCONTABILE.NUMERORATA, "
                         "EVENTOCONTABILE.DATASCADENZAORIGINALE, BANCA.CODICECONTO, BANCA.DESCRIZIONEVOCE ";

std::string Rate() {
  using test::Rata;
  return Rata("1,1,301,201,101,'C','N','2006-03-04','2006-01-31',1,106,100.10") +
         Rata("2,1,301,201,101,'C','N','2006-03-04','2006-01-31',1,106,50.15") +
         Rata("3,1,301,202,102,'C','N','2006-03-05','2006-03-05',1,NULL,10") +
         Rata("4,1,301,203,103,'C','N','2007-02-28','2007-02-28',1,107,20") +
         Rata("5,1,301,204,104,'C','N','2007-03-31','2007-03-31',1,NULL,30") +
         Rata("6,1,301,201,101,'C','S','2006-03-04','2006-01-31',9,NULL,1") +
         Rata("7,1,301,201,101,'P','N','2006-03-04','2006-01-31',9,NULL,1") +
         Rata("8,1,302,201,101,'C','N','2006-03-04','2006-01-31',9,NULL,1") +
         Rata("9,1,301,206,101,'C','N','2006-03-04','2006-01-31',9,NULL,1") +
         Rata("10,2,301,201,101,'C','N','2006-03-04','2006-01-31',9,NULL,1") +
         Rata("11,1,301,201,101,'C','N',NULL,NULL,2,NULL,NULL") +
         Rata("12,1,301,205,105,'C','N','2007-04-01','2007-04-01',1,NULL,40");
}

using F = FiltroScadenze;

/// A filter of these values and no others.
F Con(std::initializer_list<std::pair<std::string F::*, const char*>> valori) {
  F filtro;
  for (const auto& [campo, valore] : valori) {
    filtro.*campo = valore;
  }
  return filtro;
}

class Lists : public testing::TestWithParam<const char*> {
 protected:
  Lists() { base.Apri(connection); }

  /// The instalments that `filtro` lists, in the order of their texts, for the database promises none.
  std::vector<std::string> Elenco(const FiltroScadenze& filtro) {
    MsgAnnulla msg;
    auto righe = ElencoScadenze(connection, 1, filtro, msg);
    EXPECT_EQ(msg.Errore, "");
    std::vector<std::string> testi;
    for (; righe && !righe->Eof(); righe->MoveNext()) {
      const auto campo = [&](const char* nome) { return std::string(righe->Fields(nome).Value().value_or("-")); };
      const std::string importo = campo("IMPORTOEURO");
      testi.push_back(campo("CODICECONTO") + "|" + campo("IDPARTITA") + "|" + campo("DATASCADENZA") + "|" +
                      campo("NUMERORATA") + "|" + campo("CODICEBANCA") + "|" +
                      (importo == "-" ? importo : Utilities::FormattaImporto(importo)));
    }
    std::sort(testi.begin(), testi.end());
    return testi;
  }
  /// The statement sent for `filtro`, without the parts that are always there.
  std::string Condizioni(const FiltroScadenze& filtro) {
    banco.statements.clear();
    MsgAnnulla msg;
    static_cast<void>(ElencoScadenze(connection, 1, filtro, msg));
    EXPECT_EQ(banco.statements.size(), 1U);
    std::string sql = banco.statements.empty() ? "" : banco.statements[0];
    if (!sql.starts_with(Inizio) || !sql.ends_with(Fine)) {
      ADD_FAILURE() << sql;
      return sql;
    }
    return sql.substr(Inizio.size(), sql.size() - Inizio.size() - Fine.size());
  }

  test::BaseDati base{GetParam(), test::DatiDiProva() + Rate()};
  ado::Connection connection;
  test::TestBench banco;
};

class ListStatement : public Lists {};
class ListRows : public Lists {};

INSTANTIATE_TEST_SUITE_P(Databases, ListStatement, testing::ValuesIn(test::GeneriDiBase()), test::NomeDelGenere);
INSTANTIATE_TEST_SUITE_P(Databases, ListRows, testing::ValuesIn(test::GeneriDiBase()), test::NomeDelGenere);

// What the page on the databases says of SQLite's lists: the operand of a RIGHT JOIN that is a join itself is written
// out and walked whole for every row of the other, and no index of ours can change that.
TEST(SqliteList, WalksTheOuterJoinsWholeWhateverIndexesThereAre) {
  const test::BaseDati base("sqlite", test::DatiDiProva() + Rate());
  base.Script("CREATE INDEX E1 ON EVENTOCONTABILE (MOVIMENTOKEY, BANCAPRESENTAZIONE_KEY, CONTOCONTABILE_KEY);"
              "CREATE INDEX E2 ON EVENTOCONTABILE (AZIENDALINEAKEY, TIPOEVENTO, SOSPESA);"
              "CREATE INDEX E3 ON EVENTOCONTABILE (BANCAPRESENTAZIONE_KEY);"
              "CREATE INDEX E4 ON EVENTOCONTABILE (CONTOCONTABILE_KEY);"
              "CREATE INDEX M1 ON MOVIMENTOCONTABILE (TIPOMOVIMENTO, MOVIMENTOKEY);"
              "CREATE INDEX P1 ON PARTITACONTABILE (STATO, PARTITACONTABILEKEY);"
              "ANALYZE;");
  std::vector<std::string> passi;
  for (const std::string& riga :
       base.Righe("EXPLAIN QUERY PLAN " + Inizio.substr(0, Inizio.size() - 2) + "1 " + Sempre + Fine)) {
    passi.push_back(riga.substr(riga.rfind('|') + 1));
  }
  EXPECT_THAT(passi, testing::IsSupersetOf({"SCAN (join-1)", "SCAN (join-2)", "SCAN (join-3)"}));
  EXPECT_THAT(passi, testing::Not(testing::Contains(testing::ContainsRegex("SEARCH .*join-"))));
}

TEST_P(ListStatement, HoldsTheFixedConditionsAloneWithoutFilters) {
  EXPECT_EQ(Condizioni({}), Sempre);
}

TEST_P(ListStatement, TakesBlankFiltersForNone) {
  EXPECT_EQ(Condizioni({" ", " ", "  ", " ", " ", "  ", " "}), Sempre);
}

TEST_P(ListStatement, PutsAccountAndItemBeforeTheFixedConditions) {
  FiltroScadenze filtro;
  filtro.parConto = "C01";
  EXPECT_EQ(Condizioni(filtro), "AND CONTO.CODICECONTO = 'C01' " + Sempre);
  filtro.parPartita = "2006   1";
  EXPECT_EQ(Condizioni(filtro),
            "AND CONTO.CODICECONTO = 'C01' AND PARTITACONTABILE.NUMEROPARTITA='2006   1' " + Sempre);
}

TEST_P(ListStatement, PutsFilterTextsBetweenQuotesAsGiven) {
  FiltroScadenze filtro;
  filtro.parConto = " C01 ";
  EXPECT_EQ(Condizioni(filtro), "AND CONTO.CODICECONTO = ' C01 ' " + Sempre);
  filtro.parConto = "D' OR 'A'='A";
  EXPECT_EQ(Condizioni(filtro), "AND CONTO.CODICECONTO = 'D' OR 'A'='A' " + Sempre);
}

TEST_P(ListStatement, SelectsTheAccountClassesOfTheMode) {
  EXPECT_EQ(Condizioni(Con({{&F::parModalita, "CREDITI"}})),
            Sempre + "AND ((CONTO.TIPOLOGIACONTO='01') OR (CONTO.TIPOLOGIACONTO='02')) ");
  EXPECT_EQ(Condizioni(Con({{&F::parModalita, "DEBITI"}})),
            Sempre + "AND ((CONTO.TIPOLOGIACONTO='03') OR (CONTO.TIPOLOGIACONTO='04')) ");
}

TEST_P(ListStatement, SelectsEveryClassInAnyOtherMode) {
  for (const char* modalita : {"crediti", "PRESUNTI", "TUTTI"}) {
    EXPECT_EQ(Condizioni(Con({{&F::parModalita, modalita}})), Sempre) << modalita;
  }
}

TEST_P(ListStatement, SelectsTheInternalCode) {
  EXPECT_EQ(Condizioni(Con({{&F::parCodiceInterno, "INT1"}})), Sempre + "AND CONTO.CODICEINTERNO = 'INT1' ");
}

TEST_P(ListStatement, ComparesDueDatesWithTodaysDate) {
  EXPECT_EQ(Condizioni(Con({{&F::parScad, "SCADUTO"}})), Sempre + "AND EVENTOCONTABILE.DATASCADENZA < '2006-03-05' ");
  EXPECT_EQ(Condizioni(Con({{&F::parScad, "DASCADERE"}})),
            Sempre + "AND EVENTOCONTABILE.DATASCADENZA >= '2006-03-05' ");
  EXPECT_EQ(Condizioni(Con({{&F::parScad, "TUTTO"}})), Sempre);
}

TEST_P(ListStatement, SelectsByThePresenceOfABank) {
  EXPECT_EQ(Condizioni(Con({{&F::parBancaSN, "N"}})), Sempre + "AND EVENTOCONTABILE.BANCAPRESENTAZIONE_KEY IS NULL ");
  EXPECT_EQ(Condizioni(Con({{&F::parBancaSN, "S"}})),
            Sempre + "AND EVENTOCONTABILE.BANCAPRESENTAZIONE_KEY IS NOT NULL ");
  EXPECT_EQ(Condizioni(Con({{&F::parBancaSN, "T"}})), Sempre);
}

TEST_P(ListStatement, SelectsWholeMonths) {
  EXPECT_EQ(Condizioni(Con({{&F::parMesiScadenze, "022007,032007"}})),
            Sempre + "AND ((EVENTOCONTABILE.DATASCADENZA >='2007-02-01' AND EVENTOCONTABILE.DATASCADENZA "
                     "<='2007-02-28') OR (EVENTOCONTABILE.DATASCADENZA >='2007-03-01' AND "
                     "EVENTOCONTABILE.DATASCADENZA <='2007-03-31') ) ");
  EXPECT_EQ(Condizioni(Con({{&F::parMesiScadenze, "022004"}})),
            Sempre + "AND ((EVENTOCONTABILE.DATASCADENZA >='2004-02-01' AND EVENTOCONTABILE.DATASCADENZA "
                     "<='2004-02-29') ) ");
}

TEST_P(ListStatement, SplitsMonthsByPositionOnly) {
  EXPECT_EQ(Condizioni(Con({{&F::parMesiScadenze, "5"}})),
            Sempre + "AND ((EVENTOCONTABILE.DATASCADENZA >='-5-01' AND EVENTOCONTABILE.DATASCADENZA <='-5-31') ) ");
}

TEST_P(ListStatement, HoldsAllFiltersInTheirOrder) {
  const FiltroScadenze filtro{"DEBITI", "SCADUTO", "042006", "S", "F03", "2006   3", "INT3"};
  EXPECT_EQ(Condizioni(filtro),
            "AND CONTO.CODICECONTO = 'F03' AND PARTITACONTABILE.NUMEROPARTITA='2006   3' " + Sempre +
                "AND ((CONTO.TIPOLOGIACONTO='03') OR (CONTO.TIPOLOGIACONTO='04')) AND CONTO.CODICEINTERNO = 'INT3' "
                "AND EVENTOCONTABILE.DATASCADENZA < '2006-03-05' AND EVENTOCONTABILE.BANCAPRESENTAZIONE_KEY IS NOT "
                "NULL AND ((EVENTOCONTABILE.DATASCADENZA >='2006-04-01' AND EVENTOCONTABILE.DATASCADENZA "
                "<='2006-04-30') ) ");
}

TEST_P(ListStatement, OfTheBanksIsSentAsItIs) {
  MsgAnnulla msg;
  static_cast<void>(ElencoBanche(connection, msg));
  EXPECT_THAT(banco.statements,
              ElementsAre("SELECT * FROM CONTOCONTABILE WHERE CONTOCONTABILE.TIPOLOGIACONTO='06' OR "
                          "CONTOCONTABILE.TIPOLOGIACONTO='07' AND CONTOCONTABILE.BLOCCO = 'N' ORDER BY "
                          "CONTOCONTABILE.DESCRIZIONEVOCE"));
}

TEST_P(ListRows, AreTheOpenActiveInstalmentsOfTheCompanySummedUp) {
  EXPECT_THAT(Elenco({}), ElementsAre("C01|201|-|2|-|-", "C01|201|2006-03-04|1|B06|150,25",
                                      "C02|202|2006-03-05|1|-|10,00", "F03|203|2007-02-28|1|B07|20,00",
                                      "F04|204|2007-03-31|1|-|30,00", "G05|205|2007-04-01|1|-|40,00"));
}

TEST_P(ListRows, AreThoseOfTheModesClasses) {
  EXPECT_THAT(Elenco(Con({{&F::parModalita, "CREDITI"}})),
              ElementsAre("C01|201|-|2|-|-", "C01|201|2006-03-04|1|B06|150,25", "C02|202|2006-03-05|1|-|10,00"));
  EXPECT_THAT(Elenco(Con({{&F::parModalita, "DEBITI"}})),
              ElementsAre("F03|203|2007-02-28|1|B07|20,00", "F04|204|2007-03-31|1|-|30,00"));
}

TEST_P(ListRows, DueTodayAreNotOverdue) {
  EXPECT_THAT(Elenco(Con({{&F::parModalita, "CREDITI"}, {&F::parScad, "SCADUTO"}})),
              ElementsAre("C01|201|2006-03-04|1|B06|150,25"));
  EXPECT_THAT(Elenco(Con({{&F::parModalita, "CREDITI"}, {&F::parScad, "DASCADERE"}})),
              ElementsAre("C02|202|2006-03-05|1|-|10,00"));
}

TEST_P(ListRows, FollowBankMonthsAndTexts) {
  EXPECT_THAT(Elenco(Con({{&F::parModalita, "DEBITI"}, {&F::parBancaSN, "S"}})),
              ElementsAre("F03|203|2007-02-28|1|B07|20,00"));
  EXPECT_THAT(Elenco(Con({{&F::parModalita, "DEBITI"}, {&F::parBancaSN, "N"}})),
              ElementsAre("F04|204|2007-03-31|1|-|30,00"));
  EXPECT_THAT(Elenco(Con({{&F::parMesiScadenze, "022007,032007"}})),
              ElementsAre("F03|203|2007-02-28|1|B07|20,00", "F04|204|2007-03-31|1|-|30,00"));
  EXPECT_THAT(Elenco(Con({{&F::parConto, "C02"}})), ElementsAre("C02|202|2006-03-05|1|-|10,00"));
  EXPECT_THAT(Elenco(Con({{&F::parPartita, "2006   3"}})), ElementsAre("F03|203|2007-02-28|1|B07|20,00"));
  EXPECT_THAT(Elenco(Con({{&F::parCodiceInterno, "INT2"}})), ElementsAre("C02|202|2006-03-05|1|-|10,00"));
  EXPECT_THAT(Elenco(Con({{&F::parConto, "Z99"}})), IsEmpty());
}

TEST_P(ListRows, OfTheBanksComeByDescriptionWithBlockedAccountsOfClassSixOnly) {
  MsgAnnulla msg;
  auto righe = ElencoBanche(connection, msg);
  ASSERT_TRUE(righe);
  std::vector<std::string> codici;
  for (; !righe->Eof(); righe->MoveNext()) {
    codici.emplace_back(righe->Fields("CODICECONTO").Value().value_or(""));
  }
  EXPECT_THAT(codici, ElementsAre("B07", "B06"));
  EXPECT_EQ(msg.Errore, "");
}

TEST_P(ListRows, AreNoneWhenTheStatementFails) {
  MsgAnnulla msg;
  EXPECT_FALSE(ElencoScadenze(connection, 1, Con({{&F::parConto, "D'ARCO"}}), msg));
  EXPECT_THAT(msg.Errore, testing::MatchesRegex("ERRORE: -[0-9]+\r\n(.|\n)+"));
}

TEST_P(ListRows, OfTheBanksAreNoneWhenTheStatementFails) {
  base.Esegui("DROP TABLE CONTOCONTABILE");
  MsgAnnulla msg;
  EXPECT_FALSE(ElencoBanche(connection, msg));
  EXPECT_THAT(msg.Errore, StartsWith("ERRORE: -"));
}

} // namespace
} // namespace lumoscad::procedureLumoDB2
