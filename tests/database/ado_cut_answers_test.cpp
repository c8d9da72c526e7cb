#include "AdoFixture.hpp"
#include "platform/ado/Facts.hpp"
#include "support/ByteProxy.hpp"

#include <gmock/gmock.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

// An answer of the server that breaks off somewhere: whoever asked reads of it, and the calling program lives.

namespace lumoscad::ado {
namespace {

using test::ByteProxy;

constexpr const char* Rows = "SELECT CHIAVE,TESTO FROM RIGHE WHERE TESTO=?";

/// What a terminal does when its connection is open.
struct Work {
  const char* name;
  void (*run)(Connection&);
};

void Read(Connection& connection, bool once) {
  Command command;
  command.ActiveConnection = &connection;
  command.CommandText = Rows;
  command.Parameters = {"x"};
  command.sentOnce = once;
  static_cast<void>(command.Execute());
}

constexpr std::array<Work, 5> Works{{
    {"the beginning of a transaction", [](Connection& connection) { connection.BeginTrans(); }},
    {"a prepared query", [](Connection& connection) { Read(connection, false); }},
    {"a query that is sent once", [](Connection& connection) { Read(connection, true); }},
    {"the columns of a query",
     [](Connection& connection) { static_cast<void>(ColumnsOf(connection, "SELECT CHIAVE,TESTO FROM RIGHE")); }},
    {"a whole transaction",
     [](Connection& connection) {
       connection.BeginTrans();
       connection.Execute("UPDATE RIGHE SET TESTO='x' WHERE CHIAVE=1");
       connection.CommitTrans();
     }},
}};

/// A forked process that opens a connection, says so, and works when it is told to.
class Worker {
 public:
  Worker(const std::string& connectionText, const Work& work) {
    std::array<int, 2> ready{};
    std::array<int, 2> go{};
    if (::pipe(ready.data()) != 0 || ::pipe(go.data()) != 0) {
      throw std::system_error(errno, std::generic_category(), "pipe");
    }
    process_ = ::fork();
    if (process_ == 0) {
      ::close(ready[0]);
      ::close(go[1]); // its end is what it waits for
      Live(connectionText, work, ready[1], go[0]);
    }
    ::close(ready[1]);
    ::close(go[0]);
    char opened = 0;
    opened_ = ::read(ready[0], &opened, 1) == 1;
    ::close(ready[0]);
    go_ = go[1];
  }
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;
  ~Worker() { static_cast<void>(Signal()); }

  [[nodiscard]] bool Opened() const { return opened_; }
  /// Lets it work; the signal that killed it, 0 where it came to its end.
  int Signal() {
    if (process_ <= 0) {
      return 0;
    }
    ::close(go_);
    int status = 0;
    while (::waitpid(process_, &status, 0) < 0 && errno == EINTR) {
    }
    process_ = -1;
    return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
  }

 private:
  [[noreturn]] static void Live(const std::string& connectionText, const Work& work, int ready, int go) {
    try {
      Connection connection;
      connection.ConnectionString = connectionText;
      connection.Open();
      const char opened = '+';
      static_cast<void>(::write(ready, &opened, 1) == 1);
      char nothing = 0;
      static_cast<void>(::read(go, &nothing, 1) == 1);
      work.run(connection);
    } catch (const RuntimeError&) { // NOLINT(bugprone-empty-catch): that there is an error, and not a signal, is enough
    }
    ::_exit(0);
  }

  pid_t process_ = -1;
  int go_ = -1;
  bool opened_ = false;
};

class CutAnswers : public testing::TestWithParam<const char*> {};
INSTANTIATE_TEST_SUITE_P(Databases, CutAnswers, testing::Values("postgres", "mariadb"),
                         [](const auto& each) { return std::string(each.param); });

TEST_P(CutAnswers, AreErrorsWhereverTheyBreakOff) {
  const bool postgres = std::string_view(GetParam()) == "postgres";
  const std::string script = "CREATE TABLE RIGHE (CHIAVE INTEGER PRIMARY KEY, TESTO VARCHAR(20));INSERT INTO RIGHE "
                             "VALUES (1,'x');INSERT INTO RIGHE VALUES (2,'x')";
  test::DatabaseServer& server = postgres ? static_cast<test::DatabaseServer&>(test::Postgres()) : test::MariaDb();
  postgres ? test::Postgres().CreateDatabase("tagli", script) : test::MariaDb().CreateDatabase("tagli", script);
  ByteProxy proxy(server.Port());
  const std::string text = server.ConnectionText(server.AddSource("tagli", proxy.Port()));
  const std::uint64_t step = std::getenv("LUMOSCAD_PER_INTERO") != nullptr ? 1 : 29;
  for (const Work& work : Works) {
    std::uint64_t bytes = 1;
    for (bool struck = true; struck; bytes += step) {
      Worker worker(text, work);
      ASSERT_TRUE(worker.Opened());
      proxy.StrikeAfter(ByteProxy::Direction::ToClient, bytes, ByteProxy::Action::Close);
      EXPECT_EQ(worker.Signal(), 0) << work.name << ", after " << bytes << " bytes";
      struck = proxy.HasStruck();
      proxy.Restore();
    }
    EXPECT_GT(bytes, 60U) << work.name;
  }
}

} // namespace
} // namespace lumoscad::ado
