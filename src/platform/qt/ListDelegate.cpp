#include "platform/qt/ListDelegate.hpp"

#include "platform/qt/ListModel.hpp"
#include "platform/qt/ListPainter.hpp"

#include <QAbstractItemView>
#include <QFontMetrics>
#include <QHelpEvent>
#include <QToolTip>

namespace lumoscad::qt {

bool ListDelegate::helpEvent(QHelpEvent* event, QAbstractItemView* table, const QStyleOptionViewItem& option,
                             const QModelIndex& cell) {
  if (event->type() != QEvent::ToolTip || !cell.isValid()) {
    return QStyledItemDelegate::helpEvent(event, table, option, cell);
  }
  const QString text = cell.data().toString();
  QStyleOptionViewItem style = option;
  initStyleOption(&style, cell);
  style.font.setBold(cell.data(ListModel::ChangedRole).toBool());
  const QFontMetrics widths(style.font);
  if (widths.horizontalAdvance(text) > ListPainter::TextArea(option.rect).width()) {
    QToolTip::showText(event->globalPos(), QStringLiteral("<p>%1</p>").arg(text.toHtmlEscaped()), table);
  } else {
    QToolTip::hideText();
  }
  return true;
}

} // namespace lumoscad::qt
