#pragma once

#include <QDialog>
#include <QPointer>

namespace lumoscad::qt {

/// A modal window over another one, which may be the calling program's: it stays above that window and opens over the
/// middle of it, but does not belong to it. A window of the program that goes while one of ours is open takes nothing
/// of ours with it.
class DialogoQt : public QDialog {
 public:
  DialogoQt(QWidget* sotto, Qt::WindowFlags genere);

  void setVisible(bool visibile) override;

 protected:
  void showEvent(QShowEvent* evento) override;

 private:
  QPointer<QWidget> sotto_;
};

} // namespace lumoscad::qt
