#include "platform/qt/MonthModel.hpp"

#include "platform/qt/Texts.hpp"

#include <QLocale>
#include <QStringList>

namespace lumoscad::qt {

namespace {

QLocale Italian() {
  return {QLocale::Italian, QLocale::Italy};
}

} // namespace

void MonthModel::Show(const QDate& day) {
  beginResetModel();
  month_ = QDate(day.year(), day.month(), 1);
  first_ = month_.addDays(1 - month_.dayOfWeek());
  days_ = source_({first_.year(), first_.month(), first_.day()}, Weeks * Weekdays);
  endResetModel();
}

QDate MonthModel::DateAt(const QModelIndex& cell) const {
  return cell.isValid() ? first_.addDays(cell.row() * Weekdays + cell.column()) : QDate();
}

QModelIndex MonthModel::CellOf(const QDate& day) const {
  const auto place = static_cast<int>(first_.daysTo(day));
  return place >= 0 && place < Weeks * Weekdays ? index(place / Weekdays, place % Weekdays) : QModelIndex();
}

const CalendarDay* MonthModel::DayAt(const QModelIndex& cell) const {
  const auto place = static_cast<std::size_t>(cell.row()) * Weekdays + static_cast<std::size_t>(cell.column());
  return cell.isValid() && place < days_.size() ? &days_[place] : nullptr;
}

bool MonthModel::InMonth(const QModelIndex& cell) const {
  const QDate day = DateAt(cell);
  return day.month() == month_.month() && day.year() == month_.year();
}

QString MonthModel::NameOf(const QDate& day) {
  return Italian().toString(day, QStringLiteral("dddd d MMMM yyyy"));
}

QString MonthModel::DueAt(const QModelIndex& cell) const {
  const CalendarDay* day = DayAt(cell);
  if (day == nullptr) {
    return {};
  }
  return day->presentText.empty()
             ? Text(day->dueText)
             : QStringLiteral("%1 (senza le variazioni %2)").arg(Text(day->dueText), Text(day->presentText));
}

QString MonthModel::DescriptionAt(const QModelIndex& cell) const {
  const CalendarDay* day = DayAt(cell);
  QStringList parts{NameOf(DateAt(cell))};
  if (day != nullptr && day->today) {
    parts.append(QStringLiteral("oggi"));
  }
  if (day != nullptr && !day->holiday.empty()) {
    parts.append(Text(day->holiday));
  }
  if (const QString due = DueAt(cell); !due.isEmpty()) {
    parts.append(due);
  }
  return parts.join(QStringLiteral(" · "));
}

QVariant MonthModel::data(const QModelIndex& cell, int role) const {
  if (!cell.isValid()) {
    return {};
  }
  switch (role) {
  case Qt::DisplayRole:
    return QString::number(DateAt(cell).day());
  case Qt::ToolTipRole:
  case Qt::AccessibleTextRole:
    return DescriptionAt(cell);
  default:
    return {};
  }
}

QVariant MonthModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal) {
    return {};
  }
  switch (role) {
  case Qt::DisplayRole:
    return Italian().standaloneDayName(section + 1, QLocale::ShortFormat);
  case Qt::ToolTipRole:
  case Qt::AccessibleTextRole:
    return Italian().standaloneDayName(section + 1, QLocale::LongFormat);
  default:
    return {};
  }
}

} // namespace lumoscad::qt
