#include "AdoFixture.hpp"
#include "platform/RuntimeError.hpp"

#include <gmock/gmock.h>

#include <charconv>
#include <cstdlib>
#include <iostream>
#include <sql.h>
#include <sqlext.h>
#include <string>

namespace lumoscad::ado {
namespace {

using testing::AnyOf;
using testing::Not;

/// What the contexts answer for, asked of the databases themselves.
class Quirk : public Ado {
 protected:
  Quirk() {
    connection_.Execute("CREATE TABLE STRANI (CHIAVE INTEGER NOT NULL PRIMARY KEY, CORTO VARCHAR(5), FISSO CHAR(8), "
                        "DOPPIO DOUBLE PRECISION, IMPORTO DECIMAL(15,2), GIORNO DATE)");
  }
  /// The number of a text, whatever the locale.
  [[nodiscard]] static double Floating(const std::optional<std::string>& text) {
    double value = 0;
    const std::string digits = text.value_or("");
    const char* const end = digits.data() + digits.size();
    EXPECT_EQ(std::from_chars(digits.data(), end, value).ptr, end) << digits;
    return value;
  }
  /// The keys that meet `condition`.
  [[nodiscard]] std::vector<std::string> Keys(const std::string& condition, std::vector<std::string> parameters = {}) {
    std::vector<std::string> found;
    Recordset rows = Query("SELECT CHIAVE FROM STRANI WHERE " + condition + " ORDER BY CHIAVE", std::move(parameters));
    for (; !rows.Eof(); rows.MoveNext()) {
      found.emplace_back(rows.ValueAt(0).value_or("NULL"));
    }
    return found;
  }
  [[nodiscard]] int Number(const std::string& statement) {
    return Failure([&] { connection_.Execute(statement); }).Number();
  }
};

INSTANTIATE_TEST_SUITE_P(Databases, Quirk, testing::ValuesIn(test::DatabaseKinds()),
                         [](const auto& chosen) { return std::string(chosen.param); });

TEST_P(Quirk, BlanksAtTheEndOfATextCountOrNot) {
  connection_.Execute("INSERT INTO STRANI (CHIAVE,CORTO) VALUES (1,'A')");
  connection_.Execute("INSERT INTO STRANI (CHIAVE,CORTO) VALUES (2,'A ')");
  const std::vector<std::string> found = Keys("CORTO=?", {"A"});
  if (quirks().blanksAtTheEndCount) {
    EXPECT_THAT(found, testing::ElementsAre("1"));
  } else {
    EXPECT_THAT(found, testing::ElementsAre("1", "2"));
  }
  EXPECT_EQ(Keys("CORTO='A'"), found) << "as a literal";
  EXPECT_EQ(Single("SELECT CORTO FROM STRANI WHERE CHIAVE=2"), "A ") << "it is kept all the same";
}

TEST_P(Quirk, BlanksInATextOfFixedLengthNeverKeepItFromBeingFound) {
  connection_.Execute("INSERT INTO STRANI (CHIAVE,FISSO) VALUES (1,'  però')");
  const std::string read = Single("SELECT FISSO FROM STRANI").value_or("");
  EXPECT_EQ(read, Context().TextFor("  però", 8));
  EXPECT_THAT(Keys("FISSO=?", {"  però"}), testing::SizeIs(1));
  EXPECT_THAT(Keys("FISSO=?", {read}), testing::SizeIs(1));
  EXPECT_THAT(Keys("FISSO='  però'"), testing::SizeIs(1));
}

TEST_P(Quirk, CasesAndAccentsTellTextsApart) {
  connection_.Execute("INSERT INTO STRANI (CHIAVE,CORTO) VALUES (1,'però')");
  EXPECT_THAT(Keys("CORTO=?", {"pero"}), testing::IsEmpty());
  EXPECT_THAT(Keys("CORTO=?", {"Però"}), testing::IsEmpty());
  EXPECT_THAT(Keys("CORTO='PERÒ'"), testing::IsEmpty());
}

TEST_P(Quirk, BackslashesAndQuestionMarksInsideQuotesAreLetters) {
  connection_.Execute("INSERT INTO STRANI (CHIAVE,CORTO) VALUES (1,'a\\')");
  connection_.Execute("INSERT INTO STRANI (CHIAVE,CORTO) VALUES (2,'?''\"')");
  EXPECT_EQ(Single("SELECT CORTO FROM STRANI WHERE CHIAVE=1"), "a\\");
  EXPECT_THAT(Keys("CORTO='a\\' AND CHIAVE=?", {"1"}), testing::ElementsAre("1"));
  EXPECT_THAT(Keys("CORTO=?", {"a\\"}), testing::ElementsAre("1"));
  EXPECT_THAT(Keys("CORTO='?''\"' AND CHIAVE=?", {"2"}), testing::ElementsAre("2"));
}

TEST_P(Quirk, AmountsKeepTheirScaleOrNotAndNeverTheirValue) {
  connection_.Execute("INSERT INTO STRANI (CHIAVE,IMPORTO,DOPPIO) VALUES (1,1234567890123.40,1234567890123.45)");
  EXPECT_EQ(Single("SELECT IMPORTO FROM STRANI"), quirks().keepsScale ? "1234567890123.40" : "1234567890123.4");
  EXPECT_EQ(Floating(Single("SELECT DOPPIO FROM STRANI")), 1234567890123.45);
  EXPECT_EQ(Floating(Single("SELECT SUM(DOPPIO) FROM STRANI")), 1234567890123.45);
}

TEST_P(Quirk, AFloatingAmountIsFoundByTheTextItWasReadAs) {
  connection_.Execute("INSERT INTO STRANI (CHIAVE,DOPPIO) VALUES (1,0.1)");
  Command select = command(connection_, "SELECT CHIAVE,DOPPIO FROM STRANI");
  Recordset rows;
  rows.Open(select, CursorType::Dynamic, LockType::Optimistic, {.tableName = "STRANI", .key = "CHIAVE"});
  rows.Fields("DOPPIO").SetValue("0.7");
  EXPECT_NO_THROW(rows.Update());
  EXPECT_EQ(Floating(Single("SELECT DOPPIO FROM STRANI")), 0.7);
}

TEST_P(Quirk, ColumnNamesComeInTheCaseOfTheServer) {
  const Recordset rows = Query("SELECT CHIAVE FROM STRANI");
  EXPECT_EQ(rows.ColumnName(0), quirks().lowersNames ? "chiave" : "CHIAVE");
}

TEST_P(Quirk, TablesAreFoundByTheirCaseOrNot) {
  if (quirks().tableNamesByCase) {
    EXPECT_EQ(Number("DELETE FROM strani"), quirks().missingTable);
  } else {
    EXPECT_EQ(connection_.Execute("DELETE FROM strani"), 0);
  }
}

TEST_P(Quirk, ALongTextIsComparedOrNot) {
  const auto compared = [this] { return Query("SELECT CHIAVE FROM EVENTI WHERE NOTE=?", {"nota; con 'apici'"}); };
  if (quirks().comparesLongTexts) {
    EXPECT_EQ(compared().RecordCount(), 1U);
  } else {
    EXPECT_NE(Failure(compared).Number(), 0);
  }
}

TEST_P(Quirk, ATableMadeInATransactionGoesWithItOrStays) {
  connection_.BeginTrans();
  connection_.Execute("CREATE TABLE NUOVA (CHIAVE INTEGER NOT NULL)");
  connection_.RollbackTrans();
  if (quirks().rollsBackTables) {
    EXPECT_EQ(Number("DELETE FROM NUOVA"), quirks().missingTable);
  } else {
    EXPECT_EQ(connection_.Execute("DELETE FROM NUOVA"), 0);
  }
}

TEST_P(Quirk, FailuresHaveTheNumbersOfTheirStates) {
  connection_.Execute("INSERT INTO STRANI (CHIAVE) VALUES (1)");
  EXPECT_EQ(Number("DELETE FROM MANCA"), quirks().missingTable);
  EXPECT_EQ(Number("UPDATE STRANI SET MANCA=1"), quirks().missingColumn);
  EXPECT_EQ(Number("SELEZIONA"), quirks().syntax);
  EXPECT_EQ(Number("INSERT INTO STRANI (CHIAVE) VALUES (1)"), quirks().duplicateKey);
  const std::string tooLong = "UPDATE STRANI SET CORTO='lunghissimo'";
  if (quirks().tooLong != 0) {
    EXPECT_EQ(Number(tooLong), quirks().tooLong);
  } else {
    EXPECT_EQ(connection_.Execute(tooLong), 1);
  }
}

TEST_P(Quirk, AServerTakesNoTextForADateThatIsNone) {
  if (std::string_view(GetParam()) == "sqlite") {
    EXPECT_NO_THROW(connection_.Execute("INSERT INTO STRANI (CHIAVE,GIORNO) VALUES (1,'2006-02-30')"));
    return;
  }
  for (const char* none : {"2006-02-30", "0000-00-00", "", "domani"}) {
    EXPECT_NE(Number("INSERT INTO STRANI (CHIAVE,GIORNO) VALUES (1,'" + std::string(none) + "')"), 0) << none;
  }
}

TEST_P(Quirk, ATimeWithoutEndIsTakenForNoDate) {
  if (std::string_view(GetParam()) != "postgres") {
    GTEST_SKIP() << "no time without end on this server";
  }
  EXPECT_EQ(Single("SELECT 'infinity'::timestamp"), "infinity");
  EXPECT_EQ(Single("SELECT '-infinity'::timestamp"), "-infinity");
  EXPECT_EQ(Single("SELECT '9999-12-31'::timestamp"), "9999-12-31");
}

TEST_P(Quirk, AnUpdateCountsTheRowsThatItMeetsInTheEnd) {
  Recordset rows = Editable(connection_, "CHIAVE=1");
  connection_.BeginTrans();
  // The transaction has seen the row before another terminal changes it.
  EXPECT_EQ(Single("SELECT SOSPESA FROM EVENTI WHERE CHIAVE=1"), "N");
  if (std::string_view(GetParam()) != "sqlite") {
    Connection other;
    Open(other);
    other.Execute("UPDATE EVENTI SET SOSPESA='X' WHERE CHIAVE=1");
    rows.Fields("SOSPESA").SetValue("S");
    EXPECT_EQ(Failure([&] { rows.Update(); }).Number(), -2147217864);
  }
  connection_.RollbackTrans();
}

class DriverVersion : public Ado {
 protected:
  /// One piece of information that a driver gives of itself.
  static std::string About(SQLHANDLE connection, SQLUSMALLINT what) {
    std::string text(256, '\0');
    SQLSMALLINT length = 0;
    if (!SQL_SUCCEEDED(SQLGetInfo(connection, what, text.data(), static_cast<SQLSMALLINT>(text.size()), &length))) {
      return "";
    }
    text.resize(static_cast<std::size_t>(length));
    return text;
  }
};

INSTANTIATE_TEST_SUITE_P(Databases, DriverVersion, testing::ValuesIn(test::DatabaseKinds()),
                         [](const auto& chosen) { return std::string(chosen.param); });

TEST_P(DriverVersion, IsTold) {
  SQLHANDLE environment = nullptr;
  SQLHANDLE connection = nullptr;
  ASSERT_TRUE(SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &environment)));
  SQLSetEnvAttr(environment, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
  SQLAllocHandle(SQL_HANDLE_DBC, environment, &connection);
  std::string text = "DSN=" + database_->source + ";UID=" + database_->user + ";PWD=" + database_->password + ";";
  ASSERT_TRUE(SQL_SUCCEEDED(SQLDriverConnect(connection, nullptr, reinterpret_cast<SQLCHAR*>(text.data()), SQL_NTS,
                                             nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT)));
  const std::string name = About(connection, SQL_DBMS_NAME);
  const std::string driver = About(connection, SQL_DRIVER_VER);
  std::cout << GetParam() << ": " << name << " " << About(connection, SQL_DBMS_VER) << ", driver "
            << About(connection, SQL_DRIVER_NAME) << " " << driver << ", driver manager "
            << About(connection, SQL_DM_VER) << '\n';
  EXPECT_FALSE(name.empty());
  EXPECT_FALSE(driver.empty());
  SQLDisconnect(connection);
  SQLFreeHandle(SQL_HANDLE_DBC, connection);
  SQLFreeHandle(SQL_HANDLE_ENV, environment);
}

TEST(Db2, IsTestedWhereTheEnvironmentNamesASource) {
  const auto kinds = test::DatabaseKinds();
  if (kinds.back() != std::string_view("db2")) {
    GTEST_SKIP() << "DB2: saltata, LUMOSCAD_PROVA_DB2 non è impostata";
  }
  EXPECT_NO_THROW(static_cast<void>(test::databaseContext("db2").Create("")));
}

} // namespace
} // namespace lumoscad::ado
