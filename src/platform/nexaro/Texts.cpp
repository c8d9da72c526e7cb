#include "platform/nexaro/Texts.hpp"

#include "platform/ControlCharacters.hpp"
#include "platform/nexaro/Encoding.hpp"

namespace lumoscad::nexaro {

std::string OnHost(std::string_view host) {
  return host.empty() ? " sull'host" : " sull'host " + std::string(host);
}

std::string Quote(std::string_view text) {
  return "«" + std::string(text) + "»";
}

std::string ForeignText(std::string_view text) {
  static constexpr std::size_t Maximum = 300;
  auto clean = WithoutControls(text);
  clean.erase(clean.find_last_not_of(' ') + 1);
  // Cut first: half a character at the end is replaced like any other stray byte.
  return Encoding().FromHostTolerant(std::string_view(clean).substr(0, Maximum));
}

std::string Seconds(std::chrono::milliseconds timeout) {
  const auto whole = timeout.count() / 1000;
  const auto rest = timeout.count() % 1000;
  auto text = std::to_string(whole);
  if (rest != 0) {
    text += "," + std::to_string(1000 + rest).substr(1);
  }
  return text + (timeout.count() == 1000 ? " secondo" : " secondi");
}

} // namespace lumoscad::nexaro
