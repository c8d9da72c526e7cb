#include "Scrolling.hpp"

#include "FirstPaint.hpp"

#include <QAbstractTableModel>
#include <QDialog>
#include <QHeaderView>
#include <QScrollBar>
#include <QTableView>

namespace lumoscad::bench {
namespace {

class EmptyModel final : public QAbstractTableModel {
 public:
  EmptyModel(int rows, int columns) : rows_(rows), columns_(columns) {}
  [[nodiscard]] int rowCount(const QModelIndex& parent) const override { return parent.isValid() ? 0 : rows_; }
  [[nodiscard]] int columnCount(const QModelIndex& parent) const override { return parent.isValid() ? 0 : columns_; }
  [[nodiscard]] QVariant data(const QModelIndex& /*cell*/, int /*role*/) const override { return {}; }

 private:
  int rows_;
  int columns_;
};

void Resemble(QTableView& table, const QTableView& list) {
  table.horizontalHeader()->hide();
  table.verticalHeader()->hide();
  table.horizontalHeader()->setMinimumSectionSize(1);
  table.verticalHeader()->setMinimumSectionSize(1);
  table.verticalHeader()->setDefaultSectionSize(list.verticalHeader()->defaultSectionSize());
  for (int column = 0; column < list.model()->columnCount(); ++column) {
    table.setColumnWidth(column, list.columnWidth(column));
    table.setColumnHidden(column, list.isColumnHidden(column));
  }
  table.resize(list.size());
}

double Page(QTableView& table) {
  QScrollBar& bar = *table.verticalScrollBar();
  const auto begin = Clock::now();
  bar.triggerAction(bar.value() + bar.pageStep() > bar.maximum() ? QAbstractSlider::SliderToMinimum
                                                                 : QAbstractSlider::SliderPageStepAdd);
  table.viewport()->repaint();
  return Milliseconds(begin);
}

/// Until a window is on the screen, nothing of it is painted.
void FirstPage(QTableView& table) {
  bool painted = false;
  const FirstPaint watch(table.objectName(), [&painted] { painted = true; });
  while (!painted) {
    QCoreApplication::processEvents(QEventLoop::AllEvents);
  }
}

} // namespace

Times ScrollPages(QDialog& window, int pages) {
  auto& list = *window.findChild<QTableView*>();
  EmptyModel model(list.model()->rowCount(), list.model()->columnCount());
  QDialog other;
  QTableView table(&other);
  table.setObjectName(QStringLiteral("emptyTable"));
  table.setModel(&model);
  Resemble(table, list);
  other.resize(list.size());
  other.show();
  FirstPage(table);
  return Compare(
      pages, [&list] { return Page(list); }, [&table] { return Page(table); });
}

} // namespace lumoscad::bench
