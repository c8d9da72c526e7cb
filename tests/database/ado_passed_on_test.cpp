// The handle that the statements of a transaction pass on to one another: nothing of one statement reaches the next.

#include "AdoFixture.hpp"
#include "platform/Services.hpp"
#include "platform/ado/Dialect.hpp"
#include "support/CountedStatements.hpp"

#include <gmock/gmock.h>
#include <sql.h>
#include <sqlext.h>

namespace lumoscad::ado {
namespace {

/// What a handle says of itself right before its statement is executed.
struct HandleState {
  SQLSMALLINT parameters = -1; ///< bound by the program
  SQLSMALLINT described = -1;  ///< as the driver knows them
  SQLSMALLINT columns = -1;    ///< that have a place to be written to
  SQLULEN rows = 0;            ///< fetched at a time
  SQLULEN parameterSets = 0;
  bool counts = true; ///< whether there is a place for the number of rows fetched, or for their states
  SQLULEN limit = 0;  ///< seconds

  bool operator==(const HandleState&) const = default;
};

void PrintTo(const HandleState& state, std::ostream* where) {
  *where << "parameters " << state.parameters << "/" << state.described << " in " << state.parameterSets
         << " sets, columns " << state.columns << ", rows " << state.rows << (state.counts ? " (counted)" : "")
         << ", limit " << state.limit;
}

template <typename Value> Value Attribute(SQLHANDLE statement, SQLINTEGER which) {
  Value value{};
  EXPECT_TRUE(SQL_SUCCEEDED(SQLGetStmtAttr(statement, which, &value, 0, nullptr))) << which;
  return value;
}

SQLSMALLINT Records(SQLHANDLE statement, SQLINTEGER descriptor) {
  SQLSMALLINT count = -1;
  EXPECT_TRUE(SQL_SUCCEEDED(SQLGetDescField(Attribute<SQLHANDLE>(statement, descriptor), 0, SQL_DESC_COUNT, &count,
                                            SQL_IS_SMALLINT, nullptr)));
  return count;
}

SQLSMALLINT BoundColumns(SQLHANDLE statement) {
  auto* const descriptor = Attribute<SQLHANDLE>(statement, SQL_ATTR_APP_ROW_DESC);
  SQLSMALLINT bound = 0;
  for (SQLSMALLINT column = Records(statement, SQL_ATTR_APP_ROW_DESC); column > 0; --column) {
    SQLPOINTER place = nullptr;
    SQLGetDescField(descriptor, column, SQL_DESC_DATA_PTR, &place, SQL_IS_POINTER, nullptr);
    bound = static_cast<SQLSMALLINT>(bound + (place == nullptr ? 0 : 1));
  }
  return bound;
}

HandleState StateOf(SQLHANDLE statement) {
  HandleState state;
  state.parameters = Records(statement, SQL_ATTR_APP_PARAM_DESC);
  state.described = Records(statement, SQL_ATTR_IMP_PARAM_DESC);
  state.columns = BoundColumns(statement);
  state.rows = Attribute<SQLULEN>(statement, SQL_ATTR_ROW_ARRAY_SIZE);
  state.parameterSets = Attribute<SQLULEN>(statement, SQL_ATTR_PARAMSET_SIZE);
  state.counts = Attribute<SQLPOINTER>(statement, SQL_ATTR_ROWS_FETCHED_PTR) != nullptr ||
                 Attribute<SQLPOINTER>(statement, SQL_ATTR_ROW_STATUS_PTR) != nullptr;
  state.limit = Attribute<SQLULEN>(statement, SQL_ATTR_QUERY_TIMEOUT);
  return state;
}

/// A statement that is sent once.
struct Asked {
  std::string text;
  std::vector<std::string> parameters = {};
  std::vector<std::string> wanted = {};
};

/// What came of a statement: rows changed, names and cells, or the number and text of its failure.
using Answer = std::vector<std::string>;

class PassedOnHandle : public Ado {
 protected:
  PassedOnHandle() {
    connection_.Execute("CREATE TABLE LUNGHI (CHIAVE INTEGER NOT NULL PRIMARY KEY, TESTO " + Context().LongText() +
                        ")");
    connection_.Execute("INSERT INTO LUNGHI VALUES (1,'" + std::string(20000, 'x') + "')");
  }

  /// Whether the handles of this database are passed on.
  static bool Passes() { return std::string_view(GetParam()) == "postgres"; }

  static Answer Ask(Connection& connection, const Asked& asked) {
    Answer answer;
    try {
      Command sent = command(connection, asked.text, asked.parameters);
      sent.sentOnce = true;
      sent.wantedColumns = asked.wanted;
      std::int64_t affected = -1;
      Recordset rows = sent.Execute(&affected);
      answer.push_back(std::to_string(affected));
      for (std::size_t column = 0; column < rows.ColumnCount(); ++column) {
        answer.push_back(rows.ColumnName(column));
      }
      for (; rows.State() == State::Open && !rows.Eof(); rows.MoveNext()) {
        for (std::size_t column = 0; column < rows.ColumnCount(); ++column) {
          answer.emplace_back(rows.ValueAt(column).value_or("NULL"));
        }
      }
    } catch (const RuntimeError& error) {
      answer = {"failed", std::to_string(error.Number()), error.Description()};
    }
    return answer;
  }
  Answer Ask(const Asked& asked) { return Ask(connection_, asked); }

