#pragma once

#include <QFont>
#include <QPointF>
#include <QRect>
#include <QString>
#include <QTextLayout>

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

class QPainter;

namespace lumoscad::qt {

/// Writes the texts of the list's cells, each on one line in the middle of its area, elided at the right where it does
/// not fit: pixel by pixel what QPainter::drawText writes of what QFontMetrics::elidedText leaves. But a plain text is
/// laid out once and not twice, and remembered as it was laid out, in a table that does not grow.
class CellTexts {
 public:
  CellTexts();

  /// Begins a painting in `font` and in its bold sister. What was laid out in other fonts is forgotten.
  void Begin(QPainter& painter, const QFont& font);
  /// Forgets everything: the fonts that the process has are others now.
  void Forget();

  struct Style {
    bool bold = false;
    bool right = false; ///< at the right end of the area
    bool operator==(const Style&) const = default;
  };

  /// Writes `text` (UTF-8) in the painter's pen. `covered` is what the neighbours to the right will be painted on:
  /// letters that reach out of their area do not show there.
  void Write(QPainter& painter, const QRect& area, std::string_view text, Style style, const QRect& covered);
  /// Where a stretch of a text's bytes stands when the text is written into `area`, over the whole height of the text;
  /// empty where it is not to be seen.
  [[nodiscard]] QRect Place(const QRect& area, std::string_view text, Style style, std::size_t begin, std::size_t end);

 private:
  struct Entry {
    std::string text;
    QSize size;
    Style style;
    bool laidOut = false; ///< `layout` has the text; otherwise the painter lays `shown` out each time
    QString shown;        ///< what is left of the text
    QPointF place;        ///< of the layout in its area
    QTextLayout layout;
  };

  [[nodiscard]] Entry& Found(std::string_view text, const QSize& size, Style style);
  void Prepare(Entry& entry) const;
  [[nodiscard]] bool LayOut(Entry& entry) const;

  std::vector<std::unique_ptr<Entry>> entries_; ///< each text in the one place that its hash gives it
  std::array<QFont, 2> fonts_;                  ///< plain and bold
  std::array<QFont, 2> deviceFonts_;            ///< the same as the painter has them
  int dotsPerInch_ = 0;                         ///< of the painter's device
};

} // namespace lumoscad::qt
