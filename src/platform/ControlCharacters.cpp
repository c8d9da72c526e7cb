#include "platform/ControlCharacters.hpp"

namespace lumoscad {

std::size_t ControlLength(std::string_view text, std::size_t place) noexcept {
  const auto byte = static_cast<unsigned char>(text[place]);
  const auto following = place + 1 < text.size() ? static_cast<unsigned char>(text[place + 1]) : 0U;
  if (byte == 0xC2 && following >= 0x80 && following <= 0x9F) {
    return 2;
  }
  return byte < 0x20 || byte == 0x7F ? 1 : 0;
}

std::string WithoutControls(std::string_view text, std::string_view allowed) {
  std::string clean;
  clean.reserve(text.size());
  for (std::size_t place = 0; place < text.size(); ++place) {
    const std::size_t control = ControlLength(text, place);
    clean += control > 0 && allowed.find(text[place]) == std::string_view::npos ? ' ' : text[place];
    place += control == 2 ? 1 : 0;
  }
  return clean;
}

} // namespace lumoscad
