#include "platform/ado/Advice.hpp"
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
// There the loser of two changes may also never hear of it. A node takes the loser's transaction back when the winner's
// change arrives; where that happens while it closes a statement, a message without an answer, nobody is told, what the
// transaction does from then on belongs to another one, and COMMIT answers success (seen with MariaDB 10.11, about once
// in 140 conflicts of two nodes under load). So the server's count of what the session has taken back must be after
// COMMIT what it was at the beginning, and the last question is closed when COMMIT is answered. A count that rose
// before COMMIT: not applied. One that rose with it: unknown, since a node may also take a transaction back to carry it
// out again in the order of all.
//
// Another server session than at the beginning means that the driver has connected anew behind our back: what was
// done on the old one is gone, what was done on the new one may have been committed statement by statement. A rollback
// takes none of that back, so that it asks as well.

namespace lumoscad::ado::detail {

namespace {

/// What happened to a COMMIT of unknown outcome.
constexpr std::string_view LostConnection = "La connessione è caduta mentre si confermavano le modifiche: ";
constexpr std::string_view LostReplicas =
    "I server della base dati non si vedevano mentre si confermavano le modifiche: ";
constexpr std::string_view FailedFile =
    "Il file della base dati ha dato un errore mentre si confermavano le modifiche: ";
constexpr std::string_view Withdrawn =
    "La base dati ha annullato una transazione mentre si confermavano le modifiche: ";
constexpr std::string_view OpenEnd = "l'esito è sconosciuto, possono essere registrate tutte o nessuna.";
constexpr std::string_view NothingKept = "un nuovo collegamento mostra che non ne è registrata nessuna.";

constexpr const char* CommitWithoutSuccess = "Conferma della transazione non riuscita.";
constexpr const char* TakenBack = "Conferma non eseguita: la base dati ha annullato la transazione.";

constexpr long LostConflict = 1213;    ///< a replicated server's number for the loser of a conflict
constexpr long UnknownVariable = 1193; ///< a server's number where it was built without replication

/// A COMMIT whose outcome is unknown after `cause`; the driver's own text comes first.
RuntimeError OutcomeUnknown(const RuntimeError& cause, std::string_view happened) {
  return RuntimeError(errors::Driver, cause.Description(), "ODBC")
      .WithNote(std::string(happened).append(OpenEnd))
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
  mark_ = {};
  commitSent_ = false;
  Autocommit(false);
  inTransaction_ = true;
  statementFailed_ = false;
  try {
    Identify();
  } catch (...) {
    Abandon();
    throw;
  }
}

/// Takes down whom the transaction begins with. A server that cannot say all of it, since it is too old or its
/// administrator has closed the functions, is asked again for the session alone; nothing is done yet that could be
/// lost.
void Session::Identify() {
  std::vector<std::string> told;
  if (identified_ && !dialect_->beginning.empty()) {
    try {
      told = Ask(dialect_->beginning);
    } catch (RuntimeError& error) {
      if (WithoutAnswer(error.SqlState()) || Dead() || !SQL_SUCCEEDED(EndTransaction(SQL_ROLLBACK))) {
        throw Explained(std::move(error));
      }
      identified_ = false;
    }
  }
  if (told.empty() && dialect_->countsRollbacks) {
    told = AskExplained(dialect_->serverSession);
    serverSession_ = told.at(0);
    rollbacks_ = Rollbacks(told);
    return;
  }
  if (told.empty()) {
    serverSession_ = OwnServerSession();
    return;
  }
  rollbacks_ = Rollbacks(told);
  told.resize(3);
  serverSession_ = RequireOwn(told[0]);
  mark_.server = std::move(told[1]);
  mark_.life = std::move(told[2]);
}

void Session::Commit(const std::function<void(const TransactionMark&)>& told) {
  RequireTransaction("Conferma non consentita: nessuna transazione è in corso.");
  Handle<SQL_HANDLE_STMT> question; // closed when COMMIT is answered
  try {
    RequireWholeTransaction(question);
    if (told) {
      told(mark_);
    }
  } catch (...) {
    Abandon();
    throw;
  }
  commitSent_ = true;
  outcome_ = TransactionOutcome::Unknown;
  inTransaction_ = false;
  if (!SQL_SUCCEEDED(EndTransaction(SQL_COMMIT))) {
    CommitFailed(OdbcError(SQL_HANDLE_DBC, connection_.get(), password_, CommitWithoutSuccess));
  }
  ConfirmCommit();
  outcome_ = TransactionOutcome::Applied;
}

std::optional<TransactionMark> Session::InDoubt() const {
  const bool askable = dialect_ != nullptr && dialect_->TellsAfterwards() && identified_;
  return commitSent_ && askable && outcome_ == TransactionOutcome::Unknown ? std::optional(mark_) : std::nullopt;
}

/// Raises where what COMMIT would keep is not all that the transaction did. `question` receives the statement that
/// asked, where its closing could be what hides the loss of the transaction.
void Session::RequireWholeTransaction(Handle<SQL_HANDLE_STMT>& question) {
  if (statementFailed_) {
    throw RuntimeError(errors::Driver, "Conferma non eseguita: un'istruzione della transazione è fallita.", "ODBC");
  }
  auto now =
      AskExplained(identified_ && !dialect_->transaction.empty() ? dialect_->transaction : dialect_->serverSession,
                   dialect_->countsRollbacks ? &question : nullptr);
  const bool takenBack = Rollbacks(now) != rollbacks_;
  now.resize(dialect_->countsRollbacks ? 1 : 2);
  if (now[0] != serverSession_) {
    outcome_ = TransactionOutcome::Unknown;
    throw RuntimeError(errors::Driver,
                       "La connessione è stata interrotta e riaperta dal driver durante le modifiche: l'esito è "
                       "sconosciuto, possono essere registrate in parte.",
                       "ODBC")
        .WithOutcome(outcome_);
  }
  if (takenBack) {
    throw RuntimeError(errors::Driver, TakenBack, "ODBC")
        .WithNote(Replicated() ? std::string(Sentence(Advice::Conflict)) : std::string())
        .WithOutcome(TransactionOutcome::NotApplied);
  }
  mark_.session = std::move(now[0]);
  mark_.number = now.size() > 1 ? std::move(now[1]) : std::string();
  mark_.client = Watched() ? ends_.clientAddress + ":" + std::to_string(ends_.clientPort) : std::string();
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
    throw Explained(OutcomeUnknown(error, dialect_->FileBased()      ? FailedFile
                                          : answered && Replicated() ? LostReplicas
                                                                     : LostConnection));
  }
  outcome_ = TransactionOutcome::NotApplied;
  throw Explained(std::move(error)).WithOutcome(outcome_);
}

void Session::ConfirmCommit() {
  std::vector<std::string> told;
  try {
    Autocommit(true);
    if (!Dead()) {
      told = AskExplained(dialect_->serverSession);
    }
  } catch (const RuntimeError& error) {
    throw Explained(OutcomeUnknown(error, LostConnection));
  }
  const bool same = !Dead() && (told.empty() ? std::string() : told[0]) == serverSession_;
  if (!same || Rollbacks(told) != rollbacks_) {
    throw OutcomeUnknown(RuntimeError(errors::Driver, CommitWithoutSuccess), same ? Withdrawn : LostConnection);
  }
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

std::vector<std::string> Session::Ask(std::string_view question, Handle<SQL_HANDLE_STMT>* kept) const {
  constexpr const char* NoAnswer = "La base dati non risponde.";
  const Waiting waiting(*this);
  SQLHANDLE created = nullptr;
  if (!SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_STMT, connection_.get(), &created))) {
    throw OdbcError(SQL_HANDLE_DBC, connection_.get(), password_, NoAnswer);
  }
  auto statement = Handle<SQL_HANDLE_STMT>::Adopt(created);
  SQLSetStmtAttr(created, SQL_ATTR_QUERY_TIMEOUT, AsPointer(timeLimit_), SQL_IS_UINTEGER);
  std::string query(question);
  SQLSMALLINT columns = 0;
  if (!SQL_SUCCEEDED(SendQuery(created, query)) || !SQL_SUCCEEDED(SQLNumResultCols(created, &columns)) ||
      !SQL_SUCCEEDED(SQLFetch(created))) {
    throw OdbcError(SQL_HANDLE_STMT, created, password_, NoAnswer);
  }
  std::vector<std::string> answers;
  for (SQLSMALLINT column = 1; column <= columns; ++column) {
    std::array<char, 256> answer{};
    SQLLEN length = SQL_NULL_DATA;
    if (!SQL_SUCCEEDED(SQLGetData(created, static_cast<SQLUSMALLINT>(column), SQL_C_CHAR, answer.data(), answer.size(),
                                  &length))) {
      throw OdbcError(SQL_HANDLE_STMT, created, password_, NoAnswer);
    }
    answers.emplace_back(length == SQL_NULL_DATA ? "" : answer.data());
  }
  if (kept != nullptr) {
    *kept = std::move(statement);
  }
  return answers;
}

