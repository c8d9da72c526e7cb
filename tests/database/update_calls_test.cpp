// What the confirmation of a list hands to the driver manager, and what it leaves where the driver keeps no savepoints.

#include "PresuntiDiProva.hpp"
#include "database/procedureLumoDB2.hpp"
#include "support/CountedStatements.hpp"
#include "support/TestBench.hpp"

#include <gmock/gmock.h>

#include <tuple>
#include <utility>

namespace lumoscad::procedureLumoDB2 {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr std::string_view LookUp = "SELECT CONTOCONTABILE_KEY";

std::string Instalments() {
  std::string script;
  for (int key = 21; key <= 24; ++key) {
    script += test::Rata(std::to_string(key) + ",1,301,201,101,'C','N','2006-03-04','2006-01-31'," +
                         std::to_string(key) + ",106,100.10");
  }
  return script;
}

/// A new bank for each of those instalments.
VariazioniCanalizzazione NewBanks() {
  VariazioniCanalizzazione changes;
  for (int key = 21; key <= 24; ++key) {
    VariazioneCanalizzazione change;
    change.idPartitaKey = "201";
    change.CodiceConto = "C01";
    change.NumeroPartita = "2006   1";
    change.VecchiaBanca = "B06";
    change.NuovaBanca = "B07";
    change.isBancaChanged = true;
    change.ScadenzaOriginale = "31/01/2006";
    change.NumeroRata = std::to_string(key);
    change.VecchiaScadenza = "04/03/2006";
    changes.push_back(change);
  }
  return changes;
}

VariazioniConsegna NewBanksOfDocuments() {
  VariazioniConsegna changes;
  for (const auto& [movement, account, bank] : {std::tuple(401, "C01", "B06"), std::tuple(403, "C01", "B07")}) {
    VariazioneConsegna change;
    change.idMovimentoKey = movement;
    change.CodiceConto = account;
    change.VecchiaBanca = bank;
    change.NuovaBanca = bank == std::string("B06") ? "B07" : "B06";
    change.isBancaChanged = true;
    changes.push_back(change);
  }
  return changes;
}

class UpdateCalls : public testing::TestWithParam<const char*> {
 protected:
  UpdateCalls() { stato().ComandoCorrente = "BANCA /CREDITI " + base.Opzioni(); }

  [[nodiscard]] std::string Banks() const {
    return base
        .Righe("SELECT COUNT(*) FROM EVENTOCONTABILE WHERE EVENTOCONTABILEKEY BETWEEN 21 AND 24 AND "
               "BANCAPRESENTAZIONE_KEY=107")
        .front();
  }

  /// SQLite has no round trips to save.
  static bool Saves() { return std::string_view(GetParam()) != "sqlite"; }
  /// MariaDB's driver does not bear the answer of an unprepared query that breaks off.
  static bool PreparesQueries() { return std::string_view(GetParam()) == "mariadb"; }

  test::BaseDati base{GetParam(), test::DatiPresunti() + Instalments()};
  test::TestBench bench;
  MsgAnnulla msg;
};

INSTANTIATE_TEST_SUITE_P(Databases, UpdateCalls, testing::ValuesIn(test::GeneriDiBase()), test::NomeDelGenere);

TEST_P(UpdateCalls, OfABankChangePrepareTheAccountsLookUpOnceAndNothingElse) {
  const test::CountedStatements counted;
  EXPECT_EQ(AggiornaCanalizzazione(NewBanks(), msg, "CREDITI"), "") << msg.Errore;
  EXPECT_EQ(counted.Preparations(LookUp), 1U);
  EXPECT_EQ(counted.Executions(LookUp), 8U) << "an old bank and a new one for each record, the same ones or not";
  EXPECT_EQ(counted.DirectExecutions("UPDATE EVENTOCONTABILE"), 4U);
  if (Saves()) {
    EXPECT_EQ(counted.Descriptions(), 1U) << "the look-up's";
  }
  if (Saves() && !PreparesQueries()) {
    EXPECT_EQ(counted.Preparations(""), 1U);
    EXPECT_EQ(counted.DirectExecutions("SELECT * FROM MOVIMENTOCONTABILE"), 4U);
  }
}

TEST_P(UpdateCalls, OfABankChangeWriteEveryRecord) {
  EXPECT_EQ(AggiornaCanalizzazione(NewBanks(), msg, "CREDITI"), "") << msg.Errore;
  EXPECT_EQ(Banks(), "4");
}

TEST_P(UpdateCalls, OfPresumedDocumentsPrepareTheAccountsLookUpOnceAndNothingElse) {
  const test::CountedStatements counted;
  EXPECT_EQ(AggiornaBancaPresunti(NewBanksOfDocuments(), msg, "PRESUNTI"), "") << msg.Errore;
  EXPECT_EQ(counted.Preparations(LookUp), 1U);
  EXPECT_EQ(counted.Executions(LookUp), 6U) << "two banks and the account of each record";
  if (Saves()) {
    EXPECT_EQ(counted.DirectExecutions("UPDATE EVENTOCONTABILE"), 2U);
  }
  if (Saves() && !PreparesQueries()) {
    EXPECT_EQ(counted.Preparations(""), 1U);
  }
}

/// Where another terminal can write while a confirmation is under way.
class UpdateCallsMeanwhile : public UpdateCalls {};
INSTANTIATE_TEST_SUITE_P(Servers, UpdateCallsMeanwhile, testing::ValuesIn(test::DatabaseServers()),
                         test::NomeDelGenere);

TEST_P(UpdateCallsMeanwhile, FindAnAccountAsItIsWhenItsRecordIsWritten) {
  auto services = ActiveServices();
  bool moved = false;
  services.statementSent = [&](std::string_view text) {
    if (text.starts_with("UPDATE EVENTOCONTABILE") && !std::exchange(moved, true)) {
      base.Esegui("UPDATE CONTOCONTABILE SET CODICECONTO='VECCHIO' WHERE CONTOCONTABILE_KEY=107");
      base.Esegui("UPDATE CONTOCONTABILE SET CODICECONTO='B07' WHERE CONTOCONTABILE_KEY=108");
    }
  };
  const ReplacedServices listening(services);
  EXPECT_EQ(AggiornaCanalizzazione(NewBanks(), msg, "CREDITI"), "") << msg.Errore;
  EXPECT_THAT(base.Righe("SELECT BANCAPRESENTAZIONE_KEY FROM EVENTOCONTABILE WHERE EVENTOCONTABILEKEY BETWEEN 21 AND "
                         "24 ORDER BY EVENTOCONTABILEKEY"),
              testing::ElementsAre("107", "108", "108", "108"));
}

/// PostgreSQL's driver, told to set no savepoint around a statement.
class WithoutSavepoints : public testing::Test {
 protected:
  WithoutSavepoints() {
    const std::string source = test::Postgres().AddSource(
        "prove", 0, {{"ConnSettings", "SET search_path TO " + base.Schema()}, {"Protocol", "7.4-1"}});
    stato().ComandoCorrente = "BANCA /CREDITI -DB2SOURCE " + source + " -DB2USER " + test::Postgres().User() +
                              " -DB2PASS " + test::Postgres().Password();
  }
  [[nodiscard]] std::vector<std::string> Rows() const { return test::Rate(base); }

