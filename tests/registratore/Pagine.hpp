#pragma once

#include "Scena.hpp"

#include <vector>

namespace lumoscad::test {

[[nodiscard]] std::vector<Scenetta> ReciteSenzaFinestra();
[[nodiscard]] std::vector<Scenetta> ReciteCrediti();
[[nodiscard]] std::vector<Scenetta> ReciteFiltri();
[[nodiscard]] std::vector<Scenetta> RecitePresunti();
[[nodiscard]] std::vector<Scenetta> ReciteScadenzario();
[[nodiscard]] std::vector<Scenetta> ReciteGuasti();
[[nodiscard]] std::vector<Scenetta> ReciteFinestreVere();
[[nodiscard]] std::vector<Scenetta> ReciteAltre();
[[nodiscard]] std::vector<Scenetta> ReciteSsh();

/// Opens the window of one open item on rows of its own, in mode "Scad" or "Extra", as a calling screen would.
void ApriScadenzario(Scena& scena, const std::string& modo);

/// The pages of the record, one file each.
[[nodiscard]] inline std::vector<Pagina> Pagine() {
  return {{"comandi", ReciteSenzaFinestra},   {"crediti", ReciteCrediti},
          {"filtri", ReciteFiltri},           {"presunti", RecitePresunti},
          {"scadenzario", ReciteScadenzario}, {"guasti", ReciteGuasti},
          {"finestre", ReciteFinestreVere},   {"altre", ReciteAltre}};
}

} // namespace lumoscad::test
