#pragma once

namespace lumoscad {

/// A local date and time, to the second.
struct DataOra {
  int anno = 1970;
  int mese = 1;   ///< 1-12
  int giorno = 1; ///< 1-31
  int ora = 0;    ///< 0-23
  int minuto = 0;
  int secondo = 0;
};

/// The machine's local date and time.
[[nodiscard]] DataOra OraDiSistema();

} // namespace lumoscad