void Session::Tell(std::string_view text) const {
  const Waiting waiting(*this);
  const auto statement = NewStatement();
  std::string sent(text);
  if (!SQL_SUCCEEDED(SQLExecDirect(statement.get(), reinterpret_cast<SQLCHAR*>(sent.data()), SQL_NTS))) {
    throw OdbcError(SQL_HANDLE_STMT, statement.get(), password_, "Istruzione SQL non riuscita.");
  }
}

/// Asks the server for the identity of its side of the connection. Raises when no answer comes. Empty for a server
/// that cannot be asked; SQLite is the caller's own process.
std::string Session::ServerSession() const {
  auto told = AskExplained(dialect_->serverSession);
  told.resize(1);
  return told[0];
}

/// How often the session has taken a transaction back, from an answer of it; empty where the server does not count.
std::string Session::Rollbacks(const std::vector<std::string>& told) const {
  return dialect_->countsRollbacks && !told.empty() ? told.back() : std::string();
}

/// `Ask`, its failure explained; nothing where there is no question.
std::vector<std::string> Session::AskExplained(std::string_view question, Handle<SQL_HANDLE_STMT>* kept) const {
  try {
    return question.empty() ? std::vector<std::string>() : Ask(question, kept);
  } catch (RuntimeError& error) {
    throw Explained(std::move(error));
  }
}

