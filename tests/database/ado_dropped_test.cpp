#include "AdoFixture.hpp"
#include "platform/Services.hpp"
#include "platform/ado/RecordsetImpl.hpp"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace lumoscad::ado {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr int RowChanged = -2147217864;

TEST_P(Ado, RefusesAnUpdateThatATriggerDropped) {
  const auto drop = Context().DropUpdate("EVENTI", "OLD.CHIAVE=1");
  if (drop.empty()) {
    GTEST_SKIP() << "no trigger of this server drops an update";
  }
  for (const std::string& statement : drop) {
    connection_.Execute(statement);
  }
  Recordset rows = Editable(connection_, "CHIAVE=1");
  rows.Fields("SOSPESA").SetValue("S");
  const auto error = Failure([&] { rows.Update(); });
  EXPECT_EQ(error.Number(), RowChanged);
  EXPECT_THAT(error.Description(), HasSubstr("senza dirne il motivo"));
  EXPECT_THAT(error.Description(), Not(HasSubstr("altro terminale")));
  EXPECT_EQ(Single("SELECT SOSPESA FROM EVENTI WHERE CHIAVE=1"), "N");
}

TEST_P(Ado, CountsADroppedUpdateAsDoneWhereTheRowHoldsEveryValueAlready) {
  const auto drop = Context().DropUpdate("EVENTI", "OLD.CHIAVE=1");
  if (drop.empty()) {
    GTEST_SKIP() << "no trigger of this server drops an update";
  }
  for (const std::string& statement : drop) {
    connection_.Execute(statement);
  }
  Recordset rows = Editable(connection_, "CHIAVE=1", "CHIAVE,SOSPESA,IMPORTO");
  rows.Fields("SOSPESA").SetValue("N");
  EXPECT_NO_THROW(rows.Update());
  rows.Fields("SOSPESA").SetValue("N");
  rows.Fields("IMPORTO").SetValue("100.11");
  EXPECT_EQ(Failure([&] { rows.Update(); }).Number(), RowChanged) << "one of two values is not there";
}

TEST_P(Ado, RefusesADroppedUpdateOfTwoRowsThatHoldTheValue) {
  const auto drop = Context().DropUpdate("EVENTI", "OLD.GRUPPO=10");
  if (drop.empty()) {
    GTEST_SKIP() << "no trigger of this server drops an update";
  }
  for (const std::string& statement : drop) {
    connection_.Execute(statement);
  }
  Command select = command(connection_, "SELECT GRUPPO,SOSPESA FROM EVENTI WHERE CHIAVE=1");
  Recordset rows;
  rows.Open(select, CursorType::Dynamic, LockType::Optimistic, {.tableName = "EVENTI", .key = "GRUPPO"});
  rows.Fields("SOSPESA").SetValue("N");
  EXPECT_EQ(Failure([&] { rows.Update(); }).Number(), RowChanged);
}

TEST_P(Ado, RefusesTheSameValueForARowThatAnotherTerminalChanged) {
  Connection other;
  Open(other);
  Recordset rows = Editable(connection_, "CHIAVE=1");
  other.Execute("UPDATE EVENTI SET SOSPESA='X' WHERE CHIAVE=1");
  rows.Fields("SOSPESA").SetValue("N");
  const auto error = Failure([&] { rows.Update(); });
  EXPECT_EQ(error.Number(), RowChanged);
  EXPECT_THAT(error.Description(), HasSubstr("altro terminale"));
  EXPECT_EQ(Single("SELECT SOSPESA FROM EVENTI WHERE CHIAVE=1"), "X");
}

TEST_P(Ado, CountsAsDoneWhatAnotherTerminalHasDoneAlready) {
  Connection other;
  Open(other);
  Recordset rows = Editable(connection_, "CHIAVE=1", "CHIAVE,SOSPESA,SCADENZA");
  other.Execute("UPDATE EVENTI SET SOSPESA='S',SCADENZA=NULL WHERE CHIAVE=1");
  rows.Fields("SOSPESA").SetValue("S");
  rows.Fields("SCADENZA").SetValue(std::nullopt);
  EXPECT_NO_THROW(rows.Update());
  EXPECT_EQ(Single("SELECT SOSPESA FROM EVENTI WHERE CHIAVE=1"), "S");
  EXPECT_EQ(rows.Fields("SOSPESA").Value(), "S");
}

