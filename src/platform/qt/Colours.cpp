#include "platform/qt/Colours.hpp"

#include "platform/qt/Contrast.hpp"

#include <QPalette>

#include <algorithm>

namespace lumoscad::qt::look {

namespace {

/// From here on a palette whose window and fields share one ground is one of high contrast.
constexpr double HighContrast = 15;

/// `colour` with its hue turned by so many degrees, strong enough to be told as a colour; `grey` where it has no hue.
QColor Turned(const QColor& colour, int degrees, const QColor& grey) {
  if (colour.hsvHue() < 0 || colour.hsvSaturation() < 40) {
    return grey;
  }
  return QColor::fromHsv((colour.hsvHue() + degrees) % 360, std::max(colour.hsvSaturation(), 190),
                         std::max(colour.value(), 200));
}

} // namespace

Colours::Colours(const QPalette& palette) {
  const auto role = [&palette](QPalette::ColorRole which) { return palette.color(QPalette::Active, which).toRgb(); };
  background = role(QPalette::Window);
  paper = role(QPalette::Base);
  ink = Contrasting(role(QPalette::Text), {paper}, TextContrast);
  windowInk = Contrasting(role(QPalette::WindowText), {background}, TextContrast);
  faintInk = Contrasting(Mixed(ink, paper, 0.4), {paper, background}, TextContrast);
  fillInk = role(QPalette::HighlightedText);
  fill = Contrasting(role(QPalette::Highlight), {fillInk}, TextContrast);
  fillInk = Contrasting(fillInk, {fill}, TextContrast);
  const QColor away = Contrast(fill, Qt::white) < Contrast(fillInk, Qt::white) ? Qt::white : Qt::black;
  fillHover = Mixed(fill, away, 0.12);
  fillDown = Mixed(fill, away, 0.25);
  button = role(QPalette::Button);
  buttonInk = Contrasting(role(QPalette::ButtonText), {button}, TextContrast);
  hoveredButton = Tinted(button, fill, 0.12, buttonInk);
  pressedButton = Tinted(button, fill, 0.25, buttonInk);
  Tint();
  Mark();
}

/// The grounds: each is as far from `paper`, or from `background`, as the text on it allows.
void Colours::Tint() {
  alternateRow = Tinted(paper, ink, 0.03, ink);
  selection = Tinted(paper, fill, 0.24, ink);
  selectionWithoutFocus = Tinted(paper, ink, 0.11, ink);
  changedBackground = Tinted(paper, Turned(fill, 180, ink), 0.25, ink);
  found = Tinted(paper, Turned(fill, 220, ink), 0.45, ink);
  headingBackground = Tinted(background, fill, 0.08, windowInk);
  hoveredHeading = Tinted(background, fill, 0.18, windowInk);
}

/// What has to stand out from every ground that it can lie on.
void Colours::Mark() {
  changedInk =
      Contrasting(Mixed(ink, Turned(fill, 180, ink), 0.35),
                  {changedBackground, paper, alternateRow, selection, selectionWithoutFocus, found}, TextContrast);
  accent = Contrasting(fill,
                       {paper, alternateRow, selection, selectionWithoutFocus, changedBackground, background,
                        headingBackground, hoveredHeading},
                       MarkContrast);
  accentInk = Contrasting(paper, {accent}, TextContrast);
  border = Contrasting(Mixed(ink, paper, 0.55),
                       {paper, alternateRow, selection, selectionWithoutFocus, changedBackground, background,
                        headingBackground, hoveredHeading, button},
                       MarkContrast);
  const bool high = Contrast(background, paper) < 1.05 && Contrast(ink, paper) > HighContrast;
  line = high ? border : Mixed(headingBackground, windowInk, 0.12);
  faintLine = high ? border : Mixed(paper, ink, 0.09);
  darkLine = Contrasting(Mixed(fill, windowInk, 0.5), {background}, MarkContrast);
}

QPalette PaletteOf(const Colours& c) {
  QPalette palette;
  const auto apply = [&palette](QPalette::ColorRole role, const QColor& colour, const QColor& disabled) {
    palette.setColor(QPalette::Active, role, colour);
    palette.setColor(QPalette::Inactive, role, colour);
    palette.setColor(QPalette::Disabled, role, disabled);
  };
  const auto ground = [&apply](QPalette::ColorRole role, const QColor& colour) { apply(role, colour, colour); };
  ground(QPalette::Window, c.background);
  ground(QPalette::Base, c.paper);
  ground(QPalette::AlternateBase, c.alternateRow);
  ground(QPalette::Button, c.button);
  ground(QPalette::Highlight, c.fill);
  ground(QPalette::HighlightedText, c.fillInk);
  ground(QPalette::ToolTipBase, c.paper);
  ground(QPalette::ToolTipText, c.ink);
  ground(QPalette::BrightText, c.fillInk);
  ground(QPalette::Light, Mixed(c.button, Qt::white, 0.5));
  ground(QPalette::Midlight, Mixed(c.button, Qt::white, 0.25));
  ground(QPalette::Mid, Mixed(c.button, Qt::black, 0.2));
  ground(QPalette::Dark, c.border);
  ground(QPalette::Shadow, Mixed(c.border, Qt::black, 0.4));
  apply(QPalette::WindowText, c.windowInk, Mixed(c.windowInk, c.background, 0.5));
  apply(QPalette::Text, c.ink, Mixed(c.ink, c.paper, 0.5));
  apply(QPalette::ButtonText, c.buttonInk, Mixed(c.buttonInk, c.button, 0.5));
  apply(QPalette::PlaceholderText, c.faintInk, c.faintInk);
  apply(QPalette::Link, Contrasting(c.fill, {c.background, c.paper}, TextContrast), c.faintInk);
  apply(QPalette::LinkVisited, Contrasting(c.fill, {c.background, c.paper}, TextContrast), c.faintInk);
  return palette;
}

} // namespace lumoscad::qt::look
