#pragma once

#include "platform/FieldGestures.hpp"

#include <QAbstractTableModel>
#include <QDate>

#include <functional>
#include <vector>

namespace lumoscad::qt {

/// The weeks in which the days of a month lie, from Monday to Sunday.
class MonthModel final : public QAbstractTableModel {
 public:
  /// Gives so many days from the first one on; may give none.
  using Source = std::function<std::vector<CalendarDay>(CalendarDate first, int count)>;

  static constexpr int Weeks = 6;
  static constexpr int Weekdays = 7;

  MonthModel(Source source, QObject* parent) : QAbstractTableModel(parent), source_(std::move(source)) {}

  /// Shows the month of `day`.
  void Show(const QDate& day);
  /// Any day of the month that is shown.
  [[nodiscard]] const QDate& Month() const noexcept { return month_; }

  [[nodiscard]] QDate DateAt(const QModelIndex& cell) const;
  [[nodiscard]] QModelIndex CellOf(const QDate& day) const;
  /// What is known of a day; null for none.
  [[nodiscard]] const CalendarDay* DayAt(const QModelIndex& cell) const;
  [[nodiscard]] bool InMonth(const QModelIndex& cell) const;

  [[nodiscard]] static QString NameOf(const QDate& day); ///< "mercoledì 2 giugno 2027"
  [[nodiscard]] QString DueAt(const QModelIndex& cell) const;
  /// Everything that is told of a day, in one line.
  [[nodiscard]] QString DescriptionAt(const QModelIndex& cell) const;

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override { return parent.isValid() ? 0 : Weeks; }
  [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override {
    return parent.isValid() ? 0 : Weekdays;
  }
  [[nodiscard]] QVariant data(const QModelIndex& cell, int role = Qt::DisplayRole) const override;
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  Source source_;
  QDate month_;
  QDate first_; ///< the Monday in the first cell
  std::vector<CalendarDay> days_;
};

} // namespace lumoscad::qt
