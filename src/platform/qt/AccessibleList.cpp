#include "platform/qt/AccessibleList.hpp"

#include "platform/qt/ListHeadings.hpp"
#include "platform/qt/ListView.hpp"
#include "platform/qt/Texts.hpp"

#include <QPointer>

#include <algorithm>

namespace lumoscad::qt {

namespace {

using Kind = ListColumn::Kind;

bool WithEditor(Kind kind) {
  return kind == Kind::DateEditor || kind == Kind::BankEditor;
}

} // namespace

QString SpokenPlace(const ListView& list, const QModelIndex& cell) {
  const auto* model = dynamic_cast<const ListModel*>(list.model());
  if (model == nullptr || !cell.isValid()) {
    return {};
  }
  const QString place = model->Caption(cell.column()) + QStringLiteral(", riga ") + QString::number(cell.row() + 1) +
                        QStringLiteral(" di ") + QString::number(model->rowCount());
  QStringList whose;
  for (int column = 0; column < list.Frozen().Wanted(); ++column) {
    if (column != cell.column() && !list.isColumnHidden(column)) {
      whose.append(model->index(cell.row(), column).data(Qt::AccessibleTextRole).toString());
    }
  }
  whose.removeAll(QString());
  return whose.isEmpty() ? place : place + QStringLiteral(": ") + whose.join(QStringLiteral(", "));
}

AccessibleList::AccessibleList(ListView& list) : AccessibleItems(list, QAccessible::Table) {}

ListView* AccessibleList::List() const {
  return dynamic_cast<ListView*>(widget());
}

const ListModel* AccessibleList::Model() const {
  return List() == nullptr ? nullptr : dynamic_cast<const ListModel*>(List()->model());
}

std::vector<int> AccessibleList::ShownColumns() const {
  std::vector<int> columns;
  for (int column = 0; Model() != nullptr && column < Model()->columnCount(); ++column) {
    if (!List()->isColumnHidden(column)) {
      columns.push_back(column);
    }
  }
  return columns;
}

QString AccessibleList::text(QAccessible::Text kind) const {
  const bool sorted = kind == QAccessible::Description && List() != nullptr && List()->Headings() != nullptr;
  return sorted ? List()->Headings()->SpokenOrder() : AccessibleItems::text(kind);
}

QString AccessibleList::columnDescription(int column) const {
  const std::vector<int>& columns = Columns();
  const bool there = column >= 0 && column < static_cast<int>(columns.size());
  return there ? Model()->Caption(columns[static_cast<std::size_t>(column)]) : QString();
}

// The cells.

QString AccessibleList::CellText(const QModelIndex& cell, QAccessible::Text kind) const {
  if (Model() == nullptr) {
    return {};
  }
  const ListModel& model = *Model();
  switch (kind) {
  case QAccessible::Value:
    return model.Kind(cell.column()) == Kind::Tick ? cell.data(Qt::AccessibleTextRole).toString()
                                                   : cell.data(Qt::DisplayRole).toString();
  case QAccessible::Description: {
    const QString present = model.CellChanged(cell.row(), cell.column()) ? model.PresentText(cell) : QString();
    const QString place = SpokenPlace(*List(), cell);
    return present.isEmpty() ? place : place + QStringLiteral("; era ") + present;
  }
  default:
    return AccessibleItems::CellText(cell, kind);
  }
}

QAccessible::State AccessibleList::CellState(const QModelIndex& cell) const {
  QAccessible::State state = AccessibleItems::CellState(cell);
  state.multiSelectable = List() != nullptr && List()->SeveralRows();
  if (Model() != nullptr) {
    const std::optional<bool> ticked = Model()->Kind(cell.column()) == Kind::Tick
                                           ? Model()->CellTicked(cell.row(), cell.column())
                                           : std::optional<bool>();
    state.checkable = ticked.has_value();
    state.checked = ticked.value_or(false);
    state.readOnly = Model()->Kind(cell.column()) == Kind::Text || Model()->Kind(cell.column()) == Kind::Amount;
  }
  return state;
}

std::vector<CellAction> AccessibleList::Actions(const QModelIndex& cell) const {
  std::vector<CellAction> actions;
  const ListModel* const model = Model();
  if (model == nullptr) {
    return actions;
  }
  const Kind kind = model->Kind(cell.column());
  if (kind == Kind::Tick) {
    const bool ticked = model->CellTicked(cell.row(), cell.column()).value_or(false);
    actions.push_back({toggleAction(), Gesture::Tick, ticked ? QStringLiteral("Togli la spunta") : QString()});
  } else if (WithEditor(kind)) {
    actions.push_back({pressAction(), List()->EditorOn(cell) == nullptr ? Gesture::OpenCell : Gesture::CloseCell});
  }
  if (List()->SeveralRows()) {
    actions.push_back({showMenuAction(), Gesture::Menu});
  }
  actions.push_back({setFocusAction(), Gesture::None});
  return actions;
}

void AccessibleList::Perform(const QModelIndex& cell, Gesture gesture) const {
  ListView& list = *List();
  if (QWidget* const editor = list.EditorOn(cell); editor != nullptr && gesture == Gesture::CloseCell) {
    editor->setFocus(Qt::OtherFocusReason);
    Press(*editor, gesture);
    return;
  }
  const QPersistentModelIndex there(cell);
  list.setFocus(Qt::OtherFocusReason); // a bank that is being chosen is left, as by whoever goes to the list
  if (!there.isValid() || !Reachable(list)) {
    return;
  }
  if (!list.Blocked()) {
    list.GoTo(there.row(), there.column());
  }
  // While a date is being written, the list keeps every key, and the keyboard goes back to the date.
  if (gesture != Gesture::None || list.Blocked()) {
    Press(list, gesture == Gesture::None ? Gesture::Tick : gesture);
  }
}

QList<QAccessibleInterface*> AccessibleList::ColumnHeads(int column) const {
  QWidget* const heading =
      List() == nullptr || List()->Headings() == nullptr ? nullptr : List()->Headings()->Over(column);
  return heading == nullptr ? QList<QAccessibleInterface*>()
                            : QList<QAccessibleInterface*>{QAccessible::queryAccessibleInterface(heading)};
}

QList<QAccessibleInterface*> AccessibleList::RowHeads(int row) const {
  QList<QAccessibleInterface*> heads;
  for (int column = 0; List() != nullptr && column < List()->Frozen().Wanted(); ++column) {
    if (!List()->isColumnHidden(column)) {
      heads.append(Cell(row, column));
    }
  }
  return heads;
}

// What is selected.

bool AccessibleList::RowChosen(int row) const {
  return Index(row, 0).isValid() && List() != nullptr && List()->Selected(row);
}

QList<int> AccessibleList::selectedRows() const {
  QList<int> rows;
  if (Model() != nullptr) {
    for (const auto& [first, last] : List()->SelectedRows()) {
      for (int row = first; row <= last; ++row) {
        rows.append(row);
      }
    }
  }
  return rows;
}

int AccessibleList::selectedRowCount() const {
  int rows = 0;
  if (Model() != nullptr) {
    for (const auto& [first, last] : List()->SelectedRows()) {
      rows += last - first + 1;
    }
  }
  return rows;
}

bool AccessibleList::selectRow(int row) {
  return Choose(row, true);
}

bool AccessibleList::unselectRow(int row) {
  return Choose(row, false);
}

bool AccessibleList::Choose(int row, bool chosen) {
  if (!Index(row, 0).isValid()) {
    return false;
  }
  if (!List()->SeveralRows()) {
    return chosen && AccessibleItems::selectRow(row);
  }
  QMetaObject::invokeMethod(
      List(),
      [list = List(), there = QPersistentModelIndex(Index(row, 0)), chosen] {
        if (there.isValid() && Reachable(*list) && !list->Blocked()) {
          list->ChooseRow(there.row(), chosen);
        }
      },
      Qt::QueuedConnection);
  return true;
}

// What can be done with the list itself.

QStringList AccessibleList::actionNames() const {
  QStringList names = AccessibleItems::actionNames();
  if (List() != nullptr && List()->SeveralRows()) {
    names.append(showMenuAction());
  }
  return names;
}

void AccessibleList::doAction(const QString& name) {
  if (name != showMenuAction() || List() == nullptr) {
    AccessibleItems::doAction(name);
    return;
  }
  QMetaObject::invokeMethod(
      List(),
      [list = List()] {
        if (Reachable(*list)) {
          list->setFocus(Qt::OtherFocusReason);
          Press(*list, Gesture::Menu);
        }
      },
      Qt::QueuedConnection);
}

} // namespace lumoscad::qt