  test::BaseDati base{"postgres", test::DatiPresunti() + Instalments()};
  std::vector<std::string> before = Rows();
  test::TestBench bench;
  MsgAnnulla msg;
};

TEST_F(WithoutSavepoints, AConfirmationIsWrittenAsEver) {
  EXPECT_EQ(AggiornaCanalizzazione(NewBanks(), msg, "CREDITI"), "") << msg.Errore;
  EXPECT_EQ(base.Righe("SELECT COUNT(*) FROM EVENTOCONTABILE WHERE EVENTOCONTABILEKEY BETWEEN 21 AND 24 AND "
                       "BANCAPRESENTAZIONE_KEY=107"),
            std::vector<std::string>{"4"});
}

TEST_F(WithoutSavepoints, AConfirmationWithAFailingStatementKeepsNothingAndSaysWhy) {
  base.Impedisci("EVENTOCONTABILE", "OLD.EVENTOCONTABILEKEY=23", "riga bloccata");
  EXPECT_EQ(AggiornaCanalizzazione(NewBanks(), msg, "CREDITI"), "error");
  EXPECT_EQ(Rows(), before);
  EXPECT_THAT(msg.Errore, StartsWith("ERRORE: -2147467259\r\n[P0001] ERROR: riga bloccata"));
  EXPECT_THAT(msg.Errore,
              EndsWith("UPDATE EVENTOCONTABILE SET BANCAPRESENTAZIONE_KEY=107 WHERE EVENTOCONTABILEKEY=23"));
  EXPECT_THAT(msg.Errore, Not(HasSubstr("25P02"))) << "the failure itself, not what it left behind";
}

TEST_F(WithoutSavepoints, AConfirmationWithAFailingQueryKeepsNothingAndSaysWhy) {
  auto changes = NewBanks();
  changes.back().NumeroRata = "3 TRE";
  EXPECT_EQ(AggiornaCanalizzazione(changes, msg, "CREDITI"), "error");
  EXPECT_EQ(Rows(), before);
  EXPECT_THAT(msg.Errore, HasSubstr("[42601] ERROR: syntax error at or near \"TRE\""));
}

TEST_F(WithoutSavepoints, AnUnknownAccountKeepsNothingAndSaysWhy) {
  auto changes = NewBanks();
  changes.back().NuovaBanca = "Z99";
  EXPECT_EQ(AggiornaCanalizzazione(changes, msg, "CREDITI"), "error");
  EXPECT_EQ(Rows(), before);
  EXPECT_EQ(msg.Errore, "ERRORE: -2147220990\r\nCONTO CONTABILE INESISTENTE\r\n");
}

TEST_F(WithoutSavepoints, ACommitAfterAFailedStatementIsRefused) {
  ado::Connection connection;
  connection.ConnectionString = test::Postgres().ConnectionText(test::Postgres().AddSource(
      "prove", 0, {{"ConnSettings", "SET search_path TO " + base.Schema()}, {"Protocol", "7.4-1"}}));
  connection.Open();
  connection.BeginTrans();
  EXPECT_EQ(connection.Execute("UPDATE EVENTOCONTABILE SET SOSPESA='S' WHERE EVENTOCONTABILEKEY=21"), 1);
  EXPECT_THROW(connection.Execute("UPDATE NON_C_E SET A=1"), RuntimeError);
  EXPECT_THROW(connection.CommitTrans(), RuntimeError);
  EXPECT_EQ(connection.Outcome(), TransactionOutcome::NotApplied);
  EXPECT_EQ(connection.Execute("UPDATE EVENTOCONTABILE SET SOSPESA='N' WHERE EVENTOCONTABILEKEY=21"), 1)
      << "the connection serves on";
  connection.Close();
  EXPECT_EQ(Rows(), before);
}

} // namespace
} // namespace lumoscad::procedureLumoDB2
