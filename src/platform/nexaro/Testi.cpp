#include "platform/nexaro/Testi.hpp"

#include "platform/Controlli.hpp"
#include "platform/nexaro/Codifica.hpp"

namespace lumoscad::nexaro {

std::string SullHost(std::string_view host) {
  return host.empty() ? " sull'host" : " sull'host " + std::string(host);
}

std::string Cita(std::string_view testo) {
  return "«" + std::string(testo) + "»";
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
