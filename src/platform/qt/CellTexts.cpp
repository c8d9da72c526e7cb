#include "platform/qt/CellTexts.hpp"

#include "platform/qt/Texts.hpp"

#include <QFontMetrics>
#include <QPaintDevice>
#include <QPainter>
#include <QRegion>
#include <QTextOption>

#include <algorithm>
#include <functional>

namespace lumoscad::qt {

namespace {

/// Four pages of texts that are all different.
constexpr std::size_t Places = 1024;
/// Any odd number does.
constexpr std::size_t Spread = 2654435761U;
/// Wider than any text.
constexpr qreal Endless = 0x01000000;

/// True for letters that QPainter::drawText takes as they are, one after the other from left to right: no control
/// characters, tabs, soft hyphens, marks that stand over others, or scripts that run to the left.
bool Plain(const QString& text) {
  return std::all_of(text.begin(), text.end(), [](QChar letter) {
    const char16_t code = letter.unicode();
    return (code >= 0x20 && code < 0x7F) || (code > 0xA0 && code < 0x300 && code != 0xAD);
  });
}

int Flags(bool right) {
  return static_cast<int>(Qt::AlignVCenter) | static_cast<int>(right ? Qt::AlignRight : Qt::AlignLeft) |
         static_cast<int>(Qt::TextSingleLine);
}

} // namespace

CellTexts::CellTexts() : entries_(Places) {}

void CellTexts::Forget() {
  for (auto& entry : entries_) {
    entry.reset();
  }
}

void CellTexts::Begin(QPainter& painter, const QFont& font) {
  std::array fonts{font, font};
  fonts[0].setBold(false);
  fonts[1].setBold(true);
  const int dotsPerInch = painter.device()->logicalDpiY();
  if (fonts == fonts_ && dotsPerInch == dotsPerInch_) {
    return;
  }
  Forget();
  fonts_ = fonts;
  dotsPerInch_ = dotsPerInch;
  for (std::size_t i = 0; i < fonts_.size(); ++i) {
    painter.setFont(fonts_.at(i));
    deviceFonts_.at(i) = painter.font();
  }
}

void CellTexts::Write(QPainter& painter, const QRect& area, std::string_view text, Style style, const QRect& covered) {
  if (text.empty()) {
    return;
  }
  const Entry& entry = Found(text, area.size(), style);
  if (entry.laidOut && painter.layoutDirection() != Qt::RightToLeft) {
    entry.layout.lineAt(0).draw(&painter, area.topLeft() + entry.place);
    return;
  }
  painter.save();
  if (!covered.isEmpty()) {
    painter.setClipRegion(QRegion(painter.window()).subtracted(covered));
  }
  painter.setFont(fonts_.at(style.bold ? 1 : 0));
  painter.drawText(area, Flags(style.right), entry.shown);
  painter.restore();
}

QRect CellTexts::Place(const QRect& area, std::string_view text, Style style, std::size_t begin, std::size_t end) {
  const Entry& entry = Found(text, area.size(), style);
  const auto letters = [text](std::size_t bytes) { return static_cast<int>(Text(text.substr(0, bytes)).size()); };
  // Of a text that was cut what stands behind the cut is not to be seen.
  const bool cut = entry.shown.size() < letters(text.size());
  const int shown = static_cast<int>(entry.shown.size()) - (cut ? 1 : 0);
  const int first = std::min(letters(begin), shown);
  const int last = std::min(letters(end), shown);
  const QFontMetrics metrics(fonts_.at(style.bold ? 1 : 0));
  const auto across = [&](int letter) {
    return entry.laidOut ? entry.layout.lineAt(0).cursorToX(letter)
                         : static_cast<qreal>(metrics.horizontalAdvance(entry.shown, letter));
  };
  const qreal width = entry.laidOut ? 0 : metrics.horizontalAdvance(entry.shown);
  const qreal left = entry.laidOut ? entry.place.x() : style.right ? area.width() - width : 0;
  const int height = metrics.height();
  const QRect place(area.left() + qRound(left + across(first)), area.top() + (area.height() - height) / 2,
                    qRound(across(last) - across(first)), height);
  return first < last ? place.intersected(area) : QRect();
}

CellTexts::Entry& CellTexts::Found(std::string_view text, const QSize& size, Style style) {
  // A text that stands in two columns of different widths has two places.
  const std::size_t kind = static_cast<std::size_t>(size.width()) * 4 + (style.bold ? 2 : 0) + (style.right ? 1 : 0);
  auto& place = entries_[(std::hash<std::string_view>()(text) + kind * Spread) % Places];
  if (!place) {
    place = std::make_unique<Entry>();
  }
  Entry& entry = *place;
  if (entry.text != text || entry.size != size || entry.style != style) {
    entry.text.clear(); // an entry that is left unfinished, for lack of memory, is nobody's
    entry.size = size;
    entry.style = style;
    entry.shown = Text(text);
    Prepare(entry);
    entry.text = text;
  }
  return entry;
}

void CellTexts::Prepare(Entry& entry) const {
  entry.laidOut = Plain(entry.shown) && LayOut(entry);
  if (!entry.laidOut) {
    const bool plain = Plain(entry.shown);
    const QFontMetrics metrics(fonts_.at(entry.style.bold ? 1 : 0));
    entry.shown = metrics.elidedText(entry.shown, Qt::ElideRight, entry.size.width());
    entry.laidOut = plain && LayOut(entry);
  }
}

/// False when the text does not fit.
bool CellTexts::LayOut(Entry& entry) const {
  QTextLayout& layout = entry.layout;
  QTextOption option;
  option.setTextDirection(Qt::LeftToRight);
  option.setWrapMode(QTextOption::NoWrap);
  option.setFlags(QTextOption::IncludeTrailingSpaces);
  layout.setCacheEnabled(true);
  layout.setTextOption(option);
  layout.setFont(deviceFonts_.at(entry.style.bold ? 1 : 0));
  layout.setText(entry.shown);
  layout.beginLayout();
  QTextLine line = layout.createLine();
  if (!line.isValid()) {
    layout.endLayout();
    return false;
  }
  line.setLineWidth(Endless);
  layout.endLayout();
  const QSizeF size(entry.size);
  const qreal width = line.horizontalAdvance();
  if (width > size.width() || line.height() > size.height()) {
    return false;
  }
  entry.place = {entry.style.right ? size.width() - width : 0, (size.height() - line.height()) / 2};
  return true;
}

} // namespace lumoscad::qt
