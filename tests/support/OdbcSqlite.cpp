#include "support/OdbcSqlite.hpp"

#include <system_error>

namespace lumoscad::test {

OdbcSqlite::OdbcSqlite(std::string_view script) {
  static int files = 0;
  auto& configuration = OdbcConfiguration::instance();
  file_ = configuration.directory() / ("db" + std::to_string(++files) + ".sqlite");
  source_ = configuration.addSource("sqlite", "libsqlite3odbc.so",
                                    {{"Database", file_.string()}, {"Timeout", "2000"}, {"FKSupport", "1"}});
  if (!script.empty()) {
    run(script);
  }
}

OdbcSqlite::~OdbcSqlite() {
  OdbcConfiguration::instance().removeSource(source_);
  std::error_code ignored;
  std::filesystem::remove(file_, ignored);
}

} // namespace lumoscad::test
