#pragma once

#include "platform/GestureTable.hpp"

#include <QAbstractItemView>
#include <QAccessibleWidget>
#include <QModelIndex>

#include <array>
#include <cstddef>
#include <cstdint>
#include <list>
#include <unordered_map>
#include <vector>

namespace lumoscad::qt {

class AccessibleCell;

/// Something that an assistive tool can do with a cell: what a person does there by a key.
struct CellAction {
  QString name;                    ///< as the toolkit calls it
  Gesture gesture = Gesture::None; ///< none where the cell is only gone to
  QString text = {};               ///< as a person calls it; empty: as the gesture is called
};

/// A view of items as assistive tools see it: its cells, by the rows and columns that are shown. Qt's own faces of such
/// views answer null for a cell that is not there, which the bridge to the tools follows, and their cells can only be
/// selected; these cells do what a person can do by keys, and one that is not there is an empty cell. Cells are made
/// when they are asked for, and no more than `MostCells` are kept.
class AccessibleItems : public QAccessibleWidget, public QAccessibleTableInterface {
 public:
  /// Of those asked for last. An older one is gone, as after a change of the rows: tools ask the list again.
  static constexpr std::size_t MostCells = 2000;

  AccessibleItems(QAbstractItemView& view, QAccessible::Role role);
  AccessibleItems(const AccessibleItems&) = delete;
  AccessibleItems& operator=(const AccessibleItems&) = delete;
  ~AccessibleItems() override;

  [[nodiscard]] QAbstractItemView* View() const;

  // What a kind of view says of its cells. `cell` is one of the view's model; an invalid one says nothing.

  [[nodiscard]] virtual QString CellText(const QModelIndex& cell, QAccessible::Text kind) const;
  [[nodiscard]] virtual QAccessible::State CellState(const QModelIndex& cell) const;
  [[nodiscard]] virtual QAccessible::Role CellRole() const;
  [[nodiscard]] virtual std::vector<CellAction> Actions(const QModelIndex& cell) const;
  /// Goes to the cell and presses the gesture's key there, through the same events as a keyboard.
  virtual void Perform(const QModelIndex& cell, Gesture gesture) const;
  /// What stands over a column of the model.
  [[nodiscard]] virtual QList<QAccessibleInterface*> ColumnHeads(int column) const;
  /// What tells whose row of the model it is.
  [[nodiscard]] virtual QList<QAccessibleInterface*> RowHeads(int row) const;
  [[nodiscard]] virtual bool RowChosen(int row) const;

  // Shown rows and columns, and those of the model.

  [[nodiscard]] int ColumnShown(int column) const; ///< place of a column of the model; -1 for a hidden one
  [[nodiscard]] virtual int RowShown(int row) const { return row; }
  [[nodiscard]] QModelIndex Index(int row, int column) const; ///< of the model; invalid where it has none
  /// The number of a cell among the children; -1 for none.
  [[nodiscard]] int ChildOf(const QModelIndex& cell) const;
  /// The face of a cell of the model, or of none.
  [[nodiscard]] AccessibleCell* Cell(int row, int column) const;
  /// Does it once the asking tool has its answer: what comes of it may be a window that waits for a person.
  void Do(const QModelIndex& cell, Gesture gesture) const;
  /// Notes that the cell is in use.
  void Touch(int row, int column) const;

  [[nodiscard]] bool isValid() const override;
  [[nodiscard]] void* interface_cast(QAccessible::InterfaceType type) override;
  [[nodiscard]] int childCount() const override;
  [[nodiscard]] QAccessibleInterface* child(int index) const override;
  [[nodiscard]] int indexOfChild(const QAccessibleInterface* child) const override;
  [[nodiscard]] QAccessibleInterface* childAt(int x, int y) const override;
  [[nodiscard]] QAccessibleInterface* focusChild() const override;

  [[nodiscard]] QAccessibleInterface* caption() const override { return nullptr; }
  [[nodiscard]] QAccessibleInterface* summary() const override { return nullptr; }
  /// Never null.
  [[nodiscard]] QAccessibleInterface* cellAt(int row, int column) const override;
  [[nodiscard]] int selectedCellCount() const override;
  /// Of more than are kept, the first ones.
  [[nodiscard]] QList<QAccessibleInterface*> selectedCells() const override;
  [[nodiscard]] QString columnDescription(int column) const override;
  [[nodiscard]] QString rowDescription(int row) const override;
  [[nodiscard]] int selectedColumnCount() const override { return 0; }
  [[nodiscard]] int selectedRowCount() const override;
  [[nodiscard]] int columnCount() const override { return static_cast<int>(Columns().size()); }
  [[nodiscard]] int rowCount() const override;
  [[nodiscard]] QList<int> selectedColumns() const override { return {}; }
  [[nodiscard]] QList<int> selectedRows() const override;
  [[nodiscard]] bool isColumnSelected(int /*column*/) const override { return false; }
  [[nodiscard]] bool isRowSelected(int row) const override { return RowChosen(ModelRow(row)); }
  bool selectRow(int row) override;
  bool selectColumn(int /*column*/) override { return false; }
  bool unselectRow(int /*row*/) override { return false; }
  bool unselectColumn(int /*column*/) override { return false; }
  void modelChange(QAccessibleTableModelChangeEvent* /*event*/) override {} // the model says so itself

