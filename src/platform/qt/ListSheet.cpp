// What of the list's view is seen: where its columns lie, and how it is painted.

#include "platform/qt/ListView.hpp"

#include "platform/qt/Texts.hpp"

#include <QFontMetrics>
#include <QPaintEvent>
#include <QPainter>
#include <QRegion>
#include <QScrollBar>

#include <algorithm>

namespace lumoscad::qt {

namespace {

/// More rows than that are measured in part: those that can be seen, and as many of the others spread over the list.
constexpr int MostMeasured = 2000;
constexpr int WidestPixels = 800; ///< of a column that is made as wide as its contents

} // namespace

std::vector<ListPainter::Column> ListView::ColumnsBetween(int left, int right, bool frozen) const {
  std::vector<ListPainter::Column> columns;
  for (int column = 0; column < model_.columnCount(); ++column) {
    const int begin = frozen ? frozen_.Left(column) : columnViewportPosition(column);
    const int width = columnWidth(column);
    const bool counts = !frozen || frozen_.Contains(column);
    if (counts && !isColumnHidden(column) && begin <= right && begin + width > left) {
      columns.push_back({column, begin, width});
    }
  }
  return columns;
}

void ListView::PaintRows(QPainter& painter, const QRegion& region, const std::vector<ListPainter::Column>& columns) {
  const QRect whole = region.boundingRect();
  const int first = rowAt(whole.top());
  int bottom = first < 0 ? whole.top() : rowViewportPosition(first);
  for (int row = first; row >= 0 && row < model_.rowCount() && bottom <= whole.bottom(); ++row) {
    const ListPainter::Row shown = RowInView(row);
    bottom = shown.top + shown.height;
    if (region.intersects(QRect(whole.left(), shown.top, whole.width(), shown.height))) {
      painter_.Paint(painter, shown, columns);
      if (shown.selected) {
        painter_.Mark(painter, 0, shown);
      }
    }
  }
  const QColor& paper = look::Now().paper;
  const int right = columns.empty() || first < 0 ? whole.left() : columns.back().left + columns.back().width;
  painter.fillRect(QRect(QPoint(right, whole.top()), whole.bottomRight()), paper);
  painter.fillRect(QRect(QPoint(whole.left(), bottom), whole.bottomRight()), paper);
}

void ListView::PaintFrozen(QPainter& painter, const QRegion& region) {
  const int width = frozen_.Width();
  const QRect area(0, 0, width, viewport()->height());
  painter.setClipRect(area);
  PaintRows(painter, region.intersected(area), ColumnsBetween(0, width - 1, true));
  painter.fillRect(QRect(width - 1, 0, 1, viewport()->height()), look::Now().border); // something lies below
}

void ListView::paintEvent(QPaintEvent* event) {
  QPainter painter(viewport());
  painter_.Begin(painter, font(), hasFocus());
  const QRect whole = event->rect();
  if (!frozen_.Covering()) {
    PaintRows(painter, event->region(), ColumnsBetween(whole.left(), whole.right(), false));
    return;
  }
  const QRect scrolled = viewport()->rect().adjusted(frozen_.Width(), 0, 0, 0);
  if (const QRegion part = event->region().intersected(scrolled); !part.isEmpty()) {
    const QRect area = part.boundingRect();
    painter.setClipRect(scrolled);
    PaintRows(painter, part, ColumnsBetween(area.left(), area.right(), false));
  }
  if (event->region().intersects(QRect(0, 0, frozen_.Width(), viewport()->height()))) {
    PaintFrozen(painter, event->region());
  }
}

QModelIndex ListView::indexAt(const QPoint& point) const {
  const int row = rowAt(point.y());
  const int column = frozen_.ColumnAt(point.x());
  return row >= 0 && column >= 0 ? model_.index(row, column) : QModelIndex();
}

QRect ListView::visualRect(const QModelIndex& cell) const {
  return frozen_.Moved(cell.column(), QTableView::visualRect(cell));
}

void ListView::scrollTo(const QModelIndex& cell, ScrollHint hint) {
  QScrollBar& bar = *horizontalScrollBar();
  const int before = bar.value();
  QTableView::scrollTo(cell, hint);
  if (frozen_.Contains(cell.column())) {
    bar.setValue(before); // it is in sight wherever the list is scrolled to
  } else if (const int hidden = frozen_.Hidden(cell.column()); hidden > 0) {
    bar.setValue(bar.value() - hidden);
  }
}

void ListView::ShowTicks() {
  const QModelIndex current = currentIndex();
  if (!current.isValid() || horizontalScrollBar()->maximum() == 0) {
    return;
  }
  int last = model_.columnCount();
  for (int column = ActiveColumn(last, false, false); column >= 0; column = ActiveColumn(column, false, false)) {
    if (model_.Kind(column) == ListColumn::Kind::Tick) {
      scrollTo(model_.index(current.row(), column)); // the last one first: what does not fit any more is the last
    }
  }
}

void ListView::SetWidth(int column, std::optional<int> width) {
  if (width) {
    for (int before = 0; before < column; ++before) {
      if (!isColumnHidden(before)) {
        given_.try_emplace(before, columnWidth(before)); // so that the border stays under the pointer that drags it
      }
    }
    given_[column] = std::max(*width, look::Scaled(16));
  } else {
    given_.erase(column);
  }
  LayOutColumns();
}

int ListView::ContentWidth(int column) const {
  const ListColumn& described = window_.Description().columns[static_cast<std::size_t>(column)];
  if (described.kind == ListColumn::Kind::Tick) {
    return look::PixelsX(described.width);
  }
  QFont heading = look::Bold(look::Font(window_.Description().headingFont));
  heading.setPixelSize(look::Scaled(11));
  int width = QFontMetrics(heading).horizontalAdvance(Text(described.headingText));
  const QFontMetrics plain(font());
  const QFontMetrics bold(look::Bold(font()));
  const auto measure = [&](int row) {
    const QString text = Text(model_.CellText(row, column));
    width = std::max(width, (model_.CellChanged(row, column) ? bold : plain).horizontalAdvance(text));
  };
  const int rows = model_.rowCount();
  const int step = std::max(1, rows / MostMeasured);
  for (int row = 0; row < rows; row += step) {
    measure(row);
  }
  const auto [first, last] = RowsInView();
  for (int row = std::max(first, 0); row <= last && step > 1; ++row) {
    measure(row);
  }
  const int beside = look::Scaled(100) - ListPainter::TextArea(QRect(0, 0, look::Scaled(100), 1)).width();
  return std::min(width + beside + 2, look::Scaled(WidestPixels));
}

} // namespace lumoscad::qt
