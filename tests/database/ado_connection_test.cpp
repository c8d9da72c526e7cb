#include "AdoFixture.hpp"
#include "support/OdbcSqlite.hpp"

#include <gmock/gmock.h>

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

long residentKilobytes() {
  long total = 0;
  long resident = 0;
  std::ifstream("/proc/self/statm") >> total >> resident;
  return resident * sysconf(_SC_PAGESIZE) / 1024;
}

std::ptrdiff_t openFiles() {
  const std::filesystem::directory_iterator files("/proc/self/fd");
  return std::distance(begin(files), end(files));
}

TEST(AdoSqlite, HoldsNeitherMemoryNorFilesAfterManyConnections) {
  const test::OdbcSqlite database(schema(test::databaseContext("sqlite")));
  [[maybe_unused]] long memory = 0;
  std::ptrdiff_t files = 0;
  for (int i = 0; i < 1000; ++i) {
    Connection connection;
    connection.ConnectionString = database.connectionText();
    connection.Open();
    ASSERT_EQ(connection.Execute("UPDATE EVENTI SET SOSPESA='S' WHERE CHIAVE=1"), 1);
    if (i == 100) {
      memory = residentKilobytes();
      files = openFiles();
    }
  }
  EXPECT_LE(openFiles(), files);
#ifndef __SANITIZE_ADDRESS__ // which keeps freed memory for a while
  EXPECT_LT(residentKilobytes() - memory, 1024);
#endif
}

TEST(AdoConnection, RefusesAnEmptyDataSourceBeforeAnyDriverIsAsked) {
  Connection connection;
  connection.ConnectionString = test::connectionText("", "utente", "segretissima");
  try {
    connection.Open();
    FAIL() << "opened";
  } catch (const ErroreRuntime& error) {
    EXPECT_EQ(error.Descrizione(), "Connessione alla base dati: l'origine dati ODBC non è indicata.");
  }
  EXPECT_EQ(connection.State(), State::Closed);
}

TEST(AdoConnection, NamesAnUnknownDataSourceAndNeverThePassword) {
  test::OdbcConfiguration::instance();
  Connection connection;
  // The driver manager's own text holds this word.
  connection.ConnectionString = test::connectionText("non-esiste", "utente", "DRIVER");
  try {
    connection.Open();
    FAIL() << "opened";
  } catch (const ErroreRuntime& error) {
    EXPECT_EQ(error.Numero(), errori::Driver);
    EXPECT_THAT(error.Descrizione(), HasSubstr("[IM002]"));
    EXPECT_THAT(error.Descrizione(), Not(HasSubstr("Driver")));
    EXPECT_THAT(error.Descrizione(), Not(HasSubstr("driver")));
  }
}

class AdoPostgres : public testing::Test {
 protected:
  void SetUp() override {
    source_ = test::postgres().createDatabase("solo" + std::to_string(++databases_),
                                              schema(test::databaseContext("postgres")));
  }

  static inline int databases_ = 0;
  std::string source_;
};

TEST_F(AdoPostgres, ReportsAWrongPasswordWithoutTellingIt) {
  Connection connection;
  connection.ConnectionString = test::connectionText(source_, test::postgres().user(), "sbagliatissima");
  try {
    connection.Open();
    FAIL() << "opened";
  } catch (const ErroreRuntime& error) {
    EXPECT_THAT(error.Descrizione(), HasSubstr("password authentication failed"));
    EXPECT_THAT(error.Descrizione(), Not(HasSubstr("sbagliatissima")));
  }
}

TEST_F(AdoPostgres, CarriesAPasswordWithEverySpecialCharacter) {
  int roles = 0;
  for (const std::string password : {"a=b{c!@,?*()[d", "a}b", "a}}b", "}", "a;b}c", "p%41", "a+b", "è"}) {
    const std::string role = "strano" + std::to_string(++roles);
    test::runScript(test::postgres().connectionText(source_),
                    "CREATE ROLE " + role + " LOGIN PASSWORD '" + password + "'");
    Connection connection;
    connection.ConnectionString = test::connectionText(source_, role, '"' + password + '"');
    EXPECT_NO_THROW(connection.Open()) << password;
  }
}

TEST_F(AdoPostgres, RaisesWhenTheServerIsLostBeforeACommit) {
  Connection connection;
  connection.ConnectionString = test::postgres().connectionText(source_);
  connection.Open();
  connection.BeginTrans();
  connection.Execute("UPDATE EVENTI SET SOSPESA='S' WHERE CHIAVE=1");
  test::postgres().dropConnections(source_);
  try {
    connection.CommitTrans();
    FAIL() << "committed on a dead connection";
  } catch (const ErroreRuntime& error) {
    EXPECT_EQ(error.Numero(), errori::Driver);
    EXPECT_THAT(error.Descrizione(), HasSubstr("terminating connection"));
  }
  EXPECT_EQ(connection.Esito(), EsitoTransazione::NonApplicata);
  EXPECT_NO_THROW(connection.Close());
}

TEST_F(AdoPostgres, NeverReportsASpoiledTransactionAsCommitted) {
  Connection connection;
  connection.ConnectionString = test::postgres().connectionText(source_);
  connection.Open();
  connection.BeginTrans();
  connection.Execute("UPDATE EVENTI SET SOSPESA='S' WHERE CHIAVE=1");
  EXPECT_THROW(connection.Execute("UPDATE EVENTI SET NON_C_E=1"), ErroreRuntime);
  bool committed = true;
  try {
    connection.CommitTrans();
  } catch (const ErroreRuntime&) {
    committed = false;
  }
  Command select;
  select.ActiveConnection = &connection;
  select.CommandText = "SELECT SOSPESA FROM EVENTI WHERE CHIAVE=1";
  EXPECT_EQ(select.Execute().Valore(0), committed ? "S" : "N");
}

TEST_F(AdoPostgres, NumbersAViolatedConstraint) {
  Connection connection;
  connection.ConnectionString = test::postgres().connectionText(source_);
  connection.Open();
  try {
    connection.Execute("INSERT INTO EVENTI (CHIAVE,GRUPPO) VALUES (1,1)");
    FAIL() << "inserted twice";
  } catch (const ErroreRuntime& error) {
    EXPECT_EQ(error.Numero(), -2147217873);
  }
}

} // namespace
} // namespace lumoscad::ado
