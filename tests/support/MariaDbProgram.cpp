#include "support/MariaDbProgram.hpp"

#include <csignal>
#include <stdexcept>
#include <system_error>

namespace lumoscad::test {

namespace fs = std::filesystem;

namespace {

const fs::path Creator = "/usr/bin/mariadb-install-db";

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

bool MariaDbInstalled() {
  std::error_code error;
  return fs::exists(MariaDbProgram, error) && fs::exists(Creator, error) &&
         !DriverLibrary(MariaDbNames.library).empty();
}

void PrepareMariaDb(const fs::path& directory) {
  PrepareDirectory(directory, MariaDbUser);
  PrepareDirectory(directory / Temporary, MariaDbUser);
}

void CreateMariaDbData(const fs::path& directory) {
  const auto words =
      Small({Creator.string(), "--no-defaults", "--auth-root-authentication-method=normal", "--skip-test-db"});
  const fs::path data = directory / "data";
  FreshData(data, "mariadb-" + DigestOfCreation(MariaDbProgram, words), MariaDbUser, [&] {
    auto whole = words;
    whole.insert(whole.end(), {"--datadir=" + data.string(), "--tmpdir=" + (directory / Temporary).string()});
    ServerProcess creation(whole, directory / "creation.log", MariaDbUser, SIGTERM);
    if (!creation.Succeeds()) {
      throw std::runtime_error("mariadb-install-db failed: " + EndOf(directory / "creation.log"));
    }
  });
}

std::vector<std::string> MariaDbWords(const fs::path& directory, int port) {
  // The socket's name is relative to the data: a path in the build folder may be longer than a socket's may be. The
  // collation tells letters' cases and accents apart, as the host's database does.
  return Small({MariaDbProgram.string(), "--no-defaults", "--datadir=" + (directory / "data").string(),
                "--tmpdir=" + (directory / Temporary).string(), "--bind-address=127.0.0.1",
                "--port=" + std::to_string(port), "--socket=server.sock", "--character-set-server=utf8mb4",
                "--collation-server=utf8mb4_bin"});
}

fs::path WriteMariaDbUsers(const fs::path& directory, const std::string& user, const std::string& password) {
  fs::path secret = directory / "users.sql";
  WriteSecret(secret,
              "CREATE USER IF NOT EXISTS '" + user + "'@'%' IDENTIFIED BY '" + password + "';\nGRANT ALL ON *.* TO '" +
                  user + "'@'%' WITH GRANT OPTION;\n",
              MariaDbUser);
  return secret;
}

} // namespace lumoscad::test
