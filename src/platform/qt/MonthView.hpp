#pragma once

#include "platform/qt/MonthModel.hpp"
#include "platform/qt/TableQt.hpp"

#include <QDate>

#include <functional>

namespace lumoscad::qt {

/// The days of a month, to choose one of: by the mouse, or by keys from day to day and from month to month.
class MonthView final : public TableQt {
 public:
  MonthView(MonthModel::Source source, QWidget* parent);

  std::function<void(const QDate&)> chosen;          ///< a day was chosen
  std::function<void(const QModelIndex&)> described; ///< this day is to be told of: it is current, or under the pointer
  std::function<void()> monthShown;                  ///< another month is shown

  [[nodiscard]] const MonthModel& Model() const noexcept { return model_; }
  [[nodiscard]] QDate Day() const { return model_.DateAt(currentIndex()); }
  /// Makes `day` the current one, in its month; a day outside the calendar is not heeded.
  void GoTo(const QDate& day);
  void GoToMonth(int months);

  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }
  void keyboardSearch(const QString&) override {} // a digit is no search

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void leaveEvent(QEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  [[nodiscard]] QSize CellSize() const;
  void Describe(const QModelIndex& cell);

  MonthModel model_;
  QPersistentModelIndex pressed_;
};

} // namespace lumoscad::qt
