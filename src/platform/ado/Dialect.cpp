#include "platform/ado/Dialect.hpp"

#include "platform/RuntimeError.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <string>

namespace lumoscad::ado::detail {

namespace {

constexpr std::string_view ConnectionId = "SELECT CONNECTION_ID()";

// MariaDB is brought to what the others do by themselves:
// - Texts are UTF-8, whatever the data source says. (The driver refuses the statement that says this in two words.)
// - A backslash in a quoted text is a letter. It must not swallow the quote that ends a filter.
// - A date or text that does not fit is an error, not a NULL date or a cut text.
// - A row is read as it is now. At MariaDB's own level a transaction counts the rows as they were at its first query,
//   and would not see that another terminal has changed one.
// - Statements have a time limit: PostgreSQL's and DB2's drivers carry out SQL_ATTR_QUERY_TIMEOUT; MariaDB's answers
//   that it has changed it to "none".
constexpr std::string_view OpeningOfMariaDb =
    "SET character_set_client=utf8mb4, character_set_connection=utf8mb4, character_set_results=utf8mb4, "
    "sql_mode=CONCAT(@@sql_mode,',STRICT_ALL_TABLES,NO_ZERO_DATE,NO_ZERO_IN_DATE,NO_BACKSLASH_ESCAPES'), "
    "tx_isolation='READ-COMMITTED'";
constexpr std::string_view ReplicatedMariaDb = "SELECT @@wsrep_on";
constexpr std::string_view LimitOfMariaDb = ", max_statement_time=";

/// The mark is a setting of the server's process, by the process' clock, so that no two connections have the same. A
/// pooler that gives a connection a process for as long as it lives resets all settings when it takes the process back;
/// a pooler of transactions leaves them for whoever comes next.
constexpr std::string_view EndsOfPostgres =
    "SELECT host(inet_server_addr()), inet_server_port(), host(inet_client_addr()), inet_client_port(), "
    "CASE WHEN found.mark IS NULL THEN 'new' WHEN found.mark = '' THEN 'reset' ELSE 'used' END, "
    "pg_catalog.pg_backend_pid() || ' ' || set_config('lumoscad.opened', clock_timestamp()::text, false) "
    "FROM (SELECT current_setting('lumoscad.opened', true) AS mark OFFSET 0) found";
constexpr std::string_view MarkedPostgres =
    "SELECT pg_catalog.pg_backend_pid() || ' ' || coalesce(current_setting('lumoscad.opened', true), '')";
/// A number is given out again after a crash, also after one of a single process, which the server survives: then it
/// forgets its statistics, and says since when. The name of a file of the log begins with the time line.
constexpr std::string_view BeginningOfPostgres =
    "SELECT pg_catalog.pg_backend_pid() || ' ' || coalesce(current_setting('lumoscad.opened', true), ''), "
    "(pg_control_system()).system_identifier, pg_postmaster_start_time() || ' ' || "
    "coalesce(pg_stat_get_bgwriter_stat_reset_time()::text, '') || ' ' || "
    "left(pg_walfile_name(pg_current_wal_insert_lsn()), 8), pg_current_xact_id_if_assigned()::text";
constexpr std::string_view TransactionOfPostgres = "SELECT pg_backend_pid(), pg_current_xact_id_if_assigned()::text";
constexpr std::string_view SessionOfMariaDb =
    "SELECT CONNECTION_ID(), VARIABLE_VALUE FROM information_schema.SESSION_STATUS WHERE "
    "VARIABLE_NAME='HANDLER_ROLLBACK'";
constexpr std::string_view BeginningOfMariaDb =
    "SELECT CONNECTION_ID(), CONCAT(@@hostname, ' ', @@port, ' ', @@server_id), VARIABLE_VALUE "
    "FROM information_schema.SESSION_STATUS WHERE VARIABLE_NAME='HANDLER_ROLLBACK'";
/// The server does not know which of its addresses it was reached by. The client is "address:port", or "name:port".
constexpr std::string_view EndsOfMariaDb =
    "SELECT NULL, @@port, LEFT(HOST, CHAR_LENGTH(HOST) - LOCATE(':', REVERSE(HOST))), SUBSTRING_INDEX(HOST, ':', -1) "
    "FROM information_schema.PROCESSLIST WHERE ID = CONNECTION_ID()";

// Sending unprepared saves round trips to a server. That it finds and writes the same in columns of every type was
// tried with each driver that does so (ado_test); one that was never tried binds what it describes, as ODBC means it to
// be. SQLite's makes no round trips, and tells what is wrong with a statement before it is sent. MariaDB's prepares on
// the server what it executes directly, and closing the cursor of such a handle is a message more; it does both in one
// trip, and a query's answer that breaks off there leaves it without the columns that it then reads (3.1.15).
constexpr std::array<Dialect, 5> Dialects{{
    {.name = "PostgreSQL",
     .serverSession = "SELECT pg_backend_pid()",
     .beginning = BeginningOfPostgres,
     .transaction = TransactionOfPostgres,
     .sendsUnprepared = true,
     .passesHandlesOn = true,
     .infiniteTimes = true,
     .namesNumbers = true,
     .ends = EndsOfPostgres,
     .marked = MarkedPostgres},
    {.name = "MariaDB",
     .serverSession = SessionOfMariaDb,
     .beginning = BeginningOfMariaDb,
     .countsRollbacks = true,
     .opening = OpeningOfMariaDb,
     .openingLimit = LimitOfMariaDb,
     .sendsUnprepared = true,
     .preparesQueries = true,
     .ends = EndsOfMariaDb,
     .replicated = ReplicatedMariaDb},
    {.name = "MySQL",
     .serverSession = ConnectionId,
     .preparesQueries = true,
     .ends = EndsOfMariaDb,
     .replicated = ReplicatedMariaDb},
    // Busy, locked, full, constraint (https://www.sqlite.org/rescode.html).
    {.name = "SQLite", .typesHold = false, .refusals = {5, 6, 13, 19}},
    // The members of the family share no function that names the connection; that it answers is known all the same.
    // "=" takes no LOB on either side
    // (https://www.ibm.com/docs/SSEPEK_13.0.0/sqlref/src/tpc/db2z_lobrestrictions.html).
    {.name = "DB2", .serverSession = "SELECT 1 FROM SYSIBM.SYSDUMMY1", .comparesLongTexts = false},
}};
constexpr Dialect Unknown{.name = ""};

constexpr int DefaultLimit = 60;
constexpr int OneDay = 86400;

} // namespace

std::string Dialect::OpeningFor(std::chrono::seconds seconds) const {
  std::string statement(opening);
  if (!openingLimit.empty()) {
    statement.append(openingLimit).append(std::to_string(seconds.count()));
  }
  return statement;
}

const Dialect& DialectOf(std::string_view dbmsName) noexcept {
  const auto* const found = std::find_if(Dialects.begin(), Dialects.end(),
                                         [&](const Dialect& each) { return dbmsName.starts_with(each.name); });
  return found == Dialects.end() ? Unknown : *found;
}

std::chrono::seconds StatementTimeLimit() {
  const char* const setting = std::getenv("LUMOSCAD_ATTESA_SQL");
  const std::string_view text = setting == nullptr ? "" : setting;
  if (text.empty()) {
    return std::chrono::seconds(DefaultLimit);
  }
  int seconds = 0;
  const char* const end = text.data() + text.size();
  const auto [arrived, error] = std::from_chars(text.data(), end, seconds);
  if (error != std::errc() || arrived != end || seconds < 1 || seconds > OneDay) {
    throw RuntimeError(errors::Driver,
                       "LUMOSCAD_ATTESA_SQL deve essere un numero intero di secondi, da 1 a 86400: vale «" +
                           std::string(text) + "».",
                       "ODBC");
  }
  return std::chrono::seconds(seconds);
}

} // namespace lumoscad::ado::detail
