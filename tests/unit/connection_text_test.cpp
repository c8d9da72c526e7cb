#include "platform/RuntimeError.hpp"
#include "platform/ado/Ado.hpp"
#include "platform/ado/ConnectionText.hpp"
#include "platform/ado/Dialect.hpp"

#include <gmock/gmock.h>

#include <chrono>
#include <string>

namespace lumoscad::ado {
namespace {

using testing::HasSubstr;
using testing::Not;

std::string FailureOf(const std::string& text) {
  try {
    static_cast<void>(OdbcText(ReadConnectionText(text)));
  } catch (const RuntimeError& error) {
    EXPECT_EQ(error.Number(), errors::Driver);
    return error.Description();
  }
  ADD_FAILURE() << "accepted: " << text;
  return {};
}

TEST(Numbers, OfTheOperationsAreThoseOfTheField) {
  EXPECT_EQ(static_cast<int>(CursorLocation::Client), 3);
  EXPECT_EQ(static_cast<int>(CommandType::Text), 1);
  EXPECT_EQ(static_cast<int>(CursorType::Dynamic), 2);
  EXPECT_EQ(static_cast<int>(LockType::Optimistic), 3);
  EXPECT_EQ(static_cast<int>(State::Closed), 0);
  EXPECT_EQ(static_cast<int>(State::Open), 1);
}

TEST(Opening, CarriesTheTimeLimitWhereTheServerTakesOneThere) {
  const std::string opening = detail::DialectOf("MariaDB").OpeningFor(std::chrono::seconds(7));
  EXPECT_THAT(opening, testing::StartsWith("SET character_set_client=utf8mb4, "));
  EXPECT_THAT(opening, testing::EndsWith(", tx_isolation='READ-COMMITTED', max_statement_time=7"));
}

TEST(Opening, MayBeSaidWithoutATimeLimit) {
  detail::Dialect dialect = detail::DialectOf("MariaDB");
  dialect.opening = "SET NAMES 'utf8'";
  dialect.openingLimit = {};
  EXPECT_EQ(dialect.OpeningFor(std::chrono::seconds(7)), "SET NAMES 'utf8'");
}

TEST(Opening, IsNoneForAServerThatNeedsNone) {
  for (const char* server : {"PostgreSQL", "MySQL", "SQLite", "DB2/LINUXX8664", "altro"}) {
    EXPECT_EQ(detail::DialectOf(server).OpeningFor(std::chrono::seconds(7)), "") << server;
  }
}

TEST(ConnectionText, ReadsTheTextThatTheComponentWrites) {
  const auto settings =
      ReadConnectionText("Provider=MSDASQL.1;Persist Security Info=True;Mode=Read|Write;Connect Timeout=30;"
                         "Password=pw;User ID=ADMIN;Data Source=CONTAB");
  EXPECT_EQ(settings.DataSource, "CONTAB");
  EXPECT_EQ(settings.UserId, "ADMIN");
  EXPECT_EQ(settings.Password, "pw");
  EXPECT_EQ(settings.connectTimeout, 30);
}

TEST(ConnectionText, TakesKeywordsInAnyCaseWithBlanksAroundThem) {
  const auto settings = ReadConnectionText(" DATA source = A ;user id=b; pAsSwOrD =C;connect timeout= 5 ");
  EXPECT_EQ(settings.DataSource, "A");
  EXPECT_EQ(settings.UserId, "b");
  EXPECT_EQ(settings.Password, "C");
  EXPECT_EQ(settings.connectTimeout, 5);
}

TEST(ConnectionText, KnowsTheShortKeywords) {
  const auto settings = ReadConnectionText("DSN=a;UID=b;PWD=c");
  EXPECT_EQ(settings.DataSource, "a");
  EXPECT_EQ(settings.UserId, "b");
  EXPECT_EQ(settings.Password, "c");
}

TEST(ConnectionText, LetsTheLastDuplicateWinAcrossSynonyms) {
  EXPECT_EQ(ReadConnectionText("DSN=a;Data Source=b").DataSource, "b");
  EXPECT_EQ(ReadConnectionText("Password=a;PWD=").Password, "");
  EXPECT_EQ(ReadConnectionText("uid=a;User ID=b").UserId, "b");
  EXPECT_EQ(ReadConnectionText("Connect Timeout=30;connect timeout=5").connectTimeout, 5);
}

TEST(ConnectionText, ReadsQuotedValuesWithDoubledQuotes) {
  EXPECT_EQ(ReadConnectionText(R"(Password="a;b""c" ;DSN=x)").Password, R"(a;b"c)");
  EXPECT_EQ(ReadConnectionText("Password=' a''b=\"';DSN=x").Password, " a'b=\"");
}

TEST(ConnectionText, KeepsQuotesAndEqualSignsInsideAPlainValue) {
  EXPECT_EQ(ReadConnectionText("Password=a\"b'c=d").Password, "a\"b'c=d");
}

TEST(ConnectionText, IgnoresUnknownKeywordsAndEmptyPieces) {
  EXPECT_EQ(ReadConnectionText(";;Extra=1;DSN=a; ;").DataSource, "a");
}

TEST(ConnectionText, HasEmptyValuesWhereNoneIsGiven) {
  const auto settings = ReadConnectionText("Connect Timeout=30;Password=;User ID=;Data Source=");
  EXPECT_EQ(settings.DataSource, "");
  EXPECT_EQ(settings.UserId, "");
  EXPECT_EQ(settings.Password, "");
}

TEST(ConnectionText, RefusesMalformedTextsWithoutTellingAValue) {
  for (const char* text : {"DSN=a;Password=\"segreto", "DSN=a;Password='segreto' x", "DSN=a;segreto", "=segreto;DSN=a",
                           "DSN=a;Connect Timeout=segreto", "DSN=a;Connect Timeout=-1"}) {
    const std::string failure = FailureOf(text);
    EXPECT_THAT(failure, HasSubstr("Testo di connessione non valido")) << text;
    EXPECT_THAT(failure, Not(HasSubstr("segreto"))) << text;
  }
}

TEST(OdbcText, NamesSourceUserAndPassword) {
  EXPECT_EQ(OdbcText({.DataSource = "CONTAB", .UserId = "ADMIN", .Password = "pw"}), "DSN=CONTAB;UID=ADMIN;PWD=pw;");
  EXPECT_EQ(OdbcText({.DataSource = "CONTAB", .UserId = "", .Password = ""}), "DSN=CONTAB;UID=;PWD=;");
}

TEST(OdbcText, PutsValuesInBracesWhereTheyNeedThem) {
  EXPECT_EQ(OdbcText({.DataSource = "C", .UserId = "a;b", .Password = "x{y}z"}), "DSN=C;UID={a;b};PWD={x{y}}z};");
  EXPECT_EQ(OdbcText({.DataSource = "C", .UserId = " a", .Password = "p=w"}), "DSN=C;UID={ a};PWD={p=w};");
  EXPECT_EQ(OdbcText({.DataSource = "C", .UserId = "a+b", .Password = "p%41"}), "DSN=C;UID={a+b};PWD={p%41};");
}

TEST(OdbcText, RefusesAnEmptyDataSource) {
  EXPECT_THAT(FailureOf("Password=p;User ID=u;Data Source="), HasSubstr("origine dati ODBC non è indicata"));
  EXPECT_THAT(FailureOf("Password=p;User ID=u;Data Source=\"  \""), HasSubstr("origine dati ODBC non è indicata"));
}

TEST(OdbcText, RefusesADataSourceThatWouldSmuggleInOtherSettings) {
  EXPECT_THAT(FailureOf("Data Source=\"a;Driver=b\""), HasSubstr("carattere non ammesso"));
}

TEST(OdbcText, RefusesAZeroByteAndDoesNotTellThePassword) {
  const std::string failure = FailureOf(std::string("DSN=a;PWD=segreto") + '\0' + "x");
  EXPECT_THAT(failure, HasSubstr("carattere non ammesso"));
  EXPECT_THAT(failure, Not(HasSubstr("segreto")));
}

} // namespace
} // namespace lumoscad::ado
