#include "platform/ado/Dialect.hpp"

#include "platform/RuntimeError.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <string>

namespace lumoscad::ado::detail {

namespace {

constexpr std::string_view connectionId = "SELECT CONNECTION_ID()";

// MariaDB is brought to what the others do by themselves:
// - Texts are UTF-8, whatever the data source says. (The driver refuses the statement that says this in two words.)
// - A backslash in a quoted text is a letter. It must not swallow the quote that ends a filter.
// - A date or text that does not fit is an error, not a NULL date or a cut text.
// - A row is read as it is now. At MariaDB's own level a transaction counts the rows as they were at its first query,
//   and would not see that another terminal has changed one.
// - Statements have a time limit: PostgreSQL's and DB2's drivers carry out SQL_ATTR_QUERY_TIMEOUT; MariaDB's answers
//   that it has changed it to "none".
constexpr std::string_view openingOfMariaDb =
    "SET character_set_client=utf8mb4, character_set_connection=utf8mb4, character_set_results=utf8mb4, "
    "sql_mode=CONCAT(@@sql_mode,',STRICT_ALL_TABLES,NO_ZERO_DATE,NO_ZERO_IN_DATE,NO_BACKSLASH_ESCAPES'), "
    "tx_isolation='READ-COMMITTED'";
constexpr std::string_view limitOfMariaDb = ", max_statement_time=";

constexpr std::string_view endsOfPostgres =
    "SELECT host(inet_server_addr()), inet_server_port(), host(inet_client_addr()), inet_client_port()";
/// The server does not know which of its addresses it was reached by. The client is "address:port", or "name:port".
constexpr std::string_view endsOfMariaDb =
    "SELECT NULL, @@port, LEFT(HOST, CHAR_LENGTH(HOST) - LOCATE(':', REVERSE(HOST))), SUBSTRING_INDEX(HOST, ':', -1) "
    "FROM information_schema.PROCESSLIST WHERE ID = CONNECTION_ID()";

constexpr std::array<Dialect, 5> dialects{{
    {"PostgreSQL", "SELECT pg_backend_pid()", "", "", true, true, true, true, endsOfPostgres, {}},
    {"MariaDB", connectionId, openingOfMariaDb, limitOfMariaDb, true, true, false, false, endsOfMariaDb, {}},
    {"MySQL", connectionId, "", "", true, true, false, false, endsOfMariaDb, {}},
    // Busy, locked, full, constraint (https://www.sqlite.org/rescode.html).
    {"SQLite", "", "", "", true, false, false, false, "", {5, 6, 13, 19}},
    // The members of the family share no function that names the connection; that it answers is known all the same.
    // "=" takes no LOB on either side
    // (https://www.ibm.com/docs/SSEPEK_13.0.0/sqlref/src/tpc/db2z_lobrestrictions.html).
    {"DB2", "SELECT 1 FROM SYSIBM.SYSDUMMY1", "", "", false, true, false, false, "", {}},
}};
constexpr Dialect unknown{"", "", "", "", true, true, false, false, "", {}};

constexpr int defaultLimit = 60;
constexpr int oneDay = 86400;

} // namespace

std::string Dialect::openingFor(std::chrono::seconds seconds) const {
  std::string statement(opening);
  if (!openingLimit.empty()) {
    statement.append(openingLimit).append(std::to_string(seconds.count()));
  }
  return statement;
}

const Dialect& dialectOf(std::string_view dbmsName) noexcept {
  const auto* const found = std::find_if(dialects.begin(), dialects.end(),
                                         [&](const Dialect& each) { return dbmsName.starts_with(each.name); });
  return found == dialects.end() ? unknown : *found;
}

std::chrono::seconds statementTimeLimit() {
  const char* const setting = std::getenv("LUMOSCAD_ATTESA_SQL");
  const std::string_view text = setting == nullptr ? "" : setting;
  if (text.empty()) {
    return std::chrono::seconds(defaultLimit);
  }
  int seconds = 0;
  const char* const end = text.data() + text.size();
  const auto [arrived, error] = std::from_chars(text.data(), end, seconds);
  if (error != std::errc() || arrived != end || seconds < 1 || seconds > oneDay) {
    throw RuntimeError(errors::Driver,
                       "LUMOSCAD_ATTESA_SQL deve essere un numero intero di secondi, da 1 a 86400: vale «" +
                           std::string(text) + "».",
                       "ODBC");
  }
  return std::chrono::seconds(seconds);
}

} // namespace lumoscad::ado::detail
