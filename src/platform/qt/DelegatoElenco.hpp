#pragma once

#include "platform/qt/IconeElenco.hpp"

#include <QStyledItemDelegate>

namespace lumoscad::qt {

/// Paints the cells of the list: alternating rows, ticks, changed values, the current cell. A text that does not
/// fit is elided and shown whole in a tooltip.
class DelegatoElenco final : public QStyledItemDelegate {
 public:
  DelegatoElenco(const ImmaginiElenco& immagini, QObject* padre) : QStyledItemDelegate(padre), immagini_(immagini) {}

  void paint(QPainter* disegno, const QStyleOptionViewItem& opzione, const QModelIndex& cella) const override;
  bool helpEvent(QHelpEvent* evento, QAbstractItemView* vista, const QStyleOptionViewItem& opzione,
                 const QModelIndex& cella) override;

 private:
  void Contenuto(QPainter& disegno, const QStyleOptionViewItem& opzione, const QModelIndex& cella) const;

  const ImmaginiElenco& immagini_;
};

} // namespace lumoscad::qt
