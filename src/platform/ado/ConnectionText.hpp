#pragma once

#include <string>
#include <string_view>

namespace lumoscad::ado {

/// The settings that a connection text carries.
struct ConnectionSettings {
  std::string DataSource;
  std::string UserId;
  std::string Password;
  int connectTimeout = 30;   ///< seconds
  bool existingOnly = false; ///< not of the text: a database that is a file is not created where there is none
};

/// Reads a connection text: `keyword=value` pairs separated by ";", keywords in any case with blanks at their
/// ends ignored, values plain or quoted with " or ' (a doubled quote inside stands for one), the last duplicate
/// wins; unknown keywords are ignored. Raises a run-time error with an Italian text, which never holds a value,
/// when the text is malformed.
[[nodiscard]] ConnectionSettings ReadConnectionText(std::string_view connectionText);

/// Writes the settings as an ODBC connection string: DSN, UID and PWD, values in braces where they need them.
/// Raises a run-time error for an empty data source, or for a value that no ODBC connection string can carry
/// or that has more than 1000 bytes.
[[nodiscard]] std::string OdbcText(const ConnectionSettings& parsed);

} // namespace lumoscad::ado
