#pragma once

#include "common/Variazioni.hpp"

#include <string>
#include <vector>

namespace lumoscad {

/// What a command asks of host and database, as it is known before either is asked.
struct ModificaChiesta {
  enum class Genere { Nessuna, Canalizzazione, BancaPresunti, Consegna, Azione };
  Genere genere = Genere::Nessuna;
  std::string tipo;                        ///< the list: "CREDITI", "DEBITI", "PRESUNTI"; empty for an action
  VariazioniCanalizzazione canalizzazioni; ///< of `Canalizzazione`
  VariazioniConsegna consegne;             ///< of `BancaPresunti` and `Consegna`
  std::vector<std::string> parametri;      ///< of an action: the list for the database, the action at index 1
};

} // namespace lumoscad
