#pragma once

#include "platform/qt/Colours.hpp"

#include <QFont>

#include <string_view>

class QWidget;

/// The colours, fonts and measures that the windows share. Both come from the desktop, as the process' application has
/// them: its palette, and the size of its font. A window asks anew whenever it lays itself out or paints.
namespace lumoscad::qt::look {

/// The colours from the application's palette as it is now.
[[nodiscard]] const Colours& Now();

/// The height of the application's font, in pixels: 12 where nobody chose another.
[[nodiscard]] int FontPixels();
/// A length that is `pixels` at the font of 12 pixels, as it is at the font of now.
[[nodiscard]] int Scaled(int pixels);
/// The other way round.
[[nodiscard]] int Unscaled(int pixels);
/// A list row, which is 240 twips high whatever its pixels.
[[nodiscard]] int RowHeight();
/// The heading strip.
[[nodiscard]] int HeadingHeight();

// How many twips a pixel has follows the font: 15 across and 10 down at 12 pixels.

[[nodiscard]] int PixelsX(int twips);
[[nodiscard]] int PixelsY(int twips);
[[nodiscard]] int TwipsX(int pixels);
[[nodiscard]] int TwipsY(int pixels);

/// Gives `window` and all that is in it the colours and the font of now, and a style of its own. What the calling
/// program's own style, style sheet and fonts for single kinds of widgets say does not count here. To be called once
/// the widgets are made, and again when the desktop's look has changed or more widgets were made.
void Dress(QWidget& window);
/// Shows what the person confirms with in the colours of what is chosen. These two count from the next `Dress` on.
void MarkAsConfirming(QWidget& button);
[[nodiscard]] bool Confirms(const QWidget& button);
/// Shows a text that stands back behind the others.
void MarkAsFaint(QWidget& label);
/// The font of this family, or what the system puts in its place, in the size that fits a row; without a family the
/// application's own.
[[nodiscard]] QFont Font(std::string_view family);
/// The font of a label whose text is to be seen first.
[[nodiscard]] QFont Bold(QFont font);

} // namespace lumoscad::qt::look
