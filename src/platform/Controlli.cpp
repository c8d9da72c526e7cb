#include "platform/Controlli.hpp"

namespace lumoscad {

std::string SenzaControlli(std::string_view testo, std::string_view ammessi) {
  std::string pulito;
  pulito.reserve(testo.size());
  for (std::size_t posto = 0; posto < testo.size(); ++posto) {
    const auto byte = static_cast<unsigned char>(testo[posto]);
    const auto seguente = posto + 1 < testo.size() ? static_cast<unsigned char>(testo[posto + 1]) : 0U;
    const bool isC1 = byte == 0xC2 && seguente >= 0x80 && seguente <= 0x9F;
    const bool isControllo = isC1 || byte < 0x20 || byte == 0x7F;
    pulito += isControllo && ammessi.find(testo[posto]) == std::string_view::npos ? ' ' : testo[posto];
    posto += isC1 ? 1 : 0;
  }
  return pulito;
}

} // namespace lumoscad
