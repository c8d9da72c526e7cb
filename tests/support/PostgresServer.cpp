#include "support/PostgresServer.hpp"

#include "platform/RuntimeError.hpp"
#include "platform/ado/Ado.hpp"
#include "support/PostgresProgram.hpp"

#include <chrono>
#include <csignal>
#include <utility>

namespace lumoscad::test {

namespace fs = std::filesystem;

bool PostgresServer::Available() {
  return PostgresInstalled();
}

PostgresServer::PostgresServer(fs::path directory) : DatabaseServer(std::move(directory), PostgresNames) {
  PrepareDirectory(directory_, PostgresUser);
  CreatePostgresData(directory_, user_, password_);
  StartOnFreePort(server_, [this](int port) {
    port_ = port;
    Start();
  });
}

void PostgresServer::Start() {
  auto words = PostgresWords(directory_, host_, port_);
  words.insert(words.end(), {"-c", "synchronous_commit=off"});
  server_ = ServerProcess(std::move(words), directory_ / "server.log", PostgresUser, SIGINT);
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
