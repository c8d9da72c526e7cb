#include "platform/base/Utf8.hpp"

namespace lumoscad::base {

Utf8Character FirstCharacter(std::string_view text) noexcept {
  const auto byte = [&text](std::size_t index) { return static_cast<unsigned char>(text[index]); };
  const unsigned first = byte(0);
  if (first < 0x80U) {
    return {first, 1};
  }
  const std::size_t length = first >= 0xF0U ? 4 : first >= 0xE0U ? 3 : 2;
  if (first < 0xC2U || first > 0xF4U || text.size() < length) {
    return {};
  }
  char32_t code = first & (0x7FU >> length);
  for (std::size_t index = 1; index < length; ++index) {
    if (BeginsCharacter(text[index])) {
      return {};
    }
    code = (code << 6U) | (byte(index) & 0x3FU);
  }
  const bool tooLong = (length == 3 && code < 0x800U) || (length == 4 && code < 0x10000U);
  const bool surrogate = code >= 0xD800U && code <= 0xDFFFU;
  return tooLong || surrogate || code > 0x10FFFFU ? Utf8Character{} : Utf8Character{code, length};
}

} // namespace lumoscad::base
