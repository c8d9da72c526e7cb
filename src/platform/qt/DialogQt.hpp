#pragma once

#include <QDialog>
#include <QPointer>

#include <memory>

namespace lumoscad::qt {

/// A modal window over another one, which may be the calling program's: it stays above that window and opens over the
/// middle of it, but does not belong to it. A window of the program that goes while one of ours is open takes nothing
/// of ours with it. Where there is none below, it stays above the one that the caller named by its number.
class DialogQt : public QDialog {
 public:
  DialogQt(QWidget* below, Qt::WindowFlags kind);
  DialogQt(const DialogQt&) = delete;
  DialogQt& operator=(const DialogQt&) = delete;
  ~DialogQt() override;

  void setVisible(bool visible) override;

 protected:
  /// The window's colours, fonts and sizes have to be taken from the desktop again: its palette or its font is another
  /// one, or the window is shown now, with all the widgets that were made for it.
  virtual void TakeLook();
  bool event(QEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  QPointer<QWidget> below_;
  std::unique_ptr<QWindow> callers_; ///< stands for a window of the calling program that Qt does not know
};

} // namespace lumoscad::qt
