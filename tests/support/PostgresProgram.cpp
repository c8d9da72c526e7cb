#include "support/PostgresProgram.hpp"

#include <csignal>
#include <stdexcept>
#include <system_error>

namespace lumoscad::test {

namespace fs = std::filesystem;

namespace {

const fs::path Programs = "/usr/lib/postgresql/15/bin";

} // namespace

bool PostgresInstalled() {
  std::error_code error;
  return fs::exists(Programs / "postgres", error) && !DriverLibrary(PostgresNames.library).empty();
}

std::string PostgresProgram(std::string_view name) {
  return (Programs / name).string();
}

void CreatePostgresData(const fs::path& directory, const std::string& user, const std::string& password) {
  // The other way to check a password takes thousands of rounds by design, and every test connects several times.
  const std::vector<std::string> words = {
      PostgresProgram("initdb"), "-N", "-E", "UTF8", "--locale=C.UTF-8", "-U", user, "-A", "md5"};
  const fs::path data = directory / "data";
  FreshData(data, "postgres-" + DigestOfCreation(words.front(), words), PostgresUser, [&] {
    const fs::path secret = directory / "password";
    WriteSecret(secret, password + "\n", PostgresUser);
    auto whole = words;
    whole.insert(whole.end(), {"--pwfile=" + secret.string(), "-D", data.string()});
    ServerProcess creation(whole, directory / "initdb.log", PostgresUser, SIGINT);
    const bool created = creation.Succeeds();
    fs::remove(secret);
    if (!created) {
      throw std::runtime_error("initdb failed: " + EndOf(directory / "initdb.log"));
    }
  });
}

std::vector<std::string> PostgresWords(const fs::path& directory, const std::string& host, int port) {
  return {PostgresProgram("postgres"), "-D", (directory / "data").string(), "-h", host,        "-p",
          std::to_string(port),        "-c", "unix_socket_directories=",    "-c", "fsync=off", "-c",
          "full_page_writes=off"};
}

} // namespace lumoscad::test
