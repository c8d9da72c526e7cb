#pragma once

#include "support/DatabaseServer.hpp"

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace lumoscad::test {

/// One PostgreSQL server of a pair.
class PostgresNode final : public DatabaseServer {
 public:
  /// Starts nothing; the server is to listen on `host`.
  PostgresNode(std::filesystem::path directory, std::string host);

  /// Starts the server as one that others may copy.
  void StartPrimary(int port);
  /// Makes the data a copy of `primary`'s and starts the server as its standby, on the same port.
  void StartAsStandbyOf(const DatabaseServer& primary);
  /// Starts the stopped server again on its data and its port.
  void Start();
  /// Has this server, whatever it is to the other, carry out a statement.
  void Execute(std::string_view statement) const;
  /// The answer of this server.
  [[nodiscard]] std::string Answer(std::string_view question, std::string_view database = "postgres") const;
  /// The id of a process that this server names; raises where there is none.
  [[nodiscard]] pid_t ProcessOf(std::string_view question) const;

 private:
  void Open(ado::Connection& connection, std::string_view database) const;
};

/// What leads to a server on each of the two addresses, and takes the one that can be written to.
inline constexpr const char* BothHosts = "127.0.0.1,127.0.0.2";
[[nodiscard]] OdbcConfiguration::Settings WrittenTo();

/// A standby on another address, the second as a rule, for a server that waits for it at every COMMIT from now on.
[[nodiscard]] std::unique_ptr<PostgresNode>
SynchronousStandbyOf(const DatabaseServer& primary, std::filesystem::path directory, std::string host = "127.0.0.2");

/// A primary and a standby that every COMMIT of the primary waits for
/// (https://www.postgresql.org/docs/15/warm-standby.html#SYNCHRONOUS-REPLICATION). They have the same port on two
/// addresses of this machine.
class PostgresPair {
 public:
  /// True where the server's programs and the ODBC driver are installed.
  [[nodiscard]] static bool Available();

  /// Starts both with data in folders of `directory`. Raises when they do not serve within a minute.
  explicit PostgresPair(const std::filesystem::path& directory);

  [[nodiscard]] PostgresNode& First() noexcept { return *first_; }
  [[nodiscard]] PostgresNode& Second() noexcept { return *second_; }
  /// Creates a database after the statements of `script`; returns when both show it.
  void CreateDatabase(std::string_view name, std::string_view script);
  /// A data source of both servers, which takes the one that can be written to.
  [[nodiscard]] std::string AddSource(std::string_view database) const;
  [[nodiscard]] std::string ConnectionText(std::string_view source) const { return first_->ConnectionText(source); }
  /// Makes the standby a primary; returns when it takes changes.
  void Promote();
  /// After the first was lost and the second promoted: what was the second is the first now, and has a standby again,
  /// in the place of the lost one.
  void Replace();

 private:
  void Start();

  std::filesystem::path directory_;
  std::unique_ptr<PostgresNode> first_;
  std::unique_ptr<PostgresNode> second_;
};

} // namespace lumoscad::test
