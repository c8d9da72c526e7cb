#pragma once

#include <QColor>

#include <initializer_list>

namespace lumoscad::qt::look {

/// What text needs against what it stands on (WCAG 2.2, success criterion 1.4.3).
inline constexpr double TextContrast = 4.5;
/// What borders, ticks and the mark of the focus need (WCAG 2.2, success criterion 1.4.11).
inline constexpr double MarkContrast = 3.0;

/// The contrast ratio of two opaque colours, from 1 to 21: https://www.w3.org/TR/WCAG22/#dfn-contrast-ratio
[[nodiscard]] double Contrast(const QColor& one, const QColor& other);

/// So much of `towards` (0 to 1) in `colour`.
[[nodiscard]] QColor Mixed(const QColor& colour, const QColor& towards, double part);

/// `colour`, or what comes nearest to it on the way to black or to white that has `ratio` against every one of
/// `backgrounds`. Against one background there always is one up to 4.58; where several leave none, it is black or
/// white, whichever is better against the worst of them.
[[nodiscard]] QColor Contrasting(const QColor& colour, std::initializer_list<QColor> backgrounds, double ratio);

/// `paper` with so much of `towards` that `ink` can still be read on it: at most `part`, and none where even `paper`
/// gives it no more than it needs.
[[nodiscard]] QColor Tinted(const QColor& paper, const QColor& towards, double part, const QColor& ink);

} // namespace lumoscad::qt::look
