#include "platform/qt/ListPainter.hpp"

#include "platform/qt/Texts.hpp"

#include <QColor>
#include <QFontMetrics>
#include <QPainter>
#include <QPen>
#include <QTransform>

#include <algorithm>
#include <cmath>

namespace lumoscad::qt {

namespace {

constexpr int Margin = 6;
constexpr int TickSide = 16;
/// Of a tick and what is beside it: in a narrower column a tick or the frame of the current cell would reach into the
/// next one.
constexpr int SmallestInPieces = TickSide + 4;
constexpr int SelectionMark = 3;

/// How many pixels of the device a pixel of the list is wide and high; 0 when that is no whole number, or when the
/// pixels do not lie on those of the device.
int WholeScale(const QTransform& toDevice) {
  const auto whole = [](qreal number) { return std::floor(number) == number; };
  return toDevice.type() <= QTransform::TxScale && toDevice.m11() == toDevice.m22() && whole(toDevice.m11()) &&
                 whole(toDevice.dx()) && whole(toDevice.dy())
             ? static_cast<int>(toDevice.m11())
             : 0;
}

QRect CellOf(const ListPainter::Row& row, const ListPainter::Column& column) {
  return {column.left, row.top, column.width, row.height};
}

} // namespace

QRect ListPainter::TextArea(const QRect& cell) {
  return cell.adjusted(look::Scaled(Margin), 0, -look::Scaled(Margin), 0);
}

void ListPainter::Begin(QPainter& painter, const QFont& font, bool focus) {
  focus_ = focus;
  const int scale = WholeScale(painter.deviceTransform());
  tickSide_ = look::Scaled(TickSide);
  if (scale != scale_ || tickSide_ != paintedSide_ || colours_ != look::Now()) {
    ticks_.clear();
    scale_ = scale;
    paintedSide_ = tickSide_;
    colours_ = look::Now();
  }
  font_ = font;
  searched_ = model_.Searched();
  texts_.Begin(painter, font);
}

void ListPainter::Paint(QPainter& painter, const Row& row, const std::vector<Column>& columns) {
  const auto narrow = [](const Column& column) { return column.width < look::Scaled(SmallestInPieces); };
  if (scale_ == 1 && !columns.empty() && std::none_of(columns.begin(), columns.end(), narrow)) {
    PaintInPieces(painter, row, columns);
  } else {
    PaintCellByCell(painter, row, columns);
  }
}

/// Where a line is as wide as a pixel it is a rectangle, and a few rectangles for the whole row are painted several
/// times faster than a rectangle and two lines for each cell. Letters that reach out of their cell end as they do cell
/// by cell.
void ListPainter::PaintInPieces(QPainter& painter, const Row& row, const std::vector<Column>& columns) {
  const int begin = columns.front().left;
  const int end = columns.back().left + columns.back().width;
  painter.fillRect(QRect(begin, row.top, end - begin, row.height), RowBackground(row));
  for (const Column& column : columns) {
    if (Changed(row, column.index)) {
      painter.fillRect(CellOf(row, column), colours_.changedBackground);
    }
    painter.fillRect(QRect(column.left + column.width - 1, row.top, 1, row.height), colours_.faintLine);
  }
  painter.fillRect(QRect(begin, row.top + row.height - 1, end - begin, 1), colours_.faintLine);
  for (const Column& column : columns) {
    const int right = column.left + column.width;
    Content(painter, row, column, {right, row.top, end - right, row.height});
  }
}

/// Each cell covers what the one before left on it.
void ListPainter::PaintCellByCell(QPainter& painter, const Row& row, const std::vector<Column>& columns) {
  for (const Column& column : columns) {
    const QRect cell = CellOf(row, column);
    painter.fillRect(cell, Changed(row, column.index) ? colours_.changedBackground : RowBackground(row));
    painter.setPen(colours_.faintLine);
    painter.drawLine(cell.topRight(), cell.bottomRight());
    painter.drawLine(cell.bottomLeft(), cell.bottomRight());
    Content(painter, row, column, {});
  }
}

/// On a row that is selected a changed value has the row's background.
bool ListPainter::Changed(const Row& row, int column) const {
  return !row.selected && model_.CellChanged(row.index, column);
}

const QColor& ListPainter::RowBackground(const Row& row) const {
  if (row.selected) {
    return focus_ ? colours_.selection : colours_.selectionWithoutFocus;
  }
  return row.index % 2 == 0 ? colours_.paper : colours_.alternateRow;
}

void ListPainter::Content(QPainter& painter, const Row& row, const Column& column, const QRect& covered) {
  const QRect cell = CellOf(row, column);
  const ListColumn::Kind kind = model_.Kind(column.index);
  if (kind != ListColumn::Kind::Tick) {
    const bool changed = model_.CellChanged(row.index, column.index);
    painter.setPen(changed ? colours_.changedInk : colours_.ink);
    const QRect area = Distinguish(painter, row, column.index, TextArea(cell), covered);
    const CellTexts::Style style{changed, kind == ListColumn::Kind::Amount};
    if (searched_) {
      MarkHits(painter, row, column.index, area, style);
    }
    texts_.Write(painter, area, model_.CellText(row.index, column.index), style, covered);
  } else if (const auto ticked = model_.CellTicked(row.index, column.index)) {
    Tick(painter, cell, *ticked, RowBackground(row));
  }
  if (column.index == row.current) {
    Frame(painter, cell);
  }
}

void ListPainter::MarkHits(QPainter& painter, const Row& row, int column, const QRect& area, CellTexts::Style style) {
  for (const auto& [begin, end] : model_.CellHits(row.index, column)) {
    const QRect place = texts_.Place(area, model_.CellText(row.index, column), style, begin, end);
    if (!place.isEmpty()) {
      painter.fillRect(place, colours_.found);
      painter.fillRect(QRect(place.left(), place.bottom(), place.width(), 1), painter.pen().color());
    }
  }
}

QRect ListPainter::Distinguish(QPainter& painter, const Row& row, int column, const QRect& area, const QRect& covered) {
  const std::string_view distinction = model_.CellDistinction(row.index, column);
  if (distinction.empty()) {
    return area;
  }
  const int width = QFontMetrics(font_).horizontalAdvance(Text(distinction));
  texts_.Write(painter, area, distinction, {false, true}, covered);
  return area.adjusted(0, 0, -std::min(area.width(), width + look::Scaled(Margin)), 0);
}

void ListPainter::Tick(QPainter& painter, const QRect& cell, bool ticked, const QColor& background) {
  QRect square(0, 0, tickSide_, tickSide_);
  square.moveCenter(cell.center());
  // A picture on its own background may only replace the drawing where nothing but that background is below it, and
  // where its pixels are those of the screen.
  if (scale_ > 0 && cell.adjusted(0, 0, -1, -1).contains(square)) {
    painter.drawPixmap(square.topLeft(), TickOn(background, ticked));
  } else {
    images_.Draw(painter, square, Key(ticked ? ListIcon::ChkOn : ListIcon::ChkOff));
  }
}

const QPixmap& ListPainter::TickOn(const QColor& background, bool ticked) {
  const auto known = std::find_if(ticks_.begin(), ticks_.end(), [&](const PaintedTick& tick) {
    return tick.ticked == ticked && tick.background == background.rgb();
  });
  if (known != ticks_.end()) {
    return known->picture;
  }
  QPixmap picture(tickSide_ * scale_, tickSide_ * scale_);
  picture.setDevicePixelRatio(scale_);
  picture.fill(background);
  {
    QPainter painter(&picture);
    images_.Draw(painter, QRectF(0, 0, tickSide_, tickSide_), Key(ticked ? ListIcon::ChkOn : ListIcon::ChkOff));
  }
  return ticks_.emplace_back(PaintedTick{background.rgb(), ticked, picture}).picture;
}

void ListPainter::Mark(QPainter& painter, int left, const Row& row) const {
  painter.fillRect(QRect(left, row.top, look::Scaled(SelectionMark), row.height - 1),
                   focus_ ? colours_.accent : colours_.border);
}

void ListPainter::Frame(QPainter& painter, const QRect& cell) const {
  painter.setBrush(Qt::NoBrush);
  painter.setPen(focus_ ? QPen(colours_.accent, 2) : QPen(colours_.border, 1));
  const int border = focus_ ? 1 : 0;
  painter.drawRect(cell.adjusted(border, border, -1 - border / 2, -1 - border / 2));
}

} // namespace lumoscad::qt
