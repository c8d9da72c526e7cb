#include "common/Stato.hpp"
#include "common/Testo.hpp"
#include "database/procedureLumoDB2.hpp"
#include "handlers/ComandoModifica.hpp"
#include "handlers/ModuloMain.hpp"
#include "handlers/Opzioni.hpp"
#include "host/Richieste.hpp"
#include "platform/RuntimeError.hpp"
#include "screens/frmLumoScadenzeBanche.hpp"

namespace lumoscad::ModuloMain {
namespace {

procedureLumoDB2::FiltroScadenze LeggiFiltro(std::string_view comando, std::string_view tipo) {
  procedureLumoDB2::FiltroScadenze filtro;
  filtro.parModalita = tipo;
  filtro.parBancaSN = "S";
  NumeroPartita partita;
  std::string ignorata; // read for its syntax only: the screen is not selected by document or year
  LeggiOpzioni(comando, {{"-SC", &filtro.parScad},
                         {"-H", &stato().HostIP},
                         {"-D", &stato().azienda},
                         {"-S", &ignorata},
                         {"-A", &ignorata},
                         {"-E", &ignorata},
                         {"-N", &ignorata},
                         {"-C", &filtro.parConto},
                         {"-B", &filtro.parBancaSN},
                         {"-M", &filtro.parMesiScadenze},
                         {"-CODINT", &filtro.parCodiceInterno},
                         {"-P", &partita}});
  filtro.parPartita = partita.spaziata;
  return filtro;
}

void MostraSchermata(const procedureLumoDB2::FiltroScadenze& filtro, VariazioniCanalizzazione& variazioni) {
  if (!stato().scadenzeBanche) {
    stato().scadenzeBanche = std::make_shared<frmLumoScadenzeBanche>();
  }
  stato().scadenzeBanche->VisualizzaScadenzeBanche(stato().azienda, filtro, variazioni);
}

/// The instalment's number stands in a statement that follows the host's acceptance: what is no number must not come so
/// far. An empty number stands for none.
void ControllaNumeriRata(const VariazioniCanalizzazione& variazioni) {
  for (const VariazioneCanalizzazione& variazione : variazioni) {
    try {
      static_cast<void>(variazione.NumeroRata.empty() ? 0 : Intero(variazione.NumeroRata));
    } catch (const RuntimeError& errore) {
      throw RuntimeError(errore.Number(), "Numero di rata non valido: conto " + variazione.CodiceConto + ", partita " +
                                              variazione.NumeroPartita + ", rata «" + variazione.NumeroRata +
                                              "».\r\nLa richiesta non è stata inviata all'host.");
    }
  }
}

} // namespace

std::string ComandoBanca(std::string_view comando, std::string_view tipo) {
  const procedureLumoDB2::FiltroScadenze filtro = LeggiFiltro(comando, tipo);
  return ComandoModifica<VariazioniCanalizzazione>(
      tipo, tipo == "CREDITI" || tipo == "DEBITI",
      [&](VariazioniCanalizzazione& variazioni) {
        MostraSchermata(filtro, variazioni);
        ControllaNumeriRata(variazioni);
      },
      [&](const VariazioniCanalizzazione& variazioni) {
        return ScriviRichiestaCanalizzazione(stato().HostIP, stato().azienda, variazioni, tipo);
      },
      [&](const VariazioniCanalizzazione& variazioni, MsgAnnulla& risposta) {
        return procedureLumoDB2::AggiornaCanalizzazione(variazioni, risposta, tipo);
      });
}

} // namespace lumoscad::ModuloMain
