#include "platform/qt/AccessibleItems.hpp"

#include "platform/qt/GestureKeys.hpp"

#include <QApplication>
#include <QKeyEvent>
#include <QPersistentModelIndex>
#include <QPointer>

#include <algorithm>
#include <limits>
#include <utility>

namespace lumoscad::qt {

AccessibleItems::AccessibleItems(QAbstractItemView& view, QAccessible::Role role) : QAccessibleWidget(&view, role) {}

AccessibleItems::~AccessibleItems() {
  Unwatch();
  Forget();
  if (fence_ != 0) {
    QAccessible::deleteAccessibleInterface(fence_);
  }
}

QAbstractItemView* AccessibleItems::View() const {
  // In the view's destructor the widget is still there, and no view any more.
  return dynamic_cast<QAbstractItemView*>(widget());
}

bool AccessibleItems::isValid() const {
  return QAccessibleWidget::isValid() && View() != nullptr && View()->model() != nullptr;
}

void* AccessibleItems::interface_cast(QAccessible::InterfaceType type) {
  if (type == QAccessible::TableInterface) {
    return role() == QAccessible::Table ? static_cast<QAccessibleTableInterface*>(this) : nullptr;
  }
  return QAccessibleWidget::interface_cast(type);
}

// The cells that are kept.

void AccessibleItems::Unwatch() const {
  for (const QMetaObject::Connection& connection : connections_) {
    QObject::disconnect(connection);
  }
}

/// The view may have got its model, or another one, since it was last asked for a cell.
void AccessibleItems::Watch() const {
  const QAbstractItemModel* model = isValid() ? View()->model() : nullptr;
  if (model == nullptr || watched_ == model) {
    return;
  }
  Unwatch();
  Forget();
  watched_ = model;
  const auto forget = [this] { Forget(); };
  QAbstractItemView* const view = View();
  connections_ = {QObject::connect(model, &QAbstractItemModel::modelReset, view, forget),
                  QObject::connect(model, &QAbstractItemModel::layoutChanged, view, forget),
                  QObject::connect(model, &QAbstractItemModel::rowsInserted, view, forget),
                  QObject::connect(model, &QAbstractItemModel::rowsRemoved, view, forget),
                  QObject::connect(model, &QObject::destroyed, view, [this] {
                    watched_ = nullptr;
                    Forget();
                  })};
}

AccessibleItems::Key AccessibleItems::KeyOf(int row, int column) {
  return static_cast<Key>(static_cast<std::uint32_t>(row)) << 32U | static_cast<std::uint32_t>(column);
}

AccessibleCell* AccessibleItems::Cell(int row, int column) const {
  Watch();
  if (!Index(row, column).isValid()) {
    row = -1; // one empty cell a column, for its heading
    column = ColumnShown(column) < 0 ? -1 : column;
  }
  const Key key = KeyOf(row, column);
  if (const auto found = cells_.find(key); found != cells_.end()) {
    Touch(row, column);
    return found->second.cell;
  }
  auto* cell = new AccessibleCell(*this, row, column);
  const QAccessible::Id id = QAccessible::registerAccessibleInterface(cell); // which owns it from here
  cells_[key] = {id, cell, order_.insert(order_.end(), key)};
  while (cells_.size() > MostCells) {
    DropOldest(); // after the new one, which would get the number of the old one otherwise
  }
  return cell;
}

void AccessibleItems::Touch(int row, int column) const {
  if (const auto found = cells_.find(KeyOf(row, column)); found != cells_.end()) {
    order_.splice(order_.end(), order_, found->second.used);
  }
}

void AccessibleItems::DropOldest() const {
  const auto oldest = cells_.find(order_.front());
  const QAccessible::Id id = oldest->second.id;
  order_.pop_front();
  cells_.erase(oldest);
  QAccessible::deleteAccessibleInterface(id);
}

/// Qt gives the number that was given last again once it is free. A tool that still has it must not find another row
/// there, so that one number is taken out of use before the others are freed.
void AccessibleItems::Forget() const {
  const QAccessible::Id last =
      cells_.empty() ? fence_ : QAccessible::registerAccessibleInterface(new AccessibleCell(*this, -1, -1));
  if (last != fence_ && fence_ != 0) {
    QAccessible::deleteAccessibleInterface(fence_);
  }
  fence_ = last;
  columns_.clear();
  order_.clear();
  for (const auto& [key, kept] : std::exchange(cells_, {})) {
    QAccessible::deleteAccessibleInterface(kept.id);
  }
}

// Shown rows and columns, and those of the model.

std::vector<int> AccessibleItems::ShownColumns() const {
  return {0};
}

const std::vector<int>& AccessibleItems::Columns() const {
  if (columns_.empty()) {
    columns_ = ShownColumns();
  }
  return columns_;
}

int AccessibleItems::ColumnShown(int column) const {
  const std::vector<int>& columns = Columns();
  const auto found = std::find(columns.begin(), columns.end(), column);
  return found == columns.end() ? -1 : static_cast<int>(found - columns.begin());
}

int AccessibleItems::ModelRow(int place) const {
  return place < rowCount() ? place : -1;
}

QModelIndex AccessibleItems::Index(int row, int column) const {
  return isValid() && row >= 0 && column >= 0 ? View()->model()->index(row, column, View()->rootIndex())
                                              : QModelIndex();
}

int AccessibleItems::rowCount() const {
  return isValid() ? View()->model()->rowCount(View()->rootIndex()) : 0;
}

int AccessibleItems::childCount() const {
  const auto cells = static_cast<std::int64_t>(rowCount()) * columnCount();
  return static_cast<int>(std::min<std::int64_t>(cells, std::numeric_limits<int>::max()));
}

QAccessibleInterface* AccessibleItems::child(int index) const {
  const int columns = columnCount();
  return index < 0 || columns == 0 ? nullptr : cellAt(index / columns, index % columns);
}

int AccessibleItems::ChildOf(const QModelIndex& cell) const {
  const int column = cell.isValid() ? ColumnShown(cell.column()) : -1;
  const int row = cell.isValid() ? RowShown(cell.row()) : -1;
  const auto child = static_cast<std::int64_t>(row) * columnCount() + column;
  return row < 0 || column < 0 || child > std::numeric_limits<int>::max() ? -1 : static_cast<int>(child);
}

int AccessibleItems::indexOfChild(const QAccessibleInterface* child) const {
  const auto* cell = dynamic_cast<const AccessibleCell*>(child);
  return cell == nullptr || cell->table() != this ? -1 : ChildOf(cell->Index());
}

QAccessibleInterface* AccessibleItems::childAt(int x, int y) const {
  if (!isValid()) {
    return nullptr;
  }
  const QModelIndex cell = View()->indexAt(View()->viewport()->mapFromGlobal(QPoint(x, y)));
  return cell.isValid() ? Cell(cell.row(), cell.column()) : nullptr;
}

QAccessibleInterface* AccessibleItems::focusChild() const {
  if (!isValid() || !View()->hasFocus()) {
    return nullptr;
  }
  const QModelIndex cell = View()->currentIndex();
  return ChildOf(cell) >= 0 ? static_cast<QAccessibleInterface*>(Cell(cell.row(), cell.column()))
                            : QAccessible::queryAccessibleInterface(View());
}

QAccessibleInterface* AccessibleItems::cellAt(int row, int column) const {
  const std::vector<int>& columns = Columns();
  const bool there = column >= 0 && column < static_cast<int>(columns.size());
  return Cell(row < 0 ? -1 : ModelRow(row), there ? columns[static_cast<std::size_t>(column)] : -1);
}

QString AccessibleItems::columnDescription(int column) const {
  const std::vector<int>& columns = Columns();
  if (!isValid() || column < 0 || column >= static_cast<int>(columns.size())) {
    return {};
  }
  return View()->model()->headerData(columns[static_cast<std::size_t>(column)], Qt::Horizontal).toString();
}

QString AccessibleItems::rowDescription(int row) const {
  return row >= 0 && row < rowCount() ? QString::number(row + 1) : QString();
}

// What is selected.

bool AccessibleItems::RowChosen(int row) const {
  const std::vector<int>& columns = Columns();
  const QModelIndex first = columns.empty() ? QModelIndex() : Index(row, columns.front());
  return first.isValid() && View()->selectionModel() != nullptr && View()->selectionModel()->isSelected(first);
}

QList<int> AccessibleItems::selectedRows() const {
  QList<int> rows;
  for (int row = 0; row < rowCount(); ++row) {
    if (isRowSelected(row)) {
      rows.append(row);
    }
  }
  return rows;
}

int AccessibleItems::selectedRowCount() const {
  return static_cast<int>(selectedRows().size());
}

int AccessibleItems::selectedCellCount() const {
  return selectedRowCount() * columnCount();
}

QList<QAccessibleInterface*> AccessibleItems::selectedCells() const {
  QList<QAccessibleInterface*> cells;
  const int columns = columnCount();
  for (const int row : selectedRows()) {
    if (cells.size() + columns > static_cast<qsizetype>(MostCells)) {
      break;
    }
    for (int column = 0; column < columns; ++column) {
      cells.append(cellAt(row, column));
    }
  }
  return cells;
}

bool AccessibleItems::selectRow(int row) {
  const auto* cell = dynamic_cast<AccessibleCell*>(cellAt(row, 0));
  if (!cell->isValid()) {
    return false;
  }
  Do(cell->Index(), Gesture::None);
  return true;
}

// What a kind of view says of its cells, unless it knows better.

QString AccessibleItems::CellText(const QModelIndex& cell, QAccessible::Text kind) const {
  if (kind != QAccessible::Name) {
    return {};
  }
  const QString spoken = cell.data(Qt::AccessibleTextRole).toString();
  return spoken.isEmpty() ? cell.data(Qt::DisplayRole).toString() : spoken;
}

QAccessible::State AccessibleItems::CellState(const QModelIndex& cell) const {
  const QAbstractItemView& view = *View();
  QAccessible::State state;
  state.focusable = true;
  state.focused = view.hasFocus() && view.currentIndex() == cell;
  state.active = state.focused;
  state.selectable = view.model()->flags(cell).testFlag(Qt::ItemIsSelectable);
  state.selected = state.selectable && RowChosen(cell.row());
  state.disabled = !view.isEnabled();
  state.invisible = !view.isVisible();
  state.offscreen = !view.viewport()->rect().intersects(view.visualRect(cell));
  return state;
}

QAccessible::Role AccessibleItems::CellRole() const {
  return role() == QAccessible::Table ? QAccessible::Cell : QAccessible::ListItem;
}

std::vector<CellAction> AccessibleItems::Actions(const QModelIndex& /*cell*/) const {
  return {{setFocusAction(), Gesture::None}};
}

QList<QAccessibleInterface*> AccessibleItems::ColumnHeads(int /*column*/) const {
  return {};
}

QList<QAccessibleInterface*> AccessibleItems::RowHeads(int /*row*/) const {
  return {};
}

// What is done by a tool.

bool AccessibleItems::Reachable(const QWidget& view) {
  if (!view.isVisible() || !view.isEnabled()) {
    return false;
  }
  const QWidget* const popup = QApplication::activePopupWidget();
  if (popup != nullptr && popup != view.window()) {
    return false;
  }
  const QWidget* const modal = QApplication::activeModalWidget();
  const QWidget* above = &view;
  while (modal != nullptr && above != nullptr && above != modal) {
    above = above->parentWidget();
  }
  return above != nullptr;
}

void AccessibleItems::Press(QWidget& widget, Gesture gesture) {
  const QPointer<QWidget> target(&widget);
  const QKeyCombination key = Keys(gesture).constFirst()[0];
  const QString text = key.key() < 0x80 ? QString(QChar(key.key())) : QString(); // a letter, or a blank
  for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
    if (target) {
      QKeyEvent event(type, key.key(), key.keyboardModifiers(), text);
      QCoreApplication::sendEvent(target, &event);
    }
  }
}

void AccessibleItems::Do(const QModelIndex& cell, Gesture gesture) const {
  QAbstractItemView* const view = View();
  QMetaObject::invokeMethod(
      view,
      [view, gesture, there = QPersistentModelIndex(cell)] {
        const auto* items = dynamic_cast<AccessibleItems*>(QAccessible::queryAccessibleInterface(view));
        if (items != nullptr && there.isValid() && Reachable(*view)) {
          items->Perform(there, gesture);
        }
      },
      Qt::QueuedConnection);
}

void AccessibleItems::Perform(const QModelIndex& cell, Gesture gesture) const {
  const QPointer<QAbstractItemView> view(View());
  view->setFocus(Qt::OtherFocusReason);
  view->setCurrentIndex(cell);
  if (gesture != Gesture::None && view) {
    Press(*view, gesture);
  }
}

} // namespace lumoscad::qt
