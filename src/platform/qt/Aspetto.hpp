#pragma once

#include <QColor>
#include <QFont>

#include <string_view>

class QWidget;

/// The colours, fonts and measures that the windows share.
namespace lumoscad::qt::aspetto {

inline constexpr int AltezzaRiga = 24;    ///< pixels of a list row
inline constexpr int AltezzaTestata = 36; ///< pixels of the heading strip

inline constexpr QColor Fondo{0xF3, 0xF6, 0xF9};
inline constexpr QColor Carta{0xFF, 0xFF, 0xFF};
inline constexpr QColor RigaAlterna{0xF6, 0xF9, 0xFC};
inline constexpr QColor Inchiostro{0x1E, 0x2A, 0x36};
inline constexpr QColor Linea{0xD5, 0xDE, 0xE7};
inline constexpr QColor LineaTenue{0xE7, 0xED, 0xF3};
inline constexpr QColor FondoTestata{0xE6, 0xED, 0xF4};
inline constexpr QColor TestataSfiorata{0xD8, 0xE4, 0xEF};
inline constexpr QColor Accento{0x1F, 0x62, 0x9B};
inline constexpr QColor Selezione{0xD3, 0xE5, 0xF5};
inline constexpr QColor SelezioneSenzaFuoco{0xE4, 0xEA, 0xF0};
inline constexpr QColor Verde{0x23, 0x7A, 0x4B};
inline constexpr QColor Rosso{0xA9, 0x3A, 0x32};
inline constexpr QColor FondoVariato{0xFF, 0xF1, 0xC9};
inline constexpr QColor InchiostroVariato{0x70, 0x45, 0x00};

/// Gives `finestra` the light colours and the font of every window, whatever the calling program's own ones are.
/// To be called before its widgets are made: a style sheet keeps later changes from reaching them.
void Vesti(QWidget& finestra, std::string_view famiglia);
/// The list font: `famiglia`, or what the system puts in its place, in the size that fits a row.
[[nodiscard]] QFont Carattere(std::string_view famiglia);

} // namespace lumoscad::qt::aspetto
