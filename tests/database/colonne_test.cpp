#include "BaseDati.hpp"
#include "PresuntiDiProva.hpp"
#include "common/Testo.hpp"
#include "common/Utilities.hpp"
#include "database/db2Searches.hpp"
#include "database/procedureLumoDB2.hpp"
#include "support/TestBench.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <utility>

namespace lumoscad::procedureLumoDB2 {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// `script` with its words in lower case, the names of its tables too unless they are found by their case; what stands
/// between quotes stays.
std::string Minuscolo(const std::string& script, bool ancheTabelle) {
  static const std::set<std::string> Tabelle = {"AZIENDELINEE",       "CONTOCONTABILE",  "PARTITACONTABILE",
                                                "MOVIMENTOCONTABILE", "EVENTOCONTABILE", "ERRORE"};
  std::string risultato;
  std::string parola;
  bool traApici = false;
  for (const char c : script + ' ') {
    if ((c >= 'A' && c <= 'Z') || c == '_') {
      parola += c;
      continue;
    }
    if (!traApici && (ancheTabelle || Tabelle.count(parola) == 0)) {
      std::transform(parola.begin(), parola.end(), parola.begin(),
                     [](char lettera) { return lettera == '_' ? lettera : static_cast<char>(lettera - 'A' + 'a'); });
    }
    risultato += std::exchange(parola, "") + c;
    traApici = traApici != (c == '\'');
  }
  return risultato;
}

/// The accounting tables as another owner may have declared them: texts of fixed length, two keys kept as texts, the
/// year as a number, amounts in floating point, names in lower case.
std::string AltreTabelle(const test::DatabaseContext& contesto) {
  const std::vector<std::pair<std::string, std::string>> tipi = {
      {"VARCHAR", "CHAR"},
      {"DECIMAL(15,2)", "DOUBLE PRECISION"},
      {"AZIENDELINEE (\n  AZIENDALINEAKEY INTEGER", "AZIENDELINEE (\n  AZIENDALINEAKEY CHAR(10)"},
      {"ERROREKEY INTEGER", "ERROREKEY CHAR(10)"},
      {"ESERCIZIO CHAR(4)", "ESERCIZIO INTEGER"}};
  std::string script = test::TabelleContabili();
  for (const auto& [vecchio, nuovo] : tipi) {
    EXPECT_NE(script.find(vecchio), std::string::npos) << vecchio;
    script = test::Replaced(script, vecchio, nuovo);
  }
  return Minuscolo(script, !contesto.quirks().tableNamesByCase);
}

std::string RateDaConfrontare() {
  using test::Rata;
  return Rata("31,1,301,201,101,'C','N','2006-03-04','2006-01-31',1,106,100.10") +
         Rata("32,1,301,201,101,'C','N','2006-03-04','2006-01-31',1,106,50.15") +
         Rata("33,1,301,202,102,'C','N','2006-03-05','2006-03-05',1,NULL,0.1") +
         Rata("34,1,301,202,102,'C','N','2006-03-05','2006-03-05',1,NULL,0.2") +
         Rata("35,1,301,203,103,'C','N','2007-02-28','2007-02-28',1,107,1234567890123.45") +
         Rata("36,1,302,204,104,'C','N','2007-03-31','2007-02-28',1,NULL,-30.005");
}

/// The procedures over columns of other types than those they are mostly tested on.
class OtherColumns : public testing::TestWithParam<const char*> {
 protected:
  OtherColumns() {
    base.Apri(connection);
    stato().ComandoCorrente = "X " + base.Opzioni() + " -DB2SCHEMA " + base.Schema();
  }

  /// How a code comes back that was written into a column of `lunghezza` letters.
  [[nodiscard]] std::string Fisso(const char* codice, std::size_t lunghezza) const {
    return base.Contesto().TextFor(codice, lunghezza);
  }
  [[nodiscard]] std::vector<std::string> Eventi(const std::string& colonne, const std::string& chiavi) const {
    return base.Righe("SELECT " + colonne + " FROM EVENTOCONTABILE WHERE EVENTOCONTABILEKEY IN (" + chiavi +
                      ") ORDER BY EVENTOCONTABILEKEY");
  }
  [[nodiscard]] std::string Azione(const std::vector<std::string>& parametri) {
    return EseguiAzioneDB2(parametri, &msg);
  }

