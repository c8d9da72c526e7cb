#include "platform/qt/ListIcons.hpp"

#include "platform/qt/Look.hpp"
#include "platform/qt/Texts.hpp"

#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <QVariant>

#include <algorithm>
#include <array>
#include <memory>

namespace lumoscad::qt {

namespace {

/// Every picture is drawn in a square of this side and scaled.
constexpr double Side = 16.0;

/// The pictures of the image list, in its order.
constexpr std::array Small{ListIcon::ChkOn,  ListIcon::ChkOff, ListIcon::OptOn,
                           ListIcon::OptOff, ListIcon::Sorted, ListIcon::Unsorted};

using look::Colours;

QPen Pen(const QColor& colour, double thickness) {
  return {colour, thickness, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin};
}

void TickMark(QPainter& painter, const QPen& pen) {
  QPainterPath sign(QPointF(4.3, 8.3));
  sign.lineTo(7.0, 11.0);
  sign.lineTo(11.8, 5.2);
  painter.setPen(pen);
  painter.setBrush(Qt::NoBrush);
  painter.drawPath(sign);
}

void CheckBox(QPainter& painter, const Colours& colours, bool ticked) {
  painter.setPen(Pen(ticked ? colours.accent : colours.border, 1.2));
  painter.setBrush(ticked ? colours.accent : colours.paper);
  painter.drawRoundedRect(QRectF(1.8, 1.8, 12.4, 12.4), 2.5, 2.5);
  if (ticked) {
    TickMark(painter, Pen(colours.accentInk, 2.0));
  }
}

void RadioButton(QPainter& painter, const Colours& colours, bool choice) {
  painter.setPen(Pen(choice ? colours.accent : colours.border, 1.2));
  painter.setBrush(colours.paper);
  painter.drawEllipse(QRectF(1.8, 1.8, 12.4, 12.4));
  if (choice) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(colours.accent);
    painter.drawEllipse(QRectF(4.8, 4.8, 6.4, 6.4));
  }
}

void Arrow(QPainter& painter, const Colours& colours, bool upwards) {
  const double tip = upwards ? 4.5 : 11.5;
  const double base = upwards ? 11.5 : 4.5;
  QPainterPath arrow(QPointF(8.0, tip));
  arrow.lineTo(13.5, base);
  arrow.lineTo(2.5, base);
  arrow.closeSubpath();
  painter.setPen(Pen(colours.accent, 1.0));
  painter.setBrush(colours.accent);
  painter.drawPath(arrow);
}

void NeutralArrows(QPainter& painter, const Colours& colours) {
  QPainterPath arrows(QPointF(4.0, 6.3));
  arrows.lineTo(8.0, 2.6);
  arrows.lineTo(12.0, 6.3);
  arrows.moveTo(4.0, 9.7);
  arrows.lineTo(8.0, 13.4);
  arrows.lineTo(12.0, 9.7);
  painter.setPen(Pen(colours.border, 1.6));
  painter.setBrush(Qt::NoBrush);
  painter.drawPath(arrows);
}

void Square(QPainter& painter, const Colours& colours) {
  painter.setPen(Qt::NoPen);
  painter.setBrush(colours.border);
  painter.drawRoundedRect(QRectF(1.5, 1.5, 13.0, 13.0), 2.5, 2.5);
  TickMark(painter, Pen(colours.headingBackground, 1.8));
}

void Cross(QPainter& painter, const Colours& colours) {
  painter.setPen(Pen(colours.buttonInk, 2.2));
  painter.drawLine(QPointF(4.0, 4.0), QPointF(12.0, 12.0));
  painter.drawLine(QPointF(12.0, 4.0), QPointF(4.0, 12.0));
}

/// Draws on demand, so that no pixmap is ever enlarged.
class IconEngine final : public QIconEngine {
 public:
  explicit IconEngine(ListIcon icon) : icon_(icon) {}

  void paint(QPainter* painter, const QRect& area, QIcon::Mode, QIcon::State) override { Draw(*painter, area, icon_); }

  QPixmap pixmap(const QSize& size, QIcon::Mode, QIcon::State) override {
    QPixmap image(size);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    Draw(painter, QRectF(QPointF(0, 0), QSizeF(size)), icon_);
    return image;
  }

  [[nodiscard]] QIconEngine* clone() const override { return std::make_unique<IconEngine>(icon_).release(); }

 private:
  ListIcon icon_;
};

} // namespace

std::string_view Key(ListIcon icon) {
  switch (icon) {
  case ListIcon::ChkOn:
    return "CHKON";
  case ListIcon::ChkOff:
    return "CHKOFF";
  case ListIcon::OptOn:
    return "OPTON";
  case ListIcon::OptOff:
    return "OPTOFF";
  case ListIcon::Sorted:
  case ListIcon::SortedReverse:
    return "SORTED";
  case ListIcon::Unsorted:
    return "UNSORTED";
  case ListIcon::SmallSquare:
    return "QUADRATINO";
  case ListIcon::Confirm:
    return "CONFERMA";
  case ListIcon::Cancel:
    return "ANNULLA";
  }
  return {};
}

ListImages::ListImages(QObject* parent) : QObject(parent) {
  setObjectName(QStringLiteral("IL_Small"));
  QStringList keys;
  for (const ListIcon icon : Small) {
    keys.append(Text(Key(icon)));
  }
  setProperty("chiavi", keys);
}

void ListImages::Draw(QPainter& painter, const QRectF& area, std::string_view key) const {
  for (const ListIcon icon : Small) {
    if (Key(icon) == key) {
      qt::Draw(painter, area, icon);
    }
  }
}

void Draw(QPainter& painter, const QRectF& area, ListIcon icon) {
  const double side = std::min(area.width(), area.height());
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.translate(area.center().x() - side / 2, area.center().y() - side / 2);
  painter.scale(side / Side, side / Side);
  const Colours& colours = look::Now();
  switch (icon) {
  case ListIcon::ChkOn:
  case ListIcon::ChkOff:
    CheckBox(painter, colours, icon == ListIcon::ChkOn);
    break;
  case ListIcon::OptOn:
  case ListIcon::OptOff:
    RadioButton(painter, colours, icon == ListIcon::OptOn);
    break;
  case ListIcon::Sorted:
  case ListIcon::SortedReverse:
    Arrow(painter, colours, icon == ListIcon::Sorted);
    break;
  case ListIcon::Unsorted:
    NeutralArrows(painter, colours);
    break;
  case ListIcon::SmallSquare:
    Square(painter, colours);
    break;
  case ListIcon::Confirm:
    TickMark(painter, Pen(colours.fillInk, 2.4));
    break;
  case ListIcon::Cancel:
    Cross(painter, colours);
    break;
  }
  painter.restore();
}

QIcon Icon(ListIcon icon) {
  return QIcon(std::make_unique<IconEngine>(icon).release()); // the icon owns its engine
}

} // namespace lumoscad::qt
