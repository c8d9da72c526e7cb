#include "support/PostgresServer.hpp"

#include "platform/Errore.hpp"
#include "platform/ado/Ado.hpp"

#include <arpa/inet.h>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <netinet/in.h>
#include <pwd.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <vector>

namespace lumoscad::test {

namespace fs = std::filesystem;

namespace {

const fs::path programs = "/usr/lib/postgresql/15/bin";
constexpr const char* driver = "psqlodbcw.so";

int freePort() {
  const int socketHandle = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  const bool bound = bind(socketHandle, reinterpret_cast<sockaddr*>(&address), length) == 0 &&
                     getsockname(socketHandle, reinterpret_cast<sockaddr*>(&address), &length) == 0;
  close(socketHandle);
  if (!bound)
    throw std::runtime_error("no free loopback port");
  return ntohs(address.sin_port);
}

/// Starts a program of the server, as the user postgres where we are root, with its output in `log`.
pid_t launch(std::vector<std::string> words, const fs::path& log) {
  words.front() = (programs / words.front()).string();
  if (geteuid() == 0) {
    const std::vector<std::string> prefix = {"/usr/bin/setpriv", "--reuid=postgres", "--regid=postgres",
                                             "--clear-groups",   "--pdeathsig=INT",  "--"};
    words.insert(words.begin(), prefix.begin(), prefix.end());
  }
  std::vector<char*> arguments;
  for (std::string& word : words)
    arguments.push_back(word.data());
  arguments.push_back(nullptr);
  const pid_t child = fork();
  if (child < 0)
    throw std::system_error(errno, std::generic_category(), "fork");
  if (child == 0) {
    prctl(PR_SET_PDEATHSIG, SIGINT);
    const int output = open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    dup2(output, STDOUT_FILENO);
    dup2(output, STDERR_FILENO);
    execv(arguments.front(), arguments.data());
    _exit(127);
  }
  return child;
}

void chownToServer(const fs::path& path) {
  if (geteuid() != 0)
    return;
  const passwd* owner = getpwnam("postgres");
  if (owner == nullptr || chown(path.c_str(), owner->pw_uid, owner->pw_gid) != 0)
    throw std::runtime_error("cannot hand " + path.string() + " to the user postgres");
}

} // namespace

bool PostgresServer::available() {
  std::error_code error;
  return fs::exists(programs / "postgres", error) && !driverLibrary(driver).empty();
}

PostgresServer::PostgresServer(fs::path directory) : directory_(std::move(directory)) {
  fs::remove_all(directory_);
  fs::create_directories(directory_);
  fs::permissions(directory_, fs::perms::owner_all);
  chownToServer(directory_);
  createCluster();
  start();
}

PostgresServer::~PostgresServer() {
  stop();
  std::error_code ignored;
  fs::remove_all(directory_, ignored);
}

void PostgresServer::createCluster() const {
  const fs::path secret = directory_ / "password";
  std::ofstream(secret) << password_ << '\n';
  chownToServer(secret);
  const pid_t child = launch({"initdb", "-N", "-E", "UTF8", "--locale=C.UTF-8", "-U", user_, "-A", "scram-sha-256",
                              "--pwfile=" + secret.string(), "-D", (directory_ / "data").string()},
                             directory_ / "initdb.log");
  int status = 0;
  waitpid(child, &status, 0);
  fs::remove(secret);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
    throw std::runtime_error("initdb failed");
}

void PostgresServer::start() {
  port_ = freePort();
  process_ = launch({"postgres", "-D", (directory_ / "data").string(), "-h", "127.0.0.1", "-p", std::to_string(port_),
                     "-c", "unix_socket_directories=", "-c", "fsync=off", "-c", "full_page_writes=off", "-c",
                     "synchronous_commit=off"},
                    directory_ / "server.log");
  waitUntilReady();
}

void PostgresServer::waitUntilReady() {
  const std::string text = connectionText(addSource("postgres"));
  const auto limit = std::chrono::steady_clock::now() + std::chrono::minutes(1);
  for (;;) {
    try {
      ado::Connection connection;
      connection.ConnectionString = text;
      connection.Open();
      return;
    } catch (const ErroreRuntime&) {
      if (waitpid(process_, nullptr, WNOHANG) == process_)
        process_ = -1;
      if (process_ < 0 || std::chrono::steady_clock::now() > limit) {
        stop();
        throw;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
  }
}

std::string PostgresServer::addSource(std::string_view database) const {
  return OdbcConfiguration::instance().addSource(
      "postgres", driver,
      {{"Servername", "127.0.0.1"}, {"Port", std::to_string(port_)}, {"Database", std::string(database)}});
}

std::string PostgresServer::createDatabase(std::string_view name, std::string_view script) {
  ado::Connection connection;
  connection.ConnectionString = connectionText(addSource("postgres"));
  connection.Open();
  connection.Execute("CREATE DATABASE " + std::string(name));
  connection.Close();
  std::string source = addSource(name);
  if (!script.empty())
    runScript(connectionText(source), script);
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

void PostgresServer::stop() {
  if (process_ <= 0)
    return;
  kill(process_, SIGINT);
  for (int i = 0; i < 200; ++i) {
    if (waitpid(process_, nullptr, WNOHANG) == process_) {
      process_ = -1;
      return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(25));
  }
  kill(process_, SIGKILL);
  waitpid(process_, nullptr, 0);
  process_ = -1;
}

} // namespace lumoscad::test
