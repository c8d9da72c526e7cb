#include "platform/ado/Facts.hpp"

#include "platform/ado/Dialect.hpp"
#include "platform/ado/Session.hpp"

#include <algorithm>
#include <array>
#include <utility>

namespace lumoscad::ado {

namespace {

using detail::Session;
using detail::Statement;

constexpr const char* DescribingFailed = "Descrizione del risultato non riuscita.";

std::string Told(const Session& session, SQLUSMALLINT what) {
  std::array<char, 256> text{};
  SQLSMALLINT length = 0;
  const SQLRETURN rc =
      SQLGetInfo(session.handle(), what, text.data(), static_cast<SQLSMALLINT>(text.size() - 1), &length);
  return SQL_SUCCEEDED(rc) ? text.data() : "";
}

ServerKind KindOf(std::string_view name) {
  constexpr std::array<std::pair<std::string_view, ServerKind>, 5> Names{{{"SQLite", ServerKind::Sqlite},
                                                                          {"PostgreSQL", ServerKind::PostgreSql},
                                                                          {"MariaDB", ServerKind::MariaDb},
                                                                          {"MySQL", ServerKind::MariaDb},
                                                                          {"DB2", ServerKind::Db2}}};
  const auto* const found =
      std::find_if(Names.begin(), Names.end(), [&](const auto& each) { return name.starts_with(each.first); });
  return found == Names.end() ? ServerKind::Other : found->second;
}

bool HoldsTexts(SQLLEN type) {
  constexpr std::array<SQLLEN, 6> Types{SQL_CHAR,  SQL_VARCHAR,  SQL_LONGVARCHAR,
                                        SQL_WCHAR, SQL_WVARCHAR, SQL_WLONGVARCHAR};
  return std::find(Types.begin(), Types.end(), type) != Types.end();
}

ColumnFacts Column(const Statement& statement, SQLUSMALLINT number) {
  const auto text = [&](SQLUSMALLINT what) {
    std::array<char, 512> value{};
    SQLSMALLINT length = 0;
    statement.Require(SQLColAttribute(statement.handle(), number, what, value.data(),
                                      static_cast<SQLSMALLINT>(value.size() - 1), &length, nullptr),
                      DescribingFailed);
    return std::string(value.data());
  };
  const auto count = [&](SQLUSMALLINT what) {
    SQLLEN value = 0;
    statement.Require(SQLColAttribute(statement.handle(), number, what, nullptr, 0, nullptr, &value), DescribingFailed);
    return value;
  };
  constexpr SQLLEN LongestTold = 100000; // a text without a length has one of the driver's
  ColumnFacts column{text(SQL_DESC_NAME), text(SQL_DESC_TYPE_NAME), HoldsTexts(count(SQL_DESC_CONCISE_TYPE))};
  const auto type = count(SQL_DESC_CONCISE_TYPE);
  const SQLLEN length = count(SQL_DESC_LENGTH);
  if (type == SQL_DECIMAL || type == SQL_NUMERIC) {
    column.type += "(" + std::to_string(count(SQL_DESC_PRECISION)) + "," + std::to_string(count(SQL_DESC_SCALE)) + ")";
  }
  if (column.text && length > 0 && length < LongestTold && column.type.find('(') == std::string::npos) {
    column.type += "(" + std::to_string(length) + ")";
  }
  return column;
}

} // namespace

ConnectionFacts FactsOf(const Connection& connection) {
  const auto& session = *connection.impl().Require();
  const detail::Waiting waiting(session);
  ConnectionFacts facts;
  const auto name = Told(session, SQL_DBMS_NAME);
  facts.kind = KindOf(name);
  facts.driver = Told(session, SQL_DRIVER_NAME) + " " + Told(session, SQL_DRIVER_VER);
  facts.driverManager = Told(session, SQL_DM_VER);
  facts.server = name + " " + Told(session, SQL_DBMS_VER);
  facts.user = Told(session, SQL_USER_NAME);
  facts.database = Told(session, SQL_DATABASE_NAME);
  facts.readOnly = Told(session, SQL_DATA_SOURCE_READ_ONLY) == "Y";
  SQLUSMALLINT capable = SQL_TC_NONE;
  facts.transactions =
      SQL_SUCCEEDED(SQLGetInfo(session.handle(), SQL_TXN_CAPABLE, &capable, sizeof capable, nullptr)) &&
      capable != SQL_TC_NONE;
  facts.direct = session.Watched();
  return facts;
}

std::vector<ColumnFacts> ColumnsOf(const Connection& connection, std::string_view query) {
  const Statement statement(connection.impl().Require());
  std::string text(query);
  detail::Announce(text);
  statement.Require(statement.WaitFor([&] { return statement.session().SendQuery(statement.handle(), text); }),
                    "Istruzione SQL non riuscita.");
  SQLSMALLINT count = 0;
  statement.Require(SQLNumResultCols(statement.handle(), &count), DescribingFailed);
  std::vector<ColumnFacts> columns;
  for (SQLUSMALLINT number = 1; number <= count; ++number) {
    columns.push_back(Column(statement, number));
  }
  return columns;
}

int StatementSeconds() {
  return static_cast<int>(detail::StatementTimeLimit().count());
}

} // namespace lumoscad::ado
