#pragma once

#include "support/DatabaseServer.hpp"
#include "support/KeptConnection.hpp"

#include <filesystem>
#include <string>
#include <string_view>

namespace lumoscad::test {

class GaleraCluster;

/// A MariaDB server of the test's own, on a free loopback port, without durability. It runs as an unprivileged user
/// when the test runs as root, which the server refuses. It ends with the object, or with the process.
class MariaDbServer final : public DatabaseServer {
 public:
  /// The file name of the ODBC driver's library.
  static constexpr const char* Driver = "libmaodbc.so";

  /// True where the server's programs and the ODBC driver are installed.
  [[nodiscard]] static bool Available();

  /// Creates the server's data in `directory`, which is removed first and again at the end, and starts it. Raises when
  /// it does not answer within a minute.
  explicit MariaDbServer(std::filesystem::path directory);
  /// Stands for the nodes of `cluster`, which must outlive it; databases are made on the first one.
  explicit MariaDbServer(GaleraCluster& cluster);

  /// Creates a database named `name`, runs `script` in it and returns its data source name.
  std::string CreateDatabase(std::string_view name, std::string_view script = {});
  void DropDatabase(std::string_view name) const;
  /// Ends every connection but the caller's, as a server failure would.
  void DropConnections(std::string_view source) const;
  /// Starts the stopped server again on its data and its port.
  void Restart();

 private:
  void Start();

  KeptConnection kept_;
};

} // namespace lumoscad::test
