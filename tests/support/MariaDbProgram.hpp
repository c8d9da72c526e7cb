#pragma once

#include "support/DatabaseServer.hpp"

#include <filesystem>
#include <string>
#include <vector>

namespace lumoscad::test {

/// The server's program.
inline const std::filesystem::path MariaDbProgram = "/usr/sbin/mariadbd";
/// The user of the server when we are root: one that every system has.
inline constexpr const char* MariaDbUser = "nobody";
inline constexpr DriverNames MariaDbNames{"mariadb", "libmaodbc.so", "SERVER", "PORT", "DATABASE"};

/// True where the server's programs and the ODBC driver are installed.
[[nodiscard]] bool MariaDbInstalled();
/// Makes `directory` and the folder of the server's temporary tables in it.
void PrepareMariaDb(const std::filesystem::path& directory);
/// Fills `directory`/data with a new server's system tables.
void CreateMariaDbData(const std::filesystem::path& directory);
/// The words that start a small server without durability on the data in `directory`.
[[nodiscard]] std::vector<std::string> MariaDbWords(const std::filesystem::path& directory, int port);
/// A file of the statements that make the tests' user, for a server's first start. It holds the password.
[[nodiscard]] std::filesystem::path WriteMariaDbUsers(const std::filesystem::path& directory, const std::string& user,
                                                      const std::string& password);

} // namespace lumoscad::test
