#include "platform/qt/WindowMemory.hpp"

#include "platform/qt/Texts.hpp"

#include <QSettings>
#include <QVariant>

namespace lumoscad::qt {

namespace {

constexpr int SmallestSide = 100;
constexpr int LargestSide = 20000;
constexpr int NarrowestColumn = 8;
constexpr int WidestColumn = 4000;

QString Entry(const QString& window, const char* what) {
  return window + QLatin1Char('/') + QLatin1String(what);
}

/// Named outright: the calling program's organisation and application are none of these windows'.
QSettings Kept() {
  return {QSettings::IniFormat, QSettings::UserScope, QStringLiteral("LumoScad"), QStringLiteral("Finestre")};
}

bool Between(int number, int smallest, int largest) {
  return number >= smallest && number <= largest;
}

} // namespace

std::optional<QSize> WindowMemory::Size() const {
  const QStringList sides = Kept().value(Entry(window_, "dimensione")).toStringList();
  if (sides.size() != 2) {
    return std::nullopt;
  }
  const QSize size(sides[0].toInt(), sides[1].toInt());
  const bool sound =
      Between(size.width(), SmallestSide, LargestSide) && Between(size.height(), SmallestSide, LargestSide);
  return sound ? std::optional(size) : std::nullopt;
}

void WindowMemory::RememberSize(const QSize& size) const {
  Kept().setValue(Entry(window_, "dimensione"),
                  QStringList{QString::number(size.width()), QString::number(size.height())});
}

WindowMemory::Widths WindowMemory::ColumnWidths() const {
  Widths widths;
  for (const QString& entry : Kept().value(Entry(window_, "larghezze")).toStringList()) {
    const int width = entry.section(QLatin1Char('='), 1, 1).toInt();
    if (Between(width, NarrowestColumn, WidestColumn)) {
      widths[Utf8(entry.section(QLatin1Char('='), 0, 0))] = width;
    }
  }
  return widths;
}

void WindowMemory::RememberColumnWidths(const Widths& widths) const {
  QStringList entries;
  for (const auto& [key, width] : widths) {
    entries.append(Text(key) + QLatin1Char('=') + QString::number(width));
  }
  Kept().setValue(Entry(window_, "larghezze"), entries);
}

std::optional<bool> WindowMemory::Open(const QString& panel) const {
  const QVariant kept = Kept().value(Entry(window_, "pannelli") + QLatin1Char('/') + panel);
  return kept.isValid() ? std::optional(kept.toBool()) : std::nullopt;
}

void WindowMemory::RememberOpen(const QString& panel, bool open) const {
  Kept().setValue(Entry(window_, "pannelli") + QLatin1Char('/') + panel, open);
}

void WindowMemory::Forget() const {
  QSettings kept = Kept();
  if (kept.childGroups().contains(window_)) {
    kept.remove(window_);
  }
}

} // namespace lumoscad::qt
