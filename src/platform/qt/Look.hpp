#pragma once

#include <QColor>
#include <QFont>

#include <string_view>

class QWidget;

/// The colours, fonts and measures that the windows share.
namespace lumoscad::qt::look {

inline constexpr int RowHeight = 24;     ///< pixels of a list row
inline constexpr int HeadingHeight = 36; ///< pixels of the heading strip

inline constexpr QColor Background{0xF3, 0xF6, 0xF9};
inline constexpr QColor Paper{0xFF, 0xFF, 0xFF};
inline constexpr QColor AlternateRow{0xF6, 0xF9, 0xFC};
inline constexpr QColor Ink{0x1E, 0x2A, 0x36};
inline constexpr QColor Line{0xD5, 0xDE, 0xE7};
inline constexpr QColor FaintLine{0xE7, 0xED, 0xF3};
inline constexpr QColor HeadingBackground{0xE6, 0xED, 0xF4};
inline constexpr QColor HoveredHeading{0xD8, 0xE4, 0xEF};
inline constexpr QColor Accent{0x1F, 0x62, 0x9B};
inline constexpr QColor Selection{0xD3, 0xE5, 0xF5};
inline constexpr QColor SelectionWithoutFocus{0xE4, 0xEA, 0xF0};
inline constexpr QColor Green{0x23, 0x7A, 0x4B};
inline constexpr QColor Red{0xA9, 0x3A, 0x32};
inline constexpr QColor ChangedBackground{0xFF, 0xF1, 0xC9};
inline constexpr QColor ChangedInk{0x70, 0x45, 0x00};

/// Gives `window` the light colours and the font of every window, whatever the calling program's own ones are.
/// To be called before its widgets are made: a style sheet keeps later changes from reaching them.
void Dress(QWidget& window, std::string_view family);
/// The list font: `family`, or what the system puts in its place, in the size that fits a row.
[[nodiscard]] QFont Font(std::string_view family);

} // namespace lumoscad::qt::look
