#include "AdoFixture.hpp"
#include "platform/Services.hpp"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace lumoscad::ado {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

INSTANTIATE_TEST_SUITE_P(Databases, Ado, testing::ValuesIn(test::DatabaseKinds()),
                         [](const auto& chosen) { return std::string(chosen.param); });

class AdoPostgresNumbers : public Ado {};
INSTANTIATE_TEST_SUITE_P(Databases, AdoPostgresNumbers, testing::Values("postgres"));

TEST_P(Ado, CountsRowsExactlyAndWalksThem) {
  Recordset rows = Query("SELECT CHIAVE FROM EVENTI ORDER BY CHIAVE");
  EXPECT_EQ(rows.State(), State::Open);
  EXPECT_EQ(rows.RecordCount(), 3U);
  std::vector<std::string> keys;
  for (; !rows.Eof(); rows.MoveNext()) {
    keys.emplace_back(rows.Fields("chiave").Value().value());
  }
  EXPECT_THAT(keys, ElementsAre("1", "2", "3"));
}

TEST_P(Ado, FindsColumnsInAnyCase) {
  const Recordset rows = Query("SELECT CHIAVE, Gruppo FROM EVENTI");
  EXPECT_EQ(rows.ColumnCount(), 2U);
  EXPECT_EQ(rows.ColumnIndex("gruppo"), 1U);
  EXPECT_EQ(rows.ColumnIndex("GRUPPO"), 1U);
  EXPECT_EQ(Failure([&] { static_cast<void>(rows.ColumnIndex("GRUPP")); }).Number(), 3265);
}

TEST_P(Ado, KeepsNullApartFromEmpty) {
  EXPECT_EQ(Single("SELECT DESCRIZIONE FROM EVENTI WHERE CHIAVE=2"), "");
  EXPECT_EQ(Single("SELECT DESCRIZIONE FROM EVENTI WHERE CHIAVE=3"), std::nullopt);
  EXPECT_EQ(Single("SELECT NOTE FROM EVENTI WHERE CHIAVE=1"), "");
  EXPECT_EQ(Single("SELECT NOTE FROM EVENTI WHERE CHIAVE=2"), std::nullopt);
}

TEST_P(Ado, NeverTrimsATextOfFixedLength) {
  EXPECT_EQ(Single("SELECT CODICE FROM EVENTI WHERE CHIAVE=2"), Context().TextFor(" B2  ", 6));
}

TEST_P(Ado, GivesDatesWithoutTimeAndTimesWhereThereAre) {
  EXPECT_EQ(Single("SELECT SCADENZA FROM EVENTI WHERE CHIAVE=1"), "2006-03-05");
  EXPECT_EQ(Single("SELECT QUANDO FROM EVENTI WHERE CHIAVE=1"), "2006-03-05");
  EXPECT_THAT(Single("SELECT QUANDO FROM EVENTI WHERE CHIAVE=2").value_or(""),
              testing::StartsWith("2006-03-05 14:07:00"));
}

TEST_P(Ado, GivesAmountsAsDecimalText) {
  EXPECT_THAT(Single("SELECT IMPORTO FROM EVENTI WHERE CHIAVE=1").value_or(""), testing::AnyOf("100.1", "100.10"));
  EXPECT_THAT(Single("SELECT SUM(IMPORTO) FROM EVENTI WHERE GRUPPO=10").value_or(""),
              testing::AnyOf("-399.9", "-399.90"));
  EXPECT_EQ(Single("SELECT SUM(IMPORTO) FROM EVENTI WHERE CHIAVE=3"), std::nullopt);
}

TEST_P(Ado, GivesWholeNumbersOfEverySizeAsTheirDigits) {
  connection_.Execute("CREATE TABLE INTERI (CHIAVE INTEGER NOT NULL PRIMARY KEY, CORTO SMALLINT, LUNGO BIGINT)");
  for (const char* const row : {"-2147483647, -32767, -9223372036854775807", "0, 0, 0", "7, NULL, NULL",
                                "2147483647, 32767, 9223372036854775807"}) {
    connection_.Execute("INSERT INTO INTERI VALUES (" + std::string(row) + ")");
  }
  std::string all;
  std::vector<std::optional<std::string_view>> values;
  for (Recordset rows = Query("SELECT CHIAVE, CORTO, 'x', LUNGO FROM INTERI ORDER BY CHIAVE"); !rows.Eof();
       rows.MoveNext()) {
    rows.ReadRow(values);
    ASSERT_EQ(values.size(), rows.ColumnCount());
    for (std::size_t i = 0; i < values.size(); ++i) {
      EXPECT_EQ(values[i], rows.ValueAt(i));
      all.append(values[i].value_or("NULL")).append("|");
    }
  }
  EXPECT_EQ(all, "-2147483647|-32767|x|-9223372036854775807|0|0|x|0|7|NULL|x|NULL|"
                 "2147483647|32767|x|9223372036854775807|");
}

