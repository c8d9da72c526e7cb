// How a statement and its values reach the driver: what is prepared and what is not, and that it makes no difference to
// what is found and written.

#include "AdoFixture.hpp"
#include "platform/ado/Dialect.hpp"
#include "platform/ado/Execution.hpp"
#include "support/CountedStatements.hpp"

#include <array>
#include <gmock/gmock.h>

namespace lumoscad::ado {
namespace {

constexpr const char* UnknownServer = "MARCA IGNOTA";

/// What came of a statement: its cells, "NULL" for none, or the number and state of its failure.
using Answer = std::vector<std::string>;

class DirectExecution : public Ado {
 protected:
  DirectExecution() {
    connection_.Execute("CREATE TABLE TIPI (CHIAVE INTEGER NOT NULL PRIMARY KEY, FISSO CHAR(6), TESTO VARCHAR(60), "
                        "GIORNO DATE, QUANDO TIMESTAMP, IMPORTO DECIMAL(15,2), DOPPIO DOUBLE PRECISION, GRANDE BIGINT, "
                        "PICCOLO SMALLINT, LUNGO " +
                        Context().LongText() + ")");
    connection_.Execute("INSERT INTO TIPI VALUES (1,'A1','Società €','2006-03-05','2006-03-05 14:07:00',100.10,0.5,"
                        "12345678901,7,'nota')");
    connection_.Execute("INSERT INTO TIPI VALUES (2,' B2 ','','2006-12-31','2006-12-31 00:00:00',-500,-1,-5,0,'')");
  }

  static Recordset Once(Connection& connection, std::string text, std::vector<std::string> parameters) {
    Command sent = command(connection, std::move(text), std::move(parameters));
    sent.sentOnce = true;
    return sent.Execute();
  }
  Recordset Once(std::string text, std::vector<std::string> parameters) {
    return Once(connection_, std::move(text), std::move(parameters));
  }

  /// One way of handing a statement to the driver.
  struct Way {
    const char* name;
    const char* serverName; ///< the name that the server goes by; empty for its own
    bool sentOnce;
  };
  static constexpr std::array<Way, 3> Ways{{{"prepared", "", false},
                                            {"sent once", "", true},
                                            {"sent once to a server that is not known", UnknownServer, true}}};

  /// A connection to the database of the test, on which statements go that way.
  std::unique_ptr<Connection> ConnectionOf(const Way& way) {
    counted_.serverName = way.serverName;
    auto opened = std::make_unique<Connection>();
    Open(*opened);
    counted_.serverName.clear();
    if (std::string_view(GetParam()) == "mariadb" && *way.serverName != '\0') {
      // An unknown server is not told what MariaDB is.
      opened->Execute(detail::DialectOf("MariaDB").OpeningFor(std::chrono::seconds(60)));
    }
    return opened;
  }
  static Answer AnswerTo(Connection& connection, const Way& way, const std::string& text,
                         const std::vector<std::string>& parameters) {
    Command sent = command(connection, text, parameters);
    sent.sentOnce = way.sentOnce;
    Answer answer;
    try {
      std::int64_t affected = -1;
      Recordset rows = sent.Execute(&affected);
      answer.push_back(std::to_string(affected));
      for (; rows.State() == State::Open && !rows.Eof(); rows.MoveNext()) {
        for (std::size_t column = 0; column < rows.ColumnCount(); ++column) {
          answer.emplace_back(rows.ValueAt(column).value_or("NULL"));
        }
      }
    } catch (const RuntimeError& error) {
      answer = {"failed", std::to_string(error.Number())};
    }
    return answer;
  }
  /// The answers, which are the same whichever way the statement goes.
  void ExpectSameAnswer(const std::string& text, const std::vector<std::string>& parameters) {
    std::vector<Answer> answers;
    for (const Way& way : Ways) {
      const auto connection = ConnectionOf(way);
      answers.push_back(AnswerTo(*connection, way, text, parameters));
    }
    for (std::size_t i = 1; i < answers.size(); ++i) {
      EXPECT_EQ(answers[i], answers[0]) << text << " <" << parameters.front() << "> " << Ways.at(i).name;
    }
  }

  /// Whether statements that are sent once are not prepared here: SQLite has no round trip to save.
  static bool Direct() { return std::string_view(GetParam()) != "sqlite"; }

