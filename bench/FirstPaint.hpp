#pragma once

#include <QApplication>
#include <QEvent>
#include <QTimer>
#include <QWidget>

#include <functional>
#include <utility>

namespace lumoscad::bench {

/// Calls back once, when a widget whose name begins with `prefix`, or whose parent's does, has been painted for the
/// first time and what else waited to be painted with it.
class FirstPaint final : public QObject {
 public:
  FirstPaint(QString prefix, std::function<void()> then) : prefix_(std::move(prefix)), then_(std::move(then)) {
    QCoreApplication::instance()->installEventFilter(this);
  }

 protected:
  bool eventFilter(QObject* object, QEvent* event) override {
    if (event->type() == QEvent::Paint && Meant(object)) {
      QCoreApplication::instance()->removeEventFilter(this);
      QTimer::singleShot(0, this, [this] { then_(); });
    }
    return false;
  }

 private:
  [[nodiscard]] bool Meant(const QObject* object) const {
    return object->isWidgetType() &&
           (object->objectName().startsWith(prefix_) ||
            (object->parent() != nullptr && object->parent()->objectName().startsWith(prefix_)));
  }

  QString prefix_;
  std::function<void()> then_;
};

} // namespace lumoscad::bench
