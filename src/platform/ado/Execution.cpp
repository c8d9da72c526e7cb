#include "platform/ado/Execution.hpp"

#include "platform/ado/Prepared.hpp"
#include "platform/base/AsciiCase.hpp"

#include <algorithm>

namespace lumoscad::ado::detail {

namespace {

constexpr const char* ExecutionFailed = "Istruzione SQL non riuscita.";

/// Only a query may be executed a second time for its result's sake.
bool Selects(std::string_view text) {
  constexpr std::string_view Word = "SELECT";
  const auto first = text.find_first_not_of(" \t\r\n(");
  if (first == std::string_view::npos) {
    return false;
  }
  return base::SameButForCase(text.substr(first, Word.size()), Word);
}

/// `lengths` stays where it is until the statement is executed.
void Bind(const Statement& statement, const std::vector<ParameterType>& types,
          const std::vector<std::string>& parameters, std::vector<SQLLEN>& lengths) {
  lengths.assign(parameters.size(), 0);
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    const std::string& value = parameters[i];
    lengths[i] = static_cast<SQLLEN>(value.size());
    const SQLULEN size = std::max<SQLULEN>({types[i].size, value.size(), 1});
    // The interface takes a pointer to non-const, yet an input parameter is only read.
    auto* const data = const_cast<char*>(value.data());
    statement.Require(SQLBindParameter(statement.handle(), static_cast<SQLUSMALLINT>(i + 1), SQL_PARAM_INPUT,
                                       SQL_C_CHAR, types[i].type, size, types[i].digits, data, lengths[i], &lengths[i]),
                      "Assegnazione di un parametro non riuscita.");
  }
}

SQLRETURN Send(const Statement& statement, const std::string& text, const std::function<SQLRETURN()>& send) {
  Announce(text);
  const SQLRETURN rc = statement.WaitFor(send);
  if (rc != SQL_NO_DATA) {
    statement.Require(rc, ExecutionFailed);
  }
  return rc;
}

} // namespace

std::size_t Markers(std::string_view text) noexcept {
  std::size_t markers = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char c = text[at];
    if (c == '?') {
      ++markers;
    } else if (c == '\'' || c == '"' || c == '`') {
      at = text.find(c, at + 1); // a doubled quote closes and opens again
      if (at == std::string_view::npos) {
        break;
      }
    }
  }
  return markers;
}

Outcome Execute(const Statement& statement, const std::string& text, const std::vector<ParameterType>& types,
                const std::vector<std::string>& parameters, const std::vector<std::string>& wanted,
                const std::function<SQLRETURN()>& send) {
  std::vector<SQLLEN> lengths;
  Bind(statement, types, parameters, lengths);
  const SQLRETURN rc = Send(statement, text, send);
  SQLSMALLINT columns = 0;
  if (rc != SQL_NO_DATA) {
    statement.Require(statement.WaitFor([&] { return SQLNumResultCols(statement.handle(), &columns); }),
                      ExecutionFailed);
  }
  Outcome outcome;
  if (columns <= 0) {
    outcome.affected = AffectedRows(statement, rc);
    return outcome;
  }
  outcome.columns = DescribeColumns(statement, columns, wanted);
  outcome.rows = RowStore(outcome.columns.size());
  const bool bounded = std::all_of(outcome.columns.begin(), outcome.columns.end(),
                                   [](const ColumnInfo& column) { return column.buffer > 0; });
  if (bounded && Selects(text)) {
    if (ReadBound(statement, outcome.columns, outcome.rows)) {
      return outcome;
    }
    outcome.rows.Clear();
    const Waiting waiting(statement.session());
    SQLFreeStmt(statement.handle(), SQL_CLOSE);
    static_cast<void>(Send(statement, text, send));
  }
  ReadUnbound(statement, outcome.columns, outcome.rows);
  return outcome;
}

Outcome ExecuteOnce(const std::shared_ptr<Session>& session, const std::string& text,
                    const std::vector<std::string>& parameters, const std::vector<std::string>& wanted) {
  const Dialect& dialect = session->dialect();
  if (!dialect.sendsUnprepared || Markers(text) != parameters.size()) {
    return Prepared(session, text).Execute(parameters, wanted);
  }
  Statement statement(session, Handles::PassedOn);
  const bool prepares = dialect.preparesQueries && Selects(text);
  Outcome outcome = Execute(statement, text, std::vector<ParameterType>(parameters.size()), parameters, wanted, [&] {
    // The interface takes a pointer to non-const, yet a text is only read.
    auto* const sent = reinterpret_cast<SQLCHAR*>(const_cast<char*>(text.data()));
    const auto length = static_cast<SQLINTEGER>(text.size());
    if (!prepares) {
      return SQLExecDirect(statement.handle(), sent, length);
    }
    const SQLRETURN rc = SQLPrepare(statement.handle(), sent, length);
    return SQL_SUCCEEDED(rc) ? SQLExecute(statement.handle()) : rc;
  });
  statement.PassOn();
  return outcome;
}

} // namespace lumoscad::ado::detail
