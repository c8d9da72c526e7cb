#include "platform/qt/DialogoQt.hpp"

#include <QShowEvent>
#include <QWindow>

namespace lumoscad::qt {

DialogoQt::DialogoQt(QWidget* sotto, Qt::WindowFlags genere)
    : QDialog(nullptr, genere), sotto_(sotto != nullptr ? sotto->window() : nullptr) {}

void DialogoQt::setVisible(bool visibile) {
  if (visibile && sotto_ && sotto_->windowHandle() != nullptr) {
    create();
    windowHandle()->setTransientParent(sotto_->windowHandle());
  }
  QDialog::setVisible(visibile);
}

void DialogoQt::showEvent(QShowEvent* evento) {
  const bool spostata = testAttribute(Qt::WA_Moved);
  QDialog::showEvent(evento);
  if (!evento->spontaneous() && sotto_ && !spostata) {
    adjustPosition(sotto_);
    setAttribute(Qt::WA_Moved, false);
  }
}

} // namespace lumoscad::qt
