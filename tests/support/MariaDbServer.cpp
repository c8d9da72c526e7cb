#include "support/MariaDbServer.hpp"

#include "platform/ado/Ado.hpp"
#include "support/GaleraCluster.hpp"
#include "support/MariaDbProgram.hpp"

#include <csignal>
#include <utility>

namespace lumoscad::test {

namespace fs = std::filesystem;

bool MariaDbServer::Available() {
  return MariaDbInstalled();
}

MariaDbServer::MariaDbServer(fs::path directory) : DatabaseServer(std::move(directory), MariaDbNames) {
  PrepareMariaDb(directory_);
  CreateMariaDbData(directory_);
  StartOnFreePort(server_, [this](int port) {
    port_ = port;
    Start();
  });
}

MariaDbServer::MariaDbServer(GaleraCluster& cluster) : DatabaseServer({}, MariaDbNames) {
  port_ = cluster.Node(0).Port();
  LeadTo(cluster.Hosts());
  system_ = AddSource("mysql");
}

void MariaDbServer::Start() {
  const fs::path secret = WriteMariaDbUsers(directory_, user_, password_);
  auto words = MariaDbWords(directory_, port_);
  words.push_back("--init-file=" + secret.string());
  server_ = ServerProcess(std::move(words), directory_ / "server.log", MariaDbUser, SIGTERM);
  AwaitAnswer("mysql", "SELECT @@datadir");
  fs::remove(secret);
}

void MariaDbServer::Restart() {
  server_.Stop();
  Start();
}

std::string MariaDbServer::CreateDatabase(std::string_view name, std::string_view script) {
  const std::string text(name);
  RunScript(kept_.To(ConnectionText(system_)),
            "CREATE DATABASE " + text + ";USE " + text + ";" + std::string(script) + ";USE mysql");
  return AddSource(name);
}

void MariaDbServer::DropDatabase(std::string_view name) const {
  ado::Connection connection;
  connection.ConnectionString = ConnectionText(system_);
  connection.Open();
  connection.Execute("DROP DATABASE " + std::string(name));
}

void MariaDbServer::DropConnections(std::string_view source) const {
  ado::Connection connection;
  connection.ConnectionString = ConnectionText(source);
  connection.Open();
  ado::Command command;
  command.ActiveConnection = &connection;
  command.CommandText = "SELECT ID FROM information_schema.PROCESSLIST WHERE ID<>CONNECTION_ID() AND USER=?";
  command.Parameters = {user_};
  for (ado::Recordset rows = command.Execute(); !rows.Eof(); rows.MoveNext()) {
    connection.Execute("KILL " + std::string(rows.ValueAt(0).value_or("")));
  }
}

} // namespace lumoscad::test