bool Session::Replicated() const noexcept {
  if (dialect_ == nullptr || dialect_->replicated.empty()) {
    return false;
  }
  try {
    return Ask(dialect_->replicated).at(0) == "1";
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

namespace lumoscad::ado {

namespace {

constexpr std::array<std::pair<std::string_view, std::string TransactionMark::*>, 5> PartsOfMark{
    {{"sessione", &TransactionMark::session},
     {"client", &TransactionMark::client},
     {"transazione", &TransactionMark::number},
     {"server", &TransactionMark::server},
     {"vita", &TransactionMark::life}}};
constexpr std::string_view Comma = ", ";

} // namespace

std::string TransactionMark::Text() const {
  std::string text;
  for (const auto& [name, value] : PartsOfMark) {
    if (!(this->*value).empty()) {
      text.append(text.empty() ? "" : Comma).append(name).append(" ").append(this->*value);
    }
  }
  return text;
}

TransactionMark TransactionMark::FromText(std::string_view text) {
  TransactionMark mark;
  // From the last part to the first: whatever stands in a server's name, its end is where the next part begins.
  // NOLINTNEXTLINE(modernize-loop-convert): backwards, for which the standard library has no range that clang 14 takes
  for (auto part = PartsOfMark.rbegin(); part != PartsOfMark.rend(); ++part) {
    const std::string title = std::string(part->first) + " ";
    const auto behindComma = text.rfind(std::string(Comma) + title);
    if (behindComma != std::string_view::npos) {
      mark.*part->second = text.substr(behindComma + Comma.size() + title.size());
      text = text.substr(0, behindComma);
    } else if (text.starts_with(title)) {
      mark.*part->second = text.substr(title.size());
      text = {};
    }
  }
  return text.empty() ? mark : TransactionMark();
}

RuntimeError KnownNotApplied(const RuntimeError& doubt) {
  std::string note = doubt.Note();
  if (const auto open = note.find(detail::OpenEnd); open != std::string::npos) {
    note.replace(open, detail::OpenEnd.size(), detail::NothingKept);
  }
  return RuntimeError(doubt.Number(), doubt.Description(), doubt.Source())
      .WithNote(std::move(note))
      .WithState(doubt.SqlState(), doubt.NativeCode())
      .WithOutcome(TransactionOutcome::NotApplied);
}

} // namespace lumoscad::ado
