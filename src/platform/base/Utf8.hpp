#pragma once

#include <cstddef>
#include <string_view>

namespace lumoscad::base {

/// Whether a byte of a UTF-8 text is the first of a character, rather than one that follows.
[[nodiscard]] constexpr bool BeginsCharacter(char byte) noexcept {
  return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
}

/// One character of a UTF-8 text.
struct Utf8Character {
  char32_t code = 0;
  std::size_t length = 0; ///< in bytes; 0 where the bytes are no character
};

/// The character at the beginning of `text`, which is not empty. Longer forms than need be, surrogates and what lies
/// beyond U+10FFFF are no characters.
[[nodiscard]] Utf8Character FirstCharacter(std::string_view text) noexcept;

} // namespace lumoscad::base
