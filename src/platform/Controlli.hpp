#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace lumoscad {

/// How many bytes the control character (C0, DEL, C1 in UTF-8) at `posto` has; 0 where there is none.
[[nodiscard]] std::size_t LunghezzaControllo(std::string_view testo, std::size_t posto) noexcept;

/// The text with a blank for every control character, except those in `ammessi`: what others
/// have written gives no orders to the terminal on which it is read.
[[nodiscard]] std::string SenzaControlli(std::string_view testo, std::string_view ammessi = {});

} // namespace lumoscad
