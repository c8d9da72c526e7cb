#pragma once

#include <QAbstractTableModel>
#include <QDialog>
#include <QSortFilterProxyModel>
#include <QTableView>
#include <QUndoStack>

#include <cstddef>
#include <vector>

namespace lumoscad::bench {

class TextRows final : public QAbstractTableModel {
 public:
  TextRows(std::vector<QString> cells, int columns) : cells_(std::move(cells)), columns_(columns) {}
  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override {
    return parent.isValid() ? 0 : static_cast<int>(cells_.size()) / columns_;
  }
  [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override {
    return parent.isValid() ? 0 : columns_;
  }
  [[nodiscard]] QVariant data(const QModelIndex& cell, int role) const override {
    return role == Qt::DisplayRole || role == Qt::EditRole ? QVariant(cells_[At(cell)]) : QVariant();
  }
  bool setData(const QModelIndex& cell, const QVariant& value, int /*role*/) override {
    cells_[At(cell)] = value.toString();
    emit dataChanged(cell, cell);
    return true;
  }

 private:
  [[nodiscard]] std::size_t At(const QModelIndex& cell) const {
    return static_cast<std::size_t>(cell.row()) * static_cast<std::size_t>(columns_) +
           static_cast<std::size_t>(cell.column());
  }

  std::vector<QString> cells_;
  int columns_;
};

/// A list as it is put together from Qt's own parts: texts in a model, a proxy that sorts and filters, a table, and a
/// stack of commands to be undone.
class PlainTable {
 public:
  PlainTable(std::vector<QString> cells, int columns);

  void Show(QSize size);
  void PageDown();
  void SortBy(int column);
  void Filter(const QString& text);
  void SelectAll();
  void Unselect();
  /// Gives every selected row this text, as one step to be undone.
  void Fill(int column, const QString& text);
  void Undo() { steps_.undo(); }
  void Redo() { steps_.redo(); }

 private:
  TextRows rows_;
  QSortFilterProxyModel sorted_;
  QDialog window_;
  QTableView table_;
  QUndoStack steps_;
};

} // namespace lumoscad::bench
