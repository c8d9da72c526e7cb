#pragma once

#include "platform/ado/RowStore.hpp"
#include "platform/ado/Session.hpp"

#include <string>
#include <vector>

namespace lumoscad::ado::detail {

/// What is to be done with a value's text as the driver gives it. A bound `Integer` comes as the number that it is.
enum class ValueKind { AsItIs, Timestamp, InfiniteTimestamp, Number, Money, Integer };

/// One column of a result as the driver describes it.
struct ColumnInfo {
  std::string name;
  SQLSMALLINT type = 0;
  SQLUSMALLINT number = 0; ///< its place in the result, from 1
  ValueKind kind = ValueKind::AsItIs;
  std::size_t buffer = 0; ///< bytes of a bound value, a text's terminator included; 0 where it is read piece by piece
};

/// Whether a column's value may stand in a comparison on a server that speaks `dialect`.
[[nodiscard]] bool Comparable(const ColumnInfo& column, const Dialect& dialect) noexcept;

/// The `count` columns of a result, or those that are `wanted` by name, in any case: the first of each name, in the
/// result's order.
[[nodiscard]] std::vector<ColumnInfo> DescribeColumns(const Statement& statement, SQLSMALLINT count,
                                                      const std::vector<std::string>& wanted);

/// Reads all rows by block fetch into bound columns. False when a value was longer than the driver had announced:
/// the rows are then incomplete and the statement must be executed again and read with `ReadUnbound`.
[[nodiscard]] bool ReadBound(const Statement& statement, const std::vector<ColumnInfo>& columns, RowStore& rows);

/// Reads all rows one by one, each value whole, however long it is.
void ReadUnbound(const Statement& statement, const std::vector<ColumnInfo>& columns, RowStore& rows);

} // namespace lumoscad::ado::detail
