#pragma once

#include "platform/ado/Ado.hpp"
#include "platform/ado/Prepared.hpp"

#include <map>
#include <memory>
#include <optional>
#include <string>

namespace lumoscad::ado {

struct Recordset::Impl {
  bool open = false;
  std::vector<std::string> names; ///< as the driver gives them
  std::vector<bool> comparable;   ///< whether the column may stand in a WHERE, by column
  detail::RowStore rows;
  std::size_t current = 0;
  std::weak_ptr<detail::Session> session;
  std::optional<EditableTable> table; ///< present in an editable set
  std::size_t keyColumn = 0;
  std::map<std::size_t, std::optional<std::string>> pending; ///< new values of the current row, by column

  /// Takes over what an execution gave; without columns the set stays closed.
  void Fill(detail::Outcome outcome, const std::shared_ptr<detail::Session>& from);
  void RequireOpen() const;
  void RequireRow() const;
  /// Raises when values were set and not sent yet.
  void RequireNothingPending() const;
  [[nodiscard]] std::size_t Column(std::string_view name) const;
  [[nodiscard]] std::optional<std::string_view> Value(std::size_t index) const;
  /// Forgets rows, columns and table.
  void Clear();

  void SendChanges();
  void TakeChanges();
};

} // namespace lumoscad::ado
