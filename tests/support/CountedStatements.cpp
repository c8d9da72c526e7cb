#include "support/CountedStatements.hpp"

#include "support/DriverManager.hpp"

#include <sql.h>

namespace lumoscad::test {
namespace {

CountedStatements* listening = nullptr;

} // namespace

CountedStatements::CountedStatements() {
  listening = this;
}

CountedStatements::~CountedStatements() {
  listening = nullptr;
}

void CountedStatements::Prepared(const void* statement, std::string_view text) {
  latest_[statement] = preparations_.size();
  preparations_.push_back({std::string(text), 0});
}

void CountedStatements::Executed(const void* statement) {
  if (const auto ultima = latest_.find(statement); ultima != latest_.end()) {
    ++preparations_[ultima->second].executions;
  }
}

std::size_t CountedStatements::Preparations(std::string_view begin) const {
  std::size_t howMany = 0;
  for (const auto& preparation : preparations_) {
    howMany += preparation.text.starts_with(begin) ? 1 : 0;
  }
  return howMany;
}

std::size_t CountedStatements::Executions(std::string_view begin) const {
  std::size_t howMany = 0;
  for (const auto& preparation : preparations_) {
    howMany += preparation.text.starts_with(begin) ? preparation.executions : 0;
  }
  return howMany;
}

} // namespace lumoscad::test

// The parameters have the names of the driver manager's header.

SQLRETURN SQL_API SQLPrepare(SQLHSTMT statementHandle, SQLCHAR* statementText, SQLINTEGER textLength) {
  static auto* const Real = lumoscad::test::RealFunction<SQLRETURN(SQLHSTMT, SQLCHAR*, SQLINTEGER)>("SQLPrepare");
  if (lumoscad::test::listening != nullptr && textLength >= 0) {
    lumoscad::test::listening->Prepared(statementHandle, {reinterpret_cast<const char*>(statementText),
                                                          static_cast<std::size_t>(textLength)}); // NOLINT: bytes
  }
  return Real(statementHandle, statementText, textLength);
}

SQLRETURN SQL_API SQLExecute(SQLHSTMT statementHandle) {
  static auto* const Real = lumoscad::test::RealFunction<SQLRETURN(SQLHSTMT)>("SQLExecute");
  if (lumoscad::test::listening != nullptr) {
    lumoscad::test::listening->Executed(statementHandle);
  }
  return Real(statementHandle);
}