  /// Statements of every kind, each behind one that leaves as much as possible on its handle.
  static std::vector<Asked> EveryKind() {
    return {{"SELECT * FROM EVENTI WHERE GRUPPO=? AND CHIAVE<>? ORDER BY CHIAVE", {"10", "3"}},
            {"SELECT CHIAVE FROM EVENTI WHERE CHIAVE=1"},
            {"UPDATE EVENTI SET DESCRIZIONE=? WHERE CHIAVE=?", {"perché €", "2"}},
            {"UPDATE EVENTI SET SOSPESA='S' WHERE CHIAVE=99"},
            {"SELECT CHIAVE,TESTO FROM LUNGHI"},
            {"SELECT E.* FROM EVENTI E WHERE E.CHIAVE=?", {"3"}, {"IMPORTO", "CODICE"}},
            {"SELECT CHIAVE FROM EVENTI ORDER BY CHIAVE"},
            {"SELECT CHIAVE,CODICE FROM EVENTI WHERE CHIAVE=?", {"77"}},
            {"UPDATE EVENTI SET SOSPESA='X' WHERE GRUPPO=10"},
            {"SELECT COUNT(*), COUNT(CASE WHEN SOSPESA='X' THEN 1 END) FROM EVENTI WHERE GRUPPO=?", {"10"}},
            {"DELETE FROM EVENTI WHERE CHIAVE=?", {std::string(5000, ' ') + "3"}},
            {"SELECT TESTO FROM LUNGHI WHERE CHIAVE=?", {"1"}},
            {"SELECT SOSPESA FROM EVENTI WHERE CHIAVE=?", {"1"}}};
  }

