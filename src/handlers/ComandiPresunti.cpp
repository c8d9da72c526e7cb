#include "common/Stato.hpp"
#include "common/Testo.hpp"
#include "database/procedureLumoDB2.hpp"
#include "handlers/ComandoModifica.hpp"
#include "handlers/ModuloMain.hpp"
#include "handlers/Opzioni.hpp"
#include "host/Richieste.hpp"
#include "screens/FormConsegna.hpp"
#include "screens/FormPresunti.hpp"

namespace lumoscad::ModuloMain {
namespace {

procedureLumoDB2::FiltroPresunti LeggiFiltro(std::string_view comando) {
  procedureLumoDB2::FiltroPresunti filtro;
  filtro.parBancaSN = "S";
  std::string serieEscluse; // left out of the line, it names one series that is blank, and so excludes nothing
  LeggiOpzioni(comando, {{"-SC", &filtro.parScad},
                         {"-H", &stato().HostIP},
                         {"-D", &stato().azienda},
                         {"-S", &filtro.parSerie},
                         {"-A", &filtro.parAnno},
                         {"-N", &filtro.parNumero},
                         {"-C", &filtro.parConto},
                         {"-B", &filtro.parBancaSN},
                         {"-DATA", &filtro.parData},
                         {"-SERIEESCLUSE", &serieEscluse},
                         {"-TIPOMOVIMENTI", &filtro.parTipoMovimenti}});
  filtro.parSerieEscluse = Dividi(serieEscluse, ',');
  return filtro;
}

/// A list of presumed documents, from the lock to its release.
template <typename Mostra, typename Scrivi, typename Aggiorna>
std::string ModificaPresunti(std::string_view tipo, Mostra mostra, Scrivi scrivi, Aggiorna aggiorna) {
  return ComandoModifica<VariazioniConsegna>(
      tipo, tipo == "PRESUNTI", mostra,
      [&](const VariazioniConsegna& variazioni) { return scrivi(stato().HostIP, stato().azienda, variazioni, tipo); },
      [&](const VariazioniConsegna& variazioni, MsgAnnulla& risposta) { return aggiorna(variazioni, risposta, tipo); });
}

} // namespace

std::string ComandoBancaPresunti(std::string_view comando, std::string_view tipo) {
  const procedureLumoDB2::FiltroPresunti filtro = LeggiFiltro(comando);
  const auto mostra = [&](VariazioniConsegna& variazioni) {
    if (!stato().presunti) {
      stato().presunti = std::make_shared<FormPresunti>();
    }
    stato().presunti->elaboraPresunti(stato().azienda, filtro, variazioni);
  };
  return ModificaPresunti(tipo, mostra, ScriviRichiestaBancaPresunti, procedureLumoDB2::AggiornaBancaPresunti);
}

std::string ComandoConsegna(std::string_view comando, std::string_view tipo) {
  const procedureLumoDB2::FiltroPresunti filtro = LeggiFiltro(comando);
  // This screen is made anew for each command, unlike the others.
  const auto mostra = [&](VariazioniConsegna& variazioni) {
    FormConsegna().elaboraConsegna(stato().azienda, filtro, variazioni);
  };
  return ModificaPresunti(tipo, mostra, ScriviRichiestaConsegna, procedureLumoDB2::AggiornaConsegna);
}

} // namespace lumoscad::ModuloMain
