#pragma once

#include "support/DatabaseServer.hpp"

#include <filesystem>
#include <string>
#include <string_view>

namespace lumoscad::test {

/// A PostgreSQL server of the test's own, on a free loopback port, without durability. It runs as the user postgres
/// when the test runs as root, which the server refuses. It ends with the object, or with the process.
class PostgresServer final : public DatabaseServer {
 public:
  /// True where the server's programs and the ODBC driver are installed.
  [[nodiscard]] static bool Available();

  /// Creates the cluster in `directory`, which is removed first and again at the end, and starts it. Raises when it
  /// does not answer within a minute.
  explicit PostgresServer(std::filesystem::path directory);

  /// Creates a database named `name`, runs `script` in it and returns its data source name.
  std::string CreateDatabase(std::string_view name, std::string_view script = {});
  /// Ends every connection but the caller's, as a server failure would.
  void DropConnections(std::string_view source) const;
  /// Starts the stopped server again on its data and its port.
  void Restart();

 private:
  void Start();
};

} // namespace lumoscad::test
