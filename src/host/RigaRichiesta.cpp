#include "host/RigaRichiesta.hpp"

#include "platform/RuntimeError.hpp"

namespace lumoscad {

std::string RigaRichiesta(std::initializer_list<std::string> campi) {
  std::string riga;
  for (const std::string& campo : campi) {
    if (campo.find_first_of("\r\n") != std::string::npos) {
      throw RuntimeError(errors::TypeMismatch,
                         "Il valore \"" + campo + "\" contiene una fine di riga e non può essere inviato");
    }
    riga += (&campo == campi.begin() ? "" : ",") + campo;
  }
  return riga + "\r\n";
}

} // namespace lumoscad
