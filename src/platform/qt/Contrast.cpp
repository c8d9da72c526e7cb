#include "platform/qt/Contrast.hpp"

#include <algorithm>
#include <array>
#include <cmath>

namespace lumoscad::qt::look {

namespace {

constexpr int Steps = 64;

double Linear(int channel) {
  const double share = channel / 255.0;
  return share <= 0.04045 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
}

/// https://www.w3.org/TR/WCAG22/#dfn-relative-luminance
double Luminance(const QColor& colour) {
  return 0.2126 * Linear(colour.red()) + 0.7152 * Linear(colour.green()) + 0.0722 * Linear(colour.blue());
}

double Worst(const QColor& colour, std::initializer_list<QColor> backgrounds) {
  double worst = 21;
  for (const QColor& background : backgrounds) {
    worst = std::min(worst, Contrast(colour, background));
  }
  return worst;
}

} // namespace

double Contrast(const QColor& one, const QColor& other) {
  const auto [darker, lighter] = std::minmax({Luminance(one), Luminance(other)});
  return (lighter + 0.05) / (darker + 0.05);
}

QColor Mixed(const QColor& colour, const QColor& towards, double part) {
  const auto channel = [part](int from, int to) { return static_cast<int>(std::lround(from + (to - from) * part)); };
  return {channel(colour.red(), towards.red()), channel(colour.green(), towards.green()),
          channel(colour.blue(), towards.blue())};
}

QColor Contrasting(const QColor& colour, std::initializer_list<QColor> backgrounds, double ratio) {
  const std::array ends{QColor(Qt::black), QColor(Qt::white)};
  for (int step = 0; step <= Steps; ++step) {
    for (const QColor& end : ends) {
      const QColor candidate = Mixed(colour, end, static_cast<double>(step) / Steps);
      if (Worst(candidate, backgrounds) >= ratio) {
        return candidate;
      }
    }
  }
  return Worst(ends[0], backgrounds) >= Worst(ends[1], backgrounds) ? ends[0] : ends[1];
}

QColor Tinted(const QColor& paper, const QColor& towards, double part, const QColor& ink) {
  for (int step = Steps; step > 0; --step) {
    const QColor candidate = Mixed(paper, towards, part * step / Steps);
    if (Contrast(candidate, ink) >= TextContrast) {
      return candidate;
    }
  }
  return paper;
}

} // namespace lumoscad::qt::look
