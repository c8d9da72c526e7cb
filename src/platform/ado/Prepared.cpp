#include "platform/ado/Prepared.hpp"

#include "platform/ado/Diagnostics.hpp"
#include "platform/base/AsciiCase.hpp"

#include <algorithm>
#include <utility>

namespace lumoscad::ado::detail {

namespace {

constexpr const char* ExecutionFailed = "Istruzione SQL non riuscita.";

/// Closes the cursor at the end of an execution and lets go of the bound parameters.
class Execution {
 public:
  explicit Execution(const Statement& statement) : statement_(statement) {}
  Execution(const Execution&) = delete;
  Execution& operator=(const Execution&) = delete;
  ~Execution() {
    const Waiting waiting(statement_.session());
    SQLFreeStmt(statement_.handle(), SQL_CLOSE);
    SQLFreeStmt(statement_.handle(), SQL_RESET_PARAMS);
  }

 private:
  const Statement& statement_;
};

/// Only a query may be executed a second time for its result's sake.
bool Selects(std::string_view text) {
  constexpr std::string_view Word = "SELECT";
  const auto first = text.find_first_not_of(" \t\r\n(");
  if (first == std::string_view::npos) {
    return false;
  }
  return base::SameButForCase(text.substr(first, Word.size()), Word);
}

} // namespace

Prepared::Prepared(std::shared_ptr<Session> session, std::string text)
    : session_(std::move(session)), text_(std::move(text)), statement_(session_) {
  const Waiting waiting(*session_);
  statement_.Require(
      SQLPrepare(statement_.handle(), reinterpret_cast<SQLCHAR*>(text_.data()), static_cast<SQLINTEGER>(text_.size())),
      "Preparazione dell'istruzione SQL non riuscita.");
  DescribeParameters();
}

void Prepared::DescribeParameters() {
  SQLSMALLINT count = 0;
  statement_.Require(SQLNumParams(statement_.handle(), &count), "Conteggio dei parametri non riuscito.");
  types_.resize(static_cast<std::size_t>(std::max<SQLSMALLINT>(count, 0)));
  if (!session_->DescribesParameters()) {
    return;
  }
  SQLUSMALLINT number = 0;
  for (ParameterType& parameter : types_) {
    ParameterType described;
    SQLSMALLINT nullable = 0;
    if (!SQL_SUCCEEDED(SQLDescribeParam(statement_.handle(), ++number, &described.type, &described.size,
                                        &described.digits, &nullable))) {
      return;
    }
    if (described.type != SQL_UNKNOWN_TYPE) {
      parameter = described;
    }
  }
}

bool Prepared::Serves(const std::shared_ptr<Session>& session, std::string_view text) const noexcept {
  return session == session_ && text == text_ && statement_.Alive();
}

void Prepared::Bind(const std::vector<std::string>& parameters) {
  if (parameters.size() != types_.size()) {
    throw RuntimeError(numbers::WrongParameters,
                       "[07001] Numero di parametri errato: l'istruzione ne richiede " + std::to_string(types_.size()) +
                           ", ne sono stati dati " + std::to_string(parameters.size()) + ".",
                       "ODBC");
  }
  lengths_.assign(parameters.size(), 0);
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    const std::string& value = parameters[i];
    lengths_[i] = static_cast<SQLLEN>(value.size());
    const SQLULEN size = std::max<SQLULEN>({types_[i].size, value.size(), 1});
    // The interface takes a pointer to non-const, yet an input parameter is only read.
    auto* const data = const_cast<char*>(value.data());
    statement_.Require(SQLBindParameter(statement_.handle(), static_cast<SQLUSMALLINT>(i + 1), SQL_PARAM_INPUT,
                                        SQL_C_CHAR, types_[i].type, size, types_[i].digits, data, lengths_[i],
                                        &lengths_[i]),
                       "Assegnazione di un parametro non riuscita.");
  }
}

SQLRETURN Prepared::Send() {
  Announce(text_);
  const SQLRETURN rc = statement_.WaitFor([this] { return SQLExecute(statement_.handle()); });
  if (rc != SQL_NO_DATA) {
    statement_.Require(rc, ExecutionFailed);
  }
  return rc;
}

Outcome Prepared::Execute(const std::vector<std::string>& parameters) {
  const Execution execution(statement_);
  Bind(parameters);
  const SQLRETURN rc = Send();
  SQLSMALLINT columns = 0;
  if (rc != SQL_NO_DATA) {
    statement_.Require(statement_.WaitFor([&] { return SQLNumResultCols(statement_.handle(), &columns); }),
                       ExecutionFailed);
  }
  Outcome outcome;
  if (columns <= 0) {
    outcome.affected = AffectedRows(statement_, rc);
    return outcome;
  }
  outcome.columns = DescribeColumns(statement_, columns);
  outcome.rows = RowStore(outcome.columns.size());
  Read(outcome);
  return outcome;
}

void Prepared::Read(Outcome& outcome) {
  const bool bounded = std::all_of(outcome.columns.begin(), outcome.columns.end(),
                                   [](const ColumnInfo& column) { return column.buffer > 0; });
  if (bounded && Selects(text_)) {
    if (ReadBound(statement_, outcome.columns, outcome.rows)) {
      return;
    }
    outcome.rows.Clear();
    const Waiting waiting(*session_);
    SQLFreeStmt(statement_.handle(), SQL_CLOSE);
    static_cast<void>(Send());
  }
  ReadUnbound(statement_, outcome.columns, outcome.rows);
}

} // namespace lumoscad::ado::detail
