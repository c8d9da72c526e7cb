#include "platform/ado/Session.hpp"

#include "platform/Services.hpp"
#include "platform/ado/Advice.hpp"
#include "platform/ado/CharacterSet.hpp"
#include "platform/ado/Diagnostics.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <dlfcn.h>
#include <utility>

namespace lumoscad::ado::detail {

namespace {

/// Keeps the library that reads the ODBC configuration loaded. SQLite's driver loads and unloads it with every
/// connection, and what the library keeps of the configuration then leaks: 4 kB a connection without this.
void KeepConfigurationLibrary() {
  dlopen("libodbcinst.so.2", RTLD_LAZY | RTLD_NODELETE);
}

/// One piece of information that the driver of a connection gives in words.
std::string About(SQLHANDLE connection, SQLUSMALLINT what) {
  std::array<char, 128> text{};
  SQLSMALLINT length = 0;
  SQLGetInfo(connection, what, text.data(), static_cast<SQLSMALLINT>(text.size() - 1), &length);
  return text.data();
}

/// The one environment of the process.
SQLHANDLE Environment() {
  static const Handle<SQL_HANDLE_ENV> Unique = [] {
    KeepConfigurationLibrary();
    Handle<SQL_HANDLE_ENV> created{SQLHANDLE{nullptr}};
    SQLSetEnvAttr(created.get(), SQL_ATTR_ODBC_VERSION, AsPointer(SQL_OV_ODBC3), 0);
    return created;
  }();
  return Unique.get();
}

} // namespace

Session::Session(const ConnectionSettings& settings, std::chrono::seconds timeLimit, const Deadline& deadline)
    : password_(settings.Password), timeLimit_(static_cast<SQLULEN>(timeLimit.count())), deadline_(deadline) {
  std::string text = OdbcText(settings);
  // MariaDB's driver limits only the making of the socket by SQL_ATTR_LOGIN_TIMEOUT, and the server's greeting by this
  // word of its own; the other drivers pass over a word that they do not know.
  if (settings.connectTimeout > 0) {
    text += "CONN_TIMEOUT=" + std::to_string(settings.connectTimeout) + ";";
  }
  // A word of SQLite's driver; the others pass over it likewise.
  if (settings.existingOnly) {
    text += "NoCreat=1;";
  }
  const Sockets before = OpenSockets();
  connection_ = Handle<SQL_HANDLE_DBC>(Environment());
  SQLSetConnectAttr(connection_.get(), SQL_ATTR_LOGIN_TIMEOUT, AsPointer(static_cast<SQLULEN>(settings.connectTimeout)),
                    SQL_IS_UINTEGER);
  const CharacterSet characters;
  const SQLRETURN rc =
      SQLDriverConnect(connection_.get(), nullptr, reinterpret_cast<SQLCHAR*>(text.data()),
                       static_cast<SQLSMALLINT>(text.size()), nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT);
  if (!SQL_SUCCEEDED(rc)) {
    throw OdbcError(SQL_HANDLE_DBC, connection_.get(), password_, "Connessione alla base dati non riuscita.");
  }
  open_ = true;
  try {
    characters.RequireSuited(About(connection_.get(), SQL_DRIVER_NAME));
    ReadCapabilities();
    Watch(before);
    SendOpening();
  } catch (...) {
    Close();
    throw;
  }
}

Session::~Session() {
  Close();
}

void Session::ReadCapabilities() {
  SQLUSMALLINT supported = SQL_FALSE;
  describesParameters_ =
      SQL_SUCCEEDED(SQLGetFunctions(connection_.get(), SQL_API_SQLDESCRIBEPARAM, &supported)) && supported == SQL_TRUE;
  dialect_ = &DialectOf(About(connection_.get(), SQL_DBMS_NAME));
}

void Session::SendOpening() {
  std::string text = dialect_->OpeningFor(std::chrono::seconds(timeLimit_));
  if (text.empty()) {
    return;
  }
  const Waiting waiting(*this);
  SQLHANDLE created = nullptr;
  if (!SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_STMT, connection_.get(), &created))) {
    throw OdbcError(SQL_HANDLE_DBC, connection_.get(), password_, "Istruzione SQL non allocata.");
  }
  const auto statement = Handle<SQL_HANDLE_STMT>::Adopt(created);
  if (!SQL_SUCCEEDED(SQLExecDirect(created, reinterpret_cast<SQLCHAR*>(text.data()), SQL_NTS))) {
    throw OdbcError(SQL_HANDLE_STMT, created, password_, "Preparazione della connessione alla base dati non riuscita.");
  }
}

