#include "platform/qt/FrozenColumns.hpp"

#include <QHeaderView>
#include <QScrollBar>
#include <QTableView>

#include <algorithm>

namespace lumoscad::qt {

int FrozenColumns::Count() const {
  const int most = table_.viewport()->width() * 3 / 5;
  int count = 0;
  int width = 0;
  while (count < wanted_) {
    width += table_.columnWidth(count);
    if (width > most) {
      break;
    }
    ++count;
  }
  return count;
}

int FrozenColumns::Width() const {
  const int count = Count();
  int width = 0;
  for (int column = 0; column < count; ++column) {
    width += table_.columnWidth(column);
  }
  return width;
}

bool FrozenColumns::Covering() const {
  return table_.horizontalHeader()->offset() > 0 && Count() > 0;
}

int FrozenColumns::Left(int column) const {
  const int left = table_.columnViewportPosition(column);
  return Contains(column) ? left + table_.horizontalHeader()->offset() : left;
}

int FrozenColumns::ColumnAt(int x) const {
  if (x >= 0 && x < Width()) {
    return table_.horizontalHeader()->logicalIndexAt(x - table_.horizontalHeader()->offset());
  }
  return table_.columnAt(x);
}

QRect FrozenColumns::Moved(int column, QRect area) const {
  if (Contains(column) && !area.isEmpty()) {
    area.translate(table_.horizontalHeader()->offset(), 0);
  }
  return area;
}

int FrozenColumns::Hidden(int column) const {
  return Contains(column) ? 0 : std::max(0, Width() - table_.columnViewportPosition(column));
}

} // namespace lumoscad::qt
