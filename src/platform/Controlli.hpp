#pragma once

#include <string>
#include <string_view>

namespace lumoscad {

/// The text with a blank for every control character (C0, DEL, C1 in UTF-8), except those in `ammessi`: what others
/// have written gives no orders to the terminal on which it is read.
[[nodiscard]] std::string SenzaControlli(std::string_view testo, std::string_view ammessi = {});

} // namespace lumoscad
