#include "host/RigaRichiesta.hpp"

#include "platform/RuntimeError.hpp"

namespace lumoscad {

std::string RigaRichiesta(std::initializer_list<std::string_view> campi) {
  std::size_t dimensione = campi.size() + 1; // the commas between them and the line's end
  for (const std::string_view campo : campi) {
    if (campo.find('\r') != std::string_view::npos || campo.find('\n') != std::string_view::npos) {
      throw RuntimeError(errors::TypeMismatch,
                         "Il valore \"" + std::string(campo) + "\" contiene una fine di riga e non può essere inviato");
    }
    dimensione += campo.size();
  }
  std::string riga;
  riga.reserve(dimensione);
  for (const std::string_view& campo : campi) {
    riga.append(&campo == campi.begin() ? "" : ",").append(campo);
  }
  return riga.append("\r\n");
}

} // namespace lumoscad
