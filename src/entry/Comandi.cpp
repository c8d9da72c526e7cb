#include "entry/Comandi.hpp"

#include "database/procedureLumoDB2.hpp"
#include "handlers/ModuloMain.hpp"

namespace lumoscad {
namespace {

std::string Crediti(std::string_view comando) {
  return ModuloMain::ComandoBanca(comando, "CREDITI");
}
std::string Debiti(std::string_view comando) {
  return ModuloMain::ComandoBanca(comando, "DEBITI");
}
std::string BancaPresunti(std::string_view comando) {
  return ModuloMain::ComandoBancaPresunti(comando, "PRESUNTI");
}
std::string ConsegnaPresunti(std::string_view comando) {
  return ModuloMain::ComandoConsegna(comando, "PRESUNTI");
}

} // namespace

const std::vector<Comando>& Comandi() {
  static const std::vector<Comando> Comandi = {
      {"TEST", "", procedureLumoDB2::TestDB2},
      {"EXTRA", "/A", ModuloMain::ComandoExtra},
      {"SOSPESO", "/A", ModuloMain::ComandoSospendiPartita},
      {"SOSPESO", "/D", ModuloMain::ComandoRiattivaPartita},
      {"PRESUNTO", "/A", ModuloMain::ComandoSospendiPresunto},
      {"PRESUNTO", "/D", ModuloMain::ComandoRiattivaPresunto},
      {"BANCA", "/CREDITI", Crediti},
      {"BANCA", "/DEBITI", Debiti},
      {"BANCA", "/PRESUNTI", BancaPresunti},
      {"CONSEGNA", "/PRESUNTI", ConsegnaPresunti},
  };
  return Comandi;
}

} // namespace lumoscad
