#include "entry/Comandi.hpp"

#include "handlers/ModuloMain.hpp"
#include "platform/Errore.hpp"

namespace lumoscad {
namespace {

std::string NonDisponibile(std::string_view) {
  throw ErroreRuntime(errori::NonDisponibile, "Comando non disponibile in questa versione");
}

std::string Crediti(std::string_view comando) {
  return ModuloMain::ComandoBanca(comando, "CREDITI");
}
std::string Debiti(std::string_view comando) {
  return ModuloMain::ComandoBanca(comando, "DEBITI");
}

} // namespace

const std::vector<Comando>& Comandi() {
  static const std::vector<Comando> comandi = {
      {"TEST", "", NonDisponibile},           {"EXTRA", "/A", NonDisponibile},
      {"SOSPESO", "/A", NonDisponibile},      {"SOSPESO", "/D", NonDisponibile},
      {"PRESUNTO", "/A", NonDisponibile},     {"PRESUNTO", "/D", NonDisponibile},
      {"BANCA", "/CREDITI", Crediti},         {"BANCA", "/DEBITI", Debiti},
      {"BANCA", "/PRESUNTI", NonDisponibile}, {"CONSEGNA", "/PRESUNTI", NonDisponibile},
  };
  return comandi;
}

} // namespace lumoscad
