#include "PresuntiDiProva.hpp"
#include "common/Utilities.hpp"
#include "database/procedureLumoDB2.hpp"
#include "support/TestBench.hpp"

#include <gmock/gmock.h>

#include <algorithm>

namespace lumoscad::procedureLumoDB2 {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::StartsWith;

const std::string Inizio =
    "SELECT sum(EVE.IMPORTOEURO) AS IMPORTOEURO, MOV.SERIE, MOV.NUMERO, CONTO.CODICECONTO AS CODICECONTO, "
    "CONTO.DESCRIZIONEVOCE AS DESCRIZIONECONTO, BANCA.CODICECONTO AS CODICEBANCA, BANCA.DESCRIZIONEVOCE AS "
    "BANCADESCRIZIONE, EVE.DATACONSEGNA AS DATACONSEGNA, EVE.CODICEDIVISA AS DIVISA, sum(EVE.IMPORTODIVISA) AS "
    "IMPORTODIVISA, EVE.DATACONSEGNAPRODUZIONE AS DATACONSEGNAORIGINE FROM MOVIMENTOCONTABILE AS MOV, EVENTOCONTABILE "
    "AS EVE LEFT OUTER JOIN CONTOCONTABILE AS BANCA ON BANCA.CONTOCONTABILE_KEY=EVE.BANCAPRESENTAZIONE_KEY, "
    "CONTOCONTABILE AS CONTO WHERE EVE.AZIENDALINEAKEY=? AND MOV.MOVIMENTOKEY = EVE.MOVIMENTOKEY And "
    "CONTO.CONTOCONTABILE_KEY = EVE.CONTOCONTABILE_KEY AND EVE.TIPOEVENTO = 'P' AND MOV.TIPOOPERAZIONE = '";
const std::string Sempre =
    "' AND EVE.SOSPESA = 'N' AND CONTO.TIPOLOGIACONTO in ('01','02','03','04') AND CONTO.BLOCCO = 'N' ";
const std::string Fine = "GROUP BY MOV.SERIE, MOV.NUMERO, CONTO.CODICECONTO, CONTO.DESCRIZIONEVOCE, BANCA.CODICECONTO, "
                         "BANCA.DESCRIZIONEVOCE, EVE.DATACONSEGNA, EVE.CODICEDIVISA, EVE.DATACONSEGNAPRODUZIONE ";

FiltroPresunti Clienti() {
  FiltroPresunti filtro;
  filtro.parTipoMovimenti = "V";
  return filtro;
}

class PresumedList : public testing::TestWithParam<const char*> {
 protected:
  PresumedList() { base.Apri(connection); }

  /// The rows that `filtro` lists, in the order of their texts, for the database promises none.
  std::vector<std::string> Elenco(const FiltroPresunti& filtro) {
    auto righe = ElencoPresunti(connection, 1, filtro, msg);
    std::vector<std::string> testi;
    for (; righe && !righe->Eof(); righe->MoveNext()) {
      const auto campo = [&](const char* nome) { return std::string(righe->Fields(nome).Value().value_or("-")); };
      testi.push_back(campo("SERIE") + campo("NUMERO") + "|" + campo("CODICECONTO") + "|" + campo("DATACONSEGNA") +
                      "|" + campo("DATACONSEGNAORIGINE") + "|" + campo("DIVISA") + "|" +
                      Utilities::FormattaImporto(campo("IMPORTODIVISA")) + "|" +
                      Utilities::FormattaImporto(campo("IMPORTOEURO")) + "|" + campo("CODICEBANCA"));
    }
    std::sort(testi.begin(), testi.end());
    return testi;
  }
  /// The documents that `filtro` lists, each once.
  std::vector<std::string> Documenti(const FiltroPresunti& filtro) {
    auto righe = Elenco(filtro);
    for (std::string& riga : righe) {
      riga.erase(riga.find('|'));
    }
    righe.erase(std::unique(righe.begin(), righe.end()), righe.end());
    return righe;
  }
  /// The statement sent for `filtro`, from the kind of operation on and without the grouping.
  std::string Condizioni(const FiltroPresunti& filtro) {
    banco.statements.clear();
    static_cast<void>(ElencoPresunti(connection, 1, filtro, msg));
    std::string sql = banco.statements.empty() ? "" : banco.statements.back();
    if (!sql.starts_with(Inizio) || !sql.ends_with(Fine)) {
      ADD_FAILURE() << sql;
      return sql;
    }
    return sql.substr(Inizio.size(), sql.size() - Inizio.size() - Fine.size());
  }