 protected:
  /// The columns of the model that are shown, in their order; they stay the same while the rows do.
  [[nodiscard]] virtual std::vector<int> ShownColumns() const;
  [[nodiscard]] const std::vector<int>& Columns() const;
  /// The row of the model in a place; -1 beyond the last.
  [[nodiscard]] virtual int ModelRow(int place) const;
  /// Whether a person could give this view a key: it is shown, and no other window stands in the way.
  [[nodiscard]] static bool Reachable(const QWidget& view);
  /// Sends the first key of a gesture.
  static void Press(QWidget& widget, Gesture gesture);

 private:
  using Key = std::uint64_t;
  struct Kept {
    QAccessible::Id id;
    AccessibleCell* cell;
    std::list<Key>::iterator used;
  };

  [[nodiscard]] static Key KeyOf(int row, int column);
  void Watch() const;
  void Unwatch() const;
  void Forget() const;
  void DropOldest() const;

  mutable std::vector<int> columns_;
  mutable QAccessible::Id fence_ = 0;
  mutable std::list<Key> order_; ///< the one used last at the end
  mutable std::unordered_map<Key, Kept> cells_;
  mutable const QAbstractItemModel* watched_ = nullptr;
  mutable std::array<QMetaObject::Connection, 5> connections_;
};

/// A cell of such a view. It is told by its row and column of the model, and goes when the rows change.
class AccessibleCell final : public QAccessibleInterface,
                             public QAccessibleTableCellInterface,
                             public QAccessibleActionInterface {
 public:
  AccessibleCell(const AccessibleItems& items, int row, int column) : items_(items), row_(row), column_(column) {}
  AccessibleCell(const AccessibleCell&) = delete;
  AccessibleCell& operator=(const AccessibleCell&) = delete;
  ~AccessibleCell() override = default;

  [[nodiscard]] QModelIndex Index() const;

  [[nodiscard]] bool isValid() const override;
  [[nodiscard]] QObject* object() const override { return nullptr; }
  [[nodiscard]] QWindow* window() const override { return items_.window(); }
  [[nodiscard]] QAccessibleInterface* childAt(int /*x*/, int /*y*/) const override { return nullptr; }
  [[nodiscard]] QAccessibleInterface* parent() const override;
  [[nodiscard]] QAccessibleInterface* child(int /*index*/) const override { return nullptr; }
  [[nodiscard]] int childCount() const override { return 0; }
  [[nodiscard]] int indexOfChild(const QAccessibleInterface* /*child*/) const override { return -1; }
  [[nodiscard]] QString text(QAccessible::Text kind) const override;
  void setText(QAccessible::Text /*kind*/, const QString& /*text*/) override {} // values are written in an editor
  [[nodiscard]] QRect rect() const override;
  [[nodiscard]] QAccessible::Role role() const override { return items_.CellRole(); }
  [[nodiscard]] QAccessible::State state() const override;
  [[nodiscard]] void* interface_cast(QAccessible::InterfaceType type) override;

  [[nodiscard]] bool isSelected() const override;
  [[nodiscard]] QList<QAccessibleInterface*> columnHeaderCells() const override;
  [[nodiscard]] QList<QAccessibleInterface*> rowHeaderCells() const override;
  [[nodiscard]] int columnIndex() const override { return items_.ColumnShown(column_); }
  [[nodiscard]] int rowIndex() const override { return row_ < 0 ? -1 : items_.RowShown(row_); }
  [[nodiscard]] int columnExtent() const override { return 1; }
  [[nodiscard]] int rowExtent() const override { return 1; }
  [[nodiscard]] QAccessibleInterface* table() const override { return parent(); }

  [[nodiscard]] QStringList actionNames() const override;
  [[nodiscard]] QString localizedActionName(const QString& name) const override;
  [[nodiscard]] QString localizedActionDescription(const QString& name) const override;
  void doAction(const QString& name) override;
  [[nodiscard]] QStringList keyBindingsForAction(const QString& name) const override;

 private:
  [[nodiscard]] CellAction Action(const QString& name) const;

  const AccessibleItems& items_;
  int row_;
  int column_;
};

} // namespace lumoscad::qt
