#include "platform/qt/ColumnDrag.hpp"

#include <QCursor>
#include <QEvent>
#include <QMouseEvent>
#include <QVariant>
#include <QWidget>

#include <utility>

namespace lumoscad::qt {

namespace {

constexpr char UsualPointer[] = "puntatore"; ///< property of a heading: the pointer that it has elsewhere

} // namespace

ColumnDrag::ColumnDrag(QWidget& strip) : QObject(&strip), strip_(strip) {}

void ColumnDrag::Watch(QWidget& heading) {
  heading.setMouseTracking(true);
  heading.setProperty(UsualPointer, static_cast<int>(heading.cursor().shape()));
  heading.installEventFilter(this);
}

bool ColumnDrag::eventFilter(QObject* object, QEvent* event) {
  switch (event->type()) {
  case QEvent::MouseButtonPress:
  case QEvent::MouseButtonRelease:
  case QEvent::MouseButtonDblClick:
  case QEvent::MouseMove:
    return Mouse(static_cast<QWidget&>(*object), static_cast<const QMouseEvent&>(*event));
  default:
    return false;
  }
}

bool ColumnDrag::Mouse(QWidget& heading, const QMouseEvent& event) {
  const int x = heading.mapTo(&strip_, event.position().toPoint()).x();
  if (event.type() == QEvent::MouseMove && Dragging()) {
    dragged(column_, width_ + x - begin_);
    return true;
  }
  if (event.type() == QEvent::MouseButtonRelease) {
    return event.button() == Qt::LeftButton && std::exchange(column_, -1) >= 0;
  }
  const int border = borderAt(x);
  if (event.type() == QEvent::MouseMove) {
    Point(heading, border >= 0);
    return false;
  }
  if (border < 0 || event.button() != Qt::LeftButton) {
    return false;
  }
  if (event.type() == QEvent::MouseButtonDblClick) {
    doubleClicked(border);
  }
  column_ = border;
  begin_ = x;
  width_ = widthOf(border);
  return true;
}

void ColumnDrag::Point(QWidget& heading, bool border) {
  const auto usual = static_cast<Qt::CursorShape>(heading.property(UsualPointer).toInt());
  const Qt::CursorShape shape = border ? Qt::SplitHCursor : usual;
  if (heading.cursor().shape() != shape) {
    heading.setCursor(shape);
  }
}

} // namespace lumoscad::qt
