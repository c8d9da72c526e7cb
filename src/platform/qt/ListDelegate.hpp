#pragma once

#include <QStyledItemDelegate>

namespace lumoscad::qt {

/// Shows in a tooltip the whole of a cell's text that does not fit. The list paints its cells itself.
class ListDelegate final : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  bool helpEvent(QHelpEvent* event, QAbstractItemView* table, const QStyleOptionViewItem& option,
                 const QModelIndex& cell) override;
};

} // namespace lumoscad::qt
