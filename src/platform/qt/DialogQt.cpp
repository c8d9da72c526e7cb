#include "platform/qt/DialogQt.hpp"

#include <QShowEvent>
#include <QWindow>

namespace lumoscad::qt {

DialogQt::DialogQt(QWidget* below, Qt::WindowFlags kind)
    : QDialog(nullptr, kind), below_(below != nullptr ? below->window() : nullptr) {}

void DialogQt::setVisible(bool visible) {
  if (visible && below_ && below_->windowHandle() != nullptr) {
    create();
    windowHandle()->setTransientParent(below_->windowHandle());
  }
  QDialog::setVisible(visible);
}

void DialogQt::showEvent(QShowEvent* event) {
  const bool moved = testAttribute(Qt::WA_Moved);
  QDialog::showEvent(event);
  if (!event->spontaneous() && below_ && !moved) {
    adjustPosition(below_);
    setAttribute(Qt::WA_Moved, false);
  }
}

} // namespace lumoscad::qt
