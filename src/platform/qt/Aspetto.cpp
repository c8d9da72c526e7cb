#include "platform/qt/Aspetto.hpp"

#include "platform/qt/Testi.hpp"

#include <QPalette>
#include <QString>
#include <QWidget>

namespace lumoscad::qt::aspetto {

namespace {

constexpr int PixelCarattere = 12;

QPalette Tavolozza() {
  QPalette tavolozza;
  const auto imposta = [&tavolozza](QPalette::ColorRole ruolo, const QColor& colore) {
    tavolozza.setColor(QPalette::Active, ruolo, colore);
    tavolozza.setColor(QPalette::Inactive, ruolo, colore);
  };
  imposta(QPalette::Window, Fondo);
  imposta(QPalette::WindowText, Inchiostro);
  imposta(QPalette::Base, Carta);
  imposta(QPalette::AlternateBase, RigaAlterna);
  imposta(QPalette::Text, Inchiostro);
  imposta(QPalette::PlaceholderText, QColor(0x8A, 0x97, 0xA4));
  imposta(QPalette::Button, QColor(0xFA, 0xFB, 0xFC));
  imposta(QPalette::ButtonText, Inchiostro);
  imposta(QPalette::Light, Carta);
  imposta(QPalette::Midlight, LineaTenue);
  imposta(QPalette::Mid, Linea);
  imposta(QPalette::Dark, QColor(0x9A, 0xA8, 0xB6));
  imposta(QPalette::Shadow, QColor(0x6B, 0x7A, 0x88));
  imposta(QPalette::Highlight, Accento);
  imposta(QPalette::HighlightedText, Carta);
  imposta(QPalette::ToolTipBase, Carta);
  imposta(QPalette::ToolTipText, Inchiostro);
  return tavolozza;
}

QString FoglioDiStile() {
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

void Vesti(QWidget& finestra, std::string_view famiglia) {
  finestra.setPalette(Tavolozza());
  finestra.setFont(Carattere(famiglia));
  finestra.setStyleSheet(FoglioDiStile());
}

QFont Carattere(std::string_view famiglia) {
  QFont carattere;
  if (!famiglia.empty()) {
    carattere.setFamily(Testo(famiglia));
    carattere.setStyleHint(QFont::SansSerif);
  }
  carattere.setPixelSize(PixelCarattere);
  return carattere;
}

} // namespace lumoscad::qt::aspetto
