#pragma once

#include "platform/qt/FilterBar.hpp"
#include "platform/qt/ListMenu.hpp"
#include "platform/qt/ListReporter.hpp"
#include "platform/qt/ModalWindowQt.hpp"

#include <string_view>

class QBoxLayout;
class QKeyEvent;

namespace lumoscad::qt {

/// The one modal window of all list screens: to what all windows over a list do it adds the headings, the two banks,
/// the mouse outside the list and the way from cell to cell.
class ListWindowQt final : public ModalWindowQt {
 public:
  ListWindowQt(ListWindow& window, QWidget* below);
  ListWindowQt(const ListWindowQt&) = delete;
  ListWindowQt& operator=(const ListWindowQt&) = delete;
  ~ListWindowQt() override { list_.SetDropDown({}); }

  /// Esc: abandons an open editor, otherwise leaves the window as `Abandon` does.
  void reject() override;

 protected:
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  /// Where to go from a cell that closes.
  enum class Way { NextRow, NextCell, CellBefore };

  void ClosePanels() override;
  [[nodiscard]] QString RowCountText(int rows) const override;
  [[nodiscard]] bool Offers(const GestureEntry& entry) const override;
  void Follow(const ListState& state) override;
  void MousePressed(int row, int x, int y, HeldKeys held) override;
  void MouseDragged(int row) override;
  void MenuAsked(int row, const QPoint& where) override;
  void MouseReleased() override;
  void CellActivated(const QModelIndex& cell) override;
  void DigitTyped(const QModelIndex& cell, const QString& digit) override;
  void KeyRefused() override;

  void ConnectBanks();
  void ConnectTyping(BankBox* box, BankField field);
  void ShowDropDown(std::string_view name, bool opened);
  void ConnectHeadings();
  void AddMenu();
  [[nodiscard]] int PlaceOfTheList(const QBoxLayout& stack) const;
  [[nodiscard]] FilterBar& Filter();
  bool KeyInEditor(QObject* field, const QKeyEvent& key);
  void CloseEditorWith(QObject* field, int code);
  void GoToNext(const QObject* field, Way way);

  ListReporter* reporter_ = nullptr; ///< null where the list says nothing of itself
  FilterBar* filter_ = nullptr;      ///< null until it is asked for
  ListMenu* menu_ = nullptr;         ///< null where the screen has no gestures of its own
  bool pressedOutside_ = false;
  bool pressedBelowRows_ = false;
  bool dragged_ = false;
  RowPress press_ = RowPress::Plain; ///< what the screen made of the last press
};

} // namespace lumoscad::qt
