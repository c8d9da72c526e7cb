#include "platform/qt/RememberedLayout.hpp"

#include "platform/qt/ListParts.hpp"
#include "platform/qt/Look.hpp"
#include "platform/qt/Texts.hpp"

#include <QDialog>
#include <QResizeEvent>
#include <QScreen>

namespace lumoscad::qt {

namespace {

/// A window manager gives a window its place and its size while it shows it; what comes later is the person's doing.
constexpr qint64 ShowingMilliseconds = 1000;
/// What a window leaves of the display for its frame and for the desktop's bars, in pixels.
constexpr QSize Around(24, 56);

QString Panel() {
  return QStringLiteral("effetto");
}

} // namespace

RememberedLayout::RememberedLayout(QDialog& window, ListParts& parts, const ListWindow& list)
    : window_(window), parts_(parts), list_(list), memory_(Text(list.Description().name)) {}

void RememberedLayout::TakeOwnSize() const {
  if (const QScreen* display = window_.screen()) {
    window_.resize(window_.sizeHint().boundedTo(display->availableSize() - Around));
  }
}

void RememberedLayout::Apply() {
  const auto widths = memory_.ColumnWidths();
  const auto& columns = list_.Description().columns;
  for (std::size_t column = 0; column < columns.size(); ++column) {
    const auto kept = widths.find(columns[column].key);
    if (kept != widths.end() && columns[column].width > 0) {
      parts_.table->SetWidth(static_cast<int>(column), look::Scaled(kept->second));
    }
  }
  const QScreen* display = window_.screen();
  if (const auto size = memory_.Size(); size && display != nullptr) {
    window_.resize(size->boundedTo(display->availableSize() - Around));
  }
}

void RememberedLayout::Resized(const QResizeEvent& event) {
  resized_ = resized_ || (event.spontaneous() && shown_.isValid() && shown_.elapsed() > ShowingMilliseconds);
}

bool RememberedLayout::PanelOpen() const {
  return memory_.Open(Panel()).value_or(false);
}

void RememberedLayout::Keep() const {
  if (panel_) {
    memory_.RememberOpen(Panel(), *panel_);
  }
  if (resized_ && !window_.isMaximized() && !window_.isFullScreen()) {
    memory_.RememberSize(window_.size());
  }
  if (columnsChanged_) {
    WindowMemory::Widths widths;
    for (const auto& [column, pixels] : parts_.table->GivenWidths()) {
      widths[list_.Description().columns[static_cast<std::size_t>(column)].key] = look::Unscaled(pixels);
    }
    memory_.RememberColumnWidths(widths);
  }
}

void RememberedLayout::Reset() {
  memory_.Forget();
  resized_ = columnsChanged_ = false;
  panel_.reset();
  const auto given = parts_.table->GivenWidths();
  for (const auto& [column, pixels] : given) {
    parts_.table->SetWidth(column, std::nullopt);
  }
  TakeOwnSize();
}

} // namespace lumoscad::qt