TEST_P(Ado, ReadsARowWithTheValuesThatWereSet) {
  Recordset rows = Editable(connection_, "CHIAVE=1");
  rows.Fields("SOSPESA").SetValue(std::nullopt);
  std::vector<std::optional<std::string_view>> values;
  rows.ReadRow(values);
  EXPECT_EQ(values[0], "1");
  EXPECT_EQ(values[1], std::nullopt);
  rows.Fields("SOSPESA").SetValue("X");
  rows.ReadRow(values);
  EXPECT_EQ(values[1], "X");
}

TEST_P(AdoPostgresNumbers, ReadsANumberLongerThanAnyBufferWhole) {
  const std::string digits(80, '7');
  EXPECT_EQ(Single("SELECT " + digits + ".25"), digits + ".25");
  EXPECT_EQ(Single("SELECT SUM(N) FROM (VALUES (1.5), (" + digits + ")) AS V(N)"), digits.substr(1) + "8.5");
}

TEST_P(Ado, ReadsAccentsAndBindsThem) {
  EXPECT_EQ(Single("SELECT DESCRIZIONE FROM EVENTI WHERE CHIAVE=1"), "Società àèìòù €");
  EXPECT_EQ(Single("SELECT CHIAVE FROM EVENTI WHERE DESCRIZIONE=?", {"Società àèìòù €"}), "1");
}

TEST_P(Ado, ReadsALongTextWhole) {
  std::string longText;
  for (int i = 0; longText.size() < 300'000; ++i) {
    longText += std::to_string(i) + " è lunga; ";
  }
  command(connection_, "UPDATE EVENTI SET NOTE=? WHERE CHIAVE=2", {longText}).Execute();
  EXPECT_EQ(Single("SELECT NOTE FROM EVENTI WHERE CHIAVE=2"), longText);
  const Recordset rows = Query("SELECT CHIAVE,NOTE,GRUPPO FROM EVENTI ORDER BY CHIAVE");
  EXPECT_EQ(rows.RecordCount(), 3U);
}

