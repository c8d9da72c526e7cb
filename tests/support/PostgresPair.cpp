#include "support/PostgresPair.hpp"

#include "platform/RuntimeError.hpp"
#include "platform/ado/Ado.hpp"
#include "support/Loopback.hpp"
#include "support/PostgresProgram.hpp"

#include <csignal>
#include <exception>
#include <stdexcept>
#include <utility>

namespace lumoscad::test {

namespace fs = std::filesystem;

namespace {

/// The database that every server has.
constexpr const char* Own = "postgres";
/// What the primary knows the standby by.
constexpr const char* Standby = "riserva";
constexpr int Attempts = 3;

void OpenOn(ado::Connection& connection, const DatabaseServer& server, std::string_view database) {
  const std::string source = server.AddSource(database);
  connection.ConnectionString = server.ConnectionText(source);
  connection.Open();
  OdbcConfiguration::Instance().RemoveSource(source);
}

} // namespace

PostgresNode::PostgresNode(fs::path directory, std::string host) : DatabaseServer(std::move(directory), PostgresNames) {
  host_ = std::move(host);
  PrepareDirectory(directory_, PostgresUser);
}

void PostgresNode::StartPrimary(int port) {
  CreatePostgresData(directory_, user_, password_);
  port_ = port;
  Start();
}

void PostgresNode::StartAsStandbyOf(const DatabaseServer& primary) {
  const fs::path secret = directory_ / "passwords";
  WriteSecret(secret, "*:*:*:" + user_ + ":" + password_ + "\n", PostgresUser);
  ServerProcess copy({PostgresProgram("pg_basebackup"), "-R", "-X", "stream", "-c", "fast", "--no-sync", "-D",
                      (directory_ / "data").string(), "-d",
                      "host=" + primary.Host() + " port=" + std::to_string(primary.Port()) + " user=" + user_ +
                          " passfile=" + secret.string() + " application_name=" + Standby},
                     directory_ / "copy.log", PostgresUser, SIGINT);
  if (!copy.Succeeds()) {
    throw std::runtime_error("pg_basebackup failed: " + EndOf(directory_ / "copy.log"));
  }
  port_ = primary.Port();
  Start();
}

void PostgresNode::Start() {
  server_ = ServerProcess(PostgresWords(directory_, host_, port_), directory_ / "server.log", PostgresUser, SIGINT);
  AwaitAnswer(Own, "SHOW data_directory");
}

void PostgresNode::Open(ado::Connection& connection, std::string_view database) const {
  OpenOn(connection, *this, database);
}

void PostgresNode::Execute(std::string_view statement) const {
  ado::Connection connection;
  Open(connection, Own);
  connection.Execute(statement);
}

std::string PostgresNode::Answer(std::string_view question, std::string_view database) const {
  ado::Connection connection;
  Open(connection, database);
  return FirstValue(connection, question);
}

pid_t PostgresNode::ProcessOf(std::string_view question) const {
  const std::string answer = Answer(question);
  if (answer.empty()) {
    throw std::runtime_error("no such process: " + std::string(question));
  }
  return std::stoi(answer);
}

OdbcConfiguration::Settings WrittenTo() {
  return {{"pqopt", "target_session_attrs=read-write"}};
}

std::unique_ptr<PostgresNode> SynchronousStandbyOf(const DatabaseServer& primary, fs::path directory,
                                                   std::string host) {
  auto standby = std::make_unique<PostgresNode>(std::move(directory), std::move(host));
  standby->StartAsStandbyOf(primary);
  ado::Connection connection;
  OpenOn(connection, primary, Own);
  // A test's server may be one that waits for nothing, not even for its own disk.
  connection.Execute("ALTER ROLE " + primary.User() + " SET synchronous_commit = on");
  connection.Execute(std::string("ALTER SYSTEM SET synchronous_standby_names = '") + Standby + "'");
  static_cast<void>(FirstValue(connection, "SELECT pg_reload_conf()"));
  Await("COMMIT waits for the standby", [&] {
    return FirstValue(connection, "SELECT count(*) FROM pg_stat_replication WHERE sync_state='sync'") == "1";
  });
  return standby;
}

bool PostgresPair::Available() {
  return PostgresInstalled();
}

PostgresPair::PostgresPair(const fs::path& directory) : directory_(directory) {
  // The port may be taken on one of the two addresses.
  for (int attempt = 1; !second_; ++attempt) {
    try {
      Start();
    } catch (const std::exception&) {
      second_.reset();
      first_.reset();
      if (attempt == Attempts) {
        throw;
      }
    }
  }
}

void PostgresPair::Start() {
  first_ = std::make_unique<PostgresNode>(directory_ / "1", "127.0.0.1");
  first_->StartPrimary(FreePort());
  second_ = SynchronousStandbyOf(*first_, directory_ / "2");
}

void PostgresPair::CreateDatabase(std::string_view name, std::string_view script) {
  first_->Execute("CREATE DATABASE " + std::string(name));
  RunScript(ConnectionText(AddSource(name)), script);
  const std::string written = first_->Answer("SELECT pg_current_wal_lsn()");
  Await("the standby shows the database",
        [&] { return second_->Answer("SELECT (pg_last_wal_replay_lsn() >= '" + written + "')::int") == "1"; });
}

std::string PostgresPair::AddSource(std::string_view database) const {
  OdbcConfiguration::Settings settings{{PostgresNames.host, BothHosts},
                                       {PostgresNames.port, std::to_string(first_->Port())},
                                       {PostgresNames.database, std::string(database)}};
  const auto more = WrittenTo();
  settings.insert(settings.end(), more.begin(), more.end());
  return OdbcConfiguration::Instance().AddSource(PostgresNames.kind, PostgresNames.library, settings);
}

void PostgresPair::Promote() {
  static_cast<void>(second_->Answer("SELECT pg_promote()"));
  Await("the standby is promoted", [&] { return second_->Answer("SELECT pg_is_in_recovery()::int") == "0"; });
}

void PostgresPair::Replace() {
  const fs::path directory = first_->Directory();
  const std::string host = first_->Host();
  first_.reset();
  first_ = std::exchange(second_, nullptr);
  second_ = SynchronousStandbyOf(*first_, directory, host);
}

} // namespace lumoscad::test
