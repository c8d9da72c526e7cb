#pragma once

#include "platform/Desktop.hpp"

#include <memory>

namespace lumoscad::qt {

/// The desktop over Qt Widgets. It uses the calling program's QApplication, or makes one that stays for the life
/// of the process. To be called, and used, on the thread of the windows.
/// @throws RuntimeError (-2147467259) when no window can be opened: no display, a QCoreApplication without
/// windows, or the wrong thread.
[[nodiscard]] std::unique_ptr<Desktop> CreateDesktop();

/// Whose windows the process' QApplication shows; an application of Qt without widgets counts as none. From any thread.
[[nodiscard]] WindowThread WhereTheWindowsAre() noexcept;

} // namespace lumoscad::qt
