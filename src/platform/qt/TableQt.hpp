#pragma once

#include <QTableView>

namespace lumoscad::qt {

/// A table of ours. It tells assistive tools where the keyboard is by the cells that `AccessibleItems` has: Qt's own
/// tables count their hidden headings and columns among them.
class TableQt : public QTableView {
 public:
  using QTableView::QTableView;

 protected:
  void currentChanged(const QModelIndex& newOne, const QModelIndex& oldOne) override;
  void selectionChanged(const QItemSelection& chosen, const QItemSelection& left) override;
  void focusInEvent(QFocusEvent* event) override;
  /// Sends an event of the current cell, of a type of `QAccessible::Event`, when somebody listens.
  void TellOfCurrent(int type);
};

} // namespace lumoscad::qt
