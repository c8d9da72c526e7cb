#include "platform/qt/StyleQt.hpp"

#include "platform/qt/Look.hpp"

#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QStyleFactory>
#include <QStyleOption>

namespace lumoscad::qt {

namespace {

constexpr double FieldRadius = 3;
constexpr double ButtonRadius = 4;
constexpr int ButtonSpace = 38; ///< of a button's width, beside what it shows
constexpr int ButtonLead = 14;  ///< of its height

/// A box with a border: two pixels of the accent, or of `strong`, where it has the keyboard.
void Box(QPainter& painter, const QRect& area, const QColor& ground, const QColor& border, bool focus, double radius) {
  const double thickness = focus ? 2 : 1;
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(border, thickness));
  painter.setBrush(ground);
  painter.drawRoundedRect(QRectF(area).adjusted(thickness / 2, thickness / 2, -thickness / 2, -thickness / 2), radius,
                          radius);
  painter.restore();
}

void Field(QPainter& painter, const QRect& area, const QStyleOption& option) {
  const look::Colours& colours = look::Now();
  const bool focus = (option.state & QStyle::State_HasFocus) != 0;
  Box(painter, area, colours.paper, focus ? colours.accent : colours.border, focus, FieldRadius);
}

void Button(QPainter& painter, const QStyleOption& option, const QWidget* widget) {
  const look::Colours& colours = look::Now();
  const bool confirming = widget != nullptr && look::Confirms(*widget);
  const bool down = (option.state & (QStyle::State_Sunken | QStyle::State_On)) != 0;
  const bool hovered = (option.state & QStyle::State_MouseOver) != 0;
  const bool focus = (option.state & QStyle::State_HasFocus) != 0;
  if (confirming) {
    const QColor& ground = down || focus ? colours.fillDown : hovered ? colours.fillHover : colours.fill;
    Box(painter, option.rect, ground, focus ? colours.windowInk : ground, focus, ButtonRadius);
  } else {
    const QColor& ground = down ? colours.pressedButton : hovered ? colours.hoveredButton : colours.button;
    Box(painter, option.rect, ground, focus ? colours.accent : colours.border, focus, ButtonRadius);
  }
}

/// The arrow that says that something drops down.
void DropDownArrow(QPainter& painter, const QRect& area) {
  const double half = look::Scaled(4);
  const QPointF middle = QRectF(area).center();
  QPainterPath arrow(middle + QPointF(-half, -half / 2));
  arrow.lineTo(middle + QPointF(0, half / 2));
  arrow.lineTo(middle + QPointF(half, -half / 2));
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(look::Now().ink, 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.setBrush(Qt::NoBrush);
  painter.drawPath(arrow);
  painter.restore();
}

/// A box as the list's own ticks have it: its border stands out on every desktop.
void TickBox(QPainter& painter, const QStyleOption& option) {
  const look::Colours& colours = look::Now();
  const bool ticked = (option.state & QStyle::State_On) != 0;
  Box(painter, option.rect, ticked ? colours.accent : colours.paper, ticked ? colours.accent : colours.border, false,
      FieldRadius);
  if (ticked) {
    const QRectF area(option.rect);
    const auto at = [&area](double across, double down) {
      return QPointF(area.left() + area.width() * across, area.top() + area.height() * down);
    };
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(colours.accentInk, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPolyline(QPolygonF({at(0.25, 0.52), at(0.43, 0.7), at(0.76, 0.3)}));
    painter.restore();
  }
}

/// What is taken hold of in a scroll bar: it stands out from its groove as borders do from their grounds.
void ScrollHandle(QPainter& painter, const QRect& area, const QStyleOptionSlider& option) {
  const look::Colours& colours = look::Now();
  const bool held =
      option.activeSubControls.testFlag(QStyle::SC_ScrollBarSlider) && (option.state & QStyle::State_Enabled) != 0;
  const bool upright = option.orientation == Qt::Vertical;
  const int free = (upright ? area.width() : area.height()) / 5;
  const QRect handle = upright ? area.adjusted(free, 1, -free, -1) : area.adjusted(1, free, -1, -free);
  const QColor& ground = held ? colours.accent : colours.border;
  Box(painter, handle, ground, ground, false, FieldRadius);
}

} // namespace

StyleQt::StyleQt(QObject* parent) : QProxyStyle(QStyleFactory::create(QStringLiteral("Fusion"))) {
  setParent(parent);
}

void StyleQt::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                            const QWidget* widget) const {
  switch (element) {
  case PE_PanelLineEdit:
    if (const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option); frame && frame->lineWidth > 0) {
      Field(*painter, option->rect, *option);
      return;
    }
    painter->fillRect(option->rect, look::Now().paper);
    return;
  case PE_FrameLineEdit:
    Field(*painter, option->rect, *option);
    return;
  case PE_PanelButtonCommand:
    Button(*painter, *option, widget);
    return;
  case PE_IndicatorCheckBox:
    TickBox(*painter, *option);
    return;
  case PE_FrameFocusRect: // every control here shows the focus by its border
    if (qobject_cast<const QPushButton*>(widget) != nullptr) {
      return;
    }
    break;
  case PE_Frame:
    Box(*painter, option->rect, Qt::transparent, look::Now().border, false, 0);
    return;
  default:
    break;
  }
  QProxyStyle::drawPrimitive(element, option, painter, widget);
}

void StyleQt::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                          const QWidget* widget) const {
  if (const auto* box = qstyleoption_cast<const QStyleOptionComboBox*>(option);
      box != nullptr && element == CE_ComboBoxLabel) {
    QStyleOptionComboBox label = *box;
    label.palette.setColor(QPalette::ButtonText, box->palette.color(QPalette::Text)); // it stands on paper
    QProxyStyle::drawControl(element, &label, painter, widget);
    return;
  }
  QProxyStyle::drawControl(element, option, painter, widget);
}

void StyleQt::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                                 const QWidget* widget) const {
  if (const auto* box = qstyleoption_cast<const QStyleOptionComboBox*>(option);
      box != nullptr && control == CC_ComboBox && box->frame) {
    Field(*painter, option->rect, *option);
    DropDownArrow(*painter, proxy()->subControlRect(CC_ComboBox, option, SC_ComboBoxArrow, widget));
    return;
  }
  if (const auto* slider = qstyleoption_cast<const QStyleOptionSlider*>(option);
      slider != nullptr && control == CC_ScrollBar && slider->subControls.testFlag(SC_ScrollBarSlider)) {
    QStyleOptionSlider rest = *slider;
    rest.subControls.setFlag(SC_ScrollBarSlider, false);
    rest.subControls.setFlag(SC_ScrollBarGroove, false);
    painter->fillRect(option->rect, look::Now().background);
    QProxyStyle::drawComplexControl(control, &rest, painter, widget);
    ScrollHandle(*painter, proxy()->subControlRect(CC_ScrollBar, slider, SC_ScrollBarSlider, widget), *slider);
    return;
  }
  QProxyStyle::drawComplexControl(control, option, painter, widget);
}

QSize StyleQt::sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& contents,
                                const QWidget* widget) const {
  if (type == CT_PushButton) {
    return contents + QSize(look::Scaled(ButtonSpace), look::Scaled(ButtonLead));
  }
  return QProxyStyle::sizeFromContents(type, option, contents, widget);
}

int StyleQt::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                       QStyleHintReturn* more) const {
  return hint == SH_ComboBox_Popup ? 0 : QProxyStyle::styleHint(hint, option, widget, more);
}

} // namespace lumoscad::qt
