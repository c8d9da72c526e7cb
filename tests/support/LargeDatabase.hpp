#pragma once

#include "support/Files.hpp"
#include "support/Paths.hpp"
#include "support/PostgresServer.hpp"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace lumoscad::test {

/// A PostgreSQL server with the demonstration's accounting in a size of choice.
class LargeDatabase {
 public:
  /// Creates the server in `directory` and fills it with `instalments` open instalments and, besides the presumed
  /// documents that are always there, `presumed` rows of customers' ones.
  LargeDatabase(std::filesystem::path directory, long instalments, long presumed = 0) : server_(std::move(directory)) {
    source_ = server_.CreateDatabase("grande",
                                     Read(SourcePath("demo/schema.sql")) + Output(instalments, presumed) + "ANALYZE;");
  }

  [[nodiscard]] std::string ConnectionText() const { return server_.ConnectionText(source_); }
  /// A command line that reaches the database.
  [[nodiscard]] std::string command() const { return "BANCA " + Options(); }
  /// The options of a command that reaches the database.
  [[nodiscard]] std::string Options() const {
    return "-DB2SOURCE " + source_ + " -DB2USER " + server_.User() + " -DB2PASS " + server_.Password() +
           " -DB2SCHEMA public";
  }

 private:
  static std::string Read(const std::filesystem::path& path) { return WithoutComments(FileText(path)); }

  /// A ";" in a comment would end a statement.
  static std::string WithoutComments(const std::string& script) {
    std::string kept;
    for (std::size_t at = 0; at < script.size();) {
      const auto end = std::min(script.find('\n', at), script.size() - 1) + 1;
      if (script.compare(at, 2, "--") != 0) {
        kept.append(script, at, end - at);
      }
      at = end;
    }
    return kept;
  }

  static std::string Output(long instalments, long presumed) {
    const std::string command = "'" + ProgramPath("lumoscad-genera").string() + "' 2006-03-05 " +
                                std::to_string(instalments) + " " + std::to_string(presumed);
    struct Close {
      void operator()(std::FILE* pipe) const { pclose(pipe); }
    };
    const std::unique_ptr<std::FILE, Close> pipe(popen(command.c_str(), "r"));
    if (!pipe) {
      throw std::runtime_error("cannot start the generator");
    }
    std::string text;
    std::array<char, 65536> piece{};
    while (const std::size_t got = std::fread(piece.data(), 1, piece.size(), pipe.get())) {
      text.append(piece.data(), got);
    }
    return WithoutTransaction(std::move(text));
  }

  /// The whole script runs in one transaction already.
  static std::string WithoutTransaction(std::string text) {
    constexpr std::string_view Begin = "BEGIN;\n";
    constexpr std::string_view Commit = "COMMIT;\n";
    if (!text.starts_with(Begin) || !text.ends_with(Commit)) {
      throw std::runtime_error("the generator wrote no data");
    }
    return text.substr(Begin.size(), text.size() - Begin.size() - Commit.size());
  }

  PostgresServer server_;
  std::string source_;
};

} // namespace lumoscad::test
