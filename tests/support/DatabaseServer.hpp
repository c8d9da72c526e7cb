#pragma once

#include "support/OdbcConfiguration.hpp"
#include "support/ServerProcess.hpp"

#include <filesystem>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace lumoscad::test {

/// A driver's library, and the names of the settings that say where the server is.
struct DriverNames {
  const char* kind; ///< the beginning of the data sources' names
  const char* library;
  const char* host;
  const char* port;
  const char* database;
};

/// What the database servers of the tests have in common: data in a directory of their own, a free loopback port, one
/// user. The server ends, and its directory goes, with the object.
class DatabaseServer {
 public:
  DatabaseServer(const DatabaseServer&) = delete;
  DatabaseServer& operator=(const DatabaseServer&) = delete;

  /// A further data source on a database of this server; `port` is that of a proxy in between, 0 for none, and
  /// `more` are further settings of the driver.
  [[nodiscard]] std::string AddSource(std::string_view database, int port = 0,
                                      const OdbcConfiguration::Settings& more = {}) const;
  [[nodiscard]] const std::string& User() const noexcept { return user_; }
  [[nodiscard]] const std::string& Password() const noexcept { return password_; }
  [[nodiscard]] const std::string& Host() const noexcept { return host_; }
  [[nodiscard]] int Port() const noexcept { return port_; }
  [[nodiscard]] pid_t Process() const noexcept { return server_.Id(); }
  [[nodiscard]] const std::filesystem::path& Directory() const noexcept { return directory_; }
  [[nodiscard]] std::string ConnectionText(std::string_view source) const {
    return test::ConnectionText(source, user_, password_);
  }
  /// From now on data sources without a proxy lead to several servers, of which this one is the first: `hosts` stands
  /// in the place of its address, and `more` are further settings of theirs.
  void LeadTo(std::string hosts, OdbcConfiguration::Settings more = {});
  /// Stops the server at once.
  void Stop() { server_.Stop(); }
  /// Kills the server without warning.
  void Kill() { server_.Kill(); }
  /// Kills the server with the processes of its sessions, as the loss of its machine would.
  void KillAll() { server_.KillAll(); }

 protected:
  DatabaseServer(std::filesystem::path directory, const DriverNames& driver);
  ~DatabaseServer();

  /// Waits until the server that has just been started answers on `database`, and that it is the one with our data:
  /// `question` is what gives the path of a server's data.
  void AwaitAnswer(std::string_view database, const char* question);

  std::filesystem::path directory_;
  std::string user_ = "lumoscad";
  std::string password_ = "Segreto!9";
  std::string host_ = "127.0.0.1";
  int port_ = 0;
  std::string system_; ///< the data source for creating databases
  ServerProcess server_;

 private:
  const DriverNames& driver_;
  std::string hosts_;
  OdbcConfiguration::Settings ofSeveral_;
};

} // namespace lumoscad::test
