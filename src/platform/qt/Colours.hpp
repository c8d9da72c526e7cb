#pragma once

#include <QColor>

class QPalette;

namespace lumoscad::qt::look {

/// The colours of the windows, every one of them made from a palette. Whatever the palette, a text has at least 4.5:1
/// against what it stands on, and borders, ticks, marks and the focus have 3:1.
struct Colours {
  explicit Colours(const QPalette& palette);
  bool operator==(const Colours&) const = default;

  QColor background; ///< of the window
  QColor paper;      ///< of fields and rows
  QColor ink;        ///< on `paper` and on every tint of it
  QColor windowInk;  ///< on `background` and on the headings
  QColor faintInk;   ///< of what stands back, on `background` and on `paper`

  QColor fill;      ///< of what is chosen, and of the button that confirms
  QColor fillInk;   ///< on `fill`
  QColor fillHover; ///< `fill` under the pointer
  QColor fillDown;  ///< `fill` while the mouse button is down

  QColor alternateRow;          ///< `paper` of every other row
  QColor selection;             ///< `paper` of a selected row
  QColor selectionWithoutFocus; ///< the same, while the keyboard is elsewhere
  QColor changedBackground;     ///< `paper` of a changed cell
  QColor changedInk;            ///< on any of these
  QColor found;                 ///< below what a search found in a text

  QColor accent;    ///< the mark of the focus, of a selected row, a tick
  QColor accentInk; ///< a tick's sign
  QColor border;    ///< of fields, of boxes that are not ticked
  QColor line;      ///< between headings; no more than an ornament, except in high contrast
  QColor faintLine; ///< between cells; the same
  QColor darkLine;  ///< below the fields at the top

  QColor headingBackground;
  QColor hoveredHeading;

  QColor button;
  QColor hoveredButton;
  QColor pressedButton;
  QColor buttonInk; ///< on the three

 private:
  void Tint();
  void Mark();
};

/// `palette` with these colours in all its roles, for the widgets that paint themselves.
[[nodiscard]] QPalette PaletteOf(const Colours& colours);

} // namespace lumoscad::qt::look
