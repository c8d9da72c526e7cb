#pragma once

#include "platform/ado/Ado.hpp"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::ado {

/// The servers that are asked in words of their own.
enum class ServerKind { Other, Sqlite, PostgreSql, MariaDb, Db2 };

/// What driver and server say of themselves and of an open connection.
struct ConnectionFacts {
  ServerKind kind = ServerKind::Other;
  std::string driver;        ///< the driver's file, and its version
  std::string driverManager; ///< its version
  std::string server;        ///< the server's name, and its version
  std::string user;          ///< as the server knows it; empty where it knows none
  std::string database;
  bool readOnly = false;     ///< the source takes no changes
  bool transactions = false; ///< the driver can begin one
  /// The connection's socket leads to the server itself. A proxy, a pooler or a socket of this machine alone does not;
  /// nor can that be told of every server.
  bool direct = false;
};

/// Asks driver and server. Raises a run-time error for a connection that is closed.
[[nodiscard]] ConnectionFacts FactsOf(const Connection& connection);

/// A column of a result as the driver describes it.
struct ColumnFacts {
  std::string name;
  std::string type; ///< in the server's words, with its length
  bool text = false;
};

/// The columns of the result of `query`, which should have no rows: they are not read. Raises the driver's failure.
[[nodiscard]] std::vector<ColumnFacts> ColumnsOf(const Connection& connection, std::string_view query);

/// Seconds that a statement may take by the setting of the environment. Raises where it is unfit.
[[nodiscard]] int StatementSeconds();

} // namespace lumoscad::ado
