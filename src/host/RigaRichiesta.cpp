#include "host/RigaRichiesta.hpp"

#include "platform/RuntimeError.hpp"

#include <algorithm>

namespace lumoscad {

namespace {

bool ConFineRiga(std::string_view testo) {
  return testo.find('\r') != std::string_view::npos || testo.find('\n') != std::string_view::npos;
}

[[noreturn]] void RifiutaFineRiga(std::initializer_list<std::string_view> campi) {
  const auto* const primo = std::find_if(campi.begin(), campi.end(), ConFineRiga);
  throw RuntimeError(errors::TypeMismatch,
                     "Il valore \"" + std::string(*primo) + "\" contiene una fine di riga e non può essere inviato");
}

} // namespace

void AggiungiRiga(std::string& contenuto, std::initializer_list<std::string_view> campi) {
  const std::size_t inizio = contenuto.size();
  std::size_t dimensione = campi.size() + 1; // a comma behind each but the last, and the line's end
  for (const std::string_view campo : campi) {
    dimensione += campo.size();
  }
  contenuto.resize(inizio + dimensione);
  char* dove = contenuto.data() + inizio;
  for (const std::string_view& campo : campi) {
    if (&campo != campi.begin()) {
      *dove++ = ',';
    }
    dove = std::copy(campo.begin(), campo.end(), dove);
  }
  // One look through the line instead of one through each field.
  if (ConFineRiga(std::string_view(contenuto).substr(inizio, dimensione - 2))) {
    contenuto.resize(inizio);
    RifiutaFineRiga(campi);
  }
  *dove++ = '\r';
  *dove = '\n';
}

} // namespace lumoscad
