#pragma once

#include "platform/Desktop.hpp"

#include <map>
#include <vector>

namespace lumoscad::qt {

/// The columns' nominal widths (twips) against the widths they have on the screen (pixels). The screen classes
/// only know the nominal ones, so every mouse position is brought back to them.
class ColumnWidths {
 public:
  explicit ColumnWidths(const std::vector<ListColumn>& columns);

  /// Pixels of all columns at their nominal widths.
  [[nodiscard]] int Total() const { return total_; }
  /// The width of each column when `available` pixels are there: the columns of plain text and of banks share
  /// what is beyond the nominal widths; none is ever narrower than its nominal width.
  /// A column that `chosen` gives a width takes that one.
  [[nodiscard]] std::vector<int> Pixel(int available, const std::map<int, int>& chosen = {}) const;
  /// Nominal x (twips) of the point `offset` pixels into `column`, which is `width` pixels wide on the screen.
  [[nodiscard]] int Twips(int column, int offset, int width) const;
  /// Nominal x (twips) of the middle of `column`.
  [[nodiscard]] int Middle(int column) const;
  /// Nominal x (twips) of a point `offset` pixels to the right of the last column.
  [[nodiscard]] int Beyond(int offset) const;

 private:
  struct Column {
    int begin = 0; ///< twips
    int twips = 0;
    int pixel = 0;
    bool elastic = false;
  };

  std::vector<Column> columns_;
  int total_ = 0;
  int end_ = 0; ///< twips
};

} // namespace lumoscad::qt