TEST_P(Ado, NeverCutsATextLongerThanItsColumnWasDescribed) {
  for (const std::size_t length : {200U, 254U, 255U, 256U, 1019U, 1020U, 1021U, 1022U, 5000U, 70'000U}) {
    std::string expected(length, 'x');
    expected.back() = 'z';
    command(connection_, "UPDATE EVENTI SET NOTE=? WHERE CHIAVE=2", {expected}).Execute();
    EXPECT_EQ(Single("SELECT " + Context().Joined("NOTE", "''") + " AS TUTTO FROM EVENTI WHERE CHIAVE=2"), expected)
        << length;
    EXPECT_EQ(Single("SELECT " + Context().AsText("NOTE") + " FROM EVENTI WHERE CHIAVE=2"), expected) << length;
  }
}

TEST_P(Ado, ReadsManyRowsAcrossBlocks) {
  Command insert = command(connection_, "INSERT INTO EVENTI (CHIAVE,GRUPPO,DESCRIZIONE) VALUES (?,?,?)");
  connection_.BeginTrans();
  for (int i = 100; i < 3200; ++i) {
    insert.Parameters = {std::to_string(i), "99", i % 3 == 0 ? "" : "riga " + std::to_string(i)};
    insert.Execute();
  }
  connection_.CommitTrans();
  Recordset rows = Query("SELECT CHIAVE,DESCRIZIONE,SCADENZA FROM EVENTI WHERE GRUPPO=? ORDER BY CHIAVE", {"99"});
  ASSERT_EQ(rows.RecordCount(), 3100U);
  for (int i = 100; i < 3200; ++i, rows.MoveNext()) {
    ASSERT_EQ(rows.ValueAt(0), std::to_string(i));
    ASSERT_EQ(rows.ValueAt(1), i % 3 == 0 ? "" : "riga " + std::to_string(i));
    ASSERT_EQ(rows.ValueAt(2), std::nullopt);
  }
  EXPECT_TRUE(rows.Eof());
}

TEST_P(Ado, BindsAnIntegerKeyAsText) {
  EXPECT_EQ(Query("SELECT 1 FROM EVENTI WHERE GRUPPO=?", {"10"}).RecordCount(), 2U);
}

TEST_P(Ado, BindsAnEmptyTextAsEmpty) {
  EXPECT_EQ(Single("SELECT CHIAVE FROM EVENTI WHERE DESCRIZIONE=?", {""}), "2");
}

TEST_P(Ado, NeverReadsAParameterAsStatement) {
  const std::string hostile = "x'; DELETE FROM EVENTI; --";
  EXPECT_EQ(Query("SELECT 1 FROM EVENTI WHERE DESCRIZIONE=?", {hostile}).RecordCount(), 0U);
  EXPECT_EQ(Single("SELECT COUNT(*) FROM EVENTI"), "3");
}

TEST_P(Ado, RunsACommandAgainWithOtherParameters) {
  Command select = command(connection_, "SELECT CHIAVE FROM EVENTI WHERE CHIAVE=?");
  for (const char* key : {"1", "2", "3", "4", "1"}) {
    select.Parameters = {key};
    EXPECT_EQ(select.Execute().RecordCount(), std::string_view(key) == "4" ? 0U : 1U) << key;
  }
  select.CommandText = "SELECT CHIAVE,GRUPPO FROM EVENTI WHERE GRUPPO=?";
  select.Parameters = {"20"};
  EXPECT_EQ(select.Execute().Fields("GRUPPO").Value(), "20");
}

TEST_P(Ado, RunsACommandAgainOnAReopenedConnection) {
  Command select = command(connection_, "SELECT CHIAVE FROM EVENTI WHERE CHIAVE=?", {"1"});
  EXPECT_EQ(select.Execute().RecordCount(), 1U);
  connection_.Close();
  EXPECT_EQ(Failure([&] { select.Execute(); }).Number(), 3704);
  connection_.Open();
  EXPECT_EQ(select.Execute().RecordCount(), 1U);
}

TEST_P(Ado, RefusesAWrongCountOfParameters) {
  for (const auto& parameters : std::vector<std::vector<std::string>>{{}, {"1", "2"}}) {
    const auto error = Failure([&] { Query("SELECT 1 FROM EVENTI WHERE CHIAVE=?", parameters); });
    EXPECT_EQ(error.Number(), -2147217904);
    EXPECT_THAT(error.Description(), HasSubstr("07001"));
  }
}

TEST_P(Ado, CountsAffectedRowsAndTakesNoMatchForZero) {
  std::int64_t affected = -5;
  command(connection_, "UPDATE EVENTI SET SOSPESA='S' WHERE GRUPPO=?", {"10"}).Execute(&affected);
  EXPECT_EQ(affected, 2);
  command(connection_, "UPDATE EVENTI SET SOSPESA='S' WHERE GRUPPO=?", {"77"}).Execute(&affected);
  EXPECT_EQ(affected, 0);
  EXPECT_EQ(connection_.Execute("DELETE FROM EVENTI WHERE GRUPPO=77"), 0);
  EXPECT_EQ(connection_.Execute("DELETE FROM EVENTI WHERE GRUPPO=10"), 2);
}

TEST_P(Ado, CommitsAndRollsBack) {
  Connection other;
  connection_.BeginTrans();
  connection_.Execute("UPDATE EVENTI SET SOSPESA='S' WHERE CHIAVE=1");
  connection_.RollbackTrans();
  EXPECT_EQ(Single("SELECT SOSPESA FROM EVENTI WHERE CHIAVE=1"), "N");
  connection_.BeginTrans();
  connection_.Execute("UPDATE EVENTI SET SOSPESA='S' WHERE CHIAVE=1");
  connection_.CommitTrans();
  Open(other);
  EXPECT_EQ(command(other, "SELECT SOSPESA FROM EVENTI WHERE CHIAVE=1").Execute().ValueAt(0), "S");
}

TEST_P(Ado, RollsBackAnOpenTransactionWhenClosed) {
  connection_.BeginTrans();
  connection_.Execute("DELETE FROM EVENTI");
  connection_.Close();
  EXPECT_EQ(connection_.State(), State::Closed);
  connection_.Open();
  EXPECT_EQ(Single("SELECT COUNT(*) FROM EVENTI"), "3");
}

TEST_P(Ado, RefusesTransactionCallsOutOfOrder) {
  EXPECT_EQ(Failure([&] { connection_.CommitTrans(); }).Number(), 3219);
  EXPECT_EQ(Failure([&] { connection_.RollbackTrans(); }).Number(), 3219);
  connection_.BeginTrans();
  EXPECT_EQ(Failure([&] { connection_.BeginTrans(); }).Number(), 3219);
  connection_.RollbackTrans();
}

TEST_P(Ado, ReportsEveryDiagnosticWithItsState) {
  const auto error = Failure([&] { connection_.Execute("SELECT * FROM NON_C_E"); });
  EXPECT_EQ(error.Source(), "ODBC");
  EXPECT_THAT(error.Description(), testing::StartsWith("["));
  EXPECT_THAT(error.Description(), testing::ContainsRegex("(non_c_e|NON_C_E)"));
}

TEST_P(Ado, WorksOnAfterAFailedStatement) {
  EXPECT_NE(Failure([&] { connection_.Execute("SELEZIONA"); }).Number(), 0);
  EXPECT_EQ(Single("SELECT COUNT(*) FROM EVENTI"), "3");
}

TEST_P(Ado, RefusesUseWhenClosed) {
  Connection closed;
  EXPECT_EQ(Failure([&] { closed.Execute("SELECT 1"); }).Number(), 3704);
  EXPECT_EQ(Failure([&] { closed.BeginTrans(); }).Number(), 3704);
  EXPECT_NO_THROW(closed.Close());
  Command unbound;
  EXPECT_EQ(Failure([&] { unbound.Execute(); }).Number(), 3704);
  Recordset rows;
  EXPECT_EQ(rows.State(), State::Closed);
  EXPECT_EQ(Failure([&] { rows.MoveNext(); }).Number(), 3704);
  EXPECT_EQ(Failure([&] { connection_.Open(); }).Number(), 3705);
}

TEST_P(Ado, RefusesFieldsPastTheEnd) {
  Recordset none = Query("SELECT CHIAVE FROM EVENTI WHERE CHIAVE=99");
  EXPECT_EQ(none.State(), State::Open);
  EXPECT_TRUE(none.Eof());
  EXPECT_EQ(Failure([&] { static_cast<void>(none.Fields("CHIAVE").Value()); }).Number(), 3021);
  EXPECT_EQ(Failure([&] { none.MoveNext(); }).Number(), 3021);
}

TEST_P(Ado, KeepsReadRowsAfterTheConnectionIsClosed) {
  const Recordset rows = Query("SELECT DESCRIZIONE FROM EVENTI WHERE CHIAVE=1");
  connection_.Close();
  EXPECT_EQ(rows.ValueAt(0), "Società àèìòù €");
}

TEST_P(Ado, TellsEveryStatementBeforeItIsSent) {
  std::vector<std::string> sent;
  Services services = ActiveServices();
  services.statementSent = [&](std::string_view text) { sent.emplace_back(text); };
  const ReplacedServices replaced(services);
  connection_.Execute("DELETE FROM EVENTI WHERE CHIAVE=99");
  Query("SELECT CHIAVE FROM EVENTI WHERE CHIAVE=?", {"1"});
  Recordset rows = Editable(connection_, "CHIAVE=1");
  rows.Fields("SOSPESA").SetValue("S");
  rows.Update();
  EXPECT_THAT(sent, ElementsAre("DELETE FROM EVENTI WHERE CHIAVE=99", "SELECT CHIAVE FROM EVENTI WHERE CHIAVE=?",
                                "SELECT CHIAVE,SOSPESA FROM EVENTI WHERE CHIAVE=1 ORDER BY CHIAVE",
                                "UPDATE EVENTI SET SOSPESA=? WHERE CHIAVE=? AND SOSPESA=?"));
}

} // namespace
} // namespace lumoscad::ado
