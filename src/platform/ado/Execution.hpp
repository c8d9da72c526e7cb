#pragma once

#include "platform/ado/ResultReader.hpp"

#include <cstddef>
#include <cstdint>
#include <functional>
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

/// What a parameter is bound as; by itself a text of its value's length.
struct ParameterType {
  SQLSMALLINT type = SQL_VARCHAR;
  SQLULEN size = 0;
  SQLSMALLINT digits = 0;
};

/// The markers of a statement: question marks outside of quotes. One in a comment counts too, so the driver, which
/// may have to be asked, has the last word.
[[nodiscard]] std::size_t Markers(std::string_view text) noexcept;

/// Executes by `send` the statement `text`, which `statement` stands for, with one text for each of `types`, and reads
/// its whole result, in the columns that are `wanted` by name; in all where none is. The cursor and the bound
/// parameters are left to whoever owns the statement.
[[nodiscard]] Outcome Execute(const Statement& statement, const std::string& text,
                              const std::vector<ParameterType>& types, const std::vector<std::string>& parameters,
                              const std::vector<std::string>& wanted, const std::function<SQLRETURN()>& send);

/// Executes a statement that is not kept, without preparing it where the dialect allows that.
[[nodiscard]] Outcome ExecuteOnce(const std::shared_ptr<Session>& session, const std::string& text,
                                  const std::vector<std::string>& parameters, const std::vector<std::string>& wanted);

} // namespace lumoscad::ado::detail
