#include "common/MsgAnnulla.hpp"
#include "common/Stato.hpp"
#include "common/Testo.hpp"
#include "database/procedureLumoDB2.hpp"
#include "handlers/Blocco.hpp"
#include "handlers/ModuloMain.hpp"
#include "handlers/Opzioni.hpp"
#include "host/Richieste.hpp"
#include "platform/Errore.hpp"
#include "platform/Servizi.hpp"
#include "screens/frmLumoScadenzeBanche.hpp"

namespace lumoscad::ModuloMain {
namespace {

procedureLumoDB2::FiltroScadenze LeggiFiltro(std::string_view comando, std::string_view tipo) {
  procedureLumoDB2::FiltroScadenze filtro;
  filtro.parModalita = tipo;
  filtro.parBancaSN = "S";
  NumeroPartita partita;
  std::string ignorata; // read for its syntax only: the screen is not selected by document or year
  LeggiOpzioni(comando,
               {{"-SC", &filtro.parScad},
                {"-H", &stato().HostIP},
                {"-D", &stato().Azienda},
                {"-S", &ignorata},
                {"-A", &ignorata},
                {"-E", &ignorata},
                {"-N", &ignorata},
                {"-C", &filtro.parConto},
                {"-B", &filtro.parBancaSN},
                {"-M", &filtro.parMesiScadenze},
                {"-CODINT", &filtro.parCodiceInterno}},
               &partita);
  filtro.parPartita = partita.spaziata;
  return filtro;
}

void MostraSchermata(const procedureLumoDB2::FiltroScadenze& filtro, VariazioniCanalizzazione& variazioni) {
  if (!stato().ScadenzeBanche) {
    stato().ScadenzeBanche = std::make_shared<frmLumoScadenzeBanche>();
  }
  stato().ScadenzeBanche->VisualizzaScadenzeBanche(stato().Azienda, filtro, variazioni);
}

void Puntatore(lumoscad::Puntatore puntatore) {
  servizi().desktop().ImpostaPuntatore(puntatore);
  servizi().desktop().EventiInAttesa();
}

} // namespace

std::string ComandoBanca(std::string_view comando, std::string_view tipo) {
  const procedureLumoDB2::FiltroScadenze filtro = LeggiFiltro(comando, tipo);
  const bool lista = tipo == "CREDITI" || tipo == "DEBITI";
  VariazioniCanalizzazione variazioni;
  if (lista) {
    if (MaggioreDiSpazio(BloccaArea(stato().HostIP, tipo))) {
      return "error";
    }
    MostraSchermata(filtro, variazioni);
  }
  MsgAnnulla risposta;
  Puntatore(lumoscad::Puntatore::Clessidra);
  if (ScriviRichiestaCanalizzazione(stato().HostIP, stato().Azienda, variazioni, tipo).empty()) {
    // The procedure's answer repeats what `Errore` says.
    static_cast<void>(procedureLumoDB2::AggiornaCanalizzazione(variazioni, tipo, risposta));
    if (!risposta.Errore.empty()) {
      throw ErroreRuntime(errori::ErroreRegistrato, risposta.Errore);
    }
  }
  Puntatore(lumoscad::Puntatore::Predefinito);
  if (lista) {
    SbloccaArea(stato().HostIP, tipo);
  }
  return variazioni.empty() ? "closed" : "";
}

} // namespace lumoscad::ModuloMain
