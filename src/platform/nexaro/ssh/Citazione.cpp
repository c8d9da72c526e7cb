#include "platform/nexaro/ssh/Citazione.hpp"

namespace lumoscad::nexaro {

std::string CitaPerShell(std::string_view argomento) {
  std::string parola = "'";
  for (const char carattere : argomento) {
    // Nothing ends a quotation but its own mark, which therefore stands outside, behind a backslash.
    if (carattere == '\'') {
      parola += "'\\''";
    } else {
      parola += carattere;
    }
  }
  return parola + "'";
}

std::string RigaDiComando(std::string_view cartella, std::string_view programma,
                          const std::vector<std::string>& parametri) {
  auto riga =
      CitaPerShell(cartella.empty() ? std::string(programma) : std::string(cartella) + "/" + std::string(programma));
  for (const auto& parametro : parametri) {
    riga += " " + CitaPerShell(parametro);
  }
  return riga;
}

} // namespace lumoscad::nexaro
