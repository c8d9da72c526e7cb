#pragma once

#include "platform/Desktop.hpp"

#include <QObject>

#include <functional>

class QKeyEvent;
class QLineEdit;

namespace lumoscad::qt {

/// What a date field does beside taking a text: keys that step from day to day and from month to month, and the
/// calendar behind F4.
class DateKeys final : public QObject {
 public:
  /// Runs one gesture of the window that the field is in.
  using Run = std::function<void(const std::function<void()>&)>;

  /// `fields` and the field outlive it.
  DateKeys(QLineEdit& field, DateField which, FieldGestures& fields, Run run);

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  [[nodiscard]] bool Key(const QKeyEvent& key);
  void Step(int days, int months);
  void OpenCalendar();

  QLineEdit& field_;
  DateField which_;
  FieldGestures& fields_;
  Run run_;
};

} // namespace lumoscad::qt
