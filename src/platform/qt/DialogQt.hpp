#pragma once

#include <QDialog>
#include <QPointer>

namespace lumoscad::qt {

/// A modal window over another one, which may be the calling program's: it stays above that window and opens over the
/// middle of it, but does not belong to it. A window of the program that goes while one of ours is open takes nothing
/// of ours with it.
class DialogQt : public QDialog {
 public:
  DialogQt(QWidget* below, Qt::WindowFlags kind);

  void setVisible(bool visible) override;

 protected:
  /// The window's colours, fonts and sizes have to be taken from the desktop again: its palette or its font is another
  /// one, or the window is shown now, with all the widgets that were made for it.
  virtual void TakeLook();
  bool event(QEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  QPointer<QWidget> below_;
};

} // namespace lumoscad::qt
