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

OdbcConfiguration& OdbcConfiguration::instance() {
  static OdbcConfiguration unique;
  return unique;
}

namespace {

std::string setting(const char* name, const std::string& otherwise) {
  const char* value = std::getenv(name);
  return value == nullptr || *value == '\0' ? otherwise : std::string(value);
}

/// The text of the first of the files that can be read; empty where there is none.
std::string firstOf(const std::vector<fs::path>& files) {
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
  if (!setting("LUMOSCAD_PROVA_DB2", "").empty()) {
    const fs::path system = setting("ODBCSYSINI", "/etc");
    machineSources_ =
        firstOf({setting("ODBCINI", ""), fs::path(setting("HOME", "/")) / ".odbc.ini", system / "odbc.ini"});
    drivers = firstOf({system / setting("ODBCINSTINI", "odbcinst.ini")});
  }
  std::ofstream(directory_.Path() / "odbcinst.ini") << drivers;
  writeSources();
  setenv("ODBCSYSINI", directory_.Path().c_str(), 1);
  setenv("ODBCINSTINI", "odbcinst.ini", 1);
  setenv("ODBCINI", (directory_.Path() / "odbc.ini").c_str(), 1);
}

std::string OdbcConfiguration::addSource(std::string_view prefix, std::string_view library, const Settings& settings) {
  const std::string name = std::string(prefix) + std::to_string(++added_);
  std::string section = "[" + name + "]\nDriver=" + driverSection(library) + "\n";
  for (const auto& [key, value] : settings) {
    section.append(key).append("=").append(value).append("\n");
  }
  sources_[name] = section + "\n";
  writeSources();
  return name;
}

void OdbcConfiguration::removeSource(const std::string& name) {
  if (sources_.erase(name) > 0) {
    writeSources();
  }
}

std::string OdbcConfiguration::driverSection(std::string_view library) {
  if (const auto known = drivers_.find(library); known != drivers_.end()) {
    return known->second;
  }
  const fs::path path = driverLibrary(library);
  if (path.empty()) {
    throw std::runtime_error("ODBC driver not installed: " + std::string(library));
  }
  const std::string name = "lumoscad-driver" + std::to_string(drivers_.size() + 1);
  std::ofstream(directory_.Path() / "odbcinst.ini", std::ios::app)
      << "[" << name << "]\nDriver=" << path.string() << "\nThreading=2\n\n";
  drivers_.emplace(library, name);
  return name;
}

void OdbcConfiguration::writeSources() const {
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

fs::path driverLibrary(std::string_view fileName) {
  std::error_code error;
  for (const auto& entry : fs::directory_iterator("/usr/lib", error)) {
    if (const fs::path found = entry.path() / "odbc" / fileName; fs::exists(found, error)) {
      return found;
    }
  }
  const fs::path direct = fs::path("/usr/lib/odbc") / fileName;
  return fs::exists(direct, error) ? direct : fs::path();
}

std::string connectionText(std::string_view source, std::string_view user, std::string_view password) {
  std::string text = "Provider=MSDASQL.1;Persist Security Info=True;Mode=Read|Write;Connect Timeout=30;Password=";
  text.append(password).append(";User ID=").append(user).append(";Data Source=").append(source);
  return text;
}

std::string firstValue(ado::Connection& connection, std::string_view query) {
  ado::Command command;
  command.ActiveConnection = &connection;
  command.CommandText = query;
  const ado::Recordset rows = command.Execute();
  return rows.Eof() ? std::string() : std::string(rows.ValueAt(0).value_or(""));
}

void checkDataDirectory(const std::string& connectionText, std::string_view query, const fs::path& directory) {
  ado::Connection connection;
  connection.ConnectionString = connectionText;
  connection.Open();
  if (!fs::equivalent(firstValue(connection, query), directory)) {
    throw std::runtime_error("another server answers on the port");
  }
}

namespace {

/// The statements of a script on their way to a server. Rows that are inserted one after the other into the same
/// columns go as one statement: most of a test's data are such rows, and each statement costs a round trip.
class Rows {
 public:
  explicit Rows(ado::Connection& connection) : connection_(connection) {}

  void add(const std::string& statement) {
    if (statement.find_first_not_of(" \t\r\n") == std::string::npos) {
      return;
    }
    const std::string_view head = headOf(statement);
    if (!head.empty() && head == headOf(pending_) && pending_.size() < longest) {
      pending_.append(",").append(statement, head.size());
      return;
    }
    execute();
    pending_ = statement;
  }
  void execute() {
    if (!pending_.empty()) {
      connection_.Execute(pending_);
    }
    pending_.clear();
  }

 private:
  static constexpr std::size_t longest = 65536;

  /// All before the first row of an INSERT; empty for another statement.
  static std::string_view headOf(std::string_view statement) {
    constexpr std::string_view values = " VALUES ";
    const auto begin = std::min(statement.find_first_not_of(" \t\r\n"), statement.size());
    const auto end = statement.find(values);
    return statement.substr(begin).starts_with("INSERT INTO ") && end != std::string_view::npos
               ? statement.substr(0, end + values.size())
               : std::string_view();
  }

  ado::Connection& connection_;
  std::string pending_;
};

} // namespace

void runScript(const std::string& connectionText, std::string_view script) {
  ado::Connection connection;
  connection.ConnectionString = connectionText;
  connection.Open();
  runScript(connection, script);
}

void runScript(ado::Connection& connection, std::string_view script) {
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
      rows.add(statement);
      statement.clear();
    }
    rows.add(statement);
    rows.execute();
    connection.CommitTrans();
  } catch (...) {
    // Whoever opened the connection may go on with it; the first failure is the one to tell.
    connection.Close();
    throw;
  }
}

} // namespace lumoscad::test
