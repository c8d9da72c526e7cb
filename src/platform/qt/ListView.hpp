#pragma once

#include "platform/GestureTable.hpp"
#include "platform/qt/ColumnWidths.hpp"
#include "platform/qt/FrozenColumns.hpp"
#include "platform/qt/ListIcons.hpp"
#include "platform/qt/ListModel.hpp"
#include "platform/qt/ListPainter.hpp"
#include "platform/qt/Look.hpp"
#include "platform/qt/TableQt.hpp"

#include <QElapsedTimer>

#include <map>
#include <optional>
#include <utility>
#include <vector>

class QPainter;
class QRegion;

namespace lumoscad::qt {

class ListHeadings;

/// Who is told of what happens in a list. Positions are nominal twips, rows are -1 for none.
class ListListener {
 public:
  ListListener() = default;
  ListListener(const ListListener&) = delete;
  ListListener& operator=(const ListListener&) = delete;
  virtual ~ListListener() = default;

  virtual void RowSelected(int row) = 0;
  /// The current row moved while these keys were held.
  virtual void RowMoved(int row, HeldKeys held) = 0;
  /// Left button down; `row` is the one under the pointer.
  virtual void MousePressed(int row, int x, int y, HeldKeys held) = 0;
  /// The pressed left button was moved over this row.
  virtual void MouseDragged(int row) = 0;
  /// Left button up after a press in the list.
  virtual void MouseReleased() = 0;
  /// A tick or an editor was chosen by keyboard.
  virtual void CellActivated(const QModelIndex& cell) = 0;
  /// The rows up to this cell are to be ticked as the first of them is.
  virtual void TickedUpTo(const QModelIndex& cell) = 0;
  /// Letters were typed on the list; `anew` when they do not go on from others.
  virtual void LettersTyped(const QString& letters, bool anew) = 0;
  /// The context menu is asked for, over this row, at this place of the screen.
  virtual void MenuAsked(int row, const QPoint& where) = 0;
  /// Every row is to be selected.
  virtual void AllSelected() = 0;
  /// A digit was typed on a date cell.
  virtual void DigitTyped(const QModelIndex& cell, const QString& digit) = 0;
  /// A key came while the list was blocked.
  virtual void KeyRefused() = 0;
  /// Columns or scroll position changed.
  virtual void LaidOut() = 0;
  /// The field that is open over this cell; null for none.
  [[nodiscard]] virtual QWidget* EditorOver(const QModelIndex& /*cell*/) { return nullptr; }
};

/// The list of a window: a table that turns mouse and keys into the gestures the screens know.
class ListView final : public TableQt {
 public:
  ListView(ListWindow& window, ListModel& model, QWidget* parent);

  /// There is one from the moment on at which the list can be seen, and it outlives the list's last event.
  void SetListener(ListListener* listener) { listener_ = listener; }

  /// Takes the size of the desktop's text.
  void Measure();
  /// The pictures of the tick cells.
  [[nodiscard]] ListImages& Images() const noexcept { return *images_; }
  /// Makes `row` the current row, in the current column, without telling anyone.
  void ShowSelected(int row);
  /// Makes `cell` the current one; the listener is told of the row when it changes.
  void GoTo(int row, int column);
  /// Shows which rows are selected, where the screen lets several be.
  void ShowSelection();
  /// While blocked, neither the wheel nor the keys move the list under an open editor.
  void Block(bool blocked) { blocked_ = blocked; }
  [[nodiscard]] bool Blocked() const noexcept { return blocked_; }
  /// The field that is open over this cell; null for none.
  [[nodiscard]] QWidget* EditorOn(const QModelIndex& cell) const;
  /// Presses in the middle of `cell`, as the mouse would.
  void Press(const QModelIndex& cell);

