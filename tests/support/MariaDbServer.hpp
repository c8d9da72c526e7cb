#pragma once

#include "support/KeptConnection.hpp"
#include "support/OdbcConfiguration.hpp"
#include "support/ServerProcess.hpp"

#include <filesystem>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace lumoscad::test {

/// A MariaDB server of the test's own, on a free loopback port, without durability. It runs as an unprivileged user
/// when the test runs as root, which the server refuses. It ends with the object, or with the process.
class MariaDbServer {
 public:
  /// The file name of the ODBC driver's library.
  static constexpr const char* Driver = "libmaodbc.so";

  /// True where the server's programs and the ODBC driver are installed.
  [[nodiscard]] static bool Available();

  /// Creates the server's data in `directory`, which is removed first and again at the end, and starts it. Raises when
  /// it does not answer within a minute.
  explicit MariaDbServer(std::filesystem::path directory);
  MariaDbServer(const MariaDbServer&) = delete;
  MariaDbServer& operator=(const MariaDbServer&) = delete;
  ~MariaDbServer();

  /// Creates a database named `name`, runs `script` in it and returns its data source name.
  std::string CreateDatabase(std::string_view name, std::string_view script = {});
  void DropDatabase(std::string_view name) const;
  /// A further data source on a database of this server; `port` is that of a proxy in between, 0 for none, and
  /// `more` are further settings of the driver.
  [[nodiscard]] std::string AddSource(std::string_view database, int port = 0,
                                      const OdbcConfiguration::Settings& more = {}) const;
  [[nodiscard]] const std::string& User() const noexcept { return user_; }
  [[nodiscard]] const std::string& Password() const noexcept { return password_; }
  [[nodiscard]] int Port() const noexcept { return port_; }
  [[nodiscard]] pid_t Process() const noexcept { return server_.Id(); }
  [[nodiscard]] const std::filesystem::path& Directory() const noexcept { return directory_; }
  [[nodiscard]] std::string ConnectionText(std::string_view source) const {
    return test::ConnectionText(source, user_, password_);
  }
  /// Ends every connection but the caller's, as a server failure would.
  void DropConnections(std::string_view source) const;
  /// Stops the server at once.
  void Stop() { server_.Stop(); }
  /// Kills the server without warning.
  void Kill() { server_.Kill(); }
  /// Starts the stopped server again on its data and its port.
  void Restart();

 private:
  void CreateData() const;
  void Start();

  std::filesystem::path directory_;
  std::string user_ = "lumoscad";
  std::string password_ = "Segreto!9";
  int port_ = 0;
  std::string system_; ///< the data source for creating databases
  ServerProcess server_;
  KeptConnection kept_;
};

} // namespace lumoscad::test