  /// Whether a query is prepared all the same: MariaDB's driver does not bear an answer that breaks off otherwise.
  static bool PreparesQueries() { return std::string_view(GetParam()) == "mariadb"; }

  test::CountedStatements counted_;
};

INSTANTIATE_TEST_SUITE_P(Databases, DirectExecution, testing::ValuesIn(test::DatabaseKinds()),
                         [](const auto& chosen) { return std::string(chosen.param); });

TEST_P(DirectExecution, OfATextThatIsSentOnceNeedsNoPreparation) {
  const std::string text = "SELECT CHIAVE FROM EVENTI WHERE GRUPPO=? AND CODICE<>'a?b'";
  EXPECT_EQ(Once(text, {"10"}).RecordCount(), 2U);
  EXPECT_EQ(counted_.DirectExecutions(text), Direct() && !PreparesQueries() ? 1U : 0U);
  EXPECT_EQ(counted_.Preparations(text), Direct() && !PreparesQueries() ? 0U : 1U);
  EXPECT_EQ(counted_.Descriptions(), Direct() ? 0U : 1U);
}

TEST_P(DirectExecution, IsForTextsThatAreSentOnceAlone) {
  const std::string text = "SELECT CHIAVE FROM EVENTI WHERE GRUPPO=?";
  Command kept = command(connection_, text);
  for (const char* group : {"10", "20", "30"}) {
    kept.Parameters = {group};
    EXPECT_EQ(kept.Execute().RecordCount(), std::string_view(group) == "10" ? 2U : group[0] == '2' ? 1U : 0U);
  }
  EXPECT_EQ(counted_.Preparations(text), 1U);
  EXPECT_EQ(counted_.Executions(text), 3U);
  EXPECT_EQ(counted_.DirectExecutions(text), 0U);
}

TEST_P(DirectExecution, PreparesAndDescribesWhereTheDriverWasNeverTriedWithTexts) {
  const std::string text = "SELECT CHIAVE FROM EVENTI WHERE GRUPPO=? AND CHIAVE<>?";
  for (const char* server : {"DB2/LINUXX8664", UnknownServer}) {
    test::CountedStatements counted;
    counted.serverName = server;
    Connection other;
    Open(other);
    EXPECT_EQ(Once(other, text, {"10", "1"}).ValueAt(0), "2") << server;
    EXPECT_EQ(counted.Preparations(text), 1U) << server;
    EXPECT_EQ(counted.Executions(text), 1U) << server;
    EXPECT_EQ(counted.Descriptions(), 2U) << server;
    EXPECT_EQ(counted.DirectExecutions(text), 0U) << server;
  }
}

TEST_P(DirectExecution, FindsTheSameRowsInColumnsOfEveryType) {
  const std::vector<std::pair<const char*, std::vector<std::string>>> asked = {
      {"CHIAVE", {"1", " 1 ", "01", "1.0", "1x", "", "99999999999", "-1"}},
      {"GRANDE", {"12345678901", "-5", "1e10"}},
      {"PICCOLO", {"7", "0", "70000"}},
      {"FISSO", {"A1", "A1    ", " B2 ", "A1 di troppo", "a1", ""}},
      {"TESTO", {"Società €", "Società € ", "societÀ €", "", std::string(100, 'x'), "a'b\"c\\d?;--"}},
      {"GIORNO", {"2006-03-05", "2006-03-05 00:00:00", "2006-02-30", ""}},
      {"QUANDO", {"2006-03-05 14:07:00", "2006-12-31", "2006-12-31 00:00:00"}},
      {"IMPORTO", {"100.10", "100.1", "100.100", "-500", "100,10", "1E2"}},
      {"DOPPIO", {"0.5", "5E-1", "-1", ".5"}}};
  for (const auto& [column, values] : asked) {
    for (const std::string& value : values) {
      ExpectSameAnswer(std::string("SELECT CHIAVE FROM TIPI WHERE ") + column + "=? ORDER BY CHIAVE", {value});
    }
  }
  ExpectSameAnswer("SELECT CHIAVE FROM TIPI WHERE TESTO LIKE ? AND CHIAVE IN (?,?)", {"Soc%", "1", "2"});
  ExpectSameAnswer("SELECT COUNT(*) FROM TIPI WHERE TESTO=?", {std::string("Soc\0iet", 7)});
}

TEST_P(DirectExecution, WritesTheSameValuesIntoColumnsOfEveryType) {
  const std::vector<std::pair<const char*, std::vector<std::string>>> written = {
      {"PICCOLO", {"12", " 5 ", "70000", "x"}},
      {"GRANDE", {"-12345678901"}},
      {"FISSO", {"b ", "", "troppo lungo"}},
      {"TESTO", {"perché €", "", " x ", "a'b\"c\\d?;--", std::string(70, 'x'), std::string("a\0b", 3)}},
      {"GIORNO", {"2007-01-31", "2006-02-30"}},
      {"QUANDO", {"2007-01-31 10:20:30", "2007-01-31"}},
      {"IMPORTO", {"12.34", "-0.01"}},
      {"DOPPIO", {"1.25"}},
      {"LUNGO", {"", "due\r\nrighe", std::string(100000, 'x') + "à"}}};
  const auto all = "SELECT CHIAVE,FISSO,TESTO,GIORNO,QUANDO,IMPORTO,DOPPIO,GRANDE,PICCOLO,LUNGO FROM TIPI ORDER BY 1";
  for (const auto& [column, values] : written) {
    for (const std::string& value : values) {
      std::vector<Answer> left;
      for (const Way& way : Ways) {
        connection_.Execute("DELETE FROM TIPI WHERE CHIAVE=3");
        connection_.Execute("INSERT INTO TIPI (CHIAVE,TESTO) VALUES (3,'prima')");
        const auto connection = ConnectionOf(way);
        left.push_back(
            AnswerTo(*connection, way, std::string("UPDATE TIPI SET ") + column + "=? WHERE CHIAVE=?", {value, "3"}));
        const Answer rows = AnswerTo(connection_, Ways[0], all, {});
        left.back().insert(left.back().end(), rows.begin(), rows.end());
      }
      for (std::size_t i = 1; i < left.size(); ++i) {
        EXPECT_EQ(left[i], left[0]) << column << " <" << value.substr(0, 80) << "> " << Ways.at(i).name;
      }
    }
  }
}

// PostgreSQL's driver makes a point of the comma of a text for a number where the program's locale has a comma, unless
// the parameter is described: so no statement with amounts among its parameters is sent once.
TEST_P(DirectExecution, IsNotWhatAnAmountWithACommaGoesBy) {
  static_cast<void>(AnswerTo(connection_, Ways[0], "UPDATE TIPI SET IMPORTO=? WHERE CHIAVE=?", {"12,34", "1"}));
  const Answer amount = AnswerTo(connection_, Ways[0], "SELECT IMPORTO FROM TIPI WHERE CHIAVE=1", {});
  // No column of SQLite's holds numbers alone; a server keeps what it had.
  EXPECT_EQ(amount.back(), std::string_view(GetParam()) == "sqlite" ? "12,34" : "100.10");
}

TEST_P(DirectExecution, LetsTheDriverCountTheParametersWhereTheTextTellsAnother) {
  const std::string text = "SELECT CHIAVE FROM EVENTI WHERE CODICE<>'a?b' AND CHIAVE=?";
  EXPECT_EQ(Failure([&] { Once(text, {"1", "2"}); }).Number(), -2147217904);
  EXPECT_EQ(Failure([&] { Once(text, {}); }).Number(), -2147217904);
  EXPECT_EQ(counted_.DirectExecutions(text), 0U);
}

TEST_P(DirectExecution, ThatFailsSpoilsTheTransactionLikeAnyOther) {
  connection_.BeginTrans();
  connection_.Execute("UPDATE EVENTI SET SOSPESA='S' WHERE CHIAVE=1");
  EXPECT_NE(Failure([&] { Once("SELECT CHIAVE FROM NON_C_E WHERE CHIAVE=?", {"1"}); }).Number(), 0);
  EXPECT_THAT(Failure([&] { connection_.CommitTrans(); }).Description(), testing::HasSubstr("Conferma non eseguita"));
  EXPECT_EQ(Single("SELECT SOSPESA FROM EVENTI WHERE CHIAVE=1"), "N");
}

TEST_P(DirectExecution, ReadsTheWantedColumnsAlone) {
  for (const bool once : {false, true}) {
    Command some = command(connection_, "SELECT * FROM EVENTI ORDER BY CHIAVE");
    some.sentOnce = once;
    some.wantedColumns = {"importo", "Codice"};
    Recordset rows = some.Execute();
    EXPECT_EQ(rows.ColumnCount(), 2U);
    EXPECT_EQ(rows.RecordCount(), 3U);
    EXPECT_EQ(rows.ValueAt(0), Context().TextFor("A1", 6)) << "in the result's order";
    EXPECT_EQ(rows.Fields("IMPORTO").Value().value_or("").substr(0, 5), "100.1");
    rows.MoveNext();
    rows.MoveNext();
    EXPECT_EQ(rows.Fields("IMPORTO").Value(), std::nullopt);
    EXPECT_EQ(Failure([&] { static_cast<void>(rows.Fields("CHIAVE")); }).Number(), 3265);
  }
}

TEST_P(DirectExecution, ReadsAWantedColumnOfLongTextsAndTheFirstOfTwoWithOneName) {
  Command some = command(connection_, "SELECT E.NOTE, E.CHIAVE, 7 AS CHIAVE FROM EVENTI E WHERE E.CHIAVE=3");
  some.wantedColumns = {"NOTE"};
  EXPECT_EQ(some.Execute().ValueAt(0), "nota; con 'apici'");
  some.wantedColumns = {"CHIAVE"};
  const Recordset rows = some.Execute();
  EXPECT_EQ(rows.ColumnCount(), 1U);
  EXPECT_EQ(rows.ValueAt(0), "3");
}

/// PostgreSQL's driver, told to read through a cursor of the server's.
TEST(ServersCursor, IsReadWholeAcrossBlocksThatGrow) {
  const auto made = test::databaseContext("postgres").Create(""); // and with it the database of all
  Connection connection;
  connection.ConnectionString = test::Postgres().ConnectionText(
      test::Postgres().AddSource("prove", 0, {{"UseDeclareFetch", "1"}, {"Fetch", "7"}}));
  connection.Open();
  Command series;
  series.ActiveConnection = &connection;
  series.CommandText = "SELECT N, 'riga ' || N FROM generate_series(1,?) AS N";
  for (const int howMany : {0, 1, 15, 16, 17, 32, 1040, 1041, 5000}) {
    series.Parameters = {std::to_string(howMany)};
    Recordset rows = series.Execute();
    ASSERT_EQ(rows.RecordCount(), static_cast<std::size_t>(howMany));
    for (int row = 1; row <= howMany; ++row, rows.MoveNext()) {
      ASSERT_EQ(rows.ValueAt(0), std::to_string(row));
      ASSERT_EQ(rows.ValueAt(1), "riga " + std::to_string(row));
    }
  }
}

TEST(Markers, AreTheQuestionMarksOutsideOfQuotes) {
  EXPECT_EQ(detail::Markers(""), 0U);
  EXPECT_EQ(detail::Markers("SELECT A FROM B WHERE C=? AND D=?"), 2U);
  EXPECT_EQ(detail::Markers("SELECT A FROM B WHERE C='?' AND \"D?\"=? AND `E?`=1"), 1U);
  EXPECT_EQ(detail::Markers("C='L''aquila?' AND D=?"), 1U);
  EXPECT_EQ(detail::Markers("C='\\' AND D=?"), 1U) << "a backslash is a letter";
  EXPECT_EQ(detail::Markers("C='a\"b' AND D=? AND E='c\"d'"), 1U);
  EXPECT_EQ(detail::Markers("?''?''''?"), 3U);
  EXPECT_EQ(detail::Markers("C=? AND D='left open ?"), 1U);
  EXPECT_EQ(detail::Markers("C=? AND D='"), 1U) << "opened by the last letter";
}

TEST(Statements, AreSentUnpreparedByTheDriversThatWereTriedAlone) {
  for (const char* server : {"PostgreSQL", "MariaDB"}) {
    EXPECT_TRUE(detail::DialectOf(server).sendsUnprepared) << server;
  }
  for (const char* server : {"SQLite", "DB2", "DB2/LINUXX8664", "DB2 UDB for AS/400", "MySQL", "altro", ""}) {
    EXPECT_FALSE(detail::DialectOf(server).sendsUnprepared) << server;
  }
}

} // namespace
} // namespace lumoscad::ado