TEST_P(Ado, LetsTheServerCompareAPaddedTextATimestampAndAnAmountThatAreThereAlready) {
  Recordset rows = Editable(connection_, "CHIAVE=1", "CHIAVE,CODICE,QUANDO,IMPORTO,SCADENZA");
  for (const char* code : {"A1", "A1    "}) {
    // SQLite keeps the blanks of a CHAR and compares with them: it counts the row as changed.
    rows.Fields("CODICE").SetValue(code);
    rows.Fields("QUANDO").SetValue("2006-03-05 00:00:00");
    rows.Fields("IMPORTO").SetValue("100.1");
    rows.Fields("SCADENZA").SetValue("2006-03-05");
    EXPECT_NO_THROW(rows.Update()) << code;
  }
  EXPECT_THAT(Single("SELECT IMPORTO FROM EVENTI WHERE CHIAVE=1").value_or(""), testing::AnyOf("100.1", "100.10"));
}

TEST_P(Ado, ReadsALongTextThatTheServerDoesNotCompare) {
  std::vector<std::string> sent;
  Services services = ActiveServices();
  services.statementSent = [&](std::string_view text) { sent.emplace_back(text); };
  const auto drop = Context().DropUpdate("EVENTI", "OLD.CHIAVE=3");
  for (const std::string& statement : drop) {
    connection_.Execute(statement);
  }
  const auto change = [&](const char* note) {
    Recordset rows = Editable(connection_, "CHIAVE=3", "CHIAVE,SCADENZA,NOTE");
    rows.impl().comparable[2] = false;
    rows.Fields("SCADENZA").SetValue("2006-12-31");
    rows.Fields("NOTE").SetValue(note);
    const ReplacedServices replaced(services);
    rows.Update();
  };
  EXPECT_NO_THROW(change("nota; con 'apici'"));
  for (const std::string& statement : sent) {
    EXPECT_THAT(statement.substr(statement.find("WHERE")), Not(HasSubstr("NOTE")));
  }
  if (drop.empty()) {
    GTEST_SKIP() << "no trigger of this server drops an update: nothing is asked again";
  }
  ASSERT_EQ(sent.size(), 2U);
  EXPECT_EQ(sent[1], "SELECT CHIAVE,NOTE FROM EVENTI WHERE CHIAVE=? AND SCADENZA=?");
  EXPECT_EQ(Failure([&] { change("nota; con 'apici' "); }).Number(), RowChanged);
}

/// The table's owner lets everybody read it, and lets no row of the group 10 be changed.
class RowSecurity : public Ado {
 protected:
  void SetUp() override {
    connection_.Execute("DROP ROLE IF EXISTS sportello");
    for (const std::string& statement :
         {Context().CreateAccount("sportello", password_),
          "GRANT USAGE ON SCHEMA " + database_->schema + " TO sportello",
          std::string("GRANT SELECT,UPDATE ON EVENTI TO sportello"),
          std::string("ALTER TABLE EVENTI ENABLE ROW LEVEL SECURITY"),
          std::string("CREATE POLICY leggere ON EVENTI FOR SELECT USING (true)"),
          std::string("CREATE POLICY scrivere ON EVENTI FOR UPDATE USING (GRUPPO<>10)")}) {
      connection_.Execute(statement);
    }
    clerk_.ConnectionString = test::ConnectionText(database_->source, "sportello", password_);
    clerk_.Open();
  }
  void TearDown() override {
    clerk_.Close();
    connection_.Execute("DROP OWNED BY sportello");
    connection_.Execute(Context().DropAccount("sportello"));
  }

  std::string password_ = "Sportello!7";
  Connection clerk_;
};

INSTANTIATE_TEST_SUITE_P(Databases, RowSecurity, testing::Values("postgres"),
                         [](const auto& each) { return std::string(each.param); });

TEST_P(RowSecurity, ThatHidesARowFromUpdatesRefusesTheChange) {
  Recordset rows = Editable(clerk_, "CHIAVE=1");
  rows.Fields("SOSPESA").SetValue("S");
  EXPECT_EQ(Failure([&] { rows.Update(); }).Number(), RowChanged);
  EXPECT_EQ(Single("SELECT SOSPESA FROM EVENTI WHERE CHIAVE=1"), "N");
}

TEST_P(RowSecurity, ThatLetsARowBeChangedLeavesTheChangeAlone) {
  Recordset rows = Editable(clerk_, "CHIAVE=3");
  rows.Fields("SOSPESA").SetValue("S");
  EXPECT_NO_THROW(rows.Update());
  EXPECT_EQ(Single("SELECT SOSPESA FROM EVENTI WHERE CHIAVE=3"), "S");
}

} // namespace
} // namespace lumoscad::ado
