#pragma once

#include "platform/Desktop.hpp"
#include "platform/GestureTable.hpp"
#include "platform/qt/AccessibleFactory.hpp"
#include "platform/qt/DateKeys.hpp"
#include "platform/qt/DialogQt.hpp"
#include "platform/qt/ListModel.hpp"
#include "platform/qt/ListParts.hpp"
#include "platform/qt/RememberedLayout.hpp"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class QAction;

namespace lumoscad::qt {

/// What the windows over a list have in common: the modal showing and its end, the way of a gesture to the screen and
/// of the screen's state back to the widgets, the in-place editors. It has no rule of its own. A window adds the
/// gestures that it alone has.
class ModalWindowQt : public DialogQt, protected ListListener {
 public:
  ModalWindowQt(const ModalWindowQt&) = delete;
  ModalWindowQt& operator=(const ModalWindowQt&) = delete;
  ~ModalWindowQt() override { parts_.table->SetListener(nullptr); } // the list goes after this

  /// Shows the window until the screen has unloaded itself; gives back what a gesture threw, or null.
  [[nodiscard]] std::exception_ptr Display();

 protected:
  using Kind = ListColumn::Kind;

  static constexpr int TabCode = 9;
  static constexpr int EnterCode = 13;

  ModalWindowQt(ListWindow& list, QWidget* below);

  /// Ends the construction, once all widgets are there: tells how many rows there are and takes a size.
  void Complete();
  /// The layout is the screen's own again: what the person opened beside the list closes.
  virtual void ClosePanels() {}
  /// The text that tells how many rows there are.
  [[nodiscard]] virtual QString RowCountText(int rows) const = 0;
  /// Whether the table's gesture can be done in this window.
  [[nodiscard]] virtual bool Offers(const GestureEntry& entry) const = 0;
  /// Makes the widgets that only this kind of window has follow the screen, before the in-place editors do.
  virtual void Follow(const ListState& state) = 0;

  /// Runs one gesture and follows it. Gestures that come while another one runs are dropped: they would find the
  /// screen half-way through a change. What one throws ends the showing.
  void Gesture(const std::function<void()>& action);
  /// `gesture` is what "Conferma" and its keys do.
  void ConnectConfirm(const std::function<void()>& gesture);
  [[nodiscard]] bool Closed() const noexcept { return closed_; }

  /// The first column of this kind; one past the last where there is none.
  [[nodiscard]] int Column(Kind kind) const;
  /// Writes a digit typed over the list into the date editor, once a gesture has opened it.
  void TypeIntoEditor(const QString& digit);
  /// The cell on which the editor of this kind was opened last, where its row shows now.
  [[nodiscard]] QModelIndex EditorCell(Kind kind) const;
  /// Esc outside an editor: leaves the window. Over changes it first goes to Annulla, because one Esc too many out of
  /// an editor must not throw a morning's work away.
  void Abandon();
  /// True when the person left the field; false when the focus went to a list or a menu, or the window lost it.
  [[nodiscard]] static bool LeftTheField(const QFocusEvent& event);

  void RowSelected(int row) override;
  void RowMoved(int row, HeldKeys held) override;
  void TickedUpTo(const QModelIndex& cell) override;
  void AllSelected() override;
  void LettersTyped(const QString& letters, bool anew) override;
  void LaidOut() override;
  [[nodiscard]] QWidget* EditorOver(const QModelIndex& cell) override;
  void TakeLook() override;
  bool event(QEvent* event) override;
  bool eventFilter(QObject* object, QEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

  AccessibleFactory faces_;
  ListWindow& list_;
  ListModel model_;
  ListParts parts_;
  RememberedLayout layout_;
  QAction* details_ = nullptr;
  QAction* help_ = nullptr;
  bool covered_ = false; ///< another window came up modally since this was last set to false

 private:
  void ConnectList();
  void ConnectFields();
  /// `known` is what the screen has of the field's text.
  void ConnectText(QLineEdit& field, const std::string& known, const std::function<void(const std::string&)>& write);
  void ConnectDateKeys(QLineEdit& field, DateField which);
  void WriteIntoEditor(const std::string& text);
  void ShowRowCount();
  void Synchronise();
  void SynchroniseRows(const ListState& state);
  void SynchroniseEditor(const CellEditor& editor, QFrame& frame, QWidget& field, Kind kind);
  void SynchroniseEditor(const ListState& state);
  void PlaceEditor();
  void NameEditor(Kind kind);
  [[nodiscard]] const CellEditor& EditorState(Kind kind) const;
  [[nodiscard]] QRect EditorArea(Kind kind) const;
  void AddLayoutActions();
  void ShowDetails();
  void ShowHelp();
  void Close();

  std::uint64_t order_;
  std::uint64_t content_;
  std::uint64_t selection_ = 0;
  bool inGesture_ = false;
  bool synchronising_ = false;
  bool closed_ = false;
  bool enteredByClick_ = false; ///< the click that gave the date field at the top the focus is still held
  std::exception_ptr error_;
  std::vector<std::unique_ptr<DateKeys>> dateKeys_; ///< gone before the fields lose the focus for the last time
};

} // namespace lumoscad::qt
