#include "platform/nexaro/Testi.hpp"

#include "platform/nexaro/Codifica.hpp"

namespace lumoscad::nexaro {

std::string SullHost(std::string_view host) {
  return host.empty() ? " sull'host" : " sull'host " + std::string(host);
}

std::string Cita(std::string_view testo) {
  return "«" + std::string(testo) + "»";
}

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

std::string TestoAltrui(std::string_view testo) {
  static constexpr std::size_t Massimo = 300;
  auto pulito = SenzaControlli(testo);
  pulito.erase(pulito.find_last_not_of(' ') + 1);
  // Cut first: half a character at the end is replaced like any other stray byte.
  return Codifica().DallHostTollerante(std::string_view(pulito).substr(0, Massimo));
}

std::string Secondi(std::chrono::milliseconds attesa) {
  const auto interi = attesa.count() / 1000;
  const auto resto = attesa.count() % 1000;
  auto testo = std::to_string(interi);
  if (resto != 0) {
    testo += "," + std::to_string(1000 + resto).substr(1);
  }
  return testo + (attesa.count() == 1000 ? " secondo" : " secondi");
}

} // namespace lumoscad::nexaro
