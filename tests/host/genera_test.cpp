#include "Banco.hpp"
#include "platform/nexaro/cartella/Process.hpp"
#include "support/Paths.hpp"

#include <algorithm>
#include <gmock/gmock.h>

namespace lumoscad {
namespace {

using testing::HasSubstr;
using namespace std::chrono_literals;

nexaro::ProcessOutcome Genera(const std::vector<std::string>& argomenti) {
  return nexaro::Run(
      {test::ProgramPath("lumoscad-genera").string(), argomenti, {}, "/", 20s, std::size_t{16} * 1024 * 1024, 2000});
}

TEST(DemonstrationData, AreTheSameForTheSameDay) {
  const auto primi = Genera({"2026-03-05"});
  ASSERT_EQ(primi.state, 0) << primi.errors;
  EXPECT_EQ(primi.output, Genera({"2026-03-05", "400"}).output);
  EXPECT_NE(primi.output, Genera({"2026-03-06"}).output);
}

TEST(DemonstrationData, DoubleTheApostropheInsideATextAndKeepAccents) {
  const auto uscita = Genera({"2026-03-05"}).output;
  EXPECT_THAT(uscita, HasSubstr("'Autofficina Dall''Ò S.r.l.'"));
  EXPECT_THAT(uscita, HasSubstr("(1, '01', ' ', ' ')"));
}

TEST(DemonstrationData, GrowWithTheNumberAskedFor) {
  const auto eventi = [](const std::string& testo) {
    const auto inizio = testo.find("INSERT INTO EVENTOCONTABILE");
    return std::count(testo.begin() + static_cast<std::ptrdiff_t>(inizio), testo.end(), '(');
  };
  EXPECT_GE(eventi(Genera({"2026-03-05", "10"}).output), 10);
  EXPECT_GE(eventi(Genera({"2026-03-05", "5000"}).output), 5000);
}

/// The answer of a query to the generated data, its columns separated by "|".
std::string Interroga(const std::string& argomenti, const std::string& query) {
  const auto esito = nexaro::Run(
      {"/bin/sh",
       {"-c", "{ cat \"$1\"; \"$2\" $3; echo \"$4;\"; } | sqlite3 -bail", "sh",
        test::SourcePath("demo/schema.sql").string(), test::ProgramPath("lumoscad-genera").string(), argomenti, query},
       {},
       "/",
       20s,
       std::size_t{1024} * 1024,
       2000});
  EXPECT_EQ(esito.state, 0) << esito.errors;
  return esito.output;
}

const std::string ConPresunti = " FROM EVENTOCONTABILE E JOIN MOVIMENTOCONTABILE M ON M.MOVIMENTOKEY=E.MOVIMENTOKEY "
                                "JOIN CONTOCONTABILE C ON C.CONTOCONTABILE_KEY=E.CONTOCONTABILE_KEY "
                                "WHERE E.TIPOEVENTO='P' ";
/// What the screens show of the customers' presumed documents.
const std::string Elencati = ConPresunti + "AND M.TIPOOPERAZIONE='V' AND E.SOSPESA='N' AND C.BLOCCO='N' "
                                           "AND E.IMPORTODIVISA<>0 ";

TEST(DemonstrationPresumedDocuments, AreFoundByCompanySeriesAndNumberAlone) {
  EXPECT_EQ(Interroga("2026-03-05 2000 500", "SELECT count(*) FROM (SELECT 1 FROM MOVIMENTOCONTABILE GROUP BY "
                                             "AZIENDALINEAKEY, TIPOMOVIMENTO, SERIE, NUMERO HAVING count(*)>1)"),
            "0\n");
  EXPECT_EQ(Interroga("2026-03-05 2000 500", "SELECT count(*)" + ConPresunti +
                                                 "AND NOT (length(M.SERIE)=2 AND M.NUMERO LIKE '_%' || "
                                                 "substr(M.ESERCIZIO,3) AND M.TIPOMOVIMENTO='N')"),
            "0\n");
}

TEST(DemonstrationPresumedDocuments, HaveEveryCaseThatTheScreensTellApart) {
  const auto quanti = [](const std::string& condizione) {
    return std::stol(Interroga("2026-03-05", "SELECT count(*)" + ConPresunti + condizione));
  };
  for (const char* condizione :
       {"AND E.DATACONSEGNA IS NULL", "AND E.BANCAPRESENTAZIONE_KEY IS NULL", "AND E.SOSPESA='S'", "AND C.BLOCCO='S'",
        "AND E.IMPORTODIVISA=0 AND E.IMPORTOEURO<>0", "AND E.CODICEDIVISA='USD'", "AND E.CODICEDIVISA='GBP'",
        "AND M.TIPOOPERAZIONE='A'", "AND E.DATACONSEGNA<>E.DATACONSEGNAPRODUZIONE", "AND E.DATACONSEGNA<'2026-03-05'",
        "AND E.DATACONSEGNA>='2026-03-05'", "AND M.SERIE='OC'", "AND M.SERIE='BC'"}) {
    EXPECT_GT(quanti(condizione), 0) << condizione;
  }
  for (const char* colonna : {"CODICEDIVISA", "coalesce(BANCAPRESENTAZIONE_KEY,0)", "DATACONSEGNA"}) {
    EXPECT_EQ(Interroga("2026-03-05", std::string("SELECT max(N)>=2 FROM (SELECT count(DISTINCT ") + colonna +
                                          ") AS N FROM EVENTOCONTABILE WHERE TIPOEVENTO='P' AND SOSPESA='N' GROUP BY "
                                          "MOVIMENTOKEY)"),
              "1\n")
        << colonna;
  }
}

TEST(DemonstrationPresumedDocuments, GrowByTheRowsAskedForEachOfThemListed) {
  const auto righe = [](const std::string& argomenti) {
    return std::stol(Interroga(argomenti, "SELECT count(*) FROM (SELECT 1" + Elencati +
                                              "GROUP BY M.SERIE, M.NUMERO, E.BANCAPRESENTAZIONE_KEY, E.DATACONSEGNA, "
                                              "E.CODICEDIVISA, E.DATACONSEGNAPRODUZIONE)"));
  };
  const auto senza = righe("2026-03-05 10");
  EXPECT_GT(senza, 0);
  EXPECT_EQ(righe("2026-03-05 10 0"), senza);
  EXPECT_EQ(righe("2026-03-05 10 1"), senza + 1);
  EXPECT_EQ(righe("2026-03-05 10 3000"), senza + 3000);
}

TEST(DemonstrationPresumedDocuments, LeaveTheInstalmentsAsTheyAre) {
  const std::string rate = "SELECT EVENTOCONTABILEKEY, IMPORTOEURO FROM EVENTOCONTABILE WHERE TIPOEVENTO='C'";
  EXPECT_EQ(Interroga("2026-03-05 100", rate), Interroga("2026-03-05 100 700", rate));
}

TEST(DemonstrationData, RefuseWrongArguments) {
  for (const std::vector<std::string>& argomenti :
       std::vector<std::vector<std::string>>{{},
                                             {"05/03/2026"},
                                             {"2026-02-30"},
                                             {"2026-03-05", "0"},
                                             {"2026-03-05", "1000001"},
                                             {"2026-03-05", "x"},
                                             {"2026-03-05", "10", "-1"},
                                             {"2026-03-05", "10", "1000001"},
                                             {"2026-03-05", "10", "1", "1"}}) {
    const auto esito = Genera(argomenti);
    EXPECT_EQ(esito.state, 2);
    EXPECT_EQ(esito.output, "");
    EXPECT_THAT(esito.errors, HasSubstr("Uso: lumoscad-genera"));
  }
}

} // namespace
} // namespace lumoscad
