#pragma once

#include "support/PostgresServer.hpp"

#include <filesystem>
#include <string>
#include <string_view>

namespace lumoscad::test {

/// A pooler before the databases of a PostgreSQL server (https://www.pgbouncer.org/config.html), on a free loopback
/// port. It ends with the object.
class PgBouncer final : public DatabaseServer {
 public:
  /// True where the program is installed.
  [[nodiscard]] static bool Available();

  /// Starts the pooler with its files in `directory`; `settings` are further lines of its configuration.
  PgBouncer(std::filesystem::path directory, const PostgresServer& server, std::string_view settings);

 private:
  void Start(const PostgresServer& server, std::string_view settings);
};

} // namespace lumoscad::test
