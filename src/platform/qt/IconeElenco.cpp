#include "platform/qt/IconeElenco.hpp"

#include "platform/qt/Aspetto.hpp"
#include "platform/qt/Testi.hpp"

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
constexpr double Lato = 16.0;

/// The pictures of the image list, in its order.
constexpr std::array Piccole{IconaElenco::ChkOn,  IconaElenco::ChkOff, IconaElenco::OptOn,
                             IconaElenco::OptOff, IconaElenco::Sorted, IconaElenco::Unsorted};

QPen Penna(const QColor& colore, double spessore) {
  return {colore, spessore, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin};
}

void SegnoDiSpunta(QPainter& disegno, const QPen& penna) {
  QPainterPath segno(QPointF(4.3, 8.3));
  segno.lineTo(7.0, 11.0);
  segno.lineTo(11.8, 5.2);
  disegno.setPen(penna);
  disegno.setBrush(Qt::NoBrush);
  disegno.drawPath(segno);
}

void Casella(QPainter& disegno, bool spuntata) {
  disegno.setPen(Penna(spuntata ? aspetto::Verde : QColor(0x8A, 0x99, 0xA8), 1.2));
  disegno.setBrush(spuntata ? aspetto::Verde : aspetto::Carta);
  disegno.drawRoundedRect(QRectF(1.8, 1.8, 12.4, 12.4), 2.5, 2.5);
  if (spuntata) {
    SegnoDiSpunta(disegno, Penna(aspetto::Carta, 2.0));
  }
}

void Opzione(QPainter& disegno, bool scelta) {
  disegno.setPen(Penna(scelta ? aspetto::Verde : QColor(0x8A, 0x99, 0xA8), 1.2));
  disegno.setBrush(aspetto::Carta);
  disegno.drawEllipse(QRectF(1.8, 1.8, 12.4, 12.4));
  if (scelta) {
    disegno.setPen(Qt::NoPen);
    disegno.setBrush(aspetto::Verde);
    disegno.drawEllipse(QRectF(4.8, 4.8, 6.4, 6.4));
  }
}

void Freccia(QPainter& disegno, bool versoAlto) {
  const double punta = versoAlto ? 4.5 : 11.5;
  const double base = versoAlto ? 11.5 : 4.5;
  QPainterPath freccia(QPointF(8.0, punta));
  freccia.lineTo(13.5, base);
  freccia.lineTo(2.5, base);
  freccia.closeSubpath();
  disegno.setPen(Penna(aspetto::Accento, 1.0));
  disegno.setBrush(aspetto::Accento);
  disegno.drawPath(freccia);
}

void FrecceNeutre(QPainter& disegno) {
  QPainterPath frecce(QPointF(4.0, 6.3));
  frecce.lineTo(8.0, 2.6);
  frecce.lineTo(12.0, 6.3);
  frecce.moveTo(4.0, 9.7);
  frecce.lineTo(8.0, 13.4);
  frecce.lineTo(12.0, 9.7);
  disegno.setPen(Penna(QColor(0x9A, 0xA8, 0xB6), 1.6));
  disegno.setBrush(Qt::NoBrush);
  disegno.drawPath(frecce);
}

void Quadrato(QPainter& disegno) {
  disegno.setPen(Qt::NoPen);
  disegno.setBrush(QColor(0x8F, 0xA0, 0xB1));
  disegno.drawRoundedRect(QRectF(1.5, 1.5, 13.0, 13.0), 2.5, 2.5);
  SegnoDiSpunta(disegno, Penna(aspetto::FondoTestata, 1.8));
}

void Croce(QPainter& disegno) {
  disegno.setPen(Penna(aspetto::Rosso, 2.2));
  disegno.drawLine(QPointF(4.0, 4.0), QPointF(12.0, 12.0));
  disegno.drawLine(QPointF(12.0, 4.0), QPointF(4.0, 12.0));
}

/// Draws on demand, so that no pixmap is ever enlarged.
class MotoreIcona final : public QIconEngine {
 public:
  explicit MotoreIcona(IconaElenco icona) : icona_(icona) {}

  void paint(QPainter* disegno, const QRect& area, QIcon::Mode, QIcon::State) override {
    Disegna(*disegno, area, icona_);
  }

  QPixmap pixmap(const QSize& misura, QIcon::Mode, QIcon::State) override {
    QPixmap immagine(misura);
    immagine.fill(Qt::transparent);
    QPainter disegno(&immagine);
    Disegna(disegno, QRectF(QPointF(0, 0), QSizeF(misura)), icona_);
    return immagine;
  }

  [[nodiscard]] QIconEngine* clone() const override { return std::make_unique<MotoreIcona>(icona_).release(); }

 private:
  IconaElenco icona_;
};

} // namespace

std::string_view Chiave(IconaElenco icona) {
  switch (icona) {
  case IconaElenco::ChkOn:
    return "CHKON";
  case IconaElenco::ChkOff:
    return "CHKOFF";
  case IconaElenco::OptOn:
    return "OPTON";
  case IconaElenco::OptOff:
    return "OPTOFF";
  case IconaElenco::Sorted:
  case IconaElenco::SortedInverso:
    return "SORTED";
  case IconaElenco::Unsorted:
    return "UNSORTED";
  case IconaElenco::Quadratino:
    return "QUADRATINO";
  case IconaElenco::Conferma:
    return "CONFERMA";
  case IconaElenco::Annulla:
    return "ANNULLA";
  }
  return {};
}

ImmaginiElenco::ImmaginiElenco(QObject* padre) : QObject(padre) {
  setObjectName(QStringLiteral("IL_Small"));
  QStringList chiavi;
  for (const IconaElenco icona : Piccole) {
    chiavi.append(Testo(Chiave(icona)));
  }
  setProperty("chiavi", chiavi);
}

void ImmaginiElenco::Disegna(QPainter& disegno, const QRectF& area, std::string_view chiave) const {
  for (const IconaElenco icona : Piccole) {
    if (Chiave(icona) == chiave) {
      qt::Disegna(disegno, area, icona);
    }
  }
}

void Disegna(QPainter& disegno, const QRectF& area, IconaElenco icona) {
  const double lato = std::min(area.width(), area.height());
  disegno.save();
  disegno.setRenderHint(QPainter::Antialiasing);
  disegno.translate(area.center().x() - lato / 2, area.center().y() - lato / 2);
  disegno.scale(lato / Lato, lato / Lato);
  switch (icona) {
  case IconaElenco::ChkOn:
  case IconaElenco::ChkOff:
    Casella(disegno, icona == IconaElenco::ChkOn);
    break;
  case IconaElenco::OptOn:
  case IconaElenco::OptOff:
    Opzione(disegno, icona == IconaElenco::OptOn);
    break;
  case IconaElenco::Sorted:
  case IconaElenco::SortedInverso:
    Freccia(disegno, icona == IconaElenco::Sorted);
    break;
  case IconaElenco::Unsorted:
    FrecceNeutre(disegno);
    break;
  case IconaElenco::Quadratino:
    Quadrato(disegno);
    break;
  case IconaElenco::Conferma:
    SegnoDiSpunta(disegno, Penna(aspetto::Carta, 2.4));
    break;
  case IconaElenco::Annulla:
    Croce(disegno);
    break;
  }
  disegno.restore();
}

QIcon Icona(IconaElenco icona) {
  return QIcon(std::make_unique<MotoreIcona>(icona).release()); // the icon owns its engine
}

} // namespace lumoscad::qt
