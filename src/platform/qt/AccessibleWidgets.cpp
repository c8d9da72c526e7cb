#include "platform/qt/AccessibleWidgets.hpp"

#include "platform/qt/GestureKeys.hpp"
#include "platform/qt/ListHeadings.hpp"
#include "platform/qt/MonthView.hpp"

#include <QListView>

namespace lumoscad::qt {

AccessibleHeading::AccessibleHeading(HeadingQt& heading) : QAccessibleWidget(&heading, QAccessible::ColumnHeader) {}

HeadingQt* AccessibleHeading::Heading() const {
  return dynamic_cast<HeadingQt*>(widget());
}

QStringList AccessibleHeading::actionNames() const {
  return Heading() != nullptr && Heading()->Sorts() ? QStringList{pressAction()} : QStringList();
}

QString AccessibleHeading::localizedActionName(const QString& name) const {
  return name == pressAction() ? NameOf(Gesture::Sort) : QString();
}

QStringList AccessibleHeading::keyBindingsForAction(const QString& name) const {
  return Heading() != nullptr && name == pressAction() ? QStringList{Heading()->Keys()} : QStringList();
}

void AccessibleHeading::doAction(const QString& name) {
  if (actionNames().contains(name)) {
    QMetaObject::invokeMethod(Heading(), &QAbstractButton::click, Qt::QueuedConnection);
  }
}

QAccessible::State AccessibleOrnament::state() const {
  QAccessible::State state = QAccessibleWidget::state();
  state.invisible = true;
  return state;
}

AccessibleMonth::AccessibleMonth(MonthView& month) : AccessibleItems(month, QAccessible::Table) {}

std::vector<int> AccessibleMonth::ShownColumns() const {
  std::vector<int> columns;
  for (int column = 0; isValid() && column < MonthModel::Weekdays; ++column) {
    columns.push_back(column);
  }
  return columns;
}

QString AccessibleMonth::columnDescription(int column) const {
  return isValid() ? View()->model()->headerData(column, Qt::Horizontal, Qt::AccessibleTextRole).toString() : QString();
}

std::vector<CellAction> AccessibleMonth::Actions(const QModelIndex& cell) const {
  std::vector<CellAction> actions = AccessibleItems::Actions(cell);
  actions.insert(actions.begin(), {pressAction(), Gesture::CalendarChoose});
  return actions;
}

AccessibleEntries::AccessibleEntries(QAbstractItemView& view, Gesture gesture)
    : AccessibleItems(view, QAccessible::List), gesture_(gesture) {}

std::vector<CellAction> AccessibleEntries::Actions(const QModelIndex& cell) const {
  std::vector<CellAction> actions = AccessibleItems::Actions(cell);
  if (View()->model()->flags(cell).testFlag(Qt::ItemIsSelectable)) {
    actions.insert(actions.begin(), {pressAction(), gesture_});
  }
  return actions;
}

void AccessibleEntries::Perform(const QModelIndex& cell, Gesture gesture) const {
  QAbstractItemView& view = *View();
  view.setCurrentIndex(cell);
  view.selectionModel()->select(cell, QItemSelectionModel::ClearAndSelect); // this entry alone, whatever was selected
  AccessibleItems::Perform(cell, gesture);
}

bool AccessibleEntries::Hidden(int row) const {
  const auto* list = dynamic_cast<const QListView*>(widget());
  return list != nullptr && list->isRowHidden(row);
}

int AccessibleEntries::rowCount() const {
  const int rows = AccessibleItems::rowCount();
  int shown = 0;
  for (int row = 0; row < rows; ++row) {
    shown += Hidden(row) ? 0 : 1;
  }
  return shown;
}

int AccessibleEntries::RowShown(int row) const {
  if (Hidden(row)) {
    return -1;
  }
  int place = 0;
  for (int before = 0; before < row; ++before) {
    place += Hidden(before) ? 0 : 1;
  }
  return place;
}

int AccessibleEntries::ModelRow(int place) const {
  const int rows = AccessibleItems::rowCount();
  for (int row = 0; row < rows; ++row) {
    if (!Hidden(row) && place-- == 0) {
      return row;
    }
  }
  return -1;
}

} // namespace lumoscad::qt
