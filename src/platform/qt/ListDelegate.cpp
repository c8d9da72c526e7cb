#include "platform/qt/ListDelegate.hpp"

#include "platform/qt/ListModel.hpp"
#include "platform/qt/Look.hpp"
#include "platform/qt/Texts.hpp"

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

namespace lumoscad::qt {

namespace {

constexpr int Margin = 6;
constexpr int TickSide = 16;

QRect TextArea(const QRect& cell) {
  return cell.adjusted(Margin, 0, -Margin, 0);
}

QFont CellFont(const QStyleOptionViewItem& option, const QModelIndex& cell) {
  QFont fontName = option.font;
  fontName.setBold(cell.data(ListModel::ChangedRole).toBool());
  return fontName;
}

QColor CellBackground(const QStyleOptionViewItem& option, const QModelIndex& cell) {
  if (option.state.testFlag(QStyle::State_Selected)) {
    const auto* table = qobject_cast<const QWidget*>(option.widget);
    return table != nullptr && table->hasFocus() ? look::Selection : look::SelectionWithoutFocus;
  }
  if (cell.data(ListModel::ChangedRole).toBool()) {
    return look::ChangedBackground;
  }
  return cell.row() % 2 == 0 ? look::Paper : look::AlternateRow;
}

} // namespace

void ListDelegate::Content(QPainter& painter, const QStyleOptionViewItem& option, const QModelIndex& cell) const {
  const QVariant icon = cell.data(ListModel::ReportIconRole);
  if (icon.isValid()) {
    QRect square(0, 0, TickSide, TickSide);
    square.moveCenter(option.rect.center());
    images_.Draw(painter, square, Utf8(icon.toString()));
    return;
  }
  const QFont fontName = CellFont(option, cell);
  painter.setFont(fontName);
  painter.setPen(fontName.bold() ? look::ChangedInk : look::Ink);
  const QRect area = TextArea(option.rect);
  const QString text = QFontMetrics(fontName).elidedText(cell.data().toString(), Qt::ElideRight, area.width());
  painter.drawText(area, cell.data(Qt::TextAlignmentRole).toInt() | static_cast<int>(Qt::TextSingleLine), text);
}

void ListDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& cell) const {
  painter->save();
  painter->fillRect(option.rect, CellBackground(option, cell));
  painter->setPen(look::FaintLine);
  painter->drawLine(option.rect.topRight(), option.rect.bottomRight());
  painter->drawLine(option.rect.bottomLeft(), option.rect.bottomRight());
  Content(*painter, option, cell);
  const auto* table = qobject_cast<const QAbstractItemView*>(option.widget);
  if (table != nullptr && table->currentIndex() == cell) {
    painter->setBrush(Qt::NoBrush);
    painter->setPen(table->hasFocus() ? QPen(look::Accent, 2) : QPen(QColor(0x9A, 0xA8, 0xB6), 1));
    const int border = table->hasFocus() ? 1 : 0;
    painter->drawRect(option.rect.adjusted(border, border, -1 - border / 2, -1 - border / 2));
  }
  painter->restore();
}

bool ListDelegate::helpEvent(QHelpEvent* event, QAbstractItemView* table, const QStyleOptionViewItem& option,
                             const QModelIndex& cell) {
  if (event->type() != QEvent::ToolTip || !cell.isValid()) {
    return QStyledItemDelegate::helpEvent(event, table, option, cell);
  }
  const QString text = cell.data().toString();
  QStyleOptionViewItem style = option;
  initStyleOption(&style, cell);
  const QFontMetrics widths(CellFont(style, cell));
  if (widths.horizontalAdvance(text) > TextArea(option.rect).width()) {
    QToolTip::showText(event->globalPos(), QStringLiteral("<p>%1</p>").arg(text.toHtmlEscaped()), table);
  } else {
    QToolTip::hideText();
  }
  return true;
}

} // namespace lumoscad::qt
