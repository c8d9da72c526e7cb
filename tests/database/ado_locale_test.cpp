#include "AdoFixture.hpp"
#include "support/ProcessLocale.hpp"

#include <gmock/gmock.h>

#include <clocale>
#include <string>
#include <vector>

namespace lumoscad::ado {
namespace {

using test::EnvironmentSetting;
using test::ProcessLocale;
using testing::HasSubstr;

constexpr const char* Italian = "it_IT.UTF-8";
constexpr const char* Latin = "it_IT.ISO-8859-1";

/// What the calling program's locale must not change.
class CallersLocale : public Ado {
 protected:
  CallersLocale() {
    connection_.Execute("CREATE TABLE NUMERI (CHIAVE INTEGER NOT NULL PRIMARY KEY, CORTO SMALLINT, LUNGO BIGINT, "
                        "DECIMALE DECIMAL(15,2), NUMERICO NUMERIC(9,3), REALE REAL, DOPPIO DOUBLE PRECISION, TESTO "
                        "VARCHAR(20), NOTE " +
                        Context().LongText() + ")");
    connection_.Execute("INSERT INTO NUMERI VALUES (1,-7,123456789012,1234567.25,-0.125,1.5,-0.25,'1,5',NULL)");
    connection_.Execute("INSERT INTO NUMERI VALUES (2,NULL,NULL,NULL,NULL,NULL,NULL,NULL,'12,50')");
  }

  static constexpr std::string_view Columns = "CHIAVE,CORTO,LUNGO,DECIMALE,NUMERICO,REALE,DOPPIO,TESTO";

