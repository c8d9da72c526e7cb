#include "entry/Comandi.hpp"

#include "database/procedureLumoDB2.hpp"
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
      {"TEST", "", procedureLumoDB2::TestDB2},
      {"EXTRA", "/A", ModuloMain::ComandoExtra},
      {"SOSPESO", "/A", ModuloMain::ComandoSospendiPartita},
      {"SOSPESO", "/D", ModuloMain::ComandoRiattivaPartita},
      {"PRESUNTO", "/A", ModuloMain::ComandoSospendiPresunto},
      {"PRESUNTO", "/D", ModuloMain::ComandoRiattivaPresunto},
      {"BANCA", "/CREDITI", Crediti},
      {"BANCA", "/DEBITI", Debiti},
      {"BANCA", "/PRESUNTI", NonDisponibile},
      {"CONSEGNA", "/PRESUNTI", NonDisponibile},
  };
  return comandi;
}

} // namespace lumoscad
