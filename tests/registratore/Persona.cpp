#include "Persona.hpp"

#include <stdexcept>

namespace lumoscad::test {

void PersonaAllaLista::Clicca(std::size_t riga, std::string_view colonna) const {
  constexpr int AltezzaRiga = 240;
  int sinistra = 0;
  for (const auto& altra : finestra_.Description().columns) {
    if (altra.key == colonna) {
      const int alto = static_cast<int>(riga) * AltezzaRiga;
      finestra_.Seleziona(static_cast<std::ptrdiff_t>(riga));
      finestra_.LVScadenze_MouseDown(sinistra + 1, alto + 1);
      finestra_.LVScadenze_Click(alto);
      return;
    }
    sinistra += altra.width;
  }
  throw std::logic_error("no column " + std::string(colonna));
}

void PersonaAllaLista::ScriviData(std::size_t riga, std::string_view testo) const {
  constexpr int Invio = 13;
  Clicca(riga, "KNuovaScadenza");
  finestra_.TextScad_Change(testo);
  finestra_.TextScad_KeyPress(Invio);
}

void PersonaAllaLista::ScegliBanca(std::size_t riga, int indice) const {
  Clicca(riga, "KNuovaBanca");
  finestra_.cmbBanche2_Click(indice);
  finestra_.cmbBanche2_LostFocus();
}

} // namespace lumoscad::test
