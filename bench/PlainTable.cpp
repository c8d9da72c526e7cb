#include "PlainTable.hpp"

#include <QHeaderView>
#include <QScrollBar>
#include <QUndoCommand>

namespace lumoscad::bench {
namespace {

class ChangeOfCell final : public QUndoCommand {
 public:
  ChangeOfCell(QAbstractItemModel& model, const QModelIndex& cell, QString text)
      : model_(model), cell_(cell), text_(std::move(text)) {}
  void redo() override { Swap(); }
  void undo() override { Swap(); }

 private:
  void Swap() {
    const QString before = cell_.data().toString();
    model_.setData(cell_, text_);
    text_ = before;
  }

  QAbstractItemModel& model_;
  QModelIndex cell_;
  QString text_;
};

} // namespace

PlainTable::PlainTable(std::vector<QString> cells, int columns) : rows_(std::move(cells), columns), table_(&window_) {
  sorted_.setSourceModel(&rows_);
  sorted_.setFilterKeyColumn(-1);
  sorted_.setFilterCaseSensitivity(Qt::CaseInsensitive);
  table_.setModel(&sorted_);
  table_.setSelectionBehavior(QAbstractItemView::SelectRows);
  table_.verticalHeader()->hide();
}

void PlainTable::Show(QSize size) {
  window_.resize(size);
  table_.resize(size);
  window_.show();
}

void PlainTable::PageDown() {
  QScrollBar& bar = *table_.verticalScrollBar();
  bar.triggerAction(bar.value() + bar.pageStep() > bar.maximum() ? QAbstractSlider::SliderToMinimum
                                                                 : QAbstractSlider::SliderPageStepAdd);
}

void PlainTable::SortBy(int column) {
  table_.sortByColumn(column, Qt::AscendingOrder);
}

void PlainTable::Filter(const QString& text) {
  sorted_.setFilterFixedString(text);
}

void PlainTable::SelectAll() {
  table_.selectAll();
}

void PlainTable::Unselect() {
  table_.selectRow(0);
}

void PlainTable::Fill(int column, const QString& text) {
  steps_.beginMacro(text);
  for (const QModelIndex& row : table_.selectionModel()->selectedRows(column)) {
    steps_.push(new ChangeOfCell(rows_, sorted_.mapToSource(row), text));
  }
  steps_.endMacro();
}

} // namespace lumoscad::bench
