#pragma once

#include <QApplication>
#include <QColor>
#include <QFont>
#include <QPalette>
#include <QString>

#include <array>
#include <random>

namespace lumoscad::test {

/// A palette as a desktop gives it, with a name for what a test says of it.
struct NamedPalette {
  const char* name;
  QPalette palette;
};

/// A palette of these grounds and inks in all its groups.
inline QPalette PaletteFrom(const QColor& window, const QColor& base, const QColor& text, const QColor& button,
                            const QColor& highlight, const QColor& highlightedText) {
  QPalette palette(text, button, button.lighter(150), button.darker(200), button.darker(130), text, Qt::white, base,
                   window);
  palette.setColor(QPalette::ButtonText, text);
  palette.setColor(QPalette::Highlight, highlight);
  palette.setColor(QPalette::HighlightedText, highlightedText);
  return palette;
}

/// The three kinds that a desktop offers; high contrast both ways round.
inline std::array<NamedPalette, 4> DesktopPalettes() {
  return {{{"light", PaletteFrom("#efefef", "#ffffff", "#000000", "#efefef", "#308cc6", "#ffffff")},
           {"dark", PaletteFrom("#2b2d31", "#1f2124", "#e4e6e8", "#3a3d42", "#2a76b8", "#ffffff")},
           {"high contrast", PaletteFrom("#000000", "#000000", "#ffffff", "#000000", "#1aebff", "#000000")},
           {"high contrast on white", PaletteFrom("#ffffff", "#ffffff", "#000000", "#ffffff", "#37006e", "#ffffff")}}};
}

/// Nobody's palette: every role at random.
inline QPalette RandomPalette(std::mt19937& chance) {
  const auto colour = [&chance] { return QColor(QRgb(chance() | 0xFF000000U)); };
  return PaletteFrom(colour(), colour(), colour(), colour(), colour(), colour());
}

/// The application's look for a scope: its palette, its font and its style sheet are put back at the end.
class DesktopLook {
 public:
  DesktopLook() = default;
  explicit DesktopLook(const QPalette& palette) { QApplication::setPalette(palette); }
  DesktopLook(const DesktopLook&) = delete;
  DesktopLook& operator=(const DesktopLook&) = delete;
  ~DesktopLook() {
    QApplication::setPalette(palette_);
    QApplication::setFont(font_);
    qApp->setStyleSheet(sheet_);
  }

  static void SetTextSize(int pixels) {
    QFont font = QApplication::font();
    font.setPixelSize(pixels);
    QApplication::setFont(font);
  }

 private:
  QPalette palette_ = QApplication::palette();
  QFont font_ = QApplication::font();
  QString sheet_ = qApp->styleSheet();
};

} // namespace lumoscad::test
