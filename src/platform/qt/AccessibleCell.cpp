#include "platform/qt/AccessibleItems.hpp"

#include "platform/qt/GestureKeys.hpp"

#include <algorithm>

namespace lumoscad::qt {

QModelIndex AccessibleCell::Index() const {
  items_.Touch(row_, column_);
  return items_.Index(row_, column_);
}

bool AccessibleCell::isValid() const {
  return items_.isValid() && Index().isValid();
}

QAccessibleInterface* AccessibleCell::parent() const {
  return QAccessible::queryAccessibleInterface(items_.object());
}

QString AccessibleCell::text(QAccessible::Text kind) const {
  const QModelIndex cell = Index();
  return cell.isValid() ? items_.CellText(cell, kind) : QString();
}

QRect AccessibleCell::rect() const {
  const QModelIndex cell = Index();
  if (!cell.isValid()) {
    return {};
  }
  const QRect area = items_.View()->visualRect(cell);
  return {items_.View()->viewport()->mapToGlobal(area.topLeft()), area.size()};
}

QAccessible::State AccessibleCell::state() const {
  const QModelIndex cell = Index();
  if (cell.isValid()) {
    return items_.CellState(cell);
  }
  QAccessible::State state;
  state.invalid = true;
  return state;
}

void* AccessibleCell::interface_cast(QAccessible::InterfaceType type) {
  switch (type) {
  case QAccessible::TableCellInterface:
    return static_cast<QAccessibleTableCellInterface*>(this);
  case QAccessible::ActionInterface:
    return static_cast<QAccessibleActionInterface*>(this);
  default:
    return nullptr;
  }
}

bool AccessibleCell::isSelected() const {
  return Index().isValid() && items_.RowChosen(row_);
}

QList<QAccessibleInterface*> AccessibleCell::columnHeaderCells() const {
  return column_ < 0 ? QList<QAccessibleInterface*>() : items_.ColumnHeads(column_);
}

QList<QAccessibleInterface*> AccessibleCell::rowHeaderCells() const {
  items_.Touch(row_, column_); // what is made now must not push this one out
  return row_ < 0 ? QList<QAccessibleInterface*>() : items_.RowHeads(row_);
}

QStringList AccessibleCell::actionNames() const {
  QStringList names;
  if (const QModelIndex cell = Index(); cell.isValid()) {
    for (const CellAction& action : items_.Actions(cell)) {
      names.append(action.name);
    }
  }
  return names;
}

CellAction AccessibleCell::Action(const QString& name) const {
  if (const QModelIndex cell = Index(); cell.isValid()) {
    const std::vector<CellAction> actions = items_.Actions(cell);
    const auto found =
        std::find_if(actions.begin(), actions.end(), [&name](const CellAction& action) { return action.name == name; });
    if (found != actions.end()) {
      return *found;
    }
  }
  return {};
}

QString AccessibleCell::localizedActionName(const QString& name) const {
  const CellAction action = Action(name);
  if (!action.text.isEmpty() || action.name.isEmpty()) {
    return action.text;
  }
  return action.gesture == Gesture::None ? QStringLiteral("Vai alla cella") : NameOf(action.gesture);
}

QString AccessibleCell::localizedActionDescription(const QString& name) const {
  return localizedActionName(name);
}

void AccessibleCell::doAction(const QString& name) {
  const CellAction action = Action(name);
  if (!action.name.isEmpty()) {
    items_.Do(Index(), action.gesture);
  }
}

QStringList AccessibleCell::keyBindingsForAction(const QString& name) const {
  const Gesture gesture = Action(name).gesture;
  return gesture == Gesture::None ? QStringList() : QStringList{Keys(gesture).constFirst().toString()};
}

} // namespace lumoscad::qt
