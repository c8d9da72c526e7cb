#include "ClusterAmounts.hpp"
#include "platform/RuntimeError.hpp"
#include "platform/ado/Ado.hpp"
#include "support/DatabaseContext.hpp"
#include "support/PgBouncer.hpp"
#include "support/ServerProcess.hpp"

#include <gmock/gmock.h>

#include <atomic>
#include <cstdio>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

// A database behind a pooler, which gives a connection a process of the server for as long as it lives, or for every
// transaction another one.

namespace lumoscad::ado {
namespace {

constexpr const char* Process = "SELECT pg_backend_pid()";
constexpr const char* Refusal =
    "La base dati non si usa attraverso un pooler che cambia il processo del server a ogni transazione. Nel pooler "
    "occorre pool_mode=session, con server_reset_query=DISCARD ALL; oppure l'origine dati deve portare diritto al "
    "server.";

class Pooler : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(test::PgBouncer::Available()) << "pgbouncer is not installed";
    database = test::databaseContext("postgres").Create(test::Amounts);
  }

  void Start(const std::string& settings) {
    pooler = std::make_unique<test::PgBouncer>(test::ServerDirectory("pgbouncer"), test::Postgres(), settings);
    source = pooler->AddSource("prove", 0, {{"ConnSettings", "SET search_path TO " + database->schema}});
  }
  [[nodiscard]] std::unique_ptr<Connection> Open() const {
    auto opened = std::make_unique<Connection>();
    opened->ConnectionString = pooler->ConnectionText(source);
    opened->Open();
    return opened;
  }
  /// What is said of an opening that is refused; empty where it is not.
  [[nodiscard]] std::string RefusalOfOpening() const {
    try {
      static_cast<void>(Open());
    } catch (const RuntimeError& error) {
      return error.Description();
    }
    return {};
  }
  static std::string RefusalOfBegin(Connection& connection) {
    try {
      connection.BeginTrans();
    } catch (const RuntimeError& error) {
      EXPECT_EQ(connection.Outcome(), TransactionOutcome::NotApplied);
      return error.Description();
    }
    return {};
  }
  static void Commit(Connection& connection) {
    connection.BeginTrans();
    connection.Execute(test::Change);
    connection.CommitTrans();
    EXPECT_EQ(connection.Outcome(), TransactionOutcome::Applied);
  }
  /// What the server holds, asked without the pooler.
  [[nodiscard]] std::string AmountNow() const {
    Connection asking;
    asking.ConnectionString = database->ConnectionText();
    asking.Open();
    return test::FirstValue(asking, test::Amount);
  }

  std::unique_ptr<test::TestDatabase> database;
  std::unique_ptr<test::PgBouncer> pooler;
  std::string source;
};

TEST_F(Pooler, OfSessionsServesOneAfterTheOtherAndSideBySide) {
  Start("pool_mode=session");
  std::string process;
  for (int time = 0; time < 3; ++time) {
    const auto connection = Open();
    const std::string now = test::FirstValue(*connection, Process);
    EXPECT_TRUE(process.empty() || now == process) << "the process was not used again";
    process = now;
    Commit(*connection);
    Commit(*connection);
  }
  const auto one = Open();
  const auto other = Open();
  EXPECT_NE(test::FirstValue(*one, Process), test::FirstValue(*other, Process));
  Commit(*one);
  Commit(*other);
  EXPECT_EQ(AmountNow(), "18");
}

TEST_F(Pooler, OfTransactionsIsRefusedAtOpeningByWhoComesAfterAnother) {
  Start("pool_mode=transaction");
  Open()->Close();
  for (int time = 0; time < 3; ++time) {
    EXPECT_EQ(RefusalOfOpening(), Refusal) << time;
  }
}

TEST_F(Pooler, OfTransactionsIsNoticedBeforeAnythingIsChangedByWhoCameFirst) {
  Start("pool_mode=transaction");
  const auto first = Open();
  EXPECT_EQ(RefusalOfOpening(), Refusal);
  EXPECT_EQ(RefusalOfBegin(*first), Refusal);
  EXPECT_EQ(test::FirstValue(*first, test::Amount), "10") << "a connection that is refused a change still reads";
}

TEST_F(Pooler, OfTransactionsIsNoticedBeforeAnythingIsChangedOnAnotherProcess) {
  Start("pool_mode=transaction");
  const auto first = Open();
  first->BeginTrans();
  const auto second = Open();
  first->RollbackTrans();
  EXPECT_EQ(RefusalOfBegin(*second), Refusal);
}

TEST_F(Pooler, OfTransactionsThatResetsAfterEachIsRefusedToo) {
  Start("pool_mode=transaction\nserver_reset_query_always=1");
  const auto first = Open();
  EXPECT_EQ(RefusalOfBegin(*first), Refusal);
  EXPECT_EQ(RefusalOfOpening(), Refusal);
}

TEST_F(Pooler, OfStatementsIsRefusedBeforeAnythingIsChanged) {
  Start("pool_mode=statement");
  const auto first = Open();
  EXPECT_THAT(RefusalOfBegin(*first), testing::HasSubstr("transaction blocks not allowed"));
  EXPECT_EQ(AmountNow(), "10");
}

TEST_F(Pooler, OfTransactionsAmongManyLeavesNoChangeThatIsNotTold) {
  Start("pool_mode=transaction\ndefault_pool_size=4");
  constexpr int Threads = 6;
  constexpr int Times = 15;
  std::atomic<int> refused = 0;
  std::atomic<int> applied = 0;
  std::atomic<int> unknown = 0;
  std::atomic<int> otherwise = 0;
  std::mutex opening; // the driver reads and sets the process' locale when it connects
  std::vector<std::thread> threads;
  for (int number = 0; number < Threads; ++number) {
    threads.emplace_back([&] {
      for (int time = 0; time < Times; ++time) {
        Connection connection;
        connection.ConnectionString = pooler->ConnectionText(source);
        try {
          {
            const std::lock_guard alone(opening);
            connection.Open();
          }
          connection.BeginTrans();
          connection.Execute(test::Change);
          connection.CommitTrans();
        } catch (const RuntimeError& error) {
          ++(error.Description() == Refusal ? refused : otherwise);
        }
        applied += connection.Outcome() == TransactionOutcome::Applied ? 1 : 0;
        unknown += connection.Outcome() == TransactionOutcome::Unknown ? 1 : 0;
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  std::printf(
      "cluster: pooler di transazioni: %d tentativi, %d rifiutati, %d registrati, %d sconosciuti, %d altrimenti\n",
      Threads * Times, refused.load(), applied.load(), unknown.load(), otherwise.load());
  const int changes = std::stoi(AmountNow()) - 10;
  EXPECT_GE(changes, applied);
  EXPECT_LE(changes, applied + unknown);
  EXPECT_GT(refused, Threads * Times / 2);
}

} // namespace
} // namespace lumoscad::ado
