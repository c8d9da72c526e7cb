#include "platform/ado/Prepared.hpp"

#include "platform/ado/Diagnostics.hpp"

#include <algorithm>
#include <utility>

namespace lumoscad::ado::detail {

namespace {

/// Closes the cursor at the end of an execution and lets go of the bound parameters.
class Ending {
 public:
  explicit Ending(const Statement& statement) : statement_(statement) {}
  Ending(const Ending&) = delete;
  Ending& operator=(const Ending&) = delete;
  ~Ending() {
    const Waiting waiting(statement_.session());
    SQLFreeStmt(statement_.handle(), SQL_CLOSE);
    SQLFreeStmt(statement_.handle(), SQL_RESET_PARAMS);
  }

 private:
  const Statement& statement_;
};

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

Outcome Prepared::Execute(const std::vector<std::string>& parameters, const std::vector<std::string>& wanted) {
  if (parameters.size() != types_.size()) {
    throw RuntimeError(numbers::WrongParameters,
                       "[07001] Numero di parametri errato: l'istruzione ne richiede " + std::to_string(types_.size()) +
                           ", ne sono stati dati " + std::to_string(parameters.size()) + ".",
                       "ODBC");
  }
  const Ending ending(statement_);
  return detail::Execute(statement_, text_, types_, parameters, wanted,
                         [this] { return SQLExecute(statement_.handle()); });
}

} // namespace lumoscad::ado::detail
