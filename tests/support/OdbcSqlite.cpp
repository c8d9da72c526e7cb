#include "support/OdbcSqlite.hpp"

#include <system_error>

namespace lumoscad::test {

OdbcSqlite::OdbcSqlite(std::string_view script) {
  static int files = 0;
  auto& configuration = OdbcConfiguration::Instance();
  file_ = configuration.Directory() / ("db" + std::to_string(++files) + ".sqlite");
  source_ = configuration.AddSource("sqlite", "libsqlite3odbc.so",
                                    {{"Database", file_.string()}, {"Timeout", "2000"}, {"FKSupport", "1"}});
  if (!script.empty()) {
    Run(script);
  }
}

OdbcSqlite::~OdbcSqlite() {
  OdbcConfiguration::Instance().RemoveSource(source_);
  std::error_code ignored;
  std::filesystem::remove(file_, ignored);
}

} // namespace lumoscad::test
