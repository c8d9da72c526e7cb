#include "platform/nexaro/Impostazioni.hpp"

#include "platform/nexaro/ErroriLink.hpp"

#include <charconv>
#include <cstdlib>
#include <pwd.h>
#include <unistd.h>
#include <vector>

namespace lumoscad::nexaro {

Utente UtenteCorrente() {
  std::vector<char> tampone(16384);
  passwd voce{};
  passwd* trovata = nullptr;
  if (::getpwuid_r(::geteuid(), &voce, tampone.data(), tampone.size(), &trovata) != 0 || trovata == nullptr) {
    return {};
  }
  return {voce.pw_name, voce.pw_dir};
}

std::string Impostazione(const char* nome) {
  const char* valore = std::getenv(nome);
  return valore != nullptr ? valore : "";
}

std::chrono::milliseconds LeggiAttesa() {
  static constexpr double UnGiorno = 86400.0;
  const auto testo = Impostazione("NEXARO_ATTESA");
  if (testo.empty()) {
    return std::chrono::seconds(60);
  }
  double secondi = 0.0;
  const auto* fine = testo.data() + testo.size();
  const auto [arrivo, errore] = std::from_chars(testo.data(), fine, secondi, std::chars_format::fixed);
  // Written so that "nan" fails as well.
  if (errore != std::errc() || arrivo != fine || !(secondi > 0.0 && secondi <= UnGiorno)) {
    throw ErroreLink("NEXARO_ATTESA deve essere un numero positivo di secondi, non oltre 86400: vale «" + testo + "».");
  }
  return std::chrono::ceil<std::chrono::milliseconds>(std::chrono::duration<double>(secondi));
}

} // namespace lumoscad::nexaro
