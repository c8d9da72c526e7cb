#pragma once

#include "platform/ado/ResultReader.hpp"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::ado::detail {

/// What an execution gave: a result with columns, or the count of rows it changed (-1 where not told).
struct Outcome {
  std::vector<ColumnInfo> columns;
  RowStore rows;
  std::int64_t affected = -1;
};

/// A prepared statement of one session.
class Prepared {
 public:
  Prepared(std::shared_ptr<Session> session, std::string text);

  /// True while it can serve `text` on `session`.
  [[nodiscard]] bool Serves(const std::shared_ptr<Session>& session, std::string_view text) const noexcept;
  /// Executes with one text a marker and reads the whole result.
  [[nodiscard]] Outcome Execute(const std::vector<std::string>& parameters);

 private:
  struct ParameterType {
    SQLSMALLINT type = SQL_VARCHAR;
    SQLULEN size = 0;
    SQLSMALLINT digits = 0;
  };

  void DescribeParameters();
  void Bind(const std::vector<std::string>& parameters);
  [[nodiscard]] SQLRETURN Send();
  void Read(Outcome& outcome);

  std::shared_ptr<Session> session_;
  std::string text_;
  Statement statement_;
  std::vector<ParameterType> types_;
  std::vector<SQLLEN> lengths_;
};

} // namespace lumoscad::ado::detail