  /// The cells of the rows of a query, joined by "|".
  static std::string Cells(Connection& connection, const std::string& text) {
    std::string all;
    for (Recordset rows = command(connection, text).Execute(); !rows.Eof(); rows.MoveNext()) {
      for (std::size_t i = 0; i < rows.ColumnCount(); ++i) {
        all.append(rows.ValueAt(i).value_or("NULL")).append("|");
      }
    }
    return all;
  }
  /// Every kind of number, in columns and expressions, bound and (with a long text beside them) not.
  static std::string Everything(Connection& connection) {
    return Cells(connection, "SELECT " + std::string(Columns) + " FROM NUMERI ORDER BY CHIAVE") +
           Cells(connection, "SELECT " + std::string(Columns) + ",NOTE FROM NUMERI ORDER BY CHIAVE") +
           Cells(connection, "SELECT SUM(DECIMALE),SUM(NUMERICO),SUM(DOPPIO),AVG(CORTO),SUM(REALE),COUNT(*) FROM "
                             "NUMERI");
  }
};

INSTANTIATE_TEST_SUITE_P(Databases, CallersLocale, testing::ValuesIn(test::DatabaseKinds()),
                         [](const auto& chosen) { return std::string(chosen.param); });

TEST_P(CallersLocale, NumbersOfEveryTypeAreReadAsUnderC) {
  std::string underC;
  {
    const ProcessLocale plain(LC_NUMERIC, "C");
    underC = Everything(connection_);
  }
  EXPECT_THAT(underC, HasSubstr("|1234567.25|"));
  const ProcessLocale locale(LC_NUMERIC, Italian);
  EXPECT_EQ(Everything(connection_), underC);
  Connection another;
  Open(another);
  EXPECT_EQ(Everything(another), underC) << "a connection opened in that locale";
}

TEST_P(CallersLocale, ARowReadInAnotherLocaleIsChangedAndFoundAgain) {
  const ProcessLocale locale(LC_ALL, Italian);
  Command select = command(connection_, "SELECT CHIAVE,DECIMALE,DOPPIO FROM NUMERI WHERE CHIAVE=1");
  Recordset rows;
  rows.Open(select, CursorType::Dynamic, LockType::Optimistic, {.tableName = "NUMERI", .key = "CHIAVE"});
  rows.Fields("DECIMALE").SetValue("1234567.5");
  rows.Fields("DOPPIO").SetValue("0.75");
  EXPECT_NO_THROW(rows.Update());
  EXPECT_EQ(Single("SELECT COUNT(*) FROM NUMERI WHERE DECIMALE=1234567.5 AND DOPPIO=0.75"), "1");
}

TEST_P(CallersLocale, OpeningAConnectionLeavesEveryCategoryAsItWas) {
  for (const char* around : {"C", Italian}) {
    const EnvironmentSetting environment("LC_ALL", around);
    for (const char* process : {"C", Italian}) {
      const ProcessLocale locale(LC_ALL, process);
      const std::string before = std::setlocale(LC_ALL, nullptr);
      Connection another;
      Open(another);
      EXPECT_EQ(std::setlocale(LC_ALL, nullptr), before) << "environment " << around;
      EXPECT_EQ(Cells(another, "SELECT DESCRIZIONE FROM EVENTI WHERE CHIAVE=1"), "Società àèìòù €|");
      EXPECT_EQ(Cells(another, "SELECT CHIAVE FROM EVENTI WHERE DESCRIZIONE='Società àèìòù €'"), "1|");
    }
  }
}

TEST_P(CallersLocale, ACharacterSetThatSpoilsAccentsIsRefusedByPostgreSqlsDriverAlone) {
  const std::string length = "SELECT LENGTH(DESCRIZIONE) FROM EVENTI WHERE CHIAVE=1";
  const std::string expected = Cells(connection_, length);
  const auto openedWith = [&](const char* setting) {
    Connection another;
    another.ConnectionString = database_->ConnectionText();
    const std::string before = std::setlocale(LC_ALL, nullptr);
    const std::string refused = Refusal(another);
    EXPECT_EQ(std::setlocale(LC_ALL, nullptr), before);
    if (std::string_view(GetParam()) == "postgres") {
      EXPECT_THAT(refused, HasSubstr(setting));
      EXPECT_THAT(refused, HasSubstr("psqlodbc"));
      EXPECT_EQ(another.State(), State::Closed);
      return;
    }
    EXPECT_EQ(refused, "");
    EXPECT_EQ(Cells(another, length), expected);
    EXPECT_EQ(Cells(another, "SELECT DESCRIZIONE FROM EVENTI WHERE CHIAVE=1"), "Società àèìòù €|");
  };
  const EnvironmentSetting plain("LC_ALL", "C");
  {
    const ProcessLocale locale(LC_CTYPE, Latin);
    openedWith("LC_CTYPE=it_IT.ISO-8859-1");
  }
  const ProcessLocale locale(LC_ALL, "C");
  {
    const EnvironmentSetting environment("LC_ALL", Latin);
    openedWith("LC_CTYPE=it_IT.ISO-8859-1");
  }
  const EnvironmentSetting encoding("PGCLIENTENCODING", "LATIN1");
  openedWith("PGCLIENTENCODING=LATIN1");
}

/// What PostgreSQL's driver says of its numbers is its own setting.
class NumbersOfPostgreSql : public testing::Test {
 protected:
  NumbersOfPostgreSql() {
    const auto empty = test::databaseContext("postgres").Create("");
    user_ = empty->user;
    password_ = empty->password;
  }
  [[nodiscard]] std::string Single(const std::string& query, const test::OdbcConfiguration::Settings& settings) const {
    Connection connection;
    connection.ConnectionString =
        test::ConnectionText(test::Postgres().AddSource("prove", 0, settings), user_, password_);
    connection.Open();
    return test::FirstValue(connection, query);
  }

 private:
  std::string user_;
  std::string password_;
};

TEST_F(NumbersOfPostgreSql, AreReadAsNumbersWhateverTheyAreDescribedAs) {
  const ProcessLocale locale(LC_ALL, Italian);
  for (const char* described : {"12", "-1", "8", "2"}) {
    EXPECT_EQ(Single("SELECT SUM(X) FROM (VALUES (1234.5::numeric),(-0.25)) AS T(X)", {{"NumericAs", described}}),
              "1234.25")
        << described;
  }
  EXPECT_EQ(Single("SELECT 'NaN'::numeric", {}), "NaN");
  EXPECT_EQ(Single("SELECT '12,50'::varchar", {{"NumericAs", "12"}}), "12,50");
}

TEST_F(NumbersOfPostgreSql, AnAmountOfMoneyIsANumberToo) {
  for (const char* name : {"C", Italian}) {
    const ProcessLocale locale(LC_ALL, name);
    EXPECT_EQ(Single("SELECT 1234567.5::money", {}), "1234567.50");
    EXPECT_EQ(Single("SELECT SUM(X) FROM (VALUES ((-1234.5)::money),(0.25::money)) AS T(X)", {}), "-1234.25");
  }
}

} // namespace
} // namespace lumoscad::ado