  test::CountedStatements counted_;
};

INSTANTIATE_TEST_SUITE_P(Databases, PassedOnHandle, testing::ValuesIn(test::DatabaseKinds()),
                         [](const auto& chosen) { return std::string(chosen.param); });

TEST_P(PassedOnHandle, IsAsGoodAsNewForTheNextStatement) {
  std::vector<HandleState> states;
  counted_.beforeDirectExecution = [&](void* statement) {
    if (Passes()) { // of a handle that is its own there is nothing to ask, and not every driver answers
      states.push_back(StateOf(statement));
    }
  };
  // A transaction each: no statement finds a handle.
  std::vector<HandleState> fresh;
  std::vector<Answer> expected;
  for (std::size_t last = 0; last < EveryKind().size(); ++last) {
    Connection other;
    Open(other);
    other.BeginTrans();
    for (std::size_t before = 0; before < last; ++before) { // what it changed, prepared
      Command sent = command(other, EveryKind()[before].text, EveryKind()[before].parameters);
      static_cast<void>(sent.Execute());
    }
    states.clear();
    expected.push_back(Ask(other, EveryKind()[last]));
    fresh.insert(fresh.end(), states.begin(), states.end());
    other.RollbackTrans();
  }
  states.clear();
  connection_.BeginTrans();
  std::vector<Answer> answers;
  std::vector<HandleState> passed;
  for (const Asked& asked : EveryKind()) {
    states.clear();
    answers.push_back(Ask(asked));
    passed.insert(passed.end(), states.begin(), states.end());
  }
  connection_.RollbackTrans();
  EXPECT_EQ(answers, expected);
  EXPECT_EQ(passed, fresh);
  EXPECT_EQ(passed.size(), Passes() ? EveryKind().size() : 0U);
}

TEST_P(PassedOnHandle, ServesTheStatementsOfATransactionThatAreSentOnce) {
  connection_.BeginTrans();
  const std::size_t before = counted_.Allocations();
  for (const Asked& asked : EveryKind()) {
    Ask(asked);
  }
  connection_.Execute("UPDATE EVENTI SET SOSPESA='N'");
  EXPECT_EQ(counted_.Allocations() - before, Passes() ? 1U : EveryKind().size() + 1);
  EXPECT_EQ(counted_.Handles(), Passes() ? 1U : 0U);
  connection_.CommitTrans();
  EXPECT_EQ(counted_.Handles(), 0U) << "the end of the transaction is its own";
  EXPECT_EQ(Single("SELECT COUNT(*) FROM EVENTI WHERE SOSPESA='N'"), "2");
}

TEST_P(PassedOnHandle, IsLetGoOfHoweverTheTransactionEnds) {
  for (const bool closes : {false, true}) {
    Connection other;
    Open(other);
    other.BeginTrans();
    other.Execute("UPDATE EVENTI SET SOSPESA='N' WHERE CHIAVE=1");
    if (closes) {
      other.Close();
    } else {
      other.RollbackTrans();
    }
    EXPECT_EQ(counted_.Handles(), 0U);
  }
}

TEST_P(PassedOnHandle, IsNotThereOutsideOfATransaction) {
  const std::size_t before = counted_.Allocations();
  connection_.Execute("UPDATE EVENTI SET SOSPESA='N' WHERE CHIAVE=1");
  Ask({"SELECT CHIAVE FROM EVENTI WHERE CHIAVE=?", {"1"}});
  EXPECT_EQ(counted_.Allocations() - before, 2U);
  EXPECT_EQ(counted_.Handles(), 0U);
}

TEST_P(PassedOnHandle, IsNotUsedAgainAfterAFailure) {
  connection_.BeginTrans();
  Ask({"UPDATE EVENTI SET SOSPESA=? WHERE CHIAVE=1", {"N"}});
  for (const Asked& fails :
       std::vector<Asked>{{"UPDATE NON_C_E SET SOSPESA=?", {"N"}}, {"UPDATE NON_C_E SET SOSPESA='N'"}}) {
    EXPECT_EQ(Ask(fails).front(), "failed");
    EXPECT_EQ(counted_.Handles(), 0U) << "the handle went with the statement";
    const std::size_t before = counted_.Allocations();
    EXPECT_EQ(Ask({"SELECT CHIAVE FROM EVENTI WHERE CHIAVE=?", {"1"}}).back(), "1")
        << "and nothing of the failure is left";
    EXPECT_EQ(counted_.Allocations() - before, 1U);
  }
  EXPECT_NE(Failure([&] { connection_.Execute("UPDATE NON_C_E SET SOSPESA='N'"); }).Number(), 0);
  EXPECT_EQ(counted_.Handles(), 0U);
  connection_.RollbackTrans();
}

TEST_P(PassedOnHandle, IsNotSharedByTwoStatementsAtOnce) {
  connection_.BeginTrans();
  Answer inner;
  auto services = ActiveServices();
  bool inside = false;
  services.statementSent = [&](std::string_view) {
    if (!std::exchange(inside, true)) {
      inner = Ask({"SELECT CODICE FROM EVENTI WHERE CHIAVE=?", {"1"}});
    }
  };
  Ask({"SELECT CHIAVE FROM EVENTI WHERE CHIAVE=?", {"1"}});
  const ReplacedServices listening(services);
  const Answer outer = Ask({"SELECT CHIAVE FROM EVENTI WHERE GRUPPO=? ORDER BY CHIAVE", {"10"}});
  EXPECT_EQ(inner.back(), Context().TextFor("A1", 6));
  EXPECT_EQ(outer.back(), "2");
  EXPECT_EQ(outer.size(), 4U);
  EXPECT_EQ(counted_.Handles(), Passes() ? 1U : 0U) << "one is kept, however many there were";
  connection_.RollbackTrans();
}

TEST_P(PassedOnHandle, IsNoHandleOfAPreparedStatement) {
  connection_.BeginTrans();
  Command kept = command(connection_, "SELECT CODICE FROM EVENTI WHERE CHIAVE=?", {"1"});
  Ask({"SELECT CHIAVE FROM EVENTI WHERE CHIAVE=?", {"2"}});
  EXPECT_EQ(kept.Execute().ValueAt(0), Context().TextFor("A1", 6));
  Ask({"SELECT CHIAVE FROM EVENTI WHERE CHIAVE=?", {"2"}});
  kept.Parameters = {"3"};
  EXPECT_EQ(kept.Execute().ValueAt(0), Context().TextFor("C3", 6));
  EXPECT_EQ(counted_.Preparations("SELECT CODICE"), 1U);
  EXPECT_EQ(counted_.Handles(), Passes() ? 2U : 1U);
  connection_.RollbackTrans();
}

TEST(PassedOnHandles, HaveTheTimeLimitEveryTime) {
  const auto made = test::databaseContext("postgres").Create("");
  Connection connection;
  connection.commandTimeout = 1;
  connection.ConnectionString = made->ConnectionText();
  connection.Open();
  connection.BeginTrans();
  const auto wait = [&](const char* seconds) {
    Command sent;
    sent.ActiveConnection = &connection;
    sent.CommandText = "SELECT 1 FROM pg_sleep(CAST(? AS double precision))";
    sent.Parameters = {seconds};
    sent.sentOnce = true;
    return sent.Execute().RecordCount();
  };
  EXPECT_EQ(wait("0.1"), 1U);
  EXPECT_EQ(wait("0.2"), 1U);
  EXPECT_THROW(wait("5"), RuntimeError);
  connection.RollbackTrans();
}

TEST(Handles, ArePassedOnByTheDriverThatWasTriedAlone) {
  EXPECT_TRUE(detail::DialectOf("PostgreSQL").passesHandlesOn);
  for (const char* server : {"MariaDB", "SQLite", "DB2", "DB2/LINUXX8664", "MySQL", "altro", ""}) {
    EXPECT_FALSE(detail::DialectOf(server).passesHandlesOn) << server;
  }
}

} // namespace
} // namespace lumoscad::ado