  /// The nearest cell to tick or to edit in `row`, from `column` (not included) to the right or to the left;
  /// -1 when there is none.
  [[nodiscard]] int ActiveColumn(int column, bool forward, bool editorsOnly) const;
  /// The columns that stay where they are when the list is scrolled sideways.
  [[nodiscard]] const FrozenColumns& Frozen() const noexcept { return frozen_; }
  /// Scrolls sideways so far that the ticks of the current row are in sight.
  void ShowTicks();
  /// Gives a column a width in pixels, whatever the window's; none any more where there is no `width`.
  void SetWidth(int column, std::optional<int> width);
  /// The widths that columns were given, in pixels.
  [[nodiscard]] const std::map<int, int>& GivenWidths() const noexcept { return given_; }
  /// How wide a column has to be for what is in it and above it, in pixels.
  [[nodiscard]] int ContentWidth(int column) const;
  [[nodiscard]] QModelIndex indexAt(const QPoint& point) const override;
  [[nodiscard]] QRect visualRect(const QModelIndex& cell) const override;
  void scrollTo(const QModelIndex& cell, ScrollHint hint = EnsureVisible) override;
  /// First and last row in sight; -1 when there is none.
  [[nodiscard]] std::pair<int, int> RowsInView() const;
  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override { return {look::Scaled(240), 4 * look::RowHeight()}; }

  /// What stands above it; null where nothing does yet.
  void SetHeadings(ListHeadings* headings) { headings_ = headings; }
  [[nodiscard]] ListHeadings* Headings() const noexcept { return headings_; }

  // Several rows at once.

  /// Whether several rows can be selected.
  [[nodiscard]] bool SeveralRows() const noexcept { return gestures_ != nullptr; }
  [[nodiscard]] bool Selected(int row) const;
  /// The first and the last of selected rows that stand together, ascending.
  [[nodiscard]] std::vector<std::pair<int, int>> SelectedRows() const;
  /// Goes to a row and adds it to the selection or takes it out, as the keys with Ctrl do.
  void ChooseRow(int row, bool chosen);
  /// Tells assistive tools of the current cell when it says something else than when they were told of it last.
  void TellContent();

  /// Letters typed in the list: where rows are sorted, the screen looks for them.
  void keyboardSearch(const QString& letters) override;

 protected:
  void currentChanged(const QModelIndex& newOne, const QModelIndex& oldOne) override;
  [[nodiscard]] QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& cell,
                                                                     const QEvent* event) const override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override { mousePressEvent(event); }
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void scrollContentsBy(int dx, int dy) override;

 private:
  void Prepare();
  void ShowColumns();
  void LayOutColumns();
  /// The columns, frozen or not, of which something lies between two pixels of the viewport.
  [[nodiscard]] std::vector<ListPainter::Column> ColumnsBetween(int left, int right, bool frozen) const;
  void PaintRows(QPainter& painter, const QRegion& region, const std::vector<ListPainter::Column>& columns);
  void PaintFrozen(QPainter& painter, const QRegion& region);
  [[nodiscard]] ListPainter::Row RowInView(int row) const;
  /// Nominal x of a pixel of the viewport, on a row or below all of them, where no column stays in place.
  [[nodiscard]] int NominalX(int x, bool onRow) const;
  [[nodiscard]] bool KeyOnCell(const QKeyEvent& event);
  [[nodiscard]] bool MovementKey(const QKeyEvent& event);
  [[nodiscard]] bool SelectionKey(const QKeyEvent& event);
  [[nodiscard]] int RowTowards(Movement movement) const;
  void MoveTo(int row, int column, HeldKeys held);

  const ListWindow& window_;
  ListGestures* gestures_; ///< null where at most one row can be selected
  ListModel& model_;
  ColumnWidths widths_;
  FrozenColumns frozen_;
  std::map<int, int> given_;
  int measured_ = look::FontPixels(); ///< the text size that `given_` goes by
  ListImages* images_;
  ListPainter painter_;
  ListListener* listener_ = nullptr;
  ListHeadings* headings_ = nullptr;
  QString said_;            ///< of the current cell to assistive tools
  QString letters_;         ///< typed one after the other
  QElapsedTimer sinceLast_; ///< of them
  bool muteSelection_ = false;
  bool clipped_ = false; ///< the table knows the selected rows in sight alone
  bool pressed_ = false;
  bool blocked_ = false;
};

} // namespace lumoscad::qt
