#include "platform/qt/Look.hpp"

#include "platform/qt/Texts.hpp"

#include <QPalette>
#include <QString>
#include <QWidget>

namespace lumoscad::qt::look {

namespace {

constexpr int FontPixels = 12;

QPalette Palette() {
  QPalette palette;
  const auto apply = [&palette](QPalette::ColorRole role, const QColor& colour) {
    palette.setColor(QPalette::Active, role, colour);
    palette.setColor(QPalette::Inactive, role, colour);
  };
  apply(QPalette::Window, Background);
  apply(QPalette::WindowText, Ink);
  apply(QPalette::Base, Paper);
  apply(QPalette::AlternateBase, AlternateRow);
  apply(QPalette::Text, Ink);
  apply(QPalette::PlaceholderText, QColor(0x8A, 0x97, 0xA4));
  apply(QPalette::Button, QColor(0xFA, 0xFB, 0xFC));
  apply(QPalette::ButtonText, Ink);
  apply(QPalette::Light, Paper);
  apply(QPalette::Midlight, FaintLine);
  apply(QPalette::Mid, Line);
  apply(QPalette::Dark, QColor(0x9A, 0xA8, 0xB6));
  apply(QPalette::Shadow, QColor(0x6B, 0x7A, 0x88));
  apply(QPalette::Highlight, Accent);
  apply(QPalette::HighlightedText, Paper);
  apply(QPalette::ToolTipBase, Paper);
  apply(QPalette::ToolTipText, Ink);
  return palette;
}

QString StyleSheet() {
  return QStringLiteral("QLabel { color: #1E2A36; }"
                        "QLabel#lblRighe { color: #5B6B7B; }"
                        "QLineEdit, QPlainTextEdit { color: #1E2A36; selection-background-color: #1F629B;"
                        " selection-color: #FFFFFF; }"
                        "QTableView { background: #FFFFFF; }"
                        "QComboBox { background-color: #FFFFFF; color: #1E2A36; }"
                        "QComboBox QAbstractItemView { background: #FFFFFF; color: #1E2A36;"
                        " selection-background-color: #1F629B; selection-color: #FFFFFF; }"
                        "QComboBox QAbstractItemView::item { min-height: 20px; }"
                        "QFrame#RigaScura { background: #2C4257; }"
                        "QFrame#RigaSepara { background: #D5DEE7; }"
                        "QFrame#PicScrollVerticale, QFrame#PicScrollOrizzontale { background: #E6EDF4; }"
                        "QFrame#FrameScad, QFrame#FrameBanca { background: #1F629B; }"
                        "QLineEdit#TextScad { border: none; background: #FFFFFF; padding: 0 2px; }"
                        "QLineEdit#TextScadenza { border: 1px solid #B4C1CE; border-radius: 3px; padding: 2px 6px;"
                        " background: #FFFFFF; }"
                        "QLineEdit#TextScadenza:focus { border: 1px solid #1F629B; }"
                        "QPushButton { border: 1px solid #B4C1CE; border-radius: 4px; padding: 6px 18px;"
                        " background: #FFFFFF; color: #1E2A36; outline: none; }"
                        "QPushButton:hover { background: #EEF4F9; }"
                        "QPushButton:pressed { background: #D8E4EF; }"
                        "QPushButton:focus { border: 2px solid #1F629B; padding: 5px 17px; }"
                        "QPushButton#PictureOk { background: #1F629B; border-color: #1F629B; color: #FFFFFF; }"
                        "QPushButton#PictureOk:hover { background: #2A73B0; }"
                        "QPushButton#PictureOk:pressed { background: #174F80; }"
                        "QPushButton#PictureOk:focus { border: 2px solid #0A1A2B; background: #174F80; }");
}

} // namespace

void Dress(QWidget& window, std::string_view family) {
  window.setPalette(Palette());
  window.setFont(Font(family));
  window.setStyleSheet(StyleSheet());
}

QFont Font(std::string_view family) {
  QFont fontName;
  if (!family.empty()) {
    fontName.setFamily(Text(family));
    fontName.setStyleHint(QFont::SansSerif);
  }
  fontName.setPixelSize(FontPixels);
  return fontName;
}

} // namespace lumoscad::qt::look
