#pragma once

#include <QSize>
#include <QString>

#include <map>
#include <optional>
#include <string>
#include <utility>

namespace lumoscad::qt {

/// What a person changed of a window's look, kept from one showing to the next: its size, the widths of its columns,
/// whether its panel is open. Never anything of a row. It is kept in a file of the component's own, `LumoScad/Finestre`
/// among the person's settings, whatever the calling program's application is called. Nothing is kept until something
/// is remembered, and what cannot be read counts as nothing.
class WindowMemory {
 public:
  /// `window` is the name of the window.
  explicit WindowMemory(QString window) : window_(std::move(window)) {}

  [[nodiscard]] std::optional<QSize> Size() const;
  void RememberSize(const QSize& size) const;

  /// By the columns' keys, in pixels at the usual text size.
  using Widths = std::map<std::string, int>;
  [[nodiscard]] Widths ColumnWidths() const;
  void RememberColumnWidths(const Widths& widths) const;

  /// Whether the panel of this name was open; nothing where nobody opened or closed it.
  [[nodiscard]] std::optional<bool> Open(const QString& panel) const;
  void RememberOpen(const QString& panel, bool open) const;

  /// Forgets all of this window.
  void Forget() const;

 private:
  QString window_;
};

} // namespace lumoscad::qt
