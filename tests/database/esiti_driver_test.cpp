#include "Esiti.hpp"
#include "RegistroEsiti.hpp"
#include "lumoscad/LumoScadenze.hpp"
#include "platform/RuntimeError.hpp"
#include "platform/ado/Diagnostics.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>

using namespace lumoscad;
using ado::TransactionOutcome;
using test::ByteProxy;
using testing::AllOf;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::EndsWith;
using testing::HasSubstr;
using testing::SizeIs;
using testing::StartsWith;

namespace {

constexpr const char* Sospendi = "UPDATE EVENTOCONTABILE SET SOSPESA='X' WHERE EVENTOCONTABILEKEY=1";
constexpr const char* Letta = "SELECT SOSPESA FROM EVENTOCONTABILE WHERE EVENTOCONTABILEKEY=1";

RuntimeError Guasto(const std::function<void()>& azione) {
  try {
    azione();
  } catch (const RuntimeError& errore) {
    return errore;
  }
  ADD_FAILURE() << "nothing was raised";
  return {0, ""};
}

/// A connection through the proxy, on either server.
class Driver : public testing::TestWithParam<const char*> {
 protected:
  void Apri(const test::BaseEsiti& base) {
    connection_.ConnectionString = base.TestoConnessione();
    connection_.Open();
  }

  ado::Connection connection_;
};

INSTANTIATE_TEST_SUITE_P(Databases, Driver, testing::Values("postgres", "mariadb"),
                         [](const auto& scelta) { return std::string(scelta.param); });

} // namespace

TEST_P(Driver, ACommitThatSucceededIsApplied) {
  test::BaseEsiti base(GetParam());
  Apri(base);
  EXPECT_EQ(connection_.Outcome(), TransactionOutcome::NotApplied);
  connection_.BeginTrans();
  connection_.Execute(Sospendi);
  EXPECT_EQ(connection_.Outcome(), TransactionOutcome::NotApplied);
  connection_.CommitTrans();
  EXPECT_EQ(connection_.Outcome(), TransactionOutcome::Applied);
  connection_.Close();
  EXPECT_EQ(connection_.Outcome(), TransactionOutcome::Applied);
  EXPECT_EQ(base.Valore(Letta), "X");
}

// PostgreSQL's driver calls this COMMIT a success: it has already noticed that it has no connection.
TEST_P(Driver, TheCommitOfALostConnectionNeverPassesForApplied) {
  test::BaseEsiti base(GetParam());
  Apri(base);
  connection_.BeginTrans();
  connection_.Execute(Sospendi);
  base.Proxy().Strike(ByteProxy::Action::Close);
  EXPECT_THAT(Guasto([&] { connection_.Execute(Sospendi); }).Note(), HasSubstr("è caduta"));
  EXPECT_THAT(Guasto([&] { connection_.CommitTrans(); }).Description(), HasSubstr("un'istruzione della transazione"));
  EXPECT_EQ(connection_.Outcome(), TransactionOutcome::NotApplied);
  EXPECT_EQ(Guasto([&] { connection_.CommitTrans(); }).Number(), 3219);
  EXPECT_TRUE(base.SenzaAltreSessioni());
  EXPECT_EQ(base.Valore(Letta), "N");
}

TEST_P(Driver, AfterAFailedStatementNothingIsCommitted) {
  test::BaseEsiti base(GetParam());
  Apri(base);
  connection_.BeginTrans();
  connection_.Execute(Sospendi);
  Guasto([&] { connection_.Execute("UPDATE EVENTOCONTABILE SET NON_C_E=1"); });
  Guasto([&] { connection_.CommitTrans(); });
  EXPECT_EQ(connection_.Outcome(), TransactionOutcome::NotApplied);
  EXPECT_EQ(base.Valore(Letta), "N");
  connection_.BeginTrans();
  connection_.Execute(Sospendi);
  connection_.CommitTrans();
  EXPECT_EQ(base.Valore(Letta), "X");
}

TEST_P(Driver, AWrongTimeLimitIsRefusedBeforeConnecting) {
  test::BaseEsiti base(GetParam());
  for (const char* valore : {"0", "-1", "86401", "dieci", "10s", " 10"}) {
    const test::LimiteIstruzioni limite(valore);
    EXPECT_THAT(Guasto([&] { Apri(base); }).Description(),
                AllOf(StartsWith("LUMOSCAD_ATTESA_SQL"), HasSubstr(std::string("«") + valore + "»")));
  }
  EXPECT_EQ(base.Proxy().Connections(), 0);
  const test::LimiteIstruzioni limite("86400");
  EXPECT_NO_THROW(Apri(base));
}

namespace {

/// With this setting MariaDB's driver connects anew without a word, and the new connection commits every statement.
class ReconnectingDriver : public testing::Test {
 protected:
  ReconnectingDriver() {
    connection_.ConnectionString = base_.TestoConnessione();
    connection_.Open();
  }
  /// A transaction whose connection is lost before its first statement.
  void ModificaInterrotta() {
    connection_.BeginTrans();
    base_.Proxy().Strike(ByteProxy::Action::Close);
    connection_.Execute(Sospendi);
    ASSERT_EQ(base_.Valore(Letta), "X") << "committed by itself";
  }

  test::BaseEsiti base_{"mariadb", {{"AUTO_RECONNECT", "1"}}};
  ado::Connection connection_;
};

} // namespace

