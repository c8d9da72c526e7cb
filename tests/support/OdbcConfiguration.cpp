#include "support/OdbcConfiguration.hpp"

#include "platform/ado/Ado.hpp"
#include "support/Files.hpp"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace lumoscad::test {

namespace fs = std::filesystem;

OdbcConfiguration& OdbcConfiguration::Instance() {
  static OdbcConfiguration unique;
  return unique;
}

namespace {

std::string Setting(const char* name, const std::string& otherwise) {
  const char* value = std::getenv(name);
  return value == nullptr || *value == '\0' ? otherwise : std::string(value);
}

/// The text of the first of the files that can be read; empty where there is none.
std::string FirstOf(const std::vector<fs::path>& files) {
  for (const fs::path& file : files) {
    if (fs::exists(file)) {
      return FileText(file) + '\n';
    }
  }
  return {};
}

} // namespace

OdbcConfiguration::OdbcConfiguration() {
  std::string drivers;
  if (!Setting("LUMOSCAD_PROVA_DB2", "").empty()) {
    const fs::path system = Setting("ODBCSYSINI", "/etc");
    machineSources_ =
        FirstOf({Setting("ODBCINI", ""), fs::path(Setting("HOME", "/")) / ".odbc.ini", system / "odbc.ini"});
    drivers = FirstOf({system / Setting("ODBCINSTINI", "odbcinst.ini")});
  }
  std::ofstream(directory_.Path() / "odbcinst.ini") << drivers;
  WriteSources();
  setenv("ODBCSYSINI", directory_.Path().c_str(), 1);
  setenv("ODBCINSTINI", "odbcinst.ini", 1);
  setenv("ODBCINI", (directory_.Path() / "odbc.ini").c_str(), 1);
}

std::string OdbcConfiguration::AddSource(std::string_view prefix, std::string_view library, const Settings& settings) {
  std::string name = std::string(prefix) + std::to_string(++added_);
  std::string section = "[" + name + "]\nDriver=" + DriverSection(library) + "\n";
  for (const auto& [key, value] : settings) {
    section.append(key).append("=").append(value).append("\n");
  }
  sources_[name] = section + "\n";
  WriteSources();
  return name;
}

void OdbcConfiguration::RemoveSource(const std::string& name) {
  sources_.erase(name);
}

std::string OdbcConfiguration::DriverSection(std::string_view library) {
  if (const auto known = drivers_.find(library); known != drivers_.end()) {
    return known->second;
  }
  const fs::path path = DriverLibrary(library);
  if (path.empty()) {
    throw std::runtime_error("ODBC driver not installed: " + std::string(library));
  }
  std::string name = "lumoscad-driver" + std::to_string(drivers_.size() + 1);
  std::ofstream(directory_.Path() / "odbcinst.ini", std::ios::app)
      << "[" << name << "]\nDriver=" << path.string() << "\nThreading=2\n\n";
  drivers_.emplace(library, name);
  return name;
}

void OdbcConfiguration::WriteSources() const {
  // Other processes of a test read the file at any time.
  const fs::path fresh = directory_.Path() / "odbc.ini.new";
  std::ofstream file(fresh);
  file << machineSources_;
  for (const auto& [name, section] : sources_) {
    file << section;
  }
  file.close();
  fs::rename(fresh, directory_.Path() / "odbc.ini");
}

fs::path DriverLibrary(std::string_view fileName) {
  std::error_code error;
  for (const auto& entry : fs::directory_iterator("/usr/lib", error)) {
    if (fs::path found = entry.path() / "odbc" / fileName; fs::exists(found, error)) {
      return found;
    }
  }
  const fs::path direct = fs::path("/usr/lib/odbc") / fileName;
  return fs::exists(direct, error) ? direct : fs::path();
}

std::string ConnectionText(std::string_view source, std::string_view user, std::string_view password) {
  std::string text = "Provider=MSDASQL.1;Persist Security Info=True;Mode=Read|Write;Connect Timeout=30;Password=";
  text.append(password).append(";User ID=").append(user).append(";Data Source=").append(source);
  return text;
}

std::string FirstValue(ado::Connection& connection, std::string_view query) {
  ado::Command command;
  command.ActiveConnection = &connection;
  command.CommandText = query;
  const ado::Recordset rows = command.Execute();
  return rows.Eof() ? std::string() : std::string(rows.ValueAt(0).value_or(""));
}

void CheckDataDirectory(const std::string& connectionText, std::string_view query, const fs::path& directory) {
  ado::Connection connection;
  connection.ConnectionString = connectionText;
  connection.Open();
  if (!fs::equivalent(FirstValue(connection, query), directory)) {
    throw std::runtime_error("another server answers on the port");
  }
}

namespace {

/// The statements of a script on their way to a server. Rows that are inserted one after the other into the same
/// columns go as one statement: most of a test's data are such rows, and each statement costs a round trip.
class Rows {
 public:
  explicit Rows(ado::Connection& connection) : connection_(connection) {}

  void Add(const std::string& statement) {
    if (statement.find_first_not_of(" \t\r\n") == std::string::npos) {
      return;
    }
    const std::string_view head = HeadOf(statement);
    if (!head.empty() && head == HeadOf(pending_) && pending_.size() < Longest) {
      pending_.append(",").append(statement, head.size());
      return;
    }
    Execute();
    pending_ = statement;
  }
  void Execute() {
    if (!pending_.empty()) {
      connection_.Execute(pending_);
    }
    pending_.clear();
  }

 private:
  static constexpr std::size_t Longest = 65536;

  /// All before the first row of an INSERT; empty for another statement.
  static std::string_view HeadOf(std::string_view statement) {
    constexpr std::string_view Values = " VALUES ";
    const auto begin = std::min(statement.find_first_not_of(" \t\r\n"), statement.size());
    const auto end = statement.find(Values);
    return statement.substr(begin).starts_with("INSERT INTO ") && end != std::string_view::npos
               ? statement.substr(0, end + Values.size())
               : std::string_view();
  }

  ado::Connection& connection_;
  std::string pending_;
};

} // namespace

void RunScript(const std::string& connectionText, std::string_view script) {
  ado::Connection connection;
  connection.ConnectionString = connectionText;
  connection.Open();
  RunScript(connection, script);
}

void RunScript(ado::Connection& connection, std::string_view script) {
  connection.BeginTrans();
  try {
    Rows rows(connection);
    std::string statement;
    bool quoted = false;
    for (const char c : script) {
      quoted = quoted != (c == '\'');
      if (c != ';' || quoted) {
        statement += c;
        continue;
      }
      rows.Add(statement);
      statement.clear();
    }
    rows.Add(statement);
    rows.Execute();
    connection.CommitTrans();
  } catch (...) {
    // Whoever opened the connection may go on with it; the first failure is the one to tell.
    connection.Close();
    throw;
  }
}

} // namespace lumoscad::test
