#pragma once

#include "Stopwatch.hpp"

class QDialog;

namespace lumoscad::bench {

/// Scrolls the list of an open window by `pages` pages, each painted, in turns with a plain table of Qt of the same
/// size and columns, whose cells are empty.
[[nodiscard]] Times ScrollPages(QDialog& window, int pages);

} // namespace lumoscad::bench
