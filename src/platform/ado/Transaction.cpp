#include "platform/ado/Diagnostics.hpp"
#include "platform/ado/Session.hpp"

#include <algorithm>
#include <array>
#include <utility>

// How a commit's outcome becomes known. A driver's success is not enough: PostgreSQL's answers success to a COMMIT on a
// connection that it has already seen die, because it no longer believes itself in a transaction. So the session asks
// the server who is at the other end when the transaction begins, again right before COMMIT, and again after it:
//
// - No answer before COMMIT: COMMIT was not sent, the server takes the transaction back. Not applied.
// - COMMIT refused, and the same server session still answers: the refusal came from the server. Not applied.
// - COMMIT answered with success, and the same server session still answers: the connection never broke in between, so
//   the success came from the server. Applied.
// - Everything else: unknown. That includes commits which did reach the server; it never includes half of one.
//
// Where several servers hold the same database, one may refuse a COMMIT because it has lost sight of the others, and
// they carry it out when they meet again (seen with MariaDB's native error 1180). There only the refusal of one of two
// changes to the same rows is certain.
//
// A database that is a file has nobody to ask. Its refusals are known by their numbers; a write, a sync or a removal of
// the journal that failed says nothing of what the file will be found to hold.
//
// Another server session than at the beginning means that the driver has connected anew behind our back: what was
// done on the old one is gone, what was done on the new one may have been committed statement by statement. A rollback
// takes none of that back, so that it asks as well.

