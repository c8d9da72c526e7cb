#include "platform/nexaro/Testi.hpp"

namespace lumoscad::nexaro {

std::string SullHost(std::string_view host) {
  return host.empty() ? " sull'host" : " sull'host " + std::string(host);
}

std::string Cita(std::string_view testo) {
  return "«" + std::string(testo) + "»";
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
