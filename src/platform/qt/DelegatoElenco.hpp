#pragma once

#include <QStyledItemDelegate>

namespace lumoscad::qt {

/// Paints the cells of the list: alternating rows, ticks, changed values, the current cell. A text that does not
/// fit is elided and shown whole in a tooltip.
class DelegatoElenco final : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  void paint(QPainter* disegno, const QStyleOptionViewItem& opzione, const QModelIndex& cella) const override;
  bool helpEvent(QHelpEvent* evento, QAbstractItemView* vista, const QStyleOptionViewItem& opzione,
                 const QModelIndex& cella) override;
};

} // namespace lumoscad::qt
