#include "support/MariaDbServer.hpp"

#include "platform/ado/Ado.hpp"

#include <csignal>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <vector>

namespace lumoscad::test {

namespace fs = std::filesystem;

namespace {

const fs::path Program = "/usr/sbin/mariadbd";
const fs::path Creator = "/usr/bin/mariadb-install-db";

constexpr DriverNames MariaDbNames{"mariadb", MariaDbServer::Driver, "SERVER", "PORT", "DATABASE"};

/// The user of the server when we are root: one that every system has.
constexpr const char* MariaDbUser = "nobody";

/// The folder of a server's temporary tables. A server that starts removes those that it finds, another's too.
constexpr const char* Temporary = "tmp";

/// Small and without durability: the data live as long as the test.
std::vector<std::string> Small(std::vector<std::string> words) {
  for (const char* option :
       {"--innodb-buffer-pool-size=16M", "--innodb-log-file-size=8M", "--innodb-flush-method=nosync",
        "--innodb-flush-log-at-trx-commit=0", "--innodb-doublewrite=0", "--innodb-stats-persistent=0",
        "--innodb-fast-shutdown=2", "--sync-frm=0", "--key-buffer-size=256K", "--aria-pagecache-buffer-size=1M",
        "--skip-name-resolve"}) {
    words.emplace_back(option);
  }
  return words;
}

} // namespace

bool MariaDbServer::Available() {
  std::error_code error;
  return fs::exists(Program, error) && fs::exists(Creator, error) && !DriverLibrary(Driver).empty();
}

MariaDbServer::MariaDbServer(fs::path directory) : DatabaseServer(std::move(directory), MariaDbNames) {
  PrepareDirectory(directory_, MariaDbUser);
  PrepareDirectory(directory_ / Temporary, MariaDbUser);
  CreateData();
  StartOnFreePort(server_, [this](int port) {
    port_ = port;
    Start();
  });
}

void MariaDbServer::CreateData() const {
  const auto words =
      Small({Creator.string(), "--no-defaults", "--auth-root-authentication-method=normal", "--skip-test-db"});
  const fs::path data = directory_ / "data";
  FreshData(data, "mariadb-" + DigestOfCreation(Program, words), MariaDbUser, [&] {
    auto whole = words;
    whole.insert(whole.end(), {"--datadir=" + data.string(), "--tmpdir=" + (directory_ / Temporary).string()});
    ServerProcess creation(whole, directory_ / "creation.log", MariaDbUser, SIGTERM);
    if (!creation.Succeeds()) {
      throw std::runtime_error("mariadb-install-db failed: " + EndOf(directory_ / "creation.log"));
    }
  });
}

void MariaDbServer::Start() {
  const fs::path secret = directory_ / "users.sql";
  WriteSecret(secret,
              "CREATE USER IF NOT EXISTS '" + user_ + "'@'%' IDENTIFIED BY '" + password_ +
                  "';\nGRANT ALL ON *.* TO '" + user_ + "'@'%' WITH GRANT OPTION;\n",
              MariaDbUser);
  // The socket's name is relative to the data: a path in the build folder may be longer than a socket's may be. The
  // collation tells letters' cases and accents apart, as the host's database does.
  server_ = ServerProcess(Small({Program.string(), "--no-defaults", "--datadir=" + (directory_ / "data").string(),
                                 "--tmpdir=" + (directory_ / Temporary).string(), "--init-file=" + secret.string(),
                                 "--bind-address=127.0.0.1", "--port=" + std::to_string(port_), "--socket=server.sock",
                                 "--character-set-server=utf8mb4", "--collation-server=utf8mb4_bin"}),
                          directory_ / "server.log", MariaDbUser, SIGTERM);
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
