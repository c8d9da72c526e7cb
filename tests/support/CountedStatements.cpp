#include "support/CountedStatements.hpp"

#include "support/DriverManager.hpp"

#include <algorithm>
#include <cstring>
#include <sql.h>
#include <sqlext.h>

namespace lumoscad::test {
namespace {

CountedStatements* listening = nullptr;

std::string_view Text(const SQLCHAR* text, SQLINTEGER length) {
  const auto* const begin = reinterpret_cast<const char*>(text); // NOLINT: bytes
  return length < 0 ? std::string_view(begin) : std::string_view(begin, static_cast<std::size_t>(length));
}

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

void CountedStatements::ExecutedDirectly(std::string_view text) {
  direct_.emplace_back(text);
}

void CountedStatements::Allocated(const void* statement) {
  ++allocations_;
  allocated_.insert(statement);
}

std::size_t CountedStatements::DirectExecutions(std::string_view begin) const {
  return static_cast<std::size_t>(
      std::count_if(direct_.begin(), direct_.end(), [&](const auto& text) { return text.starts_with(begin); }));
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

using lumoscad::test::listening;
using lumoscad::test::RealFunction;
using lumoscad::test::Text;

SQLRETURN SQL_API SQLAllocHandle(SQLSMALLINT handleType, SQLHANDLE inputHandle, SQLHANDLE* outputHandle) {
  static auto* const Original = RealFunction<SQLRETURN(SQLSMALLINT, SQLHANDLE, SQLHANDLE*)>("SQLAllocHandle");
  const SQLRETURN outcome = Original(handleType, inputHandle, outputHandle);
  if (listening != nullptr && handleType == SQL_HANDLE_STMT && SQL_SUCCEEDED(outcome)) {
    listening->Allocated(*outputHandle);
  }
  return outcome;
}

SQLRETURN SQL_API SQLFreeHandle(SQLSMALLINT handleType, SQLHANDLE handle) {
  static auto* const Original = RealFunction<SQLRETURN(SQLSMALLINT, SQLHANDLE)>("SQLFreeHandle");
  if (listening != nullptr) {
    listening->Freed(handle);
  }
  return Original(handleType, handle);
}

SQLRETURN SQL_API SQLPrepare(SQLHSTMT statementHandle, SQLCHAR* statementText, SQLINTEGER textLength) {
  static auto* const Original = RealFunction<SQLRETURN(SQLHSTMT, SQLCHAR*, SQLINTEGER)>("SQLPrepare");
  if (listening != nullptr) {
    listening->Prepared(statementHandle, Text(statementText, textLength));
  }
  return Original(statementHandle, statementText, textLength);
}

SQLRETURN SQL_API SQLExecute(SQLHSTMT statementHandle) {
  static auto* const Original = RealFunction<SQLRETURN(SQLHSTMT)>("SQLExecute");
  if (listening != nullptr) {
    listening->Executed(statementHandle);
  }
  return Original(statementHandle);
}

SQLRETURN SQL_API SQLExecDirect(SQLHSTMT statementHandle, SQLCHAR* statementText, SQLINTEGER textLength) {
  static auto* const Original = RealFunction<SQLRETURN(SQLHSTMT, SQLCHAR*, SQLINTEGER)>("SQLExecDirect");
  if (listening != nullptr) {
    if (listening->beforeDirectExecution) {
      listening->beforeDirectExecution(statementHandle);
    }
    listening->ExecutedDirectly(Text(statementText, textLength));
  }
  return Original(statementHandle, statementText, textLength);
}

SQLRETURN SQL_API SQLDescribeParam(SQLHSTMT hstmt, SQLUSMALLINT ipar, SQLSMALLINT* pfSqlType, SQLULEN* pcbParamDef,
                                   SQLSMALLINT* pibScale, SQLSMALLINT* pfNullable) {
  static auto* const Original =
      RealFunction<SQLRETURN(SQLHSTMT, SQLUSMALLINT, SQLSMALLINT*, SQLULEN*, SQLSMALLINT*, SQLSMALLINT*)>(
          "SQLDescribeParam");
  if (listening != nullptr) {
    listening->Described();
  }
  return Original(hstmt, ipar, pfSqlType, pcbParamDef, pibScale, pfNullable);
}

SQLRETURN SQL_API SQLGetInfo(SQLHDBC connectionHandle, SQLUSMALLINT infoType, SQLPOINTER infoValue,
                             SQLSMALLINT bufferLength, SQLSMALLINT* stringLength) {
  static auto* const Original =
      RealFunction<SQLRETURN(SQLHDBC, SQLUSMALLINT, SQLPOINTER, SQLSMALLINT, SQLSMALLINT*)>("SQLGetInfo");
  if (listening == nullptr || listening->serverName.empty() || infoType != SQL_DBMS_NAME) {
    return Original(connectionHandle, infoType, infoValue, bufferLength, stringLength);
  }
  const std::string name = listening->serverName.substr(0, static_cast<std::size_t>(bufferLength) - 1);
  std::memcpy(infoValue, name.c_str(), name.size() + 1);
  *stringLength = static_cast<SQLSMALLINT>(name.size());
  return SQL_SUCCESS;
}
