#pragma once

#include "support/OdbcConfiguration.hpp"

#include <filesystem>
#include <string>
#include <string_view>

namespace lumoscad::test {

/// A SQLite database file with a data source of its own; both go with the object or the process.
class OdbcSqlite {
 public:
  /// Creates the database and runs `script` (statements separated by ";") in it.
  explicit OdbcSqlite(std::string_view script = {});
  OdbcSqlite(const OdbcSqlite&) = delete;
  OdbcSqlite& operator=(const OdbcSqlite&) = delete;
  ~OdbcSqlite();

  [[nodiscard]] const std::string& Source() const noexcept { return source_; } ///< data source name
  [[nodiscard]] const std::filesystem::path& File() const noexcept { return file_; }
  [[nodiscard]] std::string ConnectionText() const { return test::ConnectionText(source_); }
  void Run(std::string_view script) const { RunScript(ConnectionText(), script); }

 private:
  std::filesystem::path file_;
  std::string source_;
};

} // namespace lumoscad::test
