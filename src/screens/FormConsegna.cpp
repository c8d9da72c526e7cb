#include "screens/FormConsegna.hpp"

#include "common/Testo.hpp"
#include "common/Utilities.hpp"
#include "platform/RuntimeError.hpp"
#include "screens/Caricamento.hpp"
#include "screens/DataDiRiga.hpp"
#include "screens/DocumentiPresunti.hpp"

#include <utility>

namespace lumoscad {
namespace {

using Schermata = FormConsegna;

constexpr std::string_view ModoConsegna = "CONSEGNA"; ///< the screen's mode, and its list's `Tag`

DescrizioneGriglia Descrizione() {
  using Genere = ListColumn::Kind;
  DescrizioneGriglia d;
  d.nome = "FormConsegna";
  d.titolo = "LumoScad - Date di consegna";
  d.nomeLista = "LVScadenzePresunti";
  d.tagLista = ModoConsegna;
  d.carattere = "Verdana";
  d.colonne = {{"KConto", "Conto", 3750, Genere::Text},
               {"KOrdine", "Ordine", 1650, Genere::Text},
               {"KConsegnaPrevista", "Consegna prevista", 2100, Genere::Text},
               {"KDivisa", "Divisa", 900, Genere::Text},
               {"KFatturato", "Fatturato", 1800, Genere::Amount},
               {"KFatturatoEuro", "Fatturato Euro", 1800, Genere::Amount},
               {"Kradio", "", 420, Genere::Tick},
               {"KNuovaScadenza", "Nuova Consegna", 1950, Genere::DateEditor, Schermata::ConsegnaPrevista},
               {"KConsegnaOrdinaData", "", 0, Genere::Text}};
  d.colonneConTag = {Schermata::Conto, Schermata::Ordine, Schermata::ConsegnaPrevista};
  // The planned date sorts by the copy that sorts by time; amounts and currencies do not sort.
  d.testate = {{1, "Conto", Schermata::Conto, Schermata::Conto},
               {2, "Ordine", Schermata::Ordine, Schermata::Ordine},
               {3, "Consegna prevista", Schermata::ConsegnaPrevista, Schermata::ConsegnaOrdinaData},
               {4, "Divisa", Schermata::Divisa, -1},
               {5, "Fatturato", Schermata::Fatturato, -1},
               {6, "Fatturato Euro", Schermata::FatturatoEuro, -1}};
  d.campoData = "Nuova consegna";
  d.colonneChiave = Schermata::Divisa + 1;
  d.colonnaSpunta1 = Schermata::Radio;
  d.data.colonna = Schermata::NuovaConsegna;
  d.data.senza = SenzaData::Vuota;
  d.data.soloConData = false;
  d.colonnaConto = Schermata::Conto;
  d.colonnaPartita = Schermata::Ordine;
  d.colonnaScadenza = Schermata::ConsegnaPrevista;
  d.colonnaOrdina = Schermata::ConsegnaOrdinaData;
  d.colonnaImporto = Schermata::Fatturato;
  d.colonnaDivisa = Schermata::Divisa;
  d.tagScadenza = "Consegna originale";
  d.nomeData = "consegna";
  return d;
}

} // namespace

FormConsegna::FormConsegna() : griglia_(Descrizione()) {}

void FormConsegna::ResizeConsegna() {
  griglia_.Resize();
}

void FormConsegna::elaboraConsegna(std::string_view parAzienda, const procedureLumoDB2::FiltroPresunti& filtro,
                                   VariazioniConsegna& variazioni) {
  griglia_.modo = ModoConsegna;
  MsgAnnulla msg;
  variazioni.clear();
  griglia_.Azzera();
  CaricaRighe(parAzienda, filtro, msg);
  ResizeConsegna();
  griglia_.Mostra();
  LeggiVariazioni(variazioni);
  if (!msg.Errore.empty()) {
    throw RuntimeError(errors::RecordedError, msg.Errore);
  }
}

void FormConsegna::CaricaRighe(std::string_view parAzienda, const procedureLumoDB2::FiltroPresunti& filtro,
                               MsgAnnulla& msg) {
  griglia_.Tag.clear();
  griglia_.righe.Svuota();
  const bool letti = CaricaPresunti(
      parAzienda, filtro, msg,
      [this](const RigaPresunto& r) {
        RichiediData(r.CodiceConto, "DATACONSEGNAORIGINE", r.ConsegnaOrigine);
        const std::string consegna = Utilities::FormattaData(r.dataConsegna);
        const std::string ordina = Utilities::FormattaDataOrdine(r.dataConsegna);
        const std::size_t riga = griglia_.righe.Aggiungi(
            {r.DescrizioneConto, r.documento, consegna, r.divisa, r.importoDivisa, r.importoEuro, "", "", ordina});
        griglia_.righe.ImpostaTag(riga, Conto, r.CodiceConto);
        griglia_.righe.ImpostaTag(riga, ConsegnaPrevista, Utilities::FormattaData(r.ConsegnaOrigine));
        return riga;
      },
      [this](std::size_t riga, std::string_view tag) { griglia_.righe.ImpostaTag(riga, Ordine, tag); });
  griglia_.avviso = AvvisoElenco(msg);
  if (!letti) {
    griglia_.Abbandona();
  }
  griglia_.Tag = ModoConsegna;
}

std::string FormConsegna::ChiaveElemento(std::size_t riga) const {
  const RigheGriglia& righe = griglia_.righe;
  std::string chiave = "K_";
  chiave.append(righe.Tag(riga, Conto)).append("_").append(righe.Testo(riga, Ordine)).append("_");
  return chiave.append(righe.Testo(riga, ConsegnaPrevista)).append("_").append(righe.Testo(riga, Divisa));
}

void FormConsegna::LeggiVariazioni(VariazioniConsegna& variazioni) const {
  for (const std::size_t riga : griglia_.RigheConfermate()) {
    VariazioneConsegna variazione;
    if (LeggiVariazione(riga, variazione)) {
      variazioni.push_back(std::move(variazione));
    }
  }
}

bool FormConsegna::LeggiVariazione(std::size_t riga, VariazioneConsegna& variazione) const {
  const RigheGriglia& righe = griglia_.righe;
  const std::string_view consegna = righe.Testo(riga, ConsegnaPrevista);
  const std::string_view nuova = righe.Testo(riga, NuovaConsegna);
  // A date that was refused leaves a blank behind, which is no change.
  if (!MaggioreDiSpazio(nuova) || nuova == consegna) {
    return false;
  }
  variazione.isConsegnaChanged = true;
  variazione.CodiceConto = righe.Tag(riga, Conto);
  LeggiMovimento(righe.Tag(riga, Ordine), variazione);
  LeggiDocumento(righe.Testo(riga, Ordine), variazione);
  variazione.Consegna = consegna.empty() ? Nullo : consegna;
  variazione.NuovaConsegna = nuova;
  variazione.ConsegnaOrigine = righe.Tag(riga, ConsegnaPrevista);
  return true;
}

} // namespace lumoscad
