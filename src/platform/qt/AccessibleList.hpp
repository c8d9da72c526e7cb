#pragma once

#include "platform/qt/AccessibleItems.hpp"

namespace lumoscad::qt {

class ListModel;
class ListView;

/// Where a cell of the list is, as a person says it: "Nuova banca, riga 3 di 40: Rossi & Figli, 2026/119".
[[nodiscard]] QString SpokenPlace(const ListView& list, const QModelIndex& cell);

/// The list of a window as assistive tools see it: a table without its hidden columns, whose ticks are boxes that can
/// be ticked and whose editors open.
class AccessibleList final : public AccessibleItems {
 public:
  explicit AccessibleList(ListView& list);

  [[nodiscard]] QString text(QAccessible::Text kind) const override;
  [[nodiscard]] QString columnDescription(int column) const override;
  [[nodiscard]] QList<int> selectedRows() const override;
  [[nodiscard]] int selectedRowCount() const override;
  /// Where several rows can be selected, one more.
  bool selectRow(int row) override;
  bool unselectRow(int row) override;
  [[nodiscard]] QStringList actionNames() const override;
  void doAction(const QString& name) override;

  [[nodiscard]] QString CellText(const QModelIndex& cell, QAccessible::Text kind) const override;
  [[nodiscard]] QAccessible::State CellState(const QModelIndex& cell) const override;
  [[nodiscard]] std::vector<CellAction> Actions(const QModelIndex& cell) const override;
  void Perform(const QModelIndex& cell, Gesture gesture) const override;
  [[nodiscard]] QList<QAccessibleInterface*> ColumnHeads(int column) const override;
  [[nodiscard]] QList<QAccessibleInterface*> RowHeads(int row) const override;
  [[nodiscard]] bool RowChosen(int row) const override;

 protected:
  [[nodiscard]] std::vector<int> ShownColumns() const override;

 private:
  [[nodiscard]] ListView* List() const;
  [[nodiscard]] const ListModel* Model() const;
  bool Choose(int row, bool chosen);
};

} // namespace lumoscad::qt