void Session::Watch(const Sockets& before) {
  if (dialect_->ends.empty()) {
    return;
  }
  const ServerSide told = AskServerSide();
  ends_ = told.ends;
  if (ends_.serverPort > 0 && ends_.clientPort > 0) {
    watchdog_ = Watchdog::Over(ends_, before);
  }
  RequireOwnServerSession(told);
}

SQLRETURN Session::SendQuery(SQLHANDLE statement, std::string& text) const noexcept {
  auto* const sent = reinterpret_cast<SQLCHAR*>(text.data());
  if (!dialect_->preparesQueries) {
    return SQLExecDirect(statement, sent, SQL_NTS);
  }
  const SQLRETURN prepared = SQLPrepare(statement, sent, SQL_NTS);
  return SQL_SUCCEEDED(prepared) ? SQLExecute(statement) : prepared;
}

/// What the server does not tell, or tells as no number, is left out: the session goes on, without a watchdog.
ServerSide Session::AskServerSide() const {
  SQLHANDLE created = nullptr;
  if (!SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_STMT, connection_.get(), &created))) {
    return {};
  }
  const auto statement = Handle<SQL_HANDLE_STMT>::Adopt(created);
  SQLSetStmtAttr(created, SQL_ATTR_QUERY_TIMEOUT, AsPointer(timeLimit_), SQL_IS_UINTEGER);
  std::string query(dialect_->ends);
  if (!SQL_SUCCEEDED(SendQuery(created, query)) || !SQL_SUCCEEDED(SQLFetch(created))) {
    return {};
  }
  const auto text = [&](SQLUSMALLINT column) {
    std::array<char, 256> value{};
    SQLLEN length = SQL_NULL_DATA;
    const SQLRETURN rc = SQLGetData(created, column, SQL_C_CHAR, value.data(), value.size(), &length);
    return SQL_SUCCEEDED(rc) && length != SQL_NULL_DATA ? std::string(value.data()) : std::string();
  };
  const auto number = [](const std::string& digits) {
    int value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return error == std::errc() && end == digits.data() + digits.size() ? value : 0;
  };
  ServerSide told;
  told.ends.serverAddress = text(1);
  told.ends.serverPort = number(text(2));
  told.ends.clientAddress = text(3);
  told.ends.clientPort = number(text(4));
  if (!dialect_->marked.empty()) {
    told.found = text(5);
    told.marked = text(6);
  }
  return told;
}

RuntimeError Session::Explained(RuntimeError error) const {
  if (error.Note() == Sentence(Advice::Deadlock) && Replicated()) {
    return std::move(error).WithNote(std::string(Sentence(Advice::Conflict)));
  }
  if (!watchdog_ || !watchdog_->Struck()) {
    return error;
  }
  const auto seconds = timeLimit_ + static_cast<SQLULEN>(GraceForAnswer.count());
  std::string sentence =
      "La base dati non ha risposto entro " + std::to_string(seconds) + " secondi: la connessione è stata chiusa.";
  std::string note = error.Note().empty() ? std::move(sentence) : WithSentence(error.Note(), sentence);
  return std::move(error).WithNote(std::move(note));
}

Waiting::Waiting(const Session& session) noexcept : watchdog_(session.watchdog_.get()) {
  using std::chrono::milliseconds;
  milliseconds limit =
      std::chrono::seconds(static_cast<std::chrono::seconds::rep>(session.timeLimit_)) + GraceForAnswer;
  if (session.deadline_) {
    const auto left = *session.deadline_ - std::chrono::steady_clock::now();
    limit = std::clamp(std::chrono::duration_cast<milliseconds>(left), milliseconds(0), limit);
  }
  if (watchdog_ != nullptr && !watchdog_->Enter(limit)) {
    watchdog_ = nullptr;
  }
}

Waiting::~Waiting() {
  if (watchdog_ != nullptr) {
    watchdog_->Leave();
  }
}

