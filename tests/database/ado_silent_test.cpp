#include "AdoFixture.hpp"
#include "support/Files.hpp"
#include "support/Loopback.hpp"

#include <gmock/gmock.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

// A server that says nothing while somebody waits for it.

namespace lumoscad::ado {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr const char* Change = "UPDATE EVENTI SET SOSPESA='X' WHERE CHIAVE=1";
constexpr const char* Changed = "SELECT SOSPESA FROM EVENTI WHERE CHIAVE=1";
constexpr const char* Silence = "La base dati non ha risposto entro 11 secondi: la connessione è stata chiusa.";

/// Halts the process that serves a connection, for the life of the object.
class Halted {
 public:
  Halted(std::string_view kind, Connection& connection)
      : process_(kind == "postgres" ? std::stoi(test::FirstValue(connection, "SELECT pg_backend_pid()"))
                                    : test::MariaDb().Process()) {
    kill(process_, SIGSTOP);
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!Stopped() && std::chrono::steady_clock::now() < limit) {
      usleep(1000);
    }
  }
  Halted(const Halted&) = delete;
  Halted& operator=(const Halted&) = delete;
  ~Halted() { kill(process_, SIGCONT); }

 private:
  /// Every thread of it; they stop one after the other.
  [[nodiscard]] bool Stopped() const {
    for (const auto& task : std::filesystem::directory_iterator("/proc/" + std::to_string(process_) + "/task")) {
      if (test::FileText(task.path() / "stat").find(") T") == std::string::npos) {
        return false;
      }
    }
    return true;
  }

  pid_t process_;
};

/// A connection whose statements may take one second.
class Silent : public Ado {
 protected:
  Silent() {
    hasty_.commandTimeout = 1;
    Open(hasty_);
  }
  /// Seconds that `action` takes, which is to fail.
  double SecondsOf(const std::function<void()>& action) {
    const auto begin = std::chrono::steady_clock::now();
    failure_ = Failure(action);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  }

  Connection hasty_;
  RuntimeError failure_{0, ""};
};

class SilentPostgres : public Silent {};
class SilentMariaDb : public Silent {};

const auto Kind = [](const auto& each) { return std::string(each.param); };
INSTANTIATE_TEST_SUITE_P(Databases, Silent, testing::Values("postgres", "mariadb"), Kind);
INSTANTIATE_TEST_SUITE_P(Databases, SilentPostgres, testing::Values("postgres"), Kind);
INSTANTIATE_TEST_SUITE_P(Databases, SilentMariaDb, testing::Values("mariadb"), Kind);

TEST_P(Silent, ServerEndsAStatementAndNothingIsKept) {
  hasty_.BeginTrans();
  {
    const Halted halted(GetParam(), hasty_);
    EXPECT_LT(SecondsOf([&] { hasty_.Execute(Change); }), 15);
    EXPECT_THAT(failure_.Note(), HasSubstr(Silence));
    EXPECT_LT(SecondsOf([&] { hasty_.CommitTrans(); }), 1) << "the connection is known to be gone";
    hasty_.Close();
  }
  EXPECT_EQ(hasty_.Outcome(), TransactionOutcome::NotApplied);
  EXPECT_EQ(Single(Changed), "N");
}

TEST_P(Silent, ServerBeforeCommitLeavesNothing) {
  hasty_.BeginTrans();
  hasty_.Execute(Change);
  {
    const Halted halted(GetParam(), hasty_);
    EXPECT_LT(SecondsOf([&] { hasty_.CommitTrans(); }), 15);
    EXPECT_THAT(failure_.Note(), HasSubstr(Silence));
    hasty_.Close();
  }
  EXPECT_EQ(hasty_.Outcome(), TransactionOutcome::NotApplied);
  EXPECT_EQ(Single(Changed), "N");
}

TEST_P(SilentPostgres, CommitThatWaitsForAnAbsentStandbyIsUnknown) {
  hasty_.Execute("SET synchronous_commit=on");
  connection_.Execute("ALTER SYSTEM SET synchronous_standby_names='assente'");
  Query("SELECT pg_reload_conf()");
  for (int attempt = 0; attempt < 200 && test::FirstValue(hasty_, "SHOW synchronous_standby_names").empty();
       ++attempt) {
    usleep(20000);
  }
  // Sessions wait only once the checkpointer has read the setting too, which it does before its work.
  connection_.Execute("CHECKPOINT");
  usleep(20000);
  connection_.Execute("CHECKPOINT");
  hasty_.BeginTrans();
  hasty_.Execute(Change);
  EXPECT_LT(SecondsOf([&] { hasty_.CommitTrans(); }), 15);
  EXPECT_THAT(failure_.Note(), HasSubstr(Silence));
  EXPECT_THAT(failure_.Note(), HasSubstr("l'esito è sconosciuto"));
  EXPECT_EQ(hasty_.Outcome(), TransactionOutcome::Unknown);
  hasty_.Close();
  connection_.Execute("ALTER SYSTEM RESET synchronous_standby_names");
  Query("SELECT pg_reload_conf()");
  for (int attempt = 0; attempt < 100 && Single(Changed) != "X"; ++attempt) {
    usleep(50000);
  }
  EXPECT_EQ(Single(Changed), "X") << "it was there";
}

TEST_P(SilentMariaDb, CommitThatWaitsWithoutEndIsUnknown) {
  hasty_.Execute("SET max_statement_time=0");
  hasty_.BeginTrans();
  hasty_.Execute(Change);
  connection_.Execute("FLUSH TABLES WITH READ LOCK");
  EXPECT_LT(SecondsOf([&] { hasty_.CommitTrans(); }), 15);
  EXPECT_THAT(failure_.Note(), HasSubstr(Silence));
  EXPECT_THAT(failure_.Note(), HasSubstr("l'esito è sconosciuto"));
  EXPECT_EQ(hasty_.Outcome(), TransactionOutcome::Unknown);
  hasty_.Close();
  connection_.Execute("UNLOCK TABLES");
}

TEST_P(Silent, ServerThatTakesAConnectionAndDoesNotGreetEndsTheOpening) {
  const base::Descriptor deaf = test::Listen();
  const std::string source = std::string(GetParam()) == "postgres"
                                 ? test::Postgres().AddSource("prove", test::PortOf(deaf))
                                 : test::MariaDb().AddSource("prove", test::PortOf(deaf));
  Connection waiting;
  waiting.ConnectionString = "Provider=MSDASQL.1;Connect Timeout=2;Password=p;User ID=u;Data Source=" + source;
  EXPECT_LT(SecondsOf([&] { waiting.Open(); }), 6);
  EXPECT_EQ(waiting.State(), State::Closed);
}

// Every wait has a time limit of its own, and the server keeps it: what is long but alive is never cut off.
TEST_P(SilentPostgres, LimitIsNotThatOfALongStatementWithinItsTime) {
  hasty_.Close();
  hasty_.commandTimeout = 20;
  Open(hasty_);
  EXPECT_NO_THROW(command(hasty_, "SELECT pg_sleep(12)").Execute());
  EXPECT_NO_THROW(hasty_.Execute(Change));
}

} // namespace
} // namespace lumoscad::ado