TEST_F(ReconnectingDriver, NeverPassesOffAsAppliedWhatWasInterrupted) {
  ModificaInterrotta();
  connection_.Execute("UPDATE EVENTOCONTABILE SET SOSPESA='X' WHERE EVENTOCONTABILEKEY=2");
  EXPECT_THAT(Guasto([&] { connection_.CommitTrans(); }).Description(), HasSubstr("in parte"));
  EXPECT_EQ(connection_.Outcome(), TransactionOutcome::Unknown);
}

TEST_F(ReconnectingDriver, NeverPassesOffAsUndoneWhatItHasStored) {
  ModificaInterrotta();
  connection_.RollbackTrans();
  EXPECT_EQ(connection_.Outcome(), TransactionOutcome::Unknown);
  EXPECT_EQ(base_.Valore(Letta), "X");
  connection_.BeginTrans();
  connection_.Execute("UPDATE EVENTOCONTABILE SET SOSPESA='Y' WHERE EVENTOCONTABILEKEY=1");
  connection_.RollbackTrans();
  EXPECT_EQ(connection_.Outcome(), TransactionOutcome::NotApplied);
  EXPECT_EQ(base_.Valore(Letta), "X");
}

TEST_F(ReconnectingDriver, NeverSaysThatNothingIsStoredWhereALaterStatementFails) {
  ModificaInterrotta();
  Guasto([&] { connection_.Execute("UPDATE EVENTOCONTABILE SET NON_C_E=1"); });
  Guasto([&] { connection_.CommitTrans(); });
  EXPECT_EQ(connection_.Outcome(), TransactionOutcome::Unknown);
}

TEST(FailedCommit, IsKnownAsRefusedByAnAnswerOfTheServerAlone) {
  using ado::detail::WithoutAnswer;
  for (const char* sqlState : {"08S01", "08007", "HYT00", "HYT01", "25S01", "40003"}) {
    EXPECT_TRUE(WithoutAnswer(sqlState)) << sqlState;
  }
  for (const char* sqlState : {"40001", "23505", "25006", "HY000", ""}) {
    EXPECT_FALSE(WithoutAnswer(sqlState)) << sqlState;
  }
}

// The proxy is this process: its socket is the one that the server sees.
TEST(DriverWithAReadLimit, AServerSilentOnTheCommitIsAskedAgainOnceTheOldSessionIsEnded) {
  test::PostoEsiti posto("mariadb", {{"READ_TIMEOUT", "1"}});
  ASSERT_EQ(posto.Esegui("SospendiPartita"), "");
  const auto dopo = posto.base.Tutto();
  posto.base.Ripristina();
  posto.base.Proxy().StrikeAtSequence(posto.base.Conferma(), ByteProxy::Moment::BeforeTheReply,
                                      ByteProxy::Action::Freeze);
  EXPECT_EQ(posto.Esegui("SospendiPartita"), "") << posto.msg.Errore;
  EXPECT_TRUE(posto.ricercato);
  EXPECT_GT(posto.secondi, 5) << "as long as the old session is left to end by itself";
  EXPECT_LT(posto.secondi, 15);
  const auto tiene = posto.base.Tutto();
  EXPECT_THAT(tiene, ElementsAreArray(dopo));
  test::RegistroEsiti::Unico().AnnotaGuasto("mariadb", "server muto dopo COMMIT, READ_TIMEOUT=1", "(nessuno)",
                                            tiene == dopo ? "tutta" : "ALTRO", posto.secondi);
}

TEST_P(Driver, WhoGaveTheCommandReadsNothingOfACommitThatIsFoundToBeKept) {
  test::PostoEsiti posto(GetParam());
  posto.banco.host.reply = "<R><MESSAGGIO>Fatto</MESSAGGIO></R>";
  posto.base.Proxy().StrikeAtSequence(posto.base.Conferma(), ByteProxy::Moment::BeforeTheReply,
                                      ByteProxy::Action::Reset);
  EXPECT_EQ(LumoScadenze().EseguiLumoScad("-T SOSPESO /A -H h -D 01 -C C10 -P AB   123 " + posto.base.Opzioni()), "");
  EXPECT_THAT(posto.banco.host.calls, SizeIs(1));
  EXPECT_THAT(posto.banco.desktop.box, ElementsAre("Fatto"));
  EXPECT_EQ(posto.base.Valore(Letta), "S");
}

TEST(ServerThatStaysAway, LeavesTheOutcomeUnknownAndWhoGaveTheCommandReadsSoBeforeTheHostsMessage) {
  const test::LimiteIstruzioni limite("1");
  test::PostoEsiti posto("postgres");
  posto.banco.host.reply = "<R><MESSAGGIO>Fatto</MESSAGGIO></R>";
  posto.base.Proxy().RefuseAfterStrike();
  const auto inizio = std::chrono::steady_clock::now();
  posto.base.Proxy().StrikeAtSequence(posto.base.Conferma(), ByteProxy::Moment::BeforeTheReply,
                                      ByteProxy::Action::Reset);
  EXPECT_EQ(LumoScadenze().EseguiLumoScad("-T SOSPESO /A -H h -D 01 -C C10 -P AB   123 " + posto.base.Opzioni()),
            "error");
  EXPECT_THAT(posto.banco.host.calls, SizeIs(1));
  EXPECT_THAT(posto.banco.desktop.box,
              ElementsAre(AllOf(StartsWith("ERRORE: -2147467259\r\n["),
                                HasSubstr("\r\nLa connessione è caduta mentre si confermavano"),
                                EndsWith("Da controllare prima di ripeterla: partita AB   123 del conto C10.")),
                          "Fatto"));
  EXPECT_LT(std::chrono::steady_clock::now() - inizio, std::chrono::seconds(15)) << "eleven, as any other wait here";
  EXPECT_EQ(posto.base.Valore(Letta), "S");
}
