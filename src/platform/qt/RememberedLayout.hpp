#pragma once

#include "platform/qt/WindowMemory.hpp"

#include <QElapsedTimer>
#include <QSize>

class QDialog;
class QResizeEvent;

namespace lumoscad {
class ListWindow;
}

namespace lumoscad::qt {

struct ListParts;

/// A list window's size and the widths of its columns as the person left them the last time. A window that nobody
/// changed opens as its screen lays it out, and leaves nothing behind.
class RememberedLayout {
 public:
  RememberedLayout(QDialog& window, ListParts& parts, const ListWindow& list);

  /// Takes the size that the screen's own layout asks for, within the display.
  void TakeOwnSize() const;
  /// Takes what is remembered, where there is something.
  void Apply();
  /// The window is shown from now on.
  void Shown() { shown_.start(); }
  /// The window has another size: by the person, where it comes from outside and not with the showing.
  void Resized(const QResizeEvent& event);
  void ColumnsChanged() { columnsChanged_ = true; }
  /// Remembers what the person changed since the window was shown.
  void Keep() const;
  /// Forgets what is remembered, and lays the window out as its screen says.
  void Reset();

 private:
  QDialog& window_;
  ListParts& parts_;
  const ListWindow& list_;
  WindowMemory memory_;
  QElapsedTimer shown_;
  bool resized_ = false;
  bool columnsChanged_ = false;
};

} // namespace lumoscad::qt
