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

const fs::path programs = "/usr/lib/postgresql/15/bin";
constexpr const char* driver = "psqlodbcw.so";

/// The user of the server when we are root.
constexpr const char* postgresUser = "postgres";

std::string path(const char* name) {
  return (programs / name).string();
}

} // namespace

bool PostgresServer::available() {
  std::error_code error;
  return fs::exists(programs / "postgres", error) && !driverLibrary(driver).empty();
}

PostgresServer::PostgresServer(fs::path directory) : directory_(std::move(directory)) {
  prepareDirectory(directory_, postgresUser);
  createCluster();
  startOnFreePort(server_, [this](int port) {
    port_ = port;
    start();
  });
}

PostgresServer::~PostgresServer() {
  server_.stop();
  std::error_code ignored;
  fs::remove_all(directory_, ignored);
}

void PostgresServer::createCluster() const {
  // The other way to check a password takes thousands of rounds by design, and every test connects several times.
  const std::vector<std::string> words = {path("initdb"), "-N",  "-E", "UTF8", "--locale=C.UTF-8",
                                          "-U",           user_, "-A", "md5"};
  const fs::path data = directory_ / "data";
  freshData(data, "postgres-" + digestOfCreation(words.front(), words), postgresUser, [&] {
    const fs::path secret = directory_ / "password";
    writeSecret(secret, password_ + "\n", postgresUser);
    auto whole = words;
    whole.insert(whole.end(), {"--pwfile=" + secret.string(), "-D", data.string()});
    ServerProcess creation(whole, directory_ / "initdb.log", postgresUser, SIGINT);
    const bool created = creation.succeeds();
    fs::remove(secret);
    if (!created) {
      throw std::runtime_error("initdb failed: " + endOf(directory_ / "initdb.log"));
    }
  });
}

void PostgresServer::start() {
  server_ = ServerProcess({path("postgres"), "-D", (directory_ / "data").string(), "-h", "127.0.0.1", "-p",
                           std::to_string(port_), "-c", "unix_socket_directories=", "-c", "fsync=off", "-c",
                           "full_page_writes=off", "-c", "synchronous_commit=off"},
                          directory_ / "server.log", postgresUser, SIGINT);
  OdbcConfiguration::instance().removeSource(system_);
  system_ = addSource("postgres");
  const std::string text = connectionText(system_);
  waitUntilReady(server_, [&] { checkDataDirectory(text, "SHOW data_directory", directory_ / "data"); });
}

void PostgresServer::restart() {
  server_.stop();
  const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  for (;;) {
    try {
      start();
      return;
    } catch (const RuntimeError&) {
      // After a kill the sessions of the old server may still be on their way out, and hold its memory.
      if (std::chrono::steady_clock::now() > limit) {
        throw;
      }
    }
  }
}

std::string PostgresServer::addSource(std::string_view database, int port,
                                      const OdbcConfiguration::Settings& more) const {
  OdbcConfiguration::Settings settings{{"Servername", "127.0.0.1"},
                                       {"Port", std::to_string(port == 0 ? port_ : port)},
                                       {"Database", std::string(database)}};
  settings.insert(settings.end(), more.begin(), more.end());
  return OdbcConfiguration::instance().addSource("postgres", driver, settings);
}

std::string PostgresServer::createDatabase(std::string_view name, std::string_view script) {
  ado::Connection connection;
  connection.ConnectionString = connectionText(system_);
  connection.Open();
  connection.Execute("CREATE DATABASE " + std::string(name));
  connection.Close();
  std::string source = addSource(name);
  if (!script.empty()) {
    runScript(connectionText(source), script);
  }
  return source;
}

void PostgresServer::dropConnections(std::string_view source) const {
  ado::Connection connection;
  connection.ConnectionString = connectionText(source);
  connection.Open();
  ado::Command command;
  command.ActiveConnection = &connection;
  command.CommandText = "SELECT pg_terminate_backend(pid) FROM pg_stat_activity WHERE pid <> pg_backend_pid()";
  command.Execute();
}

} // namespace lumoscad::test
