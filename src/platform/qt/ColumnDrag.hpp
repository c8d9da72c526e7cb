#pragma once

#include <QObject>

#include <functional>

class QMouseEvent;
class QWidget;

namespace lumoscad::qt {

/// The border between two headings, as the mouse takes hold of it: dragged it makes the column on its left wider or
/// narrower, a double click makes it as wide as what is in it. A press elsewhere is none of its business.
class ColumnDrag final : public QObject {
 public:
  /// `strip` holds the headings.
  explicit ColumnDrag(QWidget& strip);

  /// The column whose right border lies at this pixel of the strip; -1 when there is none.
  std::function<int(int x)> borderAt;
  [[nodiscard]] bool Dragging() const { return column_ >= 0; }
  std::function<int(int column)> widthOf;
  std::function<void(int column, int pixels)> dragged;
  std::function<void(int column)> doubleClicked;

  /// Watches one heading.
  void Watch(QWidget& heading);

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  [[nodiscard]] bool Mouse(QWidget& heading, const QMouseEvent& event);
  void Point(QWidget& heading, bool border);

  QWidget& strip_;
  int column_ = -1; ///< being dragged
  int begin_ = 0;   ///< where the drag began
  int width_ = 0;   ///< and how wide the column was
};

} // namespace lumoscad::qt
