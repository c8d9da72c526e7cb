#include "platform/nexaro/ProgrammaRemoto.hpp"

#include "platform/nexaro/Chiamata.hpp"
#include "platform/nexaro/Testi.hpp"

namespace lumoscad::nexaro {

namespace {

bool Terminato(const Canale& canale) {
  return canale.chiuso || (canale.finita && (canale.stato || !canale.segnale.empty()));
}

/// Why the program has to be given up; empty while it need not be.
std::string Attendi(Canale& canale) {
  const auto termine = canale.SuaSessione().NuovoTermine();
  while (!Terminato(canale) && !canale.uscitaEccessiva) {
    if (canale.Viva() && TempoRestante(termine).count() == 0) {
      canale.Uccidi();
      return " non ha risposto entro " + Secondi(canale.SuaSessione().Attesa()) +
             " e ne è stata chiesta l'interruzione";
    }
    canale.Serve(termine);
  }
  if (canale.uscitaEccessiva) {
    canale.Uccidi();
    return " ha dato una risposta di oltre 16 MiB e ne è stata chiesta l'interruzione";
  }
  return {};
}

} // namespace

std::unique_ptr<Canale> PreparaProgramma(Sessione& sessione, Termine termine) {
  return std::make_unique<Canale>(sessione, termine, xml::DimensioneMassima, MassimoErroriMostrati);
}

EsitoRemoto EseguiRemoto(Canale& canale, const std::string& riga) {
  EsitoRemoto esito;
  try {
    canale.AvviaComando(riga);
    canale.ChiudiIngresso();
    esito.interruzione = Attendi(canale);
  } catch (const ConnessionePersa& persa) {
    esito.interruzione = " è stato richiesto, ma " + persa.Motivo();
  }
  if (esito.interruzione.empty() && !canale.stato && canale.segnale.empty()) {
    esito.interruzione = " è finito senza che l'host ne dicesse l'esito";
  }
  esito.uscita = std::move(canale.uscita);
  esito.errori = std::move(canale.errori);
  if (canale.segnale.empty()) {
    esito.stato = canale.stato;
  }
  esito.segnale = canale.segnale;
  return esito;
}

} // namespace lumoscad::nexaro
