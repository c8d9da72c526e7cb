#include "platform/qt/DialogQt.hpp"

#include "platform/qt/Look.hpp"

#include <QEvent>
#include <QLayout>
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

void DialogQt::TakeLook() {
  look::Dress(*this);
}

bool DialogQt::event(QEvent* event) {
  const bool handled = QDialog::event(event);
  if (event->type() == QEvent::ApplicationPaletteChange || event->type() == QEvent::ApplicationFontChange) {
    TakeLook();
    if (layout() != nullptr) {
      layout()->activate();
    }
  }
  return handled;
}

void DialogQt::showEvent(QShowEvent* event) {
  if (!event->spontaneous()) {
    TakeLook();
  }
  const bool moved = testAttribute(Qt::WA_Moved);
  QDialog::showEvent(event);
  if (!event->spontaneous() && below_ && !moved) {
    adjustPosition(below_);
    setAttribute(Qt::WA_Moved, false);
  }
}

} // namespace lumoscad::qt
