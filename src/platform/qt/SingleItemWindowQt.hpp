#pragma once

#include "platform/qt/ModalWindowQt.hpp"

class QKeyEvent;

namespace lumoscad::qt {

/// The modal window of a single item's due dates: a window over a list, with the item's description above and the
/// control that ticks every row.
class SingleItemWindowQt final : public ModalWindowQt {
 public:
  SingleItemWindowQt(SingleItemWindow& window, QWidget* below);

  /// Esc outside the editor.
  void reject() override;

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  [[nodiscard]] QString RowCountText(int rows) const override;
  [[nodiscard]] bool Offers(const GestureEntry& entry) const override { return entry.screens != GestureScreens::Lists; }
  void Follow(const ListState& state) override;
  void MousePressed(int row, int x, int y, HeldKeys held) override;
  void MouseDragged(int /*row*/) override {} // one row at a time
  void MenuAsked(int /*row*/, const QPoint& /*where*/) override {}
  void MouseReleased() override;
  void CellActivated(const QModelIndex& cell) override;
  void DigitTyped(const QModelIndex& cell, const QString& digit) override;
  void KeyRefused() override;

  void AddDescription();
  void AddSelectAll();
  void RenameParts();
  void ConnectFields();
  void ConnectButtons();
  void ConnectSteps();

  void ShowSingleItem(const SingleItemState& state);
  void KeepOnTop(bool above);

  void PressColumn(Kind kind);
  void TypeDigit(const QString& digit);
  bool KeyInList(const QKeyEvent& key);
  bool KeyInEditor(const QKeyEvent& key);
  void LeaveField(const std::function<void()>& gesture, const QFocusEvent& event);

  SingleItemWindow& window_;
  QFrame* FrameDesc_ = nullptr;
  QPushButton* PicSelezionaTutto_ = nullptr;
  int pressedRow_ = -1;
  bool pressedTick_ = false;
  bool lostRelease_ = false; ///< the press that is on its way will not be followed by its release
};

} // namespace lumoscad::qt
