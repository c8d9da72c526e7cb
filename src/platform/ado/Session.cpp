#include "platform/ado/Session.hpp"

#include "platform/Servizi.hpp"
#include "platform/ado/Diagnostics.hpp"

#include <array>
#include <dlfcn.h>
#include <utility>

namespace lumoscad::ado::interno {

namespace {

constexpr const char* unknownOutcome =
    "La connessione è caduta durante la conferma delle modifiche: l'esito è sconosciuto, verificare i dati prima di "
    "ripetere l'operazione.";

/// Keeps the library that reads the ODBC configuration loaded. SQLite's driver loads and unloads it with every
/// connection, and what the library keeps of the configuration then leaks: 4 kB a connection without this.
void keepConfigurationLibrary() {
  dlopen("libodbcinst.so.2", RTLD_LAZY | RTLD_NODELETE);
}

/// The one environment of the process.
SQLHANDLE environment() {
  static const Handle<SQL_HANDLE_ENV> unique = [] {
    keepConfigurationLibrary();
    Handle<SQL_HANDLE_ENV> created{SQLHANDLE{nullptr}};
    SQLSetEnvAttr(created.get(), SQL_ATTR_ODBC_VERSION, asPointer(SQL_OV_ODBC3), 0);
    return created;
  }();
  return unique.get();
}

} // namespace

Session::Session(const ConnectionSettings& settings) : password_(settings.Password) {
  std::string text = TestoOdbc(settings);
  connection_ = Handle<SQL_HANDLE_DBC>(environment());
  SQLSetConnectAttr(connection_.get(), SQL_ATTR_LOGIN_TIMEOUT, asPointer(static_cast<SQLULEN>(settings.ConnectTimeout)),
                    SQL_IS_UINTEGER);
  const SQLRETURN rc =
      SQLDriverConnect(connection_.get(), nullptr, reinterpret_cast<SQLCHAR*>(text.data()),
                       static_cast<SQLSMALLINT>(text.size()), nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT);
  if (!SQL_SUCCEEDED(rc))
    throw erroreOdbc(SQL_HANDLE_DBC, connection_.get(), password_, "Connessione alla base dati non riuscita.");
  open_ = true;
  readCapabilities();
}

Session::~Session() {
  close();
}

void Session::readCapabilities() {
  SQLUSMALLINT supported = SQL_FALSE;
  describesParameters_ =
      SQL_SUCCEEDED(SQLGetFunctions(connection_.get(), SQL_API_SQLDESCRIBEPARAM, &supported)) && supported == SQL_TRUE;
  std::array<char, 128> name{};
  SQLSMALLINT length = 0;
  if (SQL_SUCCEEDED(
          SQLGetInfo(connection_.get(), SQL_DBMS_NAME, name.data(), static_cast<SQLSMALLINT>(name.size()), &length)))
    postgres_ = std::string_view(name.data()).starts_with("PostgreSQL");
}

void Session::requireOpen() const {
  if (!open_)
    throw ErroreRuntime(numeri::OggettoChiuso, "Operazione non consentita: la connessione alla base dati è chiusa.",
                        "ODBC");
}

void Session::autocommit(bool on) {
  const SQLULEN value = on ? SQL_AUTOCOMMIT_ON : SQL_AUTOCOMMIT_OFF;
  const SQLRETURN rc = SQLSetConnectAttr(connection_.get(), SQL_ATTR_AUTOCOMMIT, asPointer(value), SQL_IS_UINTEGER);
  if (!SQL_SUCCEEDED(rc))
    throw erroreOdbc(SQL_HANDLE_DBC, connection_.get(), password_, "Cambio del modo di conferma non riuscito.");
}

void Session::begin() {
  requireOpen();
  if (inTransaction_)
    throw ErroreRuntime(numeri::ContestoNonValido, "Una transazione è già in corso.", "ODBC");
  autocommit(false);
  inTransaction_ = true;
  statementFailed_ = false;
}

void Session::commit() {
  requireOpen();
  if (!inTransaction_)
    throw ErroreRuntime(numeri::ContestoNonValido, "Conferma non consentita: nessuna transazione è in corso.", "ODBC");
  // PostgreSQL turns the COMMIT of a spoiled transaction into a ROLLBACK and calls that a success.
  if (postgres_ && statementFailed_ && !answers()) {
    rollback();
    throw ErroreRuntime(errori::Driver, "Conferma non riuscita: un'istruzione della transazione è fallita.", "ODBC");
  }
  endCommit(SQLEndTran(SQL_HANDLE_DBC, connection_.get(), SQL_COMMIT));
}

void Session::endCommit(SQLRETURN rc) {
  if (!SQL_SUCCEEDED(rc)) {
    auto error = erroreOdbc(SQL_HANDLE_DBC, connection_.get(), password_, "Conferma della transazione non riuscita.");
    if (isDead()) {
      inTransaction_ = false;
      throw ErroreRuntime(errori::Driver, std::string(unknownOutcome) + " " + error.Descrizione(), "ODBC");
    }
    throw error;
  }
  inTransaction_ = false;
  // A driver may report success for a COMMIT that never reached the server.
  if (isDead() || (postgres_ && !answers()))
    throw ErroreRuntime(errori::Driver, unknownOutcome, "ODBC");
  autocommit(true);
}

void Session::rollback() {
  requireOpen();
  if (!inTransaction_)
    throw ErroreRuntime(numeri::ContestoNonValido, "Annullamento non consentito: nessuna transazione è in corso.",
                        "ODBC");
  inTransaction_ = false;
  if (!SQL_SUCCEEDED(SQLEndTran(SQL_HANDLE_DBC, connection_.get(), SQL_ROLLBACK)))
    throw erroreOdbc(SQL_HANDLE_DBC, connection_.get(), password_, "Annullamento della transazione non riuscito.");
  autocommit(true);
}

void Session::close() noexcept {
  for (Statement* statement : statements_)
    statement->handle_.reset();
  statements_.clear();
  if (!std::exchange(open_, false))
    return;
  if (std::exchange(inTransaction_, false))
    SQLEndTran(SQL_HANDLE_DBC, connection_.get(), SQL_ROLLBACK);
  SQLDisconnect(connection_.get());
  connection_.reset();
}

bool Session::isDead() const noexcept {
  SQLUINTEGER dead = SQL_CD_FALSE;
  const SQLRETURN rc = SQLGetConnectAttr(connection_.get(), SQL_ATTR_CONNECTION_DEAD, &dead, SQL_IS_UINTEGER, nullptr);
  return SQL_SUCCEEDED(rc) && dead == SQL_CD_TRUE;
}

bool Session::answers() noexcept {
  std::string probe = "SELECT 1";
  SQLHANDLE statement = nullptr;
  if (!SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_STMT, connection_.get(), &statement)))
    return false;
  const SQLRETURN rc =
      SQLExecDirect(statement, reinterpret_cast<SQLCHAR*>(probe.data()), static_cast<SQLINTEGER>(probe.size()));
  SQLFreeHandle(SQL_HANDLE_STMT, statement);
  return SQL_SUCCEEDED(rc);
}

