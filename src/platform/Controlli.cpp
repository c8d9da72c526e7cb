#include "platform/Controlli.hpp"

namespace lumoscad {

std::size_t LunghezzaControllo(std::string_view testo, std::size_t posto) noexcept {
  const auto byte = static_cast<unsigned char>(testo[posto]);
  const auto seguente = posto + 1 < testo.size() ? static_cast<unsigned char>(testo[posto + 1]) : 0U;
  if (byte == 0xC2 && seguente >= 0x80 && seguente <= 0x9F) {
    return 2;
  }
  return byte < 0x20 || byte == 0x7F ? 1 : 0;
}

std::string SenzaControlli(std::string_view testo, std::string_view ammessi) {
  std::string pulito;
  pulito.reserve(testo.size());
  for (std::size_t posto = 0; posto < testo.size(); ++posto) {
    const std::size_t controllo = LunghezzaControllo(testo, posto);
    pulito += controllo > 0 && ammessi.find(testo[posto]) == std::string_view::npos ? ' ' : testo[posto];
    posto += controllo == 2 ? 1 : 0;
  }
  return pulito;
}

} // namespace lumoscad
