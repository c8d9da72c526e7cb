#pragma once

#include <QRect>

class QTableView;

namespace lumoscad::qt {

/// The first columns of a list, which stay at its left end when it is scrolled sideways: whose row it is stays in
/// sight. They are the table's own columns, shown where they would not be, so that there is one model, one selection
/// and one cell for assistive tools. All lengths are pixels of the table's viewport.
class FrozenColumns {
 public:
  /// `wanted` columns, counted with the hidden ones; fewer where they would leave less than two fifths of the viewport
  /// to the others.
  FrozenColumns(const QTableView& table, int wanted) : table_(table), wanted_(wanted) {}

  /// So many columns tell whose row it is, also where there is no room for all of them to stay.
  [[nodiscard]] int Wanted() const noexcept { return wanted_; }
  [[nodiscard]] bool Contains(int column) const { return column >= 0 && column < Count(); }
  /// Of all of them together.
  [[nodiscard]] int Width() const;
  /// True while another column lies under them.
  [[nodiscard]] bool Covering() const;
  /// Where a column begins, this kind or the other.
  [[nodiscard]] int Left(int column) const;
  /// The column that is seen at `x`; -1 when there is none.
  [[nodiscard]] int ColumnAt(int x) const;
  /// The area of a cell of `column` that the table takes for `area`.
  [[nodiscard]] QRect Moved(int column, QRect area) const;
  /// How far the list has to be scrolled to the left for `column` to be seen from its beginning.
  [[nodiscard]] int Hidden(int column) const;

 private:
  [[nodiscard]] int Count() const;

  const QTableView& table_;
  int wanted_;
};

} // namespace lumoscad::qt