  test::BaseDati base{GetParam(), test::DatiPresunti() + RateDaConfrontare(),
                      AltreTabelle(test::databaseContext(GetParam()))};
  ado::Connection connection;
  test::TestBench banco;
  MsgAnnulla msg;
};

INSTANTIATE_TEST_SUITE_P(Databases, OtherColumns, testing::ValuesIn(test::GeneriDiBase()), test::NomeDelGenere);

TEST_P(OtherColumns, FindKeysKeptAsTextsByCodesKeptInColumnsOfFixedLength) {
  EXPECT_EQ(db2Searches::CercaAziendaLinea(connection, "002", " ", " "), 2);
  EXPECT_EQ(db2Searches::CercaMovimento(connection, "1", "N", "2005", "A", "3"), 303);
  EXPECT_EQ(db2Searches::CercaMovimento(connection, "1", "N", "#null#", "A", "1"), 301);
  EXPECT_EQ(db2Searches::CercaContoContabile(connection, "B07"), 107);
  EXPECT_EQ(db2Searches::CercaPartitaContabile(connection, "103", "2006   3"), 203);
}

TEST_P(OtherColumns, FindACodeAsTheListGaveIt) {
  EXPECT_EQ(db2Searches::CercaContoContabile(connection, Fisso("B07", 12)), 107);
  EXPECT_EQ(db2Searches::CercaPartitaContabile(connection, "103", Fisso("2006   3", 20)), 203);
}

TEST_P(OtherColumns, NeverTakeACodeForAnotherThatDiffersByCaseOrAccent) {
  base.Esegui("INSERT INTO CONTOCONTABILE VALUES (201,'CAFFE','A','01',NULL,'N')");
  base.Esegui("INSERT INTO CONTOCONTABILE VALUES (202,'CAFFÈ','B','01',NULL,'N')");
  base.Esegui("INSERT INTO CONTOCONTABILE VALUES (203,'caffe','C','01',NULL,'N')");
  EXPECT_EQ(db2Searches::CercaContoContabile(connection, "CAFFE"), 201);
  EXPECT_EQ(db2Searches::CercaContoContabile(connection, "CAFFÈ"), 202);
  EXPECT_EQ(db2Searches::CercaContoContabile(connection, "caffe"), 203);
}

TEST_P(OtherColumns, GiveTheListItsTextsAsTheyComeAndItsSumsToTheCent) {
  FiltroScadenze filtro;
  filtro.parBancaSN = "S";
  auto righe = ElencoScadenze(connection, 1, filtro, msg);
  ASSERT_TRUE(righe) << msg.Errore;
  std::vector<std::string> testi;
  for (; !righe->Eof(); righe->MoveNext()) {
    const auto campo = [&](const char* nome) { return std::string(righe->Fields(nome).Value().value_or("-")); };
    EXPECT_EQ(campo("NUMEROPARTITA"), Fisso(campo("IDPARTITA") == "201" ? "2006   1" : "2006   3", 20));
    testi.push_back(campo("CODICECONTO") + "|" + campo("DATASCADENZA") + "|" + campo("CODICEBANCA") + "|" +
                    Utilities::FormattaImporto(campo("IMPORTOEURO")));
  }
  std::sort(testi.begin(), testi.end());
  EXPECT_THAT(testi, ElementsAre(Fisso("C01", 12) + "|2006-03-04|" + Fisso("B06", 12) + "|150,25",
                                 Fisso("C01", 12) + "|2006-03-10|" + Fisso("B06", 12) + "|1,00",
                                 Fisso("F03", 12) + "|2007-02-28|" + Fisso("B07", 12) + "|1.234.567.890.123,45"));
}

TEST_P(OtherColumns, AreFilteredByCodesWithoutTheirBlanks) {
  FiltroScadenze filtro;
  filtro.parConto = "C02";
  filtro.parPartita = "2006   2";
  filtro.parCodiceInterno = "INT2";
  auto righe = ElencoScadenze(connection, 1, filtro, msg);
  ASSERT_TRUE(righe) << msg.Errore;
  ASSERT_EQ(righe->RecordCount(), 1U);
  EXPECT_EQ(Utilities::FormattaImporto(righe->Fields("IMPORTOEURO").Value().value_or("")), "0,30");
}

TEST_P(OtherColumns, NeverLetABackslashEndAFiltersText) {
  base.Esegui("UPDATE CONTOCONTABILE SET CODICEINTERNO='INT\\' WHERE CODICECONTO='C02'");
  FiltroScadenze filtro;
  filtro.parCodiceInterno = "INT\\";
  auto righe = ElencoScadenze(connection, 1, filtro, msg);
  ASSERT_TRUE(righe) << msg.Errore;
  ASSERT_EQ(righe->RecordCount(), 1U);
  EXPECT_EQ(righe->Fields("IDPARTITA").Value(), "202");
}

TEST_P(OtherColumns, TakeABankChangeWithTheCodesThatTheListGave) {
  VariazioneCanalizzazione v;
  v.idPartitaKey = "201";
  v.CodiceConto = Fisso("C01", 12);
  v.NumeroPartita = Fisso("2006   1", 20);
  v.VecchiaBanca = Fisso("B06", 12);
  v.NuovaBanca = Fisso("B07", 12);
  v.isBancaChanged = true;
  v.ScadenzaOriginale = "31/01/2006";
  v.NumeroRata = "1";
  v.VecchiaScadenza = "04/03/2006";
  v.NuovaScadenza = "01/04/2006";
  v.isScadenzaChanged = true;
  EXPECT_EQ(AggiornaCanalizzazione({v}, msg, "CREDITI"), "") << msg.Errore;
  EXPECT_THAT(Eventi("DATASCADENZA,BANCAPRESENTAZIONE_KEY", "31,32,33"),
              ElementsAre("2006-04-01|107", "2006-04-01|107", "2006-03-05|NULL"));
}

TEST_P(OtherColumns, ListPresumedDocumentsAndTakeTheirChanges) {
  FiltroPresunti filtro;
  filtro.parTipoMovimenti = "V";
  filtro.parSerie = "AB";
  filtro.parNumero = "12306";
  auto righe = ElencoPresunti(connection, 1, filtro, msg);
  ASSERT_TRUE(righe) << msg.Errore;
  EXPECT_EQ(righe->RecordCount(), 3U);
  EXPECT_EQ(righe->Fields("SERIE").Value(), Fisso("AB", 4));
  EXPECT_EQ(righe->Fields("NUMERO").Value(), Fisso("12306", 12));

  VariazioneConsegna banca;
  banca.idMovimentoKey = 401;
  banca.CodiceConto = Fisso("C01", 12);
  banca.VecchiaBanca = Fisso("B06", 12);
  banca.NuovaBanca = Fisso("B07", 12);
  banca.isBancaChanged = true;
  EXPECT_EQ(AggiornaBancaPresunti({banca}, msg, "PRESUNTI"), "") << msg.Errore;
  VariazioneConsegna consegna;
  consegna.idMovimentoKey = 401;
  consegna.Consegna = "10/03/2006";
  consegna.NuovaConsegna = "11/03/2006";
  consegna.isConsegnaChanged = true;
  EXPECT_EQ(AggiornaConsegna({consegna}, msg, "PRESUNTI"), "") << msg.Errore;
  EXPECT_THAT(Eventi("BANCAPRESENTAZIONE_KEY,DATACONSEGNA", "1,2,3"),
              ElementsAre("107|2006-03-11", "107|2006-03-11", "107|2006-04-10"));
}

TEST_P(OtherColumns, AreSuspendedAndMadeActive) {
  EXPECT_EQ(Azione({"001", "SOSPESOCREA", "C01", "2006   1", ""}), "") << msg.Errore;
  EXPECT_THAT(Eventi("SOSPESA", "31,32,33"), ElementsAre("S", "S", "N"));
  EXPECT_EQ(Azione({"001", "PRESUNTOCREA", "AB", "06", "123", "T01", ""}), "") << msg.Errore;
  EXPECT_THAT(Eventi("SOSPESA", "1,2,3,4"), ElementsAre("S", "S", "S", "N"));
  EXPECT_EQ(Azione({"001", "SOSPESOCANCELLA", "C01", "2006   1", ""}), "") << msg.Errore;
  EXPECT_THAT(Eventi("SOSPESA", "31,32"), ElementsAre("N", "N"));
}

TEST_P(OtherColumns, AreRewrittenAndDeletedByTheExtraMovementsYearAsANumber) {
  EXPECT_EQ(Azione({"001", "EXTRASCRIVISCAD", "A", "2006", "2", "1", "20070331", "20070430"}), "") << msg.Errore;
  EXPECT_THAT(Eventi("DATASCADENZA,DATASCADENZAORIGINALE", "36"), ElementsAre("2007-04-30|2007-04-30"));
  EXPECT_EQ(Azione({"001", "SCRIVISCADENZE", "C02", "2006   2", "", "1", "20060305", "20060405"}), "") << msg.Errore;
  EXPECT_THAT(Eventi("DATASCADENZA,DATASCADENZAORIGINALE", "33,34"),
              ElementsAre("2006-04-05|2006-03-05", "2006-04-05|2006-03-05"));
  EXPECT_EQ(Azione({"001", "EXTRADEL", "A", "2006", "2", ""}), "") << msg.Errore;
  EXPECT_THAT(Eventi("SOSPESA", "36"), IsEmpty());
}

TEST_P(OtherColumns, PassTheWritingTestWithAKeyKeptAsText) {
  EXPECT_EQ(TestDB2(stato().ComandoCorrente), "");
  EXPECT_THAT(banco.desktop.box, IsEmpty());
  EXPECT_THAT(base.Righe("SELECT FILEXML FROM ERRORE"), ElementsAre("FILEccccc"));
}

} // namespace
} // namespace lumoscad::procedureLumoDB2
