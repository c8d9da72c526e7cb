#include "platform/ado/Aftermath.hpp"

#include "platform/ado/Session.hpp"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace lumoscad::ado {

namespace {

using detail::Session;
using Rows = Aftermath::Rows;

bool OnlyDigits(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

/// The port of "address:port".
std::string_view PortOf(std::string_view client) {
  const std::string_view port = client.substr(client.rfind(':') + 1);
  return OnlyDigits(port) ? port : std::string_view();
}

/// The old session among those of the server: a process may have been given its number anew.
std::string PostgresSession(const TransactionMark& mark) {
  std::string where = " FROM pg_stat_activity WHERE pid=" + mark.session;
  if (const auto port = PortOf(mark.client); !port.empty()) {
    where.append(" AND client_port=").append(port);
  }
  return where;
}

Aftermath LookAtPostgres(const Session& session, const TransactionMark& mark) {
  auto now = session.Ask(session.dialect().beginning);
  now.resize(4);
  const bool standby = session.Ask("SELECT CASE WHEN pg_is_in_recovery() THEN 1 ELSE 0 END").at(0) != "0";
  if (now[1] != mark.server || standby) {
    return {};
  }
  if (now[2] != mark.life) {
    // The same server may count a new life while the session goes on: its statistics can be reset by hand.
    const bool known = !PortOf(mark.client).empty();
    const bool there = known && session.Ask("SELECT COUNT(*)" + PostgresSession(mark)).at(0) != "0";
    return {there ? Rows::SayNothing : Rows::Decide, std::nullopt, false, there};
  }
  const std::string status = mark.number.empty() ? "NULL" : "pg_xact_status('" + mark.number + "'::xid8)";
  const auto told = session.Ask("SELECT (SELECT COUNT(*)" + PostgresSession(mark) + "), " + status);
  // What has ended stays so, whoever uses the session now: a pooler does not let it go.
  if (told.at(1) == "committed") {
    return {Rows::Decide, TransactionOutcome::Applied, false};
  }
  if (told.at(1) == "aborted") {
    return {Rows::Decide, TransactionOutcome::NotApplied, false};
  }
  const bool underWay = told.at(1) == "in progress";
  const bool there = told.at(0) != "0" || underWay;
  const bool lingers = told.at(0) == "1" && !PortOf(mark.client).empty();
  return {there ? Rows::SayNothing : Rows::Decide, std::nullopt, lingers, lingers || underWay};
}

/// Makes every look over this connection wait for what other servers have committed. False where none has a say.
bool AwaitOthers(const Session& session) {
  const bool replicated = session.Replicated();
  if (replicated) {
    session.Tell("SET SESSION wsrep_sync_wait=1");
  }
  return replicated;
}

Aftermath LookAtMariaDb(const Session& session, const TransactionMark& mark) {
  const bool replicated = AwaitOthers(session);
  auto now = session.Ask(session.dialect().beginning);
  now.resize(2);
  if (now[1] != mark.server) {
    // A replica that lags behind holds what the rows were, and what they were may look like the change.
    return {replicated ? Rows::SayIfDone : Rows::SayNothing, std::nullopt, false};
  }
  std::string sessions = "SELECT COUNT(*) FROM information_schema.PROCESSLIST WHERE ID<>CONNECTION_ID() AND ID=";
  sessions += mark.session;
  const bool known = !PortOf(mark.client).empty() && mark.client.find('\'') == std::string::npos;
  if (known) {
    sessions += " AND HOST='" + mark.client + "'";
  }
  const bool there = session.Ask(sessions).at(0) != "0";
  return {there ? Rows::SayNothing : Rows::Decide, std::nullopt, there && known, there && known};
}

/// PostgreSQL's driver gives every failure of an opening the same state and number: only the text, which is in the
/// server's language (lc_messages), tells a refused login from a server that is starting.
bool PasswordRefused(std::string_view text) {
  constexpr std::array<std::string_view, 3> Texts{"password authentication failed",
                                                  "autenticazione con password fallita", "Passwort-Authentifizierung"};
  return std::any_of(Texts.begin(), Texts.end(),
                     [text](std::string_view each) { return text.find(each) != std::string_view::npos; });
}

bool OfPostgres(const Session& session) {
  return session.dialect().name == "PostgreSQL";
}

} // namespace

Aftermath LookBack(const Connection& connection, const TransactionMark& mark) {
  const Session& session = *connection.impl().Require();
  if (session.dialect().FileBased()) {
    return {Rows::Decide, std::nullopt, false};
  }
  const bool sound =
      OnlyDigits(mark.session) && (mark.number.empty() || OnlyDigits(mark.number)) && !mark.server.empty();
  if (!sound || session.dialect().beginning.empty()) {
    return {};
  }
  return OfPostgres(session) ? LookAtPostgres(session, mark) : LookAtMariaDb(session, mark);
}

bool RefusedForGood(const RuntimeError& error) {
  const std::string& state = error.SqlState();
  return error.NativeCode() == SharedSession || state.starts_with("28") || state == "IM002" || state == "IM003" ||
         PasswordRefused(error.Description());
}

std::vector<std::string> AskAboutOutcome(const Connection& connection, std::string_view question) {
  const Session& session = *connection.impl().Require();
  return session.dialect().TellsAfterwards() ? session.Ask(question) : std::vector<std::string>();
}

void AwaitReplicas(const Connection& connection) {
  AwaitOthers(*connection.impl().Require());
}

void EndSession(const Connection& connection, const TransactionMark& mark) noexcept {
  try {
    const Session& session = *connection.impl().Require();
    session.Tell(OfPostgres(session) ? "SELECT pg_terminate_backend(pid)" + PostgresSession(mark) +
                                           " AND coalesce(wait_event, '')<>'SyncRep'"
                                     : "KILL CONNECTION " + mark.session);
  } catch (...) { // NOLINT(bugprone-empty-catch): it may have ended meanwhile, or may not be ended
  }
}

std::chrono::seconds LongestWait() {
  return detail::StatementTimeLimit() + detail::GraceForAnswer;
}

} // namespace lumoscad::ado
