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
  /// Whether the panel beside the list is to be open when the window opens.
  [[nodiscard]] bool PanelOpen() const;
  /// Whether the window has the size that the person gave it.
  [[nodiscard]] bool OwnSize() const { return memory_.Size().has_value(); }
  /// The person opened the panel or closed it.
  void PanelChanged(bool open) { panel_ = open; }
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
  std::optional<bool> panel_; ///< as the person left it; nothing where it was left alone
};

} // namespace lumoscad::qt
