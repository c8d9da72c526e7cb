#include "platform/qt/DelegatoElenco.hpp"

#include "platform/qt/Aspetto.hpp"
#include "platform/qt/ModelloElenco.hpp"
#include "platform/qt/Testi.hpp"

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

namespace lumoscad::qt {

namespace {

constexpr int Margine = 6;
constexpr int LatoSpunta = 16;

QRect AreaTesto(const QRect& cella) {
  return cella.adjusted(Margine, 0, -Margine, 0);
}

QFont CarattereCella(const QStyleOptionViewItem& opzione, const QModelIndex& cella) {
  QFont carattere = opzione.font;
  carattere.setBold(cella.data(ModelloElenco::RuoloVariata).toBool());
  return carattere;
}

QColor FondoCella(const QStyleOptionViewItem& opzione, const QModelIndex& cella) {
  if (opzione.state.testFlag(QStyle::State_Selected)) {
    const auto* vista = qobject_cast<const QWidget*>(opzione.widget);
    return vista != nullptr && vista->hasFocus() ? aspetto::Selezione : aspetto::SelezioneSenzaFuoco;
  }
  if (cella.data(ModelloElenco::RuoloVariata).toBool()) {
    return aspetto::FondoVariato;
  }
  return cella.row() % 2 == 0 ? aspetto::Carta : aspetto::RigaAlterna;
}

} // namespace

void DelegatoElenco::Contenuto(QPainter& disegno, const QStyleOptionViewItem& opzione, const QModelIndex& cella) const {
  const QVariant icona = cella.data(ModelloElenco::RuoloReportIcon);
  if (icona.isValid()) {
    QRect quadrato(0, 0, LatoSpunta, LatoSpunta);
    quadrato.moveCenter(opzione.rect.center());
    immagini_.Disegna(disegno, quadrato, Utf8(icona.toString()));
    return;
  }
  const QFont carattere = CarattereCella(opzione, cella);
  disegno.setFont(carattere);
  disegno.setPen(carattere.bold() ? aspetto::InchiostroVariato : aspetto::Inchiostro);
  const QRect area = AreaTesto(opzione.rect);
  const QString testo = QFontMetrics(carattere).elidedText(cella.data().toString(), Qt::ElideRight, area.width());
  disegno.drawText(area, cella.data(Qt::TextAlignmentRole).toInt() | static_cast<int>(Qt::TextSingleLine), testo);
}

void DelegatoElenco::paint(QPainter* disegno, const QStyleOptionViewItem& opzione, const QModelIndex& cella) const {
  disegno->save();
  disegno->fillRect(opzione.rect, FondoCella(opzione, cella));
  disegno->setPen(aspetto::LineaTenue);
  disegno->drawLine(opzione.rect.topRight(), opzione.rect.bottomRight());
  disegno->drawLine(opzione.rect.bottomLeft(), opzione.rect.bottomRight());
  Contenuto(*disegno, opzione, cella);
  const auto* vista = qobject_cast<const QAbstractItemView*>(opzione.widget);
  if (vista != nullptr && vista->currentIndex() == cella) {
    disegno->setBrush(Qt::NoBrush);
    disegno->setPen(vista->hasFocus() ? QPen(aspetto::Accento, 2) : QPen(QColor(0x9A, 0xA8, 0xB6), 1));
    const int bordo = vista->hasFocus() ? 1 : 0;
    disegno->drawRect(opzione.rect.adjusted(bordo, bordo, -1 - bordo / 2, -1 - bordo / 2));
  }
  disegno->restore();
}

bool DelegatoElenco::helpEvent(QHelpEvent* evento, QAbstractItemView* vista, const QStyleOptionViewItem& opzione,
                               const QModelIndex& cella) {
  if (evento->type() != QEvent::ToolTip || !cella.isValid()) {
    return QStyledItemDelegate::helpEvent(evento, vista, opzione, cella);
  }
  const QString testo = cella.data().toString();
  QStyleOptionViewItem stile = opzione;
  initStyleOption(&stile, cella);
  const QFontMetrics misure(CarattereCella(stile, cella));
  if (misure.horizontalAdvance(testo) > AreaTesto(opzione.rect).width()) {
    QToolTip::showText(evento->globalPos(), QStringLiteral("<p>%1</p>").arg(testo.toHtmlEscaped()), vista);
  } else {
    QToolTip::hideText();
  }
  return true;
}

} // namespace lumoscad::qt
