#include "support/PostgresServer.hpp"

#include "platform/RuntimeError.hpp"
#include "platform/ado/Ado.hpp"

#include <chrono>
#include <csignal>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace lumoscad::test {

namespace fs = std::filesystem;

namespace {

const fs::path Programs = "/usr/lib/postgresql/15/bin";
constexpr const char* Driver = "psqlodbcw.so";

constexpr DriverNames PostgresNames{"postgres", Driver, "Servername", "Port", "Database"};

/// The user of the server when we are root.
constexpr const char* PostgresUser = "postgres";

std::string Path(const char* name) {
  return (Programs / name).string();
}

} // namespace

bool PostgresServer::Available() {
  std::error_code error;
  return fs::exists(Programs / "postgres", error) && !DriverLibrary(Driver).empty();
}

PostgresServer::PostgresServer(fs::path directory) : DatabaseServer(std::move(directory), PostgresNames) {
  PrepareDirectory(directory_, PostgresUser);
  CreateCluster();
  StartOnFreePort(server_, [this](int port) {
    port_ = port;
    Start();
  });
}

void PostgresServer::CreateCluster() const {
  // The other way to check a password takes thousands of rounds by design, and every test connects several times.
  const std::vector<std::string> words = {Path("initdb"), "-N",  "-E", "UTF8", "--locale=C.UTF-8",
                                          "-U",           user_, "-A", "md5"};
  const fs::path data = directory_ / "data";
  FreshData(data, "postgres-" + DigestOfCreation(words.front(), words), PostgresUser, [&] {
    const fs::path secret = directory_ / "password";
    WriteSecret(secret, password_ + "\n", PostgresUser);
    auto whole = words;
    whole.insert(whole.end(), {"--pwfile=" + secret.string(), "-D", data.string()});
    ServerProcess creation(whole, directory_ / "initdb.log", PostgresUser, SIGINT);
    const bool created = creation.Succeeds();
    fs::remove(secret);
    if (!created) {
      throw std::runtime_error("initdb failed: " + EndOf(directory_ / "initdb.log"));
    }
  });
}

void PostgresServer::Start() {
  server_ = ServerProcess({Path("postgres"), "-D", (directory_ / "data").string(), "-h", "127.0.0.1", "-p",
                           std::to_string(port_), "-c", "unix_socket_directories=", "-c", "fsync=off", "-c",
                           "full_page_writes=off", "-c", "synchronous_commit=off"},
                          directory_ / "server.log", PostgresUser, SIGINT);
  AwaitAnswer("postgres", "SHOW data_directory");
}

void PostgresServer::Restart() {
  server_.Stop();
  const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  for (;;) {
    try {
      Start();
      return;
    } catch (const RuntimeError&) {
      // After a kill the sessions of the old server may still be on their way out, and hold its memory.
      if (std::chrono::steady_clock::now() > limit) {
        throw;
      }
    }
  }
}

std::string PostgresServer::CreateDatabase(std::string_view name, std::string_view script) {
  ado::Connection connection;
  connection.ConnectionString = ConnectionText(system_);
  connection.Open();
  connection.Execute("CREATE DATABASE " + std::string(name));
  connection.Close();
  std::string source = AddSource(name);
  if (!script.empty()) {
    RunScript(ConnectionText(source), script);
  }
  return source;
}

void PostgresServer::DropConnections(std::string_view source) const {
  ado::Connection connection;
  connection.ConnectionString = ConnectionText(source);
  connection.Open();
  ado::Command command;
  command.ActiveConnection = &connection;
  command.CommandText = "SELECT pg_terminate_backend(pid) FROM pg_stat_activity WHERE pid <> pg_backend_pid()";
  command.Execute();
}

} // namespace lumoscad::test
