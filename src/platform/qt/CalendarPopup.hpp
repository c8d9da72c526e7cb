#pragma once

#include "platform/qt/MonthView.hpp"

#include <QFrame>

#include <functional>

class QLabel;

namespace lumoscad::qt {

/// The calendar that drops down from a date field. It is a popup, so that the field does not count as left while it is
/// open, and goes as soon as a day was chosen, Esc pressed, or the mouse clicked elsewhere.
class CalendarPopup final : public QFrame {
 public:
  CalendarPopup(MonthModel::Source source, QWidget& field);

  std::function<void(CalendarDate)> chosen; ///< called once the calendar is closed

  /// Drops down with this day as the current one.
  void Open(CalendarDate day);

 private:
  [[nodiscard]] QWidget* Heading();
  void Place();
  void ShowMonth();
  void ShowDay(const QModelIndex& cell);

  QWidget& field_;
  MonthView* month_ = nullptr;
  QLabel* title_ = nullptr;
  QLabel* day_ = nullptr;
  QLabel* due_ = nullptr;
};

} // namespace lumoscad::qt
