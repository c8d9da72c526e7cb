#include "platform/qt/MonthView.hpp"

#include "platform/qt/GestureKeys.hpp"
#include "platform/qt/Look.hpp"

#include <QApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QWheelEvent>

#include <algorithm>
#include <utility>

namespace lumoscad::qt {

namespace {

constexpr int LastYear = 9999;
constexpr int CellMargin = 3;

/// A day: its number, underlined and with a mark in the corner where it is a holiday; below, how many rows fall due.
class DayDelegate final : public QStyledItemDelegate {
 public:
  DayDelegate(const MonthModel& model, QObject* parent) : QStyledItemDelegate(parent), model_(model) {}

  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& cell) const override {
    const CalendarDay* day = model_.DayAt(cell);
    if (day == nullptr) {
      return;
    }
    const look::Colours& colours = look::Now();
    const bool current = (option.state & QStyle::State_Selected) != 0;
    const bool inMonth = model_.InMonth(cell);
    const bool holiday = !day->holiday.empty();
    const QColor& ground = current ? colours.fill : day->weekend && inMonth ? colours.headingBackground : colours.paper;
    const QColor& ink = current        ? colours.fillInk
                        : !inMonth     ? colours.faintInk
                        : day->weekend ? colours.windowInk
                                       : colours.ink;
    painter->fillRect(option.rect, ground);
    painter->setPen(ink);
    const int margin = look::Scaled(CellMargin);
    const QRect area = option.rect.adjusted(margin, margin, -margin, -margin);
    if (day->today) {
      painter->drawRect(option.rect.adjusted(1, 1, -2, -2));
    }
    QFont font = option.font;
    font.setBold(holiday || day->today);
    font.setUnderline(holiday);
    painter->setFont(font);
    painter->drawText(area, Qt::AlignTop | Qt::AlignHCenter, cell.data().toString());
    if (holiday) {
      const int side = look::Scaled(4);
      painter->fillRect(QRect(area.right() - side + 1, area.top(), side, side), ink);
    }
    if (day->due > 0) {
      font = option.font;
      font.setPixelSize(look::Scaled(10));
      painter->setFont(font);
      painter->drawText(area, Qt::AlignBottom | Qt::AlignHCenter, QStringLiteral("▪%1").arg(day->due));
    }
  }

 private:
  const MonthModel& model_;
};

} // namespace

MonthView::MonthView(MonthModel::Source source, QWidget* parent) : TableQt(parent), model_(std::move(source), nullptr) {
  setItemDelegate(new DayDelegate(model_, this));
  setModel(&model_);
  setFrameShape(QFrame::NoFrame);
  setShowGrid(false);
  setEditTriggers(NoEditTriggers);
  setSelectionMode(SingleSelection);
  setTabKeyNavigation(false);
  setMouseTracking(true);
  setCornerButtonEnabled(false);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  verticalHeader()->hide();
  for (QHeaderView* header : {horizontalHeader(), verticalHeader()}) {
    header->setMinimumSectionSize(1);
    header->setSectionResizeMode(QHeaderView::Fixed);
    header->setSectionsClickable(false);
    header->setHighlightSections(false);
  }
}

QSize MonthView::CellSize() const {
  const QFontMetrics metrics(font());
  return {std::max(metrics.horizontalAdvance(QStringLiteral("000000")), 2 * metrics.height()),
          2 * (metrics.height() + look::Scaled(CellMargin + 1))};
}

QSize MonthView::sizeHint() const {
  const QSize cell = CellSize();
  return {cell.width() * MonthModel::Weekdays,
          cell.height() * MonthModel::Weeks + horizontalHeader()->sizeHint().height()};
}

void MonthView::resizeEvent(QResizeEvent* event) {
  QTableView::resizeEvent(event);
  const QSize area = viewport()->size();
  for (int column = 0; column < MonthModel::Weekdays; ++column) {
    setColumnWidth(column,
                   area.width() * (column + 1) / MonthModel::Weekdays - area.width() * column / MonthModel::Weekdays);
  }
  for (int row = 0; row < MonthModel::Weeks; ++row) {
    setRowHeight(row, area.height() * (row + 1) / MonthModel::Weeks - area.height() * row / MonthModel::Weeks);
  }
}

void MonthView::GoTo(const QDate& day) {
  if (!day.isValid() || day.year() < 1 || day.year() > LastYear) {
    return;
  }
  const QDate& month = model_.Month();
  if (!month.isValid() || day.year() != month.year() || day.month() != month.month()) {
    model_.Show(day);
    if (monthShown) {
      monthShown();
    }
  }
  setCurrentIndex(model_.CellOf(day));
  Describe(currentIndex());
}

void MonthView::GoToMonth(int months) {
  GoTo(Day().addMonths(months));
}

void MonthView::Describe(const QModelIndex& cell) {
  if (described) {
    described(cell);
  }
}

void MonthView::keyPressEvent(QKeyEvent* event) {
  const QDate day = Day();
  const bool plain = !(event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
  event->accept();
  const PressedGesture pressed = plain ? PressedAt(GesturePlace::Calendar, *event) : PressedGesture();
  const int step = pressed.which == 0 ? -1 : 1;
  switch (pressed.gesture) {
  case Gesture::CalendarDay:
    return GoTo(day.addDays(step));
  case Gesture::CalendarWeek:
    return GoTo(day.addDays(qint64{step} * MonthModel::Weekdays));
  case Gesture::CalendarMonth:
    return GoToMonth(step);
  case Gesture::CalendarEndDays:
    return GoTo(QDate(day.year(), day.month(), step < 0 ? 1 : day.daysInMonth()));
  case Gesture::CalendarChoose:
    if (chosen && day.isValid()) {
      chosen(day);
    }
    return;
  case Gesture::CalendarClose:
    window()->close();
    return;
  default:
    return;
  }
}

void MonthView::mousePressEvent(QMouseEvent* event) {
  event->accept();
  const QModelIndex cell = indexAt(event->position().toPoint());
  pressed_ = event->button() == Qt::LeftButton ? cell : QModelIndex();
  if (pressed_.isValid()) {
    setCurrentIndex(cell);
    Describe(cell);
  }
}

void MonthView::mouseMoveEvent(QMouseEvent* event) {
  event->accept();
  const QModelIndex cell = indexAt(event->position().toPoint());
  Describe(cell.isValid() ? cell : currentIndex());
}

void MonthView::mouseReleaseEvent(QMouseEvent* event) {
  event->accept();
  const QModelIndex cell = indexAt(event->position().toPoint());
  const QModelIndex pressed = std::exchange(pressed_, {});
  if (event->button() == Qt::LeftButton && pressed.isValid() && cell == pressed && chosen) {
    chosen(model_.DateAt(cell));
  }
}

void MonthView::wheelEvent(QWheelEvent* event) {
  event->accept();
  if (event->angleDelta().y() != 0) {
    GoToMonth(event->angleDelta().y() > 0 ? -1 : 1);
  }
}

void MonthView::leaveEvent(QEvent* event) {
  QTableView::leaveEvent(event);
  Describe(currentIndex());
}

} // namespace lumoscad::qt
