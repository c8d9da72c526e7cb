#pragma once

#include "support/DatabaseContext.hpp"

#include <string>
#include <vector>

namespace lumoscad::test {

/// DB2, reached as the environment says:
///   LUMOSCAD_PROVA_DB2           data sources of the machine's ODBC configuration, separated by ","; each leads to a
///                                schema of its own, which the tests empty and fill (`CurrentSchema` of the source)
///   LUMOSCAD_PROVA_DB2_UTENTE    the user
///   LUMOSCAD_PROVA_DB2_PASSWORD  the user's password
/// A test takes as many sources as it needs databases at once: three are enough.
class Db2Context final : public DatabaseContext {
 public:
  /// True where the environment names a source.
  [[nodiscard]] static bool Named();

  Db2Context();
  [[nodiscard]] std::unique_ptr<TestDatabase> Create(const std::string& script) override;
  [[nodiscard]] const Quirks& quirks() const noexcept override;
  [[nodiscard]] std::string LongText() const override { return "CLOB(1M)"; }
  [[nodiscard]] std::string AsText(const std::string& expression) const override;
  [[nodiscard]] std::vector<std::string> RefuseUpdate(const std::string& table, const std::string& condition,
                                                      const std::string& message) const override;
  /// Forces the other applications of the same user off; needs an authority that allows it.
  void DropConnections(const TestDatabase& database) const override;

 private:
  struct Borrowed;

  std::vector<std::string> free_; ///< sources that no test holds
  std::string user_;
  std::string password_;
};

} // namespace lumoscad::test
