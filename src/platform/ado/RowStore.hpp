#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace lumoscad::ado::detail {

/// The rows of a result as texts, packed into large blocks: a row is the end offsets of its cells followed by their
/// bytes. A million rows so cost their own bytes, 2 more a cell (4 where a row is of 32 KiB or more) and 9 a row. Views
/// into it live as long as it does.
class RowStore {
 public:
  explicit RowStore(std::size_t columns = 0) : columns_(columns) {}

  [[nodiscard]] std::size_t Rows() const noexcept { return rows_.size(); }
  [[nodiscard]] std::size_t Columns() const noexcept { return columns_; }

  /// Appends one row; nothing in `cells` is NULL. `cells` holds one entry a column.
  void Append(const std::vector<std::optional<std::string_view>>& cells);
  /// Puts `cells` in the place of the row at `row`. Views of the former row stay valid.
  void Replace(std::size_t row, const std::vector<std::optional<std::string_view>>& cells);
  [[nodiscard]] std::optional<std::string_view> Cell(std::size_t row, std::size_t column) const noexcept;
  /// All cells of a row at once.
  void Read(std::size_t row, std::vector<std::optional<std::string_view>>& cells) const;
  void Clear();

 private:
  [[nodiscard]] std::byte* Pack(const std::vector<std::optional<std::string_view>>& cells);
  [[nodiscard]] std::byte* Allocate(std::size_t bytes);

  std::size_t columns_;
  std::vector<const std::byte*> rows_;
  std::vector<std::unique_ptr<std::byte[]>> blocks_;
  std::byte* free_ = nullptr;
  std::size_t freeBytes_ = 0;
};

} // namespace lumoscad::ado::detail
