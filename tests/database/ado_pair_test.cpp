#include "ClusterAmounts.hpp"
#include "platform/RuntimeError.hpp"
#include "platform/ado/Ado.hpp"
#include "support/PostgresPair.hpp"
#include "support/ProcessLocale.hpp"
#include "support/ServerProcess.hpp"

#include <gmock/gmock.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <memory>
#include <optional>
#include <string>

// A primary and its synchronous standby, of which one goes away.

namespace lumoscad::ado {
namespace {

using test::Amount;
using test::Amounts;
using test::Change;
using test::FailureOf;
using test::PostgresPair;
using testing::HasSubstr;

constexpr const char* Before = "10";
constexpr const char* After = "11";
constexpr const char* WaitingCommits = "SELECT count(*) FROM pg_stat_activity WHERE wait_event='SyncRep'";
constexpr const char* Sender = "SELECT pid FROM pg_stat_replication";
constexpr const char* Receiver = "SELECT pid FROM pg_stat_wal_receiver";

class Pair : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(PostgresPair::Available()) << "PostgreSQL or its ODBC driver is not installed";
    pair = std::make_unique<PostgresPair>(test::ServerDirectory("pair"));
    pair->CreateDatabase("prova", Amounts);
    source = pair->AddSource("prova");
  }

  [[nodiscard]] std::unique_ptr<Connection> Open(std::optional<int> seconds = std::nullopt) const {
    auto opened = std::make_unique<Connection>();
    opened->ConnectionString = pair->ConnectionText(source);
    opened->commandTimeout = seconds;
    opened->Open();
    return opened;
  }
  [[nodiscard]] std::unique_ptr<Connection> OpenWithChange(std::optional<int> seconds = std::nullopt) const {
    auto opened = Open(seconds);
    opened->BeginTrans();
    opened->Execute(Change);
    return opened;
  }
  /// What the server that takes changes holds.
  [[nodiscard]] std::string AmountNow() const {
    const auto asking = Open();
    return test::FirstValue(*asking, Amount);
  }
  /// COMMIT on a thread of its own; returns when the server waits for its standby.
  std::future<std::optional<RuntimeError>> WaitingCommit(Connection& connection) {
    auto committing = std::async(std::launch::async, [&connection] { return FailureOf(connection); });
    test::Await("COMMIT waits", [&] { return pair->First().Answer(WaitingCommits) == "1"; });
    return committing;
  }
  /// What was said of the change is not against what the database holds.
  void ExpectTrue(TransactionOutcome said, const std::string& amount) const {
    if (said != TransactionOutcome::Unknown) {
      EXPECT_EQ(amount, said == TransactionOutcome::Applied ? After : Before);
    }
  }

  void ExpectRefusedAsStandby() const {
    try {
      static_cast<void>(Open());
      ADD_FAILURE() << "a standby was taken for the database";
    } catch (const RuntimeError& error) {
      EXPECT_EQ(error.SqlState(), "08001") << error.what();
      EXPECT_EQ(error.Note(), "Della base dati risponde solo un server di riserva, che non prende modifiche: chi "
                              "amministra il sistema deve promuoverlo, o riavviare quello principale.")
          << error.what();
    }
  }

  std::unique_ptr<PostgresPair> pair;
  std::string source;
};

TEST_F(Pair, ChangeIsOnBothAndTheStandbyAloneIsRefusedInWordsThatFit) {
  const auto connection = OpenWithChange();
  connection->CommitTrans();
  EXPECT_EQ(connection->Outcome(), TransactionOutcome::Applied);
  EXPECT_EQ(test::FirstValue(*connection, "SELECT host(inet_server_addr())"), "127.0.0.1");
  test::Await("the standby shows the change", [&] { return pair->Second().Answer(Amount, "prova") == After; });

  pair->First().KillAll();
  ExpectRefusedAsStandby();
  // The library of PostgreSQL says it in the language of the calling program.
  const test::ProcessLocale italian(LC_ALL, "it_IT.UTF-8");
  ExpectRefusedAsStandby();
}

TEST_F(Pair, PrimaryLostBeforeCommitHasKeptNothingAndTheNextOpeningReachesTheNewOne) {
  const auto connection = OpenWithChange();
  pair->First().KillAll();
  const auto error = FailureOf(*connection);
  ASSERT_TRUE(error.has_value());
  EXPECT_EQ(error->SqlState(), "08S01") << error->what();
  EXPECT_EQ(connection->Outcome(), TransactionOutcome::NotApplied);
  pair->Promote();
  EXPECT_EQ(AmountNow(), Before);

  const auto next = OpenWithChange();
  EXPECT_EQ(test::FirstValue(*next, "SELECT host(inet_server_addr())"), "127.0.0.2");
  next->CommitTrans();
  EXPECT_EQ(next->Outcome(), TransactionOutcome::Applied);
  EXPECT_EQ(AmountNow(), After);
}

