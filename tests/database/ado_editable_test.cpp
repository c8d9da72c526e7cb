#include "AdoFixture.hpp"
#include "platform/Services.hpp"
#include "platform/ado/RecordsetImpl.hpp"

#include <gmock/gmock.h>

#include <array>
#include <string>
#include <vector>

namespace lumoscad::ado {
namespace {

using testing::HasSubstr;

TEST_P(Ado, UpdatesTheRowsOfAnEditableSetOneByOne) {
  connection_.BeginTrans();
  Recordset rows = Editable(connection_, "GRUPPO=10");
  for (; !rows.Eof(); rows.MoveNext()) {
    rows.Fields("SOSPESA").SetValue("S");
    EXPECT_EQ(rows.Fields("SOSPESA").Value(), "S");
    rows.Update();
    EXPECT_EQ(rows.Fields("SOSPESA").Value(), "S");
  }
  connection_.CommitTrans();
  EXPECT_EQ(Single("SELECT COUNT(*) FROM EVENTI WHERE SOSPESA='S'"), "2");
  EXPECT_EQ(Single("SELECT SOSPESA FROM EVENTI WHERE CHIAVE=3"), std::nullopt);
}

TEST_P(Ado, UpdatesFromAndToNull) {
  Recordset rows = Editable(connection_, "CHIAVE=3", "CHIAVE,SOSPESA,SCADENZA");
  rows.Fields("SOSPESA").SetValue("N");
  rows.Fields("SCADENZA").SetValue(std::nullopt);
  rows.Update();
  EXPECT_EQ(Single("SELECT SOSPESA FROM EVENTI WHERE CHIAVE=3"), "N");
  EXPECT_EQ(Single("SELECT SCADENZA FROM EVENTI WHERE CHIAVE=3"), std::nullopt);
  rows.Fields("SCADENZA").SetValue("2007-01-31");
  rows.Update();
  EXPECT_EQ(Single("SELECT SCADENZA FROM EVENTI WHERE CHIAVE=3"), "2007-01-31");
}

TEST_P(Ado, UpdatesDatesAmountsAndPaddedTextsByTheirOriginalValues) {
  Recordset rows = Editable(connection_, "CHIAVE=2", "CHIAVE,CODICE,QUANDO,IMPORTO");
  rows.Fields("CODICE").SetValue("Z");
  rows.Fields("QUANDO").SetValue("2008-02-29 00:00:00");
  rows.Fields("IMPORTO").SetValue("12.50");
  rows.Update();
  EXPECT_EQ(Single("SELECT QUANDO FROM EVENTI WHERE CHIAVE=2"), "2008-02-29");
  EXPECT_THAT(Single("SELECT IMPORTO FROM EVENTI WHERE CHIAVE=2").value_or(""), testing::AnyOf("12.5", "12.50"));
}

TEST_P(Ado, CountsSettingTheSameValueAsSuccess) {
  Recordset rows = Editable(connection_, "CHIAVE=1");
  rows.Fields("SOSPESA").SetValue("N");
  EXPECT_NO_THROW(rows.Update());
  EXPECT_EQ(Single("SELECT SOSPESA FROM EVENTI WHERE CHIAVE=1"), "N");
}

TEST_P(Ado, RefusesARowThatAnotherTerminalChanged) {
  Connection other;
  Open(other);
  Recordset rows = Editable(connection_, "CHIAVE=1");
  other.Execute("UPDATE EVENTI SET SOSPESA='X' WHERE CHIAVE=1");
  rows.Fields("SOSPESA").SetValue("S");
  const auto error = Failure([&] { rows.Update(); });
  EXPECT_EQ(error.Number(), -2147217864);
  EXPECT_THAT(error.Description(), HasSubstr("altro terminale"));
  EXPECT_EQ(Single("SELECT SOSPESA FROM EVENTI WHERE CHIAVE=1"), "X");
}

TEST_P(Ado, RefusesARowThatAnotherTerminalRemoved) {
  Connection other;
  Open(other);
  Recordset rows = Editable(connection_, "CHIAVE=1");
  other.Execute("DELETE FROM EVENTI WHERE CHIAVE=1");
  rows.Fields("SOSPESA").SetValue("N");
  EXPECT_EQ(Failure([&] { rows.Update(); }).Number(), -2147217864);
}

TEST_P(Ado, RefusesAndUndoesAnUpdateOfMoreThanOneRow) {
  Command select = command(connection_, "SELECT GRUPPO,SOSPESA FROM EVENTI WHERE CHIAVE=1");
  Recordset rows;
  rows.Open(select, CursorType::Dynamic, LockType::Optimistic, {.tableName = "EVENTI", .key = "GRUPPO"});
  rows.Fields("SOSPESA").SetValue("S");
  EXPECT_EQ(Failure([&] { rows.Update(); }).Number(), -2147217864);
  EXPECT_EQ(Single("SELECT COUNT(*) FROM EVENTI WHERE SOSPESA='S'"), "0");
}

TEST_P(Ado, LeavesAValueThatTheServerCannotCompareOutOfTheCondition) {
  std::vector<std::string> sent;
  Services services = ActiveServices();
  services.statementSent = [&](std::string_view text) { sent.emplace_back(text); };
  for (const char* key : {"1", "2"}) { // an empty text and NULL
    Recordset rows = Editable(connection_, std::string("CHIAVE=") + key, "CHIAVE,SOSPESA,NOTE");
    EXPECT_EQ(rows.impl().comparable[2], quirks().comparesLongTexts);
    rows.impl().comparable[2] = false;
    rows.Fields("NOTE").SetValue("scritta");
    rows.Fields("SOSPESA").SetValue("S");
    const ReplacedServices replaced(services);
    rows.Update();
  }
  EXPECT_THAT(sent, testing::ElementsAre("UPDATE EVENTI SET SOSPESA=?,NOTE=? WHERE CHIAVE=? AND SOSPESA=?",
                                         "UPDATE EVENTI SET SOSPESA=?,NOTE=? WHERE CHIAVE=? AND SOSPESA=? AND NOTE IS "
                                         "NULL"));
  EXPECT_EQ(Single("SELECT COUNT(*) FROM EVENTI WHERE SOSPESA='S'"), "2");
}

TEST_P(Ado, KeepsTheRowsOfTheMomentWhenADynamicSetWasOpened) {
  Connection other;
  Open(other);
  Recordset rows = Editable(connection_, "GRUPPO=10");
  other.Execute("INSERT INTO EVENTI (CHIAVE,GRUPPO,SOSPESA) VALUES (4,10,'N')");
  other.Execute("UPDATE EVENTI SET SOSPESA='X' WHERE CHIAVE=2");
  EXPECT_EQ(rows.RecordCount(), 2U);
  rows.MoveNext();
  EXPECT_EQ(rows.Fields("SOSPESA").Value(), "N");
}

TEST(LongColumns, AreNotComparedOnDb2Alone) {
  constexpr SQLSMALLINT ClobOfDb2 = -99;
  constexpr std::array<SQLSMALLINT, 3> LongTypes{SQL_LONGVARCHAR, SQL_WLONGVARCHAR, ClobOfDb2};
  constexpr std::array<SQLSMALLINT, 5> ShortTypes{SQL_CHAR, SQL_VARCHAR, SQL_TYPE_DATE, SQL_DECIMAL, SQL_INTEGER};
  for (const SQLSMALLINT type : LongTypes) {
    const detail::ColumnInfo column{.name = "NOTE", .type = type};
    for (const char* server : {"PostgreSQL", "MariaDB", "SQLite", "altro"}) {
      EXPECT_TRUE(detail::Comparable(column, detail::DialectOf(server))) << server << " " << type;
    }
    for (const char* server : {"DB2", "DB2/LINUXX8664", "DB2 UDB for AS/400"}) {
      EXPECT_FALSE(detail::Comparable(column, detail::DialectOf(server))) << server << " " << type;
    }
  }
  for (const SQLSMALLINT type : ShortTypes) {
    EXPECT_TRUE(detail::Comparable({.name = "SOSPESA", .type = type}, detail::DialectOf("DB2/LINUXX8664")));
  }
}

TEST_P(Ado, RefusesToLeaveARowWithChangesNotSent) {
  Recordset rows = Editable(connection_, "GRUPPO=10");
  rows.Fields("SOSPESA").SetValue("S");
  EXPECT_EQ(Failure([&] { rows.MoveNext(); }).Number(), 3219);
  rows.Close();
  EXPECT_EQ(Single("SELECT SOSPESA FROM EVENTI WHERE CHIAVE=1"), "N");
}

TEST_P(Ado, RefusesToEditAnythingButAnEditableSet) {
  Recordset rows = Query("SELECT CHIAVE,SOSPESA FROM EVENTI");
  EXPECT_EQ(Failure([&] { rows.Fields("SOSPESA").SetValue("S"); }).Number(), 3219);
  EXPECT_EQ(Failure([&] { static_cast<void>(Editable(connection_, "CHIAVE=1", "SOSPESA")); }).Number(), 3265);
}

} // namespace
} // namespace lumoscad::ado
