#pragma once

#include "support/Files.hpp"

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lumoscad::ado {
class Connection;
}

namespace lumoscad::test {

/// The ODBC configuration of the test process: a directory of its own with odbc.ini and odbcinst.ini, to which the
/// process is pointed by environment variables, removed at its end. Nothing of the machine's configuration is seen,
/// unless LUMOSCAD_PROVA_DB2 names data sources in it: the two files then begin as copies of the machine's. The driver
/// manager remembers where it looked first, so there is one for the process; the names of data sources are therefore
/// never used twice.
class OdbcConfiguration {
 public:
  using Settings = std::vector<std::pair<std::string, std::string>>;

  /// The one configuration, put in place on first use: call it before any connection is opened.
  static OdbcConfiguration& Instance();

  OdbcConfiguration(const OdbcConfiguration&) = delete;
  OdbcConfiguration& operator=(const OdbcConfiguration&) = delete;
  ~OdbcConfiguration() = default;

  /// Adds a data source on the driver library `library` (its bare file name) and returns its name, which begins with
  /// `prefix`. Raises when the library is not installed.
  std::string AddSource(std::string_view prefix, std::string_view library, const Settings& settings);
  /// Takes a data source out again, at the latest when the next one is added: the drivers read the whole file for every
  /// attribute of a connection, and each writing makes a file.
  void RemoveSource(const std::string& name);
  [[nodiscard]] const std::filesystem::path& Directory() const noexcept { return directory_.Path(); }

 private:
  OdbcConfiguration();
  /// The section of odbcinst.ini for a driver library, written on its first use.
  std::string DriverSection(std::string_view library);
  void WriteSources() const;

  TemporaryFolder directory_;
  std::string machineSources_;                              ///< what odbc.ini began with
  std::map<std::string, std::string> sources_;              ///< the sections of odbc.ini by name
  std::map<std::string, std::string, std::less<>> drivers_; ///< the names of sections of odbcinst.ini by library
  int added_ = 0;
};

/// The full path of an installed ODBC driver library; empty where there is none.
[[nodiscard]] std::filesystem::path DriverLibrary(std::string_view fileName);

/// A connection text as the component writes it.
[[nodiscard]] std::string ConnectionText(std::string_view source, std::string_view user = {},
                                         std::string_view password = {});

/// The first value of the first row of a query; empty where there is none.
[[nodiscard]] std::string FirstValue(ado::Connection& connection, std::string_view query);

/// Connects and asks the server with `query` where its data are; raises unless that is `directory`. Another test's
/// server may have taken the port, and it knows our user.
void CheckDataDirectory(const std::string& connectionText, std::string_view query,
                        const std::filesystem::path& directory);

/// Runs the statements of an SQL script, separated by ";", over an open connection text.
void RunScript(const std::string& connectionText, std::string_view script);
/// The same over an open connection.
void RunScript(ado::Connection& connection, std::string_view script);

} // namespace lumoscad::test
