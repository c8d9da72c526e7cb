#include "platform/qt/TableQt.hpp"

#include "platform/qt/AccessibleItems.hpp"

namespace lumoscad::qt {

void TableQt::TellOfCurrent(int type) {
  if (!QAccessible::isActive() || !hasFocus()) {
    return;
  }
  const auto* items = dynamic_cast<const AccessibleItems*>(QAccessible::queryAccessibleInterface(this));
  const int child = items == nullptr ? -1 : items->ChildOf(currentIndex());
  if (child < 0) {
    return;
  }
  if (type == QAccessible::StateChanged) {
    QAccessible::State changed;
    changed.checked = true;
    QAccessibleStateChangeEvent event(this, changed);
    event.setChild(child);
    QAccessible::updateAccessibility(&event);
  } else {
    QAccessibleEvent event(this, static_cast<QAccessible::Event>(type));
    event.setChild(child);
    QAccessible::updateAccessibility(&event);
  }
}

void TableQt::currentChanged(const QModelIndex& newOne, const QModelIndex& oldOne) {
  // What the table adds to this is nothing but its events. NOLINTNEXTLINE(bugprone-parent-virtual-call)
  QAbstractItemView::currentChanged(newOne, oldOne);
  TellOfCurrent(QAccessible::Focus);
}

void TableQt::selectionChanged(const QItemSelection& chosen, const QItemSelection& left) {
  QAbstractItemView::selectionChanged(chosen, left); // NOLINT(bugprone-parent-virtual-call): the same
  if (chosen.contains(currentIndex()) || left.contains(currentIndex())) {
    TellOfCurrent(QAccessible::Selection);
  }
}

void TableQt::focusInEvent(QFocusEvent* event) {
  QTableView::focusInEvent(event);
  // Behind the event of the table itself, which comes once this is over.
  QMetaObject::invokeMethod(
      this, [this] { TellOfCurrent(QAccessible::Focus); }, Qt::QueuedConnection);
}

} // namespace lumoscad::qt
