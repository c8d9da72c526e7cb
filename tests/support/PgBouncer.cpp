#include "support/PgBouncer.hpp"

#include "platform/base/Descriptor.hpp"
#include "support/Loopback.hpp"
#include "support/PostgresProgram.hpp"

#include <csignal>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace lumoscad::test {

namespace fs = std::filesystem;

namespace {

const fs::path Program = "/usr/sbin/pgbouncer";

} // namespace

bool PgBouncer::Available() {
  std::error_code error;
  return PostgresInstalled() && fs::exists(Program, error);
}

PgBouncer::PgBouncer(fs::path directory, const PostgresServer& server, std::string_view settings)
    : DatabaseServer(std::move(directory), PostgresNames) {
  PrepareDirectory(directory_, PostgresUser);
  StartOnFreePort(server_, [&](int port) {
    port_ = port;
    Start(server, settings);
  });
}

void PgBouncer::Start(const PostgresServer& server, std::string_view settings) {
  const fs::path users = directory_ / "users.txt";
  const fs::path configuration = directory_ / "pgbouncer.ini";
  WriteSecret(users, "\"" + user_ + "\" \"" + password_ + "\"\n", PostgresUser);
  WriteSecret(configuration,
              "[databases]\n* = host=127.0.0.1 port=" + std::to_string(server.Port()) +
                  "\n[pgbouncer]\nlisten_addr=127.0.0.1\nlisten_port=" + std::to_string(port_) +
                  "\nunix_socket_dir=\nauth_type=md5\nauth_file=" + users.string() + "\n" + std::string(settings) +
                  "\n",
              PostgresUser);
  server_ = ServerProcess({Program.string(), configuration.string()}, directory_ / "server.log", PostgresUser, SIGINT);
  // Nothing is asked of a database, so that the pooler has no connection of its own yet.
  Await("the pooler listens", [&] {
    if (!server_.Runs()) {
      throw std::runtime_error("pgbouncer: " + EndOf(directory_ / "server.log"));
    }
    return Attach(port_).Opened();
  });
}

} // namespace lumoscad::test
