#pragma once

#include "support/DatabaseServer.hpp"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::test {

/// The user of the server when we are root.
inline constexpr const char* PostgresUser = "postgres";
inline constexpr DriverNames PostgresNames{"postgres", "psqlodbcw.so", "Servername", "Port", "Database"};

/// True where the server's programs and the ODBC driver are installed.
[[nodiscard]] bool PostgresInstalled();
/// The full path of one of the server's programs.
[[nodiscard]] std::string PostgresProgram(std::string_view name);

/// Makes the data of a server in the folder "data" of `directory`, with one user, who may do everything.
void CreatePostgresData(const std::filesystem::path& directory, const std::string& user, const std::string& password);

/// The command line of a server on the data in `directory`: the data live as long as the test.
[[nodiscard]] std::vector<std::string> PostgresWords(const std::filesystem::path& directory, const std::string& host,
                                                     int port);

} // namespace lumoscad::test
