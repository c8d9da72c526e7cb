#pragma once

#include "platform/qt/ListIcons.hpp"

#include <QStyledItemDelegate>

namespace lumoscad::qt {

/// Paints the cells of the list: alternating rows, ticks, changed values, the current cell. A text that does not
/// fit is elided and shown whole in a tooltip.
class ListDelegate final : public QStyledItemDelegate {
 public:
  ListDelegate(const ListImages& images, QObject* parent) : QStyledItemDelegate(parent), images_(images) {}

  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& cell) const override;
  bool helpEvent(QHelpEvent* event, QAbstractItemView* table, const QStyleOptionViewItem& option,
                 const QModelIndex& cell) override;

 private:
  void Content(QPainter& painter, const QStyleOptionViewItem& option, const QModelIndex& cell) const;

  const ListImages& images_;
};

} // namespace lumoscad::qt
