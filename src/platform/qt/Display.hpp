#pragma once

#include <string>

namespace lumoscad::qt {

/// Finds out whether a window can be opened, before Qt is asked to: Qt ends the whole process when it cannot.
/// Gives back the Qt platform to insist on, or the empty text when Qt's own choice is right.
/// @throws RuntimeError (-2147467259) when no display can be reached.
[[nodiscard]] std::string ChoosePlatform();

} // namespace lumoscad::qt
