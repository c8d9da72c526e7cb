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
// A database that is a file has nobody to ask. Its refusals are known by their numbers; a write, a sync or a removal of
// the journal that failed says nothing of what the file will be found to hold.
//
// Another server session than at the beginning means that the driver has connected anew behind our back: what was
// done on the old one is gone, what was done on the new one may have been committed statement by statement. A rollback
// takes none of that back, so that it asks as well.

namespace lumoscad::ado::detail {

namespace {

constexpr const char* unknownOutcome =
    "La connessione è caduta mentre si confermavano le modifiche: l'esito è sconosciuto, possono essere registrate "
    "tutte o nessuna.";
constexpr const char* unknownFile =
    "Il file della base dati ha dato un errore mentre si confermavano le modifiche: l'esito è sconosciuto, possono "
    "essere registrate tutte o nessuna.";

/// A COMMIT whose outcome is unknown after `cause`; the driver's own text comes first.
RuntimeError outcomeUnknown(const RuntimeError& cause, const char* sentence) {
  return RuntimeError(errors::Driver, cause.Description(), "ODBC")
      .WithNote(sentence)
      .WithState(cause.SqlState(), cause.NativeCode())
      .WithOutcome(TransactionOutcome::Unknown);
}

} // namespace

void Session::requireTransaction(const char* otherwise) const {
  requireOpen();
  if (!inTransaction_) {
    throw RuntimeError(numbers::InvalidContext, otherwise, "ODBC");
  }
}

void Session::autocommit(bool on) {
  const Waiting waiting(*this);
  const SQLULEN value = on ? SQL_AUTOCOMMIT_ON : SQL_AUTOCOMMIT_OFF;
  const SQLRETURN rc = SQLSetConnectAttr(connection_.get(), SQL_ATTR_AUTOCOMMIT, asPointer(value), SQL_IS_UINTEGER);
  if (!SQL_SUCCEEDED(rc)) {
    throw odbcError(SQL_HANDLE_DBC, connection_.get(), password_, "Cambio del modo di conferma non riuscito.");
  }
}

SQLRETURN Session::endTransaction(SQLSMALLINT how) const noexcept {
  const Waiting waiting(*this);
  return SQLEndTran(SQL_HANDLE_DBC, connection_.get(), how);
}

void Session::begin() {
  requireOpen();
  if (inTransaction_) {
    throw RuntimeError(numbers::InvalidContext, "Una transazione è già in corso.", "ODBC");
  }
  outcome_ = TransactionOutcome::NotApplied;
  serverSession_.clear();
  autocommit(false);
  inTransaction_ = true;
  statementFailed_ = false;
  try {
    serverSession_ = serverSession();
  } catch (...) {
    abandon();
    throw;
  }
}

void Session::commit() {
  requireTransaction("Conferma non consentita: nessuna transazione è in corso.");
  try {
    requireWholeTransaction();
  } catch (...) {
    abandon();
    throw;
  }
  outcome_ = TransactionOutcome::Unknown;
  inTransaction_ = false;
  if (!SQL_SUCCEEDED(endTransaction(SQL_COMMIT))) {
    commitFailed(odbcError(SQL_HANDLE_DBC, connection_.get(), password_, "Conferma della transazione non riuscita."));
  }
  confirmCommit();
  outcome_ = TransactionOutcome::Applied;
}

void Session::requireWholeTransaction() {
  if (statementFailed_) {
    throw RuntimeError(errors::Driver, "Conferma non eseguita: un'istruzione della transazione è fallita.", "ODBC");
  }
  if (serverSession() == serverSession_) {
    return;
  }
  outcome_ = TransactionOutcome::Unknown;
  throw RuntimeError(errors::Driver,
                     "La connessione è stata interrotta e riaperta dal driver durante le modifiche: l'esito è "
                     "sconosciuto, possono essere registrate in parte.",
                     "ODBC")
      .WithOutcome(outcome_);
}

bool Session::refused(const RuntimeError& error) const noexcept {
  const auto& certain = dialect_->refusals;
  constexpr long primary = 0xFF; // the rest of an extended number tells which kind
  const bool known = !dialect_->fileBased() ||
                     std::find(certain.begin(), certain.end(), error.NativeCode() & primary) != certain.end();
  return known && !withoutAnswer(error.SqlState()) && !dead() && onSameServerSession();
}

void Session::commitFailed(RuntimeError error) {
  const bool certain = refused(error);
  // SQLite keeps a transaction open whose COMMIT found the file busy.
  if (certain || dialect_->fileBased()) {
    abandon();
  }
  if (!certain) {
    throw explained(outcomeUnknown(error, dialect_->fileBased() ? unknownFile : unknownOutcome));
  }
  outcome_ = TransactionOutcome::NotApplied;
  throw std::move(error).WithOutcome(outcome_);
}

void Session::confirmCommit() {
  try {
    autocommit(true);
    if (!dead() && serverSession() == serverSession_) {
      return;
    }
  } catch (const RuntimeError& error) {
    throw explained(outcomeUnknown(error, unknownOutcome));
  }
  throw RuntimeError(errors::Driver, unknownOutcome, "ODBC").WithOutcome(TransactionOutcome::Unknown);
}

void Session::rollback() {
  requireTransaction("Annullamento non consentito: nessuna transazione è in corso.");
  inTransaction_ = false;
  if (!SQL_SUCCEEDED(endTransaction(SQL_ROLLBACK))) {
    throw odbcError(SQL_HANDLE_DBC, connection_.get(), password_, "Annullamento della transazione non riuscito.");
  }
  autocommit(true);
  noticeReconnection();
}

/// Takes the transaction back as far as the connection still can; what it cannot the server does when it sees the
/// connection go. Never back to autocommit with a transaction still open, because that would commit it.
void Session::abandon() noexcept {
  inTransaction_ = false;
  if (!SQL_SUCCEEDED(endTransaction(SQL_ROLLBACK))) {
    return;
  }
  const Waiting waiting(*this);
  SQLSetConnectAttr(connection_.get(), SQL_ATTR_AUTOCOMMIT, asPointer(SQL_AUTOCOMMIT_ON), SQL_IS_UINTEGER);
  noticeReconnection();
}

/// After a rollback: what another server session than the first one was told may be kept.
void Session::noticeReconnection() noexcept {
  try {
    if (!serverSession_.empty() && serverSession() != serverSession_) {
      outcome_ = TransactionOutcome::Unknown;
    }
  } catch (...) { // NOLINT(bugprone-empty-catch): the failure that led here is the one to report
  }
}

bool Session::dead() const noexcept {
  if (watchdog_ && watchdog_->struck()) {
    return true;
  }
  const Waiting waiting(*this);
  SQLUINTEGER state = SQL_CD_FALSE;
  const SQLRETURN rc = SQLGetConnectAttr(connection_.get(), SQL_ATTR_CONNECTION_DEAD, &state, SQL_IS_UINTEGER, nullptr);
  return SQL_SUCCEEDED(rc) && state == SQL_CD_TRUE;
}

/// Asks the server for the identity of its side of the connection. Raises when no answer comes. Empty for a server
/// that cannot be asked; SQLite is the caller's own process.
std::string Session::serverSession() const {
  if (dialect_->serverSession.empty()) {
    return {};
  }
  constexpr const char* noAnswer = "La base dati non risponde.";
  const Waiting waiting(*this);
  SQLHANDLE created = nullptr;
  if (!SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_STMT, connection_.get(), &created))) {
    throw odbcError(SQL_HANDLE_DBC, connection_.get(), password_, noAnswer);
  }
  const auto statement = Handle<SQL_HANDLE_STMT>::adopt(created);
  SQLSetStmtAttr(created, SQL_ATTR_QUERY_TIMEOUT, asPointer(timeLimit_), SQL_IS_UINTEGER);
  std::string query(dialect_->serverSession);
  std::array<char, 64> identity{};
  SQLLEN length = 0;
  if (!SQL_SUCCEEDED(SQLExecDirect(created, reinterpret_cast<SQLCHAR*>(query.data()), SQL_NTS)) ||
      !SQL_SUCCEEDED(SQLFetch(created)) ||
      !SQL_SUCCEEDED(SQLGetData(created, 1, SQL_C_CHAR, identity.data(), identity.size(), &length))) {
    throw explained(odbcError(SQL_HANDLE_STMT, created, password_, noAnswer));
  }
  return identity.data();
}

bool Session::onSameServerSession() const noexcept {
  try {
    return serverSession() == serverSession_;
  } catch (...) {
    return false;
  }
}

} // namespace lumoscad::ado::detail