Statement::Statement(std::shared_ptr<Session> session) : session_(std::move(session)) {
  session_->requireOpen();
  SQLHANDLE created = nullptr;
  if (!SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_STMT, session_->handle(), &created)))
    throw erroreOdbc(SQL_HANDLE_DBC, session_->handle(), session_->password(), "Istruzione SQL non allocata.");
  handle_ = Handle<SQL_HANDLE_STMT>::adopt(created);
  session_->statements_.insert(this);
}

Statement::~Statement() {
  session_->statements_.erase(this);
}

void Statement::require(SQLRETURN rc, std::string_view context) const {
  if (SQL_SUCCEEDED(rc))
    return;
  session_->statementFailed();
  throw erroreOdbc(SQL_HANDLE_STMT, handle_.get(), session_->password(), context);
}

void announce(std::string_view sql) {
  if (const auto& told = servizi().istruzioneInviata)
    told(sql);
}

std::int64_t affectedRows(const Statement& statement, SQLRETURN rc) {
  if (rc == SQL_NO_DATA)
    return 0;
  SQLLEN rows = -1;
  return SQL_SUCCEEDED(SQLRowCount(statement.handle(), &rows)) ? static_cast<std::int64_t>(rows) : -1;
}

} // namespace lumoscad::ado::interno
