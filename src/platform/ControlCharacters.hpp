#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace lumoscad {

/// How many bytes the control character (C0, DEL, C1 in UTF-8) at `place` has; 0 where there is none.
[[nodiscard]] std::size_t ControlLength(std::string_view text, std::size_t place) noexcept;

/// The text with a blank for every control character, except those in `allowed`: what others
/// have written gives no orders to the terminal on which it is read.
[[nodiscard]] std::string WithoutControls(std::string_view text, std::string_view allowed = {});

} // namespace lumoscad
