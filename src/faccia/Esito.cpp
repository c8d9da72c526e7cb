#include "faccia/Esito.hpp"

namespace {

const std::string* Campo(const lumoscad_esito* esito, int campo) noexcept {
  const auto posto = static_cast<std::size_t>(campo);
  return esito == nullptr || campo < 0 || posto >= esito->campi.size() ? nullptr : &esito->campi[posto];
}

} // namespace

extern "C" const char* lumoscad_campo(const lumoscad_esito* esito, int campo, size_t* lunghezza) {
  const std::string* const testo = Campo(esito, campo);
  if (lunghezza != nullptr) {
    *lunghezza = testo == nullptr ? 0 : testo->size();
  }
  return testo == nullptr ? "" : testo->c_str();
}

extern "C" int lumoscad_campo_vero(const lumoscad_esito* esito, int campo) {
  const std::string* const testo = Campo(esito, campo);
  return testo != nullptr && *testo == "1" ? 1 : 0;
}

extern "C" size_t lumoscad_voci(const lumoscad_esito* esito) {
  return esito == nullptr ? 0 : esito->voci.size();
}

extern "C" const lumoscad_esito* lumoscad_voce(const lumoscad_esito* esito, size_t indice) {
  return esito == nullptr || indice >= esito->voci.size() ? nullptr : &esito->voci[indice];
}

extern "C" void lumoscad_libera(lumoscad_esito* esito) {
  const lumoscad::EsitoProprio proprio(esito);
}
