#include "AdoFixture.hpp"
#include "platform/ado/Diagnostics.hpp"
#include "support/Loopback.hpp"
#include "support/OdbcSqlite.hpp"

#include <gmock/gmock.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <unistd.h>
#include <vector>

namespace lumoscad::ado {
namespace {

using testing::HasSubstr;
using testing::Not;

long ResidentKilobytes() {
  long total = 0;
  long resident = 0;
  std::ifstream("/proc/self/statm") >> total >> resident;
  return resident * sysconf(_SC_PAGESIZE) / 1024;
}

std::ptrdiff_t OpenFiles() {
  const std::filesystem::directory_iterator files("/proc/self/fd");
  return std::distance(begin(files), end(files));
}

TEST(AdoSqlite, HoldsNeitherMemoryNorFilesAfterManyConnections) {
  const test::OdbcSqlite database(Schema(test::databaseContext("sqlite")));
  [[maybe_unused]] long memory = 0;
  std::ptrdiff_t files = 0;
  for (int i = 0; i < 1000; ++i) {
    Connection connection;
    connection.ConnectionString = database.ConnectionText();
    connection.Open();
    ASSERT_EQ(connection.Execute("UPDATE EVENTI SET SOSPESA='S' WHERE CHIAVE=1"), 1);
    if (i == 100) {
      memory = ResidentKilobytes();
      files = OpenFiles();
    }
  }
  EXPECT_LE(OpenFiles(), files);
#ifndef LUMOSCAD_SANITIZZATO // which keeps freed memory for a while
  EXPECT_LT(ResidentKilobytes() - memory, 1024);
#endif
}

TEST(AdoConnection, RefusesAnEmptyDataSourceBeforeAnyDriverIsAsked) {
  Connection connection;
  connection.ConnectionString = test::ConnectionText("", "utente", "segretissima");
  try {
    connection.Open();
    FAIL() << "opened";
  } catch (const RuntimeError& error) {
    EXPECT_EQ(error.Description(), "Connessione alla base dati: l'origine dati ODBC non è indicata.");
  }
  EXPECT_EQ(connection.State(), State::Closed);
}

TEST(AdoConnection, NamesAnUnknownDataSourceAndNeverThePassword) {
  test::OdbcConfiguration::Instance();
  Connection connection;
  // The driver manager's own text holds this word.
  connection.ConnectionString = test::ConnectionText("non-esiste", "utente", "DRIVER");
  try {
    connection.Open();
    FAIL() << "opened";
  } catch (const RuntimeError& error) {
    EXPECT_EQ(error.Number(), errors::Driver);
    EXPECT_THAT(error.Description(), HasSubstr("[IM002]"));
    EXPECT_THAT(error.Description(), Not(HasSubstr("Driver")));
    EXPECT_THAT(error.Description(), Not(HasSubstr("driver")));
  }
}

/// What only a server has: accounts, and connections that it can end.
class AdoServer : public Ado {};

INSTANTIATE_TEST_SUITE_P(Databases, AdoServer, testing::ValuesIn(test::DatabaseServers()),
                         [](const auto& chosen) { return std::string(chosen.param); });

TEST_P(AdoServer, ReportsAWrongPasswordWithoutTellingIt) {
  Connection connection;
  connection.ConnectionString = test::ConnectionText(database_->source, database_->user, "sbagliatissima");
  const auto error = Failure([&] { connection.Open(); });
  EXPECT_THAT(error.Description(), HasSubstr(quirks().refused));
  EXPECT_THAT(error.Description(), Not(HasSubstr("sbagliatissima")));
}

TEST_P(AdoServer, CarriesAPasswordWithEverySpecialCharacter) {
  int accounts = 0;
  for (const std::string password :
       {"a=b{c!@,?*()[d", "a}b", "a}}b", "}", "a;b}c", "p%41", "a+b", "è", "a\\b", "{x}"}) {
    const std::string account = "strano" + std::to_string(++accounts);
    const std::string creation = Context().CreateAccount(account, password);
    if (creation.empty()) {
      GTEST_SKIP() << "the accounts of this server are not its own";
    }
    connection_.Execute(creation);
    Connection connection;
    connection.ConnectionString = test::ConnectionText(database_->source, account, '"' + password + '"');
    EXPECT_EQ(Refusal(connection), "") << password;
    connection_.Execute(Context().DropAccount(account));
  }
}

TEST_P(AdoServer, RaisesWhenTheServerIsLostBeforeACommit) {
  connection_.BeginTrans();
  connection_.Execute("UPDATE EVENTI SET SOSPESA='S' WHERE CHIAVE=1");
  Context().DropConnections(*database_);
  const auto error = Failure([&] { connection_.CommitTrans(); });
  EXPECT_THAT(error.Description(), testing::ContainsRegex(quirks().lost));
  EXPECT_EQ(connection_.Outcome(), TransactionOutcome::NotApplied);
  EXPECT_NO_THROW(connection_.Close());
  connection_.Open();
  EXPECT_EQ(Single("SELECT SOSPESA FROM EVENTI WHERE CHIAVE=1"), "N");
}

/// What its driver does alone: it ends a connection that gets no greeting, and tells a long message in many records.
class AdoPostgres : public Ado {};

INSTANTIATE_TEST_SUITE_P(Databases, AdoPostgres, testing::Values("postgres"));

TEST_P(AdoPostgres, WaitsForASilentServerNoLongerThanTheConnectionTextSays) {
  const auto silent = test::Listen();
  ASSERT_TRUE(silent.Opened());
  Connection connection;
  connection.ConnectionString = test::ConnectionText(test::Postgres().AddSource("prove", test::PortOf(silent)),
                                                     database_->user, database_->password) +
                                ";Connect Timeout=2";
  const auto before = std::chrono::steady_clock::now();
  EXPECT_NE(Refusal(connection), "");
  EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(20));
}

TEST_P(AdoPostgres, ReportsEveryRecordOfALongMessage) {
  std::string dotted = "PRIMO";
  for (int i = 1; i < 200; ++i) {
    dotted += ".NOME" + std::to_string(i);
  }
  const auto error = Failure([&] { connection_.Execute("SELECT " + dotted + ".ULTIMO FROM EVENTI"); });
  EXPECT_THAT(error.Description(), testing::StartsWith("[42601] ERROR: "));
  EXPECT_THAT(error.Description(), HasSubstr("primo.nome1"));
  EXPECT_THAT(error.Description(), HasSubstr("; [42601] "));
  EXPECT_THAT(error.Description(), HasSubstr(".ultimo"));
}

TEST(ErrorNumber, IsThatOfTheState) {
  const std::vector<std::pair<const char*, int>> numbers = {
      {"28000", -2147217843}, {"42000", -2147217900}, {"37000", -2147217900}, {"42S02", -2147217865},
      {"23000", -2147217873}, {"23505", -2147217873}, {"HYT00", -2147217871}, {"22018", -2147217913},
      {"22001", -2147217833}, {"22003", -2147217833}, {"07001", -2147217904}, {"07002", -2147217904}};
  for (const auto& [state, number] : numbers) {
    EXPECT_EQ(detail::ErrorNumber(state), number) << state;
  }
  for (const char* state : {"HY000", "08S01", "42S22", "42P01", "28P01", "HYT01", "07006", "22007", "IM002", ""}) {
    EXPECT_EQ(detail::ErrorNumber(state), -2147467259) << state;
  }
}

/// Settings of a MariaDB data source that change what the driver tells.
class AdoMariaDbOptions : public Ado {
 protected:
  void Reopen(const test::OdbcConfiguration::Settings& settings) {
    connection_.Close();
    connection_.ConnectionString =
        test::MariaDb().ConnectionText(test::MariaDb().AddSource(database_->schema, 0, settings));
    connection_.Open();
  }
};

INSTANTIATE_TEST_SUITE_P(Databases, AdoMariaDbOptions, testing::Values("mariadb"));

TEST_P(AdoMariaDbOptions, WorkWithTheRowsThatAnUpdateMeetsAndWithThoseThatItChanges) {
  std::int64_t affected = -1;
  const std::string same = "UPDATE EVENTI SET SOSPESA='N' WHERE CHIAVE=1";
  command(connection_, same).Execute(&affected);
  EXPECT_EQ(affected, 0) << "the driver counts the rows that became different";
  constexpr const char* FoundRows = "2";
  Reopen({{"OPTION", FoundRows}});
  command(connection_, same).Execute(&affected);
  EXPECT_EQ(affected, 1) << "the driver counts the rows that were found";
  Recordset rows = Editable(connection_, "CHIAVE=1");
  rows.Fields("SOSPESA").SetValue("N");
  EXPECT_NO_THROW(rows.Update());
}

TEST_P(AdoMariaDbOptions, LeaveTextsInUtf8) {
  Reopen({{"CHARSET", "latin1"}});
  EXPECT_EQ(Single("SELECT DESCRIZIONE FROM EVENTI WHERE CHIAVE=1"), "Società àèìòù €");
  EXPECT_EQ(Single("SELECT CHIAVE FROM EVENTI WHERE DESCRIZIONE=?", {"Società àèìòù €"}), "1");
  EXPECT_EQ(Single("SELECT CHIAVE FROM EVENTI WHERE DESCRIZIONE='Società àèìòù €'"), "1");
}

TEST_P(AdoMariaDbOptions, WorkWithTextsOfFixedLengthThatComeBackPadded) {
  Reopen({{"INITSTMT", "SET sql_mode=CONCAT(@@sql_mode,',PAD_CHAR_TO_FULL_LENGTH')"}});
  EXPECT_EQ(Single("SELECT CODICE FROM EVENTI WHERE CHIAVE=2"), " B2   ");
  EXPECT_EQ(Single("SELECT CHIAVE FROM EVENTI WHERE CODICE=?", {" B2   "}), "2");
  Recordset rows = Editable(connection_, "CHIAVE=2", "CHIAVE,CODICE");
  rows.Fields("CODICE").SetValue("C");
  EXPECT_NO_THROW(rows.Update());
  EXPECT_EQ(Single("SELECT CODICE FROM EVENTI WHERE CHIAVE=2"), "C     ");
}

TEST_P(Ado, NeverReportsASpoiledTransactionAsCommitted) {
  connection_.BeginTrans();
  connection_.Execute("UPDATE EVENTI SET SOSPESA='S' WHERE CHIAVE=1");
  EXPECT_THROW(connection_.Execute("UPDATE EVENTI SET NON_C_E=1"), RuntimeError);
  bool committed = true;
  try {
    connection_.CommitTrans();
  } catch (const RuntimeError&) {
    committed = false;
  }
  EXPECT_EQ(Single("SELECT SOSPESA FROM EVENTI WHERE CHIAVE=1"), committed ? "S" : "N");
}

} // namespace
} // namespace lumoscad::ado
