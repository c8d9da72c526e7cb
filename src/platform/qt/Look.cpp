#include "platform/qt/Look.hpp"

#include "platform/Desktop.hpp"
#include "platform/qt/StyleQt.hpp"
#include "platform/qt/Texts.hpp"

#include <QAbstractButton>
#include <QAbstractScrollArea>
#include <QApplication>
#include <QLineEdit>
#include <QList>
#include <QPalette>
#include <QScreen>
#include <QString>
#include <QWidget>

#include <algorithm>

namespace lumoscad::qt::look {

namespace {

constexpr int StandardPixels = 12;        ///< of the font for which all measures are written down
constexpr char Confirming[] = "conferma"; ///< properties of widgets
constexpr char Faint[] = "tenue";
constexpr int SmallestPixels = 8;
constexpr int LargestPixels = 48;
constexpr double StandardDotsPerInch = 96;
constexpr int RowTwips = 240;
constexpr int TwipsAcross = TwipsPerPixelX * StandardPixels;
constexpr int TwipsDown = TwipsPerPixelY * StandardPixels;

/// The palette's name, in a style sheet, of the colour that the widget writes in.
QString InkRole(const QWidget& widget, bool field) {
  if (widget.property(Confirming).toBool()) {
    return QStringLiteral("highlighted-text");
  }
  if (widget.property(Faint).toBool()) {
    return QStringLiteral("placeholder-text");
  }
  if (qobject_cast<const QAbstractButton*>(&widget) != nullptr) {
    return QStringLiteral("button-text");
  }
  return field ? QStringLiteral("text") : QStringLiteral("window-text");
}

/// A style sheet of the calling program's application reaches every widget of the process, and can only be overruled by
/// another one nearer to the widget. It names no colour: each property gives way to the palette, the font and the style
/// that the widget has here.
QString Shield(const QWidget& widget) {
  const bool field = qobject_cast<const QLineEdit*>(&widget) != nullptr ||
                     qobject_cast<const QAbstractScrollArea*>(&widget) != nullptr;
  const QString ground = widget.isWindow() ? QStringLiteral("palette(window)")
                         : field           ? QStringLiteral("palette(base)")
                                           : QStringLiteral("transparent");
  const QFont font = widget.font();
  return QStringLiteral("* { color: palette(%1); background: %2; selection-background-color: palette(highlight);"
                        " selection-color: palette(highlighted-text); border: native; padding: 0; margin: 0;"
                        " font: %3 %4px \"%5\"; text-decoration: none; }")
      .arg(InkRole(widget, field), ground, font.bold() ? QStringLiteral("bold") : QStringLiteral("normal"),
           QString::number(font.pixelSize()), font.family());
}

bool Marked(const QWidget& widget) {
  return widget.property(Confirming).toBool() || widget.property(Faint).toBool();
}

/// The palette of a widget that is marked as one of another colour than its neighbours.
QPalette PaletteOf(const QWidget& widget, QPalette palette) {
  if (widget.property(Confirming).toBool()) {
    palette.setColor(QPalette::ButtonText, Now().fillInk);
  }
  if (widget.property(Faint).toBool()) {
    palette.setColor(QPalette::WindowText, Now().faintInk);
  }
  return palette;
}

} // namespace

const Colours& Now() {
  static qint64 known = QGuiApplication::palette().cacheKey();
  static Colours colours(QGuiApplication::palette());
  const QPalette palette = QGuiApplication::palette();
  if (palette.cacheKey() != known) {
    colours = Colours(palette);
    known = palette.cacheKey();
  }
  return colours;
}

int FontPixels() {
  const QFont font = QApplication::font();
  if (font.pixelSize() > 0) {
    return std::clamp(font.pixelSize(), SmallestPixels, LargestPixels);
  }
  const QScreen* const display = QGuiApplication::primaryScreen();
  const double dotsPerInch = display != nullptr ? display->logicalDotsPerInchY() : StandardDotsPerInch;
  return std::clamp(qRound(font.pointSizeF() * dotsPerInch / 72), SmallestPixels, LargestPixels);
}

int Scaled(int pixels) {
  return pixels * FontPixels() / StandardPixels;
}

int Unscaled(int pixels) {
  return (pixels * StandardPixels + FontPixels() / 2) / FontPixels();
}

int RowHeight() {
  return PixelsY(RowTwips);
}

int HeadingHeight() {
  return Scaled(36);
}

int PixelsX(int twips) {
  return twips * FontPixels() / TwipsAcross;
}

int PixelsY(int twips) {
  return twips * FontPixels() / TwipsDown;
}

int TwipsX(int pixels) {
  return pixels * TwipsAcross / FontPixels();
}

int TwipsY(int pixels) {
  return pixels * TwipsDown / FontPixels();
}

void Dress(QWidget& window) {
  QStyle* style = window.findChild<QProxyStyle*>({}, Qt::FindDirectChildrenOnly);
  if (style == nullptr) {
    style = new StyleQt(&window);
  }
  const QPalette palette = PaletteOf(Now());
  window.setPalette(palette);
  window.setFont(Font({}));
  const bool sheet = !qApp->styleSheet().isEmpty();
  QList<QWidget*> widgets = window.findChildren<QWidget*>();
  widgets.prepend(&window);
  for (QWidget* widget : widgets) {
    if (!widget->testAttribute(Qt::WA_SetStyle)) {
      widget->setStyle(style);
    }
    // What drops down inherits nothing from the window that it belongs to, and nothing does under a style sheet.
    if (sheet || widget->isWindow() || Marked(*widget)) {
      widget->setPalette(PaletteOf(*widget, palette));
    }
    if (sheet) {
      widget->setStyleSheet(Shield(*widget));
    }
  }
}

void MarkAsConfirming(QWidget& button) {
  button.setProperty(Confirming, true);
}

bool Confirms(const QWidget& button) {
  return button.property(Confirming).toBool();
}

void MarkAsFaint(QWidget& label) {
  label.setProperty(Faint, true);
}

QFont Font(std::string_view family) {
  QFont font = QApplication::font();
  if (!family.empty()) {
    font.setFamily(Text(family));
    font.setStyleHint(QFont::SansSerif);
  } else {
    font.setFamily(font.family()); // for the widgets below it too, whatever font the calling program gives their kind
  }
  font.setPixelSize(FontPixels());
  return font;
}

QFont Bold(QFont font) {
  font.setBold(true);
  return font;
}

} // namespace lumoscad::qt::look