TEST_F(Pair, PrimaryLostInCommitAfterTheStandbyWasSentTheChange) {
  const auto connection = OpenWithChange();
  const pid_t receiver = pair->Second().ProcessOf(Receiver);
  ::kill(receiver, SIGSTOP); // what is sent to it stays in its socket
  auto committing = WaitingCommit(*connection);
  pair->First().KillAll();
  ::kill(receiver, SIGCONT);
  pair->Promote();
  ASSERT_TRUE(committing.get().has_value());
  const std::string amount = AmountNow();
  EXPECT_EQ(amount, After);
  EXPECT_NE(connection->Outcome(), TransactionOutcome::NotApplied);
  ExpectTrue(connection->Outcome(), amount);
}

TEST_F(Pair, PrimaryLostInCommitBeforeTheStandbyWasSentTheChange) {
  const auto connection = OpenWithChange();
  ::kill(pair->First().ProcessOf(Sender), SIGSTOP);
  auto committing = WaitingCommit(*connection);
  pair->First().KillAll();
  pair->Promote();
  ASSERT_TRUE(committing.get().has_value());
  const std::string amount = AmountNow();
  EXPECT_EQ(amount, Before);
  EXPECT_NE(connection->Outcome(), TransactionOutcome::Applied);
  ExpectTrue(connection->Outcome(), amount);
}

/// Two that take changes: what must not be, and does no harm as long as the old one waits for its standby.
TEST_F(Pair, PrimaryThatComesBackAfterItsStandbyWasPromotedAnswersNoCommit) {
  pair->First().KillAll();
  pair->Promote();
  pair->First().Start();
  const auto connection = OpenWithChange();
  EXPECT_EQ(test::FirstValue(*connection, "SELECT host(inet_server_addr())"), "127.0.0.1");
  auto committing = WaitingCommit(*connection);
  EXPECT_EQ(committing.wait_for(std::chrono::milliseconds(500)), std::future_status::timeout);
  pair->First().KillAll();
  ASSERT_TRUE(committing.get().has_value());
  EXPECT_NE(connection->Outcome(), TransactionOutcome::Applied);
  EXPECT_EQ(AmountNow(), Before);
}

TEST_F(Pair, CommitWaitsForTheStandbyAndIsAnsweredWhenThatIsBack) {
  const auto connection = OpenWithChange();
  pair->Second().Stop();
  auto committing = WaitingCommit(*connection);
  EXPECT_EQ(committing.wait_for(std::chrono::milliseconds(500)), std::future_status::timeout);
  EXPECT_EQ(AmountNow(), Before) << "seen by others before it was answered";
  pair->Second().Start();
  EXPECT_FALSE(committing.get().has_value());
  EXPECT_EQ(connection->Outcome(), TransactionOutcome::Applied);
  EXPECT_EQ(AmountNow(), After);
}

/// The limit of a statement and ten seconds more, and what the search for the outcome takes.
TEST_F(Pair, CommitThatNoStandbyAnswersEndsAtTheLimitAndIsNotCalledRefused) {
  if (std::getenv("LUMOSCAD_PER_INTERO") == nullptr) {
    GTEST_SKIP() << "eleven seconds and more; with LUMOSCAD_PER_INTERO=1";
  }
  const auto connection = OpenWithChange(1);
  pair->Second().Stop();
  const auto begin = std::chrono::steady_clock::now();
  const auto error = FailureOf(*connection);
  const auto seconds =
      std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - begin).count();
  EXPECT_GE(seconds, 11);
  EXPECT_LE(seconds, 45);
  pair->Second().Start();
  test::Await("the change is through", [&] { return pair->First().Answer(WaitingCommits) == "0"; });
  const std::string amount = AmountNow();
  EXPECT_EQ(amount, After);
  EXPECT_NE(connection->Outcome(), TransactionOutcome::NotApplied);
  if (error) {
    EXPECT_THAT(error->Note(), HasSubstr("La base dati non ha risposto entro 11 secondi")) << error->what();
  }
  std::printf("cluster: conferma senza riserva: %ld secondi, esito %s; poi nella base dati: %s\n",
              static_cast<long>(seconds), connection->Outcome() == TransactionOutcome::Applied ? "noto" : "sconosciuto",
              amount == After ? "modificata" : "come prima");
}

} // namespace
} // namespace lumoscad::ado
