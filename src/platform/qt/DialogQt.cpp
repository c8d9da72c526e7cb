#include "platform/qt/DialogQt.hpp"

#include "platform/Services.hpp"
#include "platform/qt/Look.hpp"

#include <QEvent>
#include <QGuiApplication>
#include <QLayout>
#include <QShowEvent>
#include <QWindow>

namespace lumoscad::qt {

namespace {

/// The calling program's window that it named by its number. Only X11 knows windows of others by a number.
std::unique_ptr<QWindow> CallersWindow() {
  const auto number = static_cast<WId>(ActiveServices().callersWindow);
  if (number == 0 || QGuiApplication::platformName() != QLatin1String("xcb")) {
    return nullptr;
  }
  return std::unique_ptr<QWindow>(QWindow::fromWinId(number));
}

} // namespace

DialogQt::DialogQt(QWidget* below, Qt::WindowFlags kind)
    : QDialog(nullptr, kind), below_(below != nullptr ? below->window() : nullptr) {}

DialogQt::~DialogQt() = default;

void DialogQt::setVisible(bool visible) {
  if (visible && below_ == nullptr && callers_ == nullptr) {
    callers_ = CallersWindow();
  }
  QWindow* const over = below_ != nullptr ? below_->windowHandle() : callers_.get();
  if (visible && over != nullptr) {
    create();
    windowHandle()->setTransientParent(over);
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
