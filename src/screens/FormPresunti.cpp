#include "screens/FormPresunti.hpp"

#include "common/Testo.hpp"
#include "common/Utilities.hpp"
#include "platform/RuntimeError.hpp"
#include "screens/Caricamento.hpp"
#include "screens/DocumentiPresunti.hpp"

#include <unordered_set>
#include <utility>

namespace lumoscad {
namespace {

using Schermata = FormPresunti;

constexpr std::string_view ModoPresunti = "PRESUNTI"; ///< the screen's mode, and its list's `Tag`

DescrizioneGriglia Descrizione() {
  using Genere = ListColumn::Kind;
  DescrizioneGriglia d;
  d.nome = "FormPresunti";
  d.titolo = "LumoScad - Banca dei documenti presunti";
  d.nomeLista = "LVPresunti";
  d.tagLista = ModoPresunti;
  d.carattere = "Arial";
  d.colonne = {{"KConto", "Conto", 3750, Genere::Text},
               {"KOrdine", "Ordine", 1650, Genere::Text},
               {"KConsegnaPrevista", "Cons. prevista", 1650, Genere::Text},
               {"KDivisa", "Divisa", 900, Genere::Text},
               {"KFatturato", "Fatturato", 1800, Genere::Amount},
               {"KBanca", "Banca", 3450, Genere::Text},
               {"Kradio", "", 420, Genere::Tick},
               {"KNuovaBanca", "Nuova Banca", 3450, Genere::BankEditor, Schermata::Banca},
               {"KConsegnaOrdinaData", "", 0, Genere::Text}};
  d.colonneConTag = {Schermata::Conto, Schermata::ConsegnaPrevista, Schermata::Banca, Schermata::NuovaBanca};
  // "Banca" sorts by the new bank, the planned date by the copy that sorts by time; amounts and currencies do not sort.
  d.testate = {{1, "Conto", Schermata::Conto, Schermata::Conto},
               {2, "Ordine", Schermata::Ordine, Schermata::Ordine},
               {3, "Cons. prevista", Schermata::ConsegnaPrevista, Schermata::ConsegnaOrdinaData},
               {4, "Divisa", Schermata::Divisa, -1},
               {5, "Fatturato", Schermata::Fatturato, -1},
               {6, "Banca", Schermata::Banca, Schermata::NuovaBanca}};
  d.campoBanca = "Nuova banca";
  d.colonneChiave = Schermata::Fatturato + 1;
  d.colonnaSpunta1 = Schermata::Radio;
  d.banca.colonna = Schermata::NuovaBanca;
  d.banca.spunta = 0;
  d.banca.gruppo = Schermata::Ordine;
  d.banca.ripristina = false;
  d.banca.codiciInAlto = true;
  d.banca.modoAssegna = ModoPresunti;
  d.colonnaConto = Schermata::Conto;
  d.colonnaPartita = Schermata::Ordine;
  d.colonnaScadenza = Schermata::ConsegnaPrevista;
  d.colonnaOrdina = Schermata::ConsegnaOrdinaData;
  d.colonnaBanca = Schermata::Banca;
  d.colonnaImporto = Schermata::Fatturato;
  d.colonnaDivisa = Schermata::Divisa;
  return d;
}

} // namespace

FormPresunti::FormPresunti() : griglia_(Descrizione()) {}

void FormPresunti::ResizePresunti() {
  griglia_.Resize();
}

void FormPresunti::elaboraPresunti(std::string_view parAzienda, const procedureLumoDB2::FiltroPresunti& filtro,
                                   VariazioniConsegna& variazioni) {
  griglia_.modo = ModoPresunti;
  MsgAnnulla msg;
  variazioni.clear();
  griglia_.Azzera();
  griglia_.cmbBanche = CaricaBanche(msg, CodiceRipetuto::Ammesso);
  griglia_.cmbBanche2 = CaricaBanche(msg, CodiceRipetuto::Ammesso);
  CaricaRighe(parAzienda, filtro, msg);
  ResizePresunti();
  griglia_.Mostra();
  LeggiVariazioni(variazioni);
  if (!msg.Errore.empty()) {
    throw RuntimeError(errors::RecordedError, msg.Errore);
  }
}

void FormPresunti::CaricaRighe(std::string_view parAzienda, const procedureLumoDB2::FiltroPresunti& filtro,
                               MsgAnnulla& msg) {
  griglia_.Tag.clear();
  griglia_.righe.Svuota();
  const bool letti = CaricaPresunti(
      parAzienda, filtro, msg,
      [this](const RigaPresunto& r) {
        const std::string consegna = Utilities::FormattaDataBreve(r.dataConsegna);
        const std::string ordina = Utilities::FormattaDataOrdine(r.dataConsegna);
        const std::size_t riga = griglia_.righe.Aggiungi(
            {r.DescrizioneConto, r.documento, consegna, r.divisa, r.importoDivisa, r.descrizioneBanca, "", "", ordina});
        griglia_.righe.ImpostaTag(riga, Conto, r.CodiceConto);
        griglia_.righe.ImpostaTag(riga, Banca, r.codiceBanca);
        return riga;
      },
      [this](std::size_t riga, std::string_view tag) { griglia_.righe.ImpostaTag(riga, ConsegnaPrevista, tag); });
  griglia_.avviso = AvvisoElenco(msg);
  if (!letti) {
    griglia_.Abbandona();
  }
  griglia_.Tag = ModoPresunti;
}

std::string FormPresunti::ChiaveElemento(std::size_t riga) const {
  const RigheGriglia& righe = griglia_.righe;
  std::string chiave = "K_";
  chiave.append(righe.Tag(riga, Conto)).append("_").append(righe.Testo(riga, Ordine)).append("_");
  chiave.append(righe.Testo(riga, ConsegnaPrevista)).append("_").append(righe.Testo(riga, Divisa)).append("_");
  return chiave.append(righe.Tag(riga, Banca));
}

void FormPresunti::LeggiVariazioni(VariazioniConsegna& variazioni) const {
  // One record a document: the host and the database know a document, not its rows. Letters count as written, so that
  // two documents apart only by them never become one.
  std::unordered_set<std::string> documenti;
  for (const std::size_t riga : griglia_.RigheConfermate()) {
    VariazioneConsegna variazione;
    if (LeggiVariazione(riga, variazione) &&
        documenti.emplace(SenzaSpaziAiLati(griglia_.righe.Testo(riga, Ordine))).second) {
      variazioni.push_back(std::move(variazione));
    }
  }
}

bool FormPresunti::LeggiVariazione(std::size_t riga, VariazioneConsegna& variazione) const {
  const RigheGriglia& righe = griglia_.righe;
  const std::string_view nuova = righe.Tag(riga, NuovaBanca);
  const std::string_view banca = righe.Tag(riga, Banca);
  if (nuova.empty() || nuova == banca || (nuova == Nullo && banca.empty())) {
    return false;
  }
  variazione.isBancaChanged = true;
  variazione.CodiceConto = righe.Tag(riga, Conto);
  LeggiMovimento(righe.Tag(riga, ConsegnaPrevista), variazione);
  LeggiDocumento(righe.Testo(riga, Ordine), variazione);
  variazione.VecchiaBanca = banca.empty() ? Nullo : banca;
  variazione.NuovaBanca = nuova;
  return true;
}

} // namespace lumoscad