void Session::RequireOpen() const {
  if (!open_) {
    throw RuntimeError(numbers::ObjectClosed, "Operazione non consentita: la connessione alla base dati è chiusa.",
                       "ODBC");
  }
}

void Session::Close() noexcept {
  {
    const Waiting waiting(*this);
    Disconnect();
  }
  watchdog_.reset();
}

void Session::Disconnect() noexcept {
  for (Statement* statement : statements_) {
    statement->handle_.reset();
  }
  statements_.clear();
  passedOn_.reset();
  if (!std::exchange(open_, false)) {
    return;
  }
  if (std::exchange(inTransaction_, false)) {
    SQLEndTran(SQL_HANDLE_DBC, connection_.get(), SQL_ROLLBACK);
  }
  if (!SQL_SUCCEEDED(SQLDisconnect(connection_.get())) && dialect_ != nullptr && dialect_->FileBased()) {
    EndPhantomTransaction();
    SQLDisconnect(connection_.get());
  }
  connection_.reset();
}

/// SQLite takes a transaction back by itself when its file fails. Its driver, whose own rollback then finds none,
/// believes that one is open, and refuses to let go of the file: locked, for as long as the program lives. A
/// transaction that is begun and taken back brings the two together again.
void Session::EndPhantomTransaction() noexcept {
  SQLHANDLE created = nullptr;
  if (!SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_STMT, connection_.get(), &created))) {
    return;
  }
  std::array<SQLCHAR, 6> begin{"BEGIN"};
  SQLExecDirect(created, begin.data(), SQL_NTS);
  SQLFreeHandle(SQL_HANDLE_STMT, created);
  SQLEndTran(SQL_HANDLE_DBC, connection_.get(), SQL_ROLLBACK);
}

Handle<SQL_HANDLE_STMT> Session::NewStatement() const {
  SQLHANDLE created = nullptr;
  if (!SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_STMT, connection_.get(), &created))) {
    throw OdbcError(SQL_HANDLE_DBC, connection_.get(), password_, "Istruzione SQL non allocata.");
  }
  auto statement = Handle<SQL_HANDLE_STMT>::Adopt(created);
  // A driver that cannot do this says so here; its server is told once a connection, by its dialect.
  SQLSetStmtAttr(created, SQL_ATTR_QUERY_TIMEOUT, AsPointer(timeLimit_), SQL_IS_UINTEGER);
  return statement;
}

Statement::Statement(std::shared_ptr<Session> session, Handles handles) : session_(std::move(session)) {
  session_->RequireOpen();
  if (handles == Handles::PassedOn) {
    handle_ = std::move(session_->passedOn_);
  }
  if (!handle_) {
    handle_ = session_->NewStatement();
  }
  session_->statements_.insert(this);
}

Statement::~Statement() {
  const Waiting waiting(*session_);
  session_->statements_.erase(this);
  handle_.reset();
}

void Statement::Require(SQLRETURN rc, std::string_view context) const {
  if (SQL_SUCCEEDED(rc)) {
    return;
  }
  session_->StatementFailed();
  throw session_->Explained(OdbcError(SQL_HANDLE_STMT, handle_.get(), session_->Password(), context, session_->Dead()));
}

void Statement::PassOn() noexcept {
  if (!handle_ || !session_->inTransaction_ || !session_->dialect().passesHandlesOn || session_->passedOn_) {
    return;
  }
  const Waiting waiting(*session_);
  for (const SQLUSMALLINT what : std::to_array<SQLUSMALLINT>({SQL_CLOSE, SQL_UNBIND, SQL_RESET_PARAMS})) {
    if (!SQL_SUCCEEDED(SQLFreeStmt(handle_.get(), what))) {
      return;
    }
  }
  session_->passedOn_ = std::move(handle_);
}

void Announce(std::string_view sql) {
  if (const auto& told = ActiveServices().statementSent) {
    told(sql);
  }
}

std::int64_t AffectedRows(const Statement& statement, SQLRETURN rc) {
  if (rc == SQL_NO_DATA) {
    return 0;
  }
  SQLLEN rows = -1;
  return SQL_SUCCEEDED(SQLRowCount(statement.handle(), &rows)) ? static_cast<std::int64_t>(rows) : -1;
}

} // namespace lumoscad::ado::detail
