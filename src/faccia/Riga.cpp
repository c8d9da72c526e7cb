#include "entry/Ingresso.hpp"
#include "faccia/Maniglia.hpp"

namespace {

/// The number of a command's result.
int NumeroDi(std::string_view risultato, bool rifiutata) noexcept {
  if (rifiutata) {
    return LUMOSCAD_RIFIUTATO;
  }
  if (risultato.empty()) {
    return LUMOSCAD_RIUSCITO;
  }
  return risultato == "closed" ? LUMOSCAD_CHIUSO : LUMOSCAD_ERRORE;
}

} // namespace

extern "C" int lumoscad_esegui_riga(lumoscad_maniglia* maniglia, const char* riga, lumoscad_esito** esito) {
  return lumoscad::Chiama(maniglia, {{riga}}, esito, [riga](lumoscad_maniglia& sua, lumoscad_esito& trovato) {
    lumoscad::Chiamata chiamata;
    chiamata.finestraMadre = sua.finestraMadre;
    // From here on nothing takes memory that could be missing: what the command has done must be told.
    std::string risultato = lumoscad::EseguiLumoScad(riga, &chiamata);
    const int numero = NumeroDi(risultato, chiamata.rifiutata);
    std::string_view testo;
    if (numero == LUMOSCAD_RIFIUTATO) {
      testo = chiamata.perche;
    } else if (numero == LUMOSCAD_ERRORE) {
      testo = chiamata.messaggio;
    }
    sua.Segna(numero, testo);
    trovato.Con(LUMOSCAD_CAMPO_TESTO, std::move(risultato))
        .Con(LUMOSCAD_CAMPO_MESSAGGIO, std::move(chiamata.messaggio));
    return numero;
  });
}