  test::BaseDati base{GetParam(), test::DatiPresunti()};
  ado::Connection connection;
  test::TestBench banco;
  MsgAnnulla msg;
};

class PresumedStatement : public PresumedList {};
class PresumedRows : public PresumedList {};

INSTANTIATE_TEST_SUITE_P(Databases, PresumedStatement, testing::ValuesIn(test::GeneriDiBase()), test::NomeDelGenere);
INSTANTIATE_TEST_SUITE_P(Databases, PresumedRows, testing::ValuesIn(test::GeneriDiBase()), test::NomeDelGenere);

TEST_P(PresumedStatement, WithoutFiltersOnlyTheKindOfOperationIsAsked) {
  EXPECT_EQ(Condizioni(Clienti()), "V" + Sempre);
}

TEST_P(PresumedStatement, AnEmptyKindOfOperationIsAskedAllTheSame) {
  EXPECT_EQ(Condizioni({}), Sempre);
}

TEST_P(PresumedStatement, BlankFiltersAddNothing) {
  FiltroPresunti filtro = Clienti();
  filtro.parConto = filtro.parSerie = filtro.parScad = filtro.parBancaSN = " ";
  EXPECT_EQ(Condizioni(filtro), "V" + Sempre);
}

TEST_P(PresumedStatement, TheReferenceDateHasNoEffect) {
  FiltroPresunti filtro = Clienti();
  filtro.parData = "05/03/2006";
  EXPECT_EQ(Condizioni(filtro), "V" + Sempre);
}

TEST_P(PresumedStatement, AnAccountIsPutBetweenQuotesAsGiven) {
  FiltroPresunti filtro = Clienti();
  filtro.parConto = "C01";
  EXPECT_EQ(Condizioni(filtro), "V" + Sempre + "AND CONTO.CODICECONTO = 'C01' ");
}

TEST_P(PresumedStatement, ADocumentIsFoundByItsNumberAndYearTogether) {
  FiltroPresunti filtro = Clienti();
  filtro.parSerie = "AB";
  filtro.parNumero = "123";
  filtro.parAnno = "06";
  EXPECT_EQ(Condizioni(filtro), "V" + Sempre + "AND EVE.MOVIMENTOKEY = 401 ");
  EXPECT_THAT(banco.statements,
              ElementsAre("SELECT MOVIMENTOKEY FROM MOVIMENTOCONTABILE WHERE AZIENDALINEAKEY=? AND TIPOMOVIMENTO=? AND "
                          "SERIE=? AND NUMERO=?",
                          EndsWith(Fine)));
}

TEST_P(PresumedStatement, ADocumentThatDoesNotExistFailsTheList) {
  FiltroPresunti filtro = Clienti();
  filtro.parSerie = "AB";
  filtro.parNumero = "999";
  filtro.parAnno = "06";
  EXPECT_FALSE(ElencoPresunti(connection, 1, filtro, msg).has_value());
  EXPECT_EQ(msg.Errore, "ERRORE: -2147220990\r\nMOVIMENTO CONTABILE INESISTENTE");
}

TEST_P(PresumedStatement, OverdueAndNotYetDueCompareTheDeliveryDateWithToday) {
  FiltroPresunti filtro = Clienti();
  filtro.parScad = "SCADUTO";
  EXPECT_EQ(Condizioni(filtro), "V" + Sempre + "AND (EVE.DATACONSEGNA < '2006-03-05') ");
  filtro.parScad = "DASCADERE";
  EXPECT_EQ(Condizioni(filtro), "V" + Sempre + "AND (EVE.DATACONSEGNA >= '2006-03-05') ");
  filtro.parScad = "TUTTO";
  EXPECT_EQ(Condizioni(filtro), "V" + Sempre);
}

TEST_P(PresumedStatement, TheBankSelectionAsksForAPresentOrAMissingBank) {
  FiltroPresunti filtro = Clienti();
  filtro.parBancaSN = "N";
  EXPECT_EQ(Condizioni(filtro), "V" + Sempre + "AND EVE.BANCAPRESENTAZIONE_KEY IS NULL ");
  filtro.parBancaSN = "S";
  EXPECT_EQ(Condizioni(filtro), "V" + Sempre + "AND EVE.BANCAPRESENTAZIONE_KEY IS NOT NULL ");
}

TEST_P(PresumedStatement, OneExcludedSeriesExcludesNothing) {
  FiltroPresunti filtro = Clienti();
  filtro.parSerieEscluse = {"A"};
  EXPECT_EQ(Condizioni(filtro), "V" + Sempre);
}

TEST_P(PresumedStatement, TwoOrMoreSeriesAreExcluded) {
  FiltroPresunti filtro = Clienti();
  filtro.parSerieEscluse = {"A", "B"};
  EXPECT_EQ(Condizioni(filtro), "V" + Sempre + "AND (MOV.SERIE != 'A' AND MOV.SERIE != 'B' ) ");
  filtro.parSerieEscluse = {"A", "", "A"};
  EXPECT_EQ(Condizioni(filtro), "V" + Sempre + "AND (MOV.SERIE != 'A' AND MOV.SERIE != '' AND MOV.SERIE != 'A' ) ");
}

TEST_P(PresumedStatement, AllConditionsKeepTheirOrder) {
  FiltroPresunti filtro{"V", "SCADUTO", "S", "C01", "AB", "123", "06", "", {"X", "Y"}};
  EXPECT_EQ(Condizioni(filtro),
            "V" + Sempre +
                "AND CONTO.CODICECONTO = 'C01' AND EVE.MOVIMENTOKEY = 401 AND (EVE.DATACONSEGNA < "
                "'2006-03-05') AND EVE.BANCAPRESENTAZIONE_KEY IS NOT NULL AND (MOV.SERIE != 'X' AND "
                "MOV.SERIE != 'Y' ) ");
}

TEST_P(PresumedStatement, AQuoteInAFilterIsNotDoubledAndTheFailureIsRecorded) {
  FiltroPresunti filtro = Clienti();
  filtro.parConto = "D'ORO";
  EXPECT_FALSE(ElencoPresunti(connection, 1, filtro, msg).has_value());
  EXPECT_THAT(msg.Errore, StartsWith("ERRORE: "));
}

TEST_P(PresumedRows, ARowIsABankDateAndCurrencyOfADocument) {
  EXPECT_THAT(Elenco(Clienti()),
              ElementsAre("AB12306|C01|2006-03-10|2006-03-01|EUR|100,00|100,00|B06",
                          "AB12306|C01|2006-03-10|2006-03-01|EUR|50,00|50,00|B07",
                          "AB12306|C01|2006-04-10|-|USD|100,50|80,00|B06", "AB12406|C02|-|-|EUR|1.234,50|1.234,50|-",
                          "AB12406|C02|-|-|USD|0,00|5,00|-", "CD506|C01|2006-02-28|2006-02-28|CHF|0,01|0,00|B07",
                          "EF06|C02|2007-01-01|2006-12-31|EUR|7,00|7,00|B06"));
  EXPECT_EQ(msg.Errore, "");
}

TEST_P(PresumedRows, SuppliersAreListedByTheirKindOfOperation) {
  FiltroPresunti filtro;
  filtro.parTipoMovimenti = "A";
  EXPECT_THAT(Documenti(filtro), ElementsAre("AB90006"));
  EXPECT_THAT(Documenti({}), IsEmpty());
}

TEST_P(PresumedRows, FiltersSelectDocuments) {
  FiltroPresunti filtro = Clienti();
  filtro.parScad = "SCADUTO";
  EXPECT_THAT(Documenti(filtro), ElementsAre("CD506"));
  filtro = Clienti();
  filtro.parBancaSN = "N";
  EXPECT_THAT(Documenti(filtro), ElementsAre("AB12406"));
  filtro = Clienti();
  filtro.parSerie = "AB";
  filtro.parNumero = "12406";
  EXPECT_THAT(Documenti(filtro), ElementsAre("AB12406"));
  filtro = Clienti();
  filtro.parSerieEscluse = {"AB", "EF"};
  EXPECT_THAT(Documenti(filtro), ElementsAre("CD506"));
  filtro.parSerieEscluse = {"AB"};
  EXPECT_THAT(Documenti(filtro), ElementsAre("AB12306", "AB12406", "CD506", "EF06"));
}

} // namespace
} // namespace lumoscad::procedureLumoDB2