namespace lumoscad::ado::detail {

namespace {

constexpr const char* UnknownOutcome =
    "La connessione è caduta mentre si confermavano le modifiche: l'esito è sconosciuto, possono essere registrate "
    "tutte o nessuna.";
constexpr const char* UnknownReplicas =
    "I server della base dati non si vedevano mentre si confermavano le modifiche: l'esito è sconosciuto, possono "
    "essere registrate tutte o nessuna.";
constexpr const char* UnknownFile =
    "Il file della base dati ha dato un errore mentre si confermavano le modifiche: l'esito è sconosciuto, possono "
    "essere registrate tutte o nessuna.";

constexpr long LostConflict = 1213;    ///< a replicated server's number for the loser of a conflict
constexpr long UnknownVariable = 1193; ///< a server's number where it was built without replication

/// A COMMIT whose outcome is unknown after `cause`; the driver's own text comes first.
RuntimeError OutcomeUnknown(const RuntimeError& cause, const char* sentence) {
  return RuntimeError(errors::Driver, cause.Description(), "ODBC")
      .WithNote(sentence)
      .WithState(cause.SqlState(), cause.NativeCode())
      .WithOutcome(TransactionOutcome::Unknown);
}

} // namespace

void Session::RequireTransaction(const char* otherwise) const {
  RequireOpen();
  if (!inTransaction_) {
    throw RuntimeError(numbers::InvalidContext, otherwise, "ODBC");
  }
}

void Session::Autocommit(bool on) {
  const Waiting waiting(*this);
  const SQLULEN value = on ? SQL_AUTOCOMMIT_ON : SQL_AUTOCOMMIT_OFF;
  const SQLRETURN rc = SQLSetConnectAttr(connection_.get(), SQL_ATTR_AUTOCOMMIT, AsPointer(value), SQL_IS_UINTEGER);
  if (!SQL_SUCCEEDED(rc)) {
    throw OdbcError(SQL_HANDLE_DBC, connection_.get(), password_, "Cambio del modo di conferma non riuscito.");
  }
}

SQLRETURN Session::EndTransaction(SQLSMALLINT how) noexcept {
  const Waiting waiting(*this);
  passedOn_.reset();
  return SQLEndTran(SQL_HANDLE_DBC, connection_.get(), how);
}

void Session::Begin() {
  RequireOpen();
  if (inTransaction_) {
    throw RuntimeError(numbers::InvalidContext, "Una transazione è già in corso.", "ODBC");
  }
  outcome_ = TransactionOutcome::NotApplied;
  serverSession_.clear();
  Autocommit(false);
  inTransaction_ = true;
  statementFailed_ = false;
  try {
    serverSession_ = OwnServerSession();
  } catch (...) {
    Abandon();
    throw;
  }
}

void Session::Commit() {
  RequireTransaction("Conferma non consentita: nessuna transazione è in corso.");
  try {
    RequireWholeTransaction();
  } catch (...) {
    Abandon();
    throw;
  }
  outcome_ = TransactionOutcome::Unknown;
  inTransaction_ = false;
  if (!SQL_SUCCEEDED(EndTransaction(SQL_COMMIT))) {
    CommitFailed(OdbcError(SQL_HANDLE_DBC, connection_.get(), password_, "Conferma della transazione non riuscita."));
  }
  ConfirmCommit();
  outcome_ = TransactionOutcome::Applied;
}

void Session::RequireWholeTransaction() {
  if (statementFailed_) {
    throw RuntimeError(errors::Driver, "Conferma non eseguita: un'istruzione della transazione è fallita.", "ODBC");
  }
  if (ServerSession() == serverSession_) {
    return;
  }
  outcome_ = TransactionOutcome::Unknown;
  throw RuntimeError(errors::Driver,
                     "La connessione è stata interrotta e riaperta dal driver durante le modifiche: l'esito è "
                     "sconosciuto, possono essere registrate in parte.",
                     "ODBC")
      .WithOutcome(outcome_);
}

bool Session::Refused(const RuntimeError& error) const noexcept {
  const auto& certain = dialect_->refusals;
  constexpr long Primary = 0xFF; // the rest of an extended number tells which kind
  const bool known = !dialect_->FileBased() ||
                     std::find(certain.begin(), certain.end(), error.NativeCode() & Primary) != certain.end();
  return known && !WithoutAnswer(error.SqlState()) && !Dead() && OnSameServerSession() &&
         (error.NativeCode() == LostConflict || !Replicated());
}

void Session::CommitFailed(RuntimeError error) {
  const bool certain = Refused(error);
  // SQLite keeps a transaction open whose COMMIT found the file busy.
  if (certain || dialect_->FileBased()) {
    Abandon();
  }
  if (!certain) {
    const bool answered = !Dead() && !WithoutAnswer(error.SqlState());
    throw Explained(OutcomeUnknown(error, dialect_->FileBased()      ? UnknownFile
                                          : answered && Replicated() ? UnknownReplicas
                                                                     : UnknownOutcome));
  }
  outcome_ = TransactionOutcome::NotApplied;
  throw Explained(std::move(error)).WithOutcome(outcome_);
}

void Session::ConfirmCommit() {
  try {
    Autocommit(true);
    if (!Dead() && ServerSession() == serverSession_) {
      return;
    }
  } catch (const RuntimeError& error) {
    throw Explained(OutcomeUnknown(error, UnknownOutcome));
  }
  throw RuntimeError(errors::Driver, UnknownOutcome, "ODBC").WithOutcome(TransactionOutcome::Unknown);
}

void Session::Rollback() {
  RequireTransaction("Annullamento non consentito: nessuna transazione è in corso.");
  inTransaction_ = false;
  if (!SQL_SUCCEEDED(EndTransaction(SQL_ROLLBACK))) {
    throw OdbcError(SQL_HANDLE_DBC, connection_.get(), password_, "Annullamento della transazione non riuscito.");
  }
  Autocommit(true);
  NoticeReconnection();
}

/// Takes the transaction back as far as the connection still can; what it cannot the server does when it sees the
/// connection go. Never back to autocommit with a transaction still open, because that would commit it.
void Session::Abandon() noexcept {
  inTransaction_ = false;
  if (!SQL_SUCCEEDED(EndTransaction(SQL_ROLLBACK))) {
    return;
  }
  const Waiting waiting(*this);
  SQLSetConnectAttr(connection_.get(), SQL_ATTR_AUTOCOMMIT, AsPointer(SQL_AUTOCOMMIT_ON), SQL_IS_UINTEGER);
  NoticeReconnection();
}

/// After a rollback: what another server session than the first one was told may be kept.
void Session::NoticeReconnection() noexcept {
  try {
    if (!serverSession_.empty() && ServerSession() != serverSession_) {
      outcome_ = TransactionOutcome::Unknown;
    }
  } catch (...) { // NOLINT(bugprone-empty-catch): the failure that led here is the one to report
  }
}

bool Session::Dead() const noexcept {
  if (watchdog_ && watchdog_->Struck()) {
    return true;
  }
  const Waiting waiting(*this);
  SQLUINTEGER state = SQL_CD_FALSE;
  const SQLRETURN rc = SQLGetConnectAttr(connection_.get(), SQL_ATTR_CONNECTION_DEAD, &state, SQL_IS_UINTEGER, nullptr);
  return SQL_SUCCEEDED(rc) && state == SQL_CD_TRUE;
}

/// The first value that the server answers to `question`. Raises when no answer comes.
std::string Session::FirstAnswer(std::string_view question) const {
  constexpr const char* NoAnswer = "La base dati non risponde.";
  const Waiting waiting(*this);
  SQLHANDLE created = nullptr;
  if (!SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_STMT, connection_.get(), &created))) {
    throw OdbcError(SQL_HANDLE_DBC, connection_.get(), password_, NoAnswer);
  }
  const auto statement = Handle<SQL_HANDLE_STMT>::Adopt(created);
  SQLSetStmtAttr(created, SQL_ATTR_QUERY_TIMEOUT, AsPointer(timeLimit_), SQL_IS_UINTEGER);
  std::string query(question);
  std::array<char, 64> answer{};
  SQLLEN length = 0;
  if (!SQL_SUCCEEDED(SQLExecDirect(created, reinterpret_cast<SQLCHAR*>(query.data()), SQL_NTS)) ||
      !SQL_SUCCEEDED(SQLFetch(created)) ||
      !SQL_SUCCEEDED(SQLGetData(created, 1, SQL_C_CHAR, answer.data(), answer.size(), &length))) {
    throw OdbcError(SQL_HANDLE_STMT, created, password_, NoAnswer);
  }
  return answer.data();
}

/// Asks the server for the identity of its side of the connection. Raises when no answer comes. Empty for a server
/// that cannot be asked; SQLite is the caller's own process.
std::string Session::ServerSession() const {
  if (dialect_->serverSession.empty()) {
    return {};
  }
  try {
    return FirstAnswer(dialect_->serverSession);
  } catch (RuntimeError& error) {
    throw Explained(std::move(error));
  }
}

/// Whether other servers have a say in a COMMIT. Asked after a failure alone; a server that does not answer may be one
/// of several.
bool Session::Replicated() const noexcept {
  if (dialect_ == nullptr || dialect_->replicated.empty()) {
    return false;
  }
  try {
    return FirstAnswer(dialect_->replicated) == "1";
  } catch (const RuntimeError& error) {
    return error.NativeCode() != UnknownVariable;
  } catch (...) {
    return true;
  }
}

bool Session::OnSameServerSession() const noexcept {
  try {
    return ServerSession() == serverSession_;
  } catch (...) {
    return false;
  }
}

} // namespace lumoscad::ado::detail
