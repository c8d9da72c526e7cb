#include "screens/FormPresunti.hpp"

#include "common/Testo.hpp"
#include "common/Utilities.hpp"
#include "screens/DocumentiPresunti.hpp"

#include <unordered_set>
#include <utility>

namespace lumoscad {
namespace {

using Schermata = FormPresunti;

constexpr std::string_view ModoPresunti = "PRESUNTI"; ///< the screen's mode, and its list's `Tag`

DescrizioneGriglia Descrizione() {
  using Genere = ColonnaElenco::Genere;
  DescrizioneGriglia d;
  d.nome = "FormPresunti";
  d.titolo = "LumoScad - Banca dei documenti presunti";
  d.nomeLista = "LVPresunti";
  d.tagLista = ModoPresunti;
  d.carattere = "Arial";
  d.colonne = {{"KConto", "Conto", 3750, Genere::Testo},
               {"KOrdine", "Ordine", 1650, Genere::Testo},
               {"KConsegnaPrevista", "Cons. prevista", 1650, Genere::Testo},
               {"KDivisa", "Divisa", 900, Genere::Testo},
               {"KFatturato", "Fatturato", 1800, Genere::Importo},
               {"KBanca", "Banca", 3450, Genere::Testo},
               {"Kradio", "", 420, Genere::Spunta},
               {"KNuovaBanca", "Nuova Banca", 3450, Genere::EditorBanca, Schermata::Banca},
               {"KConsegnaOrdinaData", "", 0, Genere::Testo}};
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
  d.colonnaNuovaBanca = Schermata::NuovaBanca;
  return d;
}

} // namespace

FormPresunti::FormPresunti() : SchermataElenco(Descrizione()) {}

void FormPresunti::ResizePresunti() {
  griglia_.Resize();
}

void FormPresunti::elaboraPresunti(std::string_view parAzienda, const procedureLumoDB2::FiltroPresunti& filtro,
                                   VariazioniConsegna& variazioni) {
  Modo = ModoPresunti;
  const auto carica = [&](MsgAnnulla& msg) {
    banche_ = CaricaBanche(msg, CodiceRipetuto::Ammesso);
    bancheCella_ = CaricaBanche(msg, CodiceRipetuto::Ammesso);
    griglia_.cmbBanche = banche_.voci;
    griglia_.cmbBanche2 = bancheCella_.voci;
    CaricaRighe(parAzienda, filtro, msg);
  };
  Visualizza(carica, variazioni);
}

void FormPresunti::CaricaRighe(std::string_view parAzienda, const procedureLumoDB2::FiltroPresunti& filtro,
                               MsgAnnulla& msg) {
  griglia_.Tag.clear();
  griglia_.Righe.Svuota();
  CaricaPresunti(
      parAzienda, filtro, msg,
      [this](const RigaPresunto& r) {
        const std::string consegna = Utilities::FormattaDataBreve(r.DataConsegna);
        const std::string ordina = Utilities::FormattaDataOrdine(r.DataConsegna);
        const std::size_t riga = griglia_.Righe.Aggiungi(
            {r.DescrizioneConto, r.documento, consegna, r.Divisa, r.importoDivisa, r.DescrizioneBanca, "", "", ordina});
        griglia_.Righe.ImpostaTag(riga, Conto, r.CodiceConto);
        griglia_.Righe.ImpostaTag(riga, Banca, r.CodiceBanca);
        return riga;
      },
      [this](std::size_t riga, std::string_view tag) { griglia_.Righe.ImpostaTag(riga, ConsegnaPrevista, tag); });
  griglia_.Tag = ModoPresunti;
}

std::string FormPresunti::ChiaveElemento(std::size_t riga) const {
  const RigheGriglia& righe = griglia_.Righe;
  std::string chiave = "K_";
  chiave.append(righe.Tag(riga, Conto)).append("_").append(righe.Testo(riga, Ordine)).append("_");
  chiave.append(righe.Testo(riga, ConsegnaPrevista)).append("_").append(righe.Testo(riga, Divisa)).append("_");
  return chiave.append(righe.Tag(riga, Banca));
}

template <typename Azione> void FormPresunti::PerOgniRigaDelDocumento(std::size_t riga, Azione azione) {
  const std::string documento(griglia_.Righe.Testo(riga, Ordine));
  for (std::size_t altra = 0; altra < griglia_.Righe.Quante(); ++altra) {
    if (griglia_.Righe.Testo(altra, Ordine) == documento) {
      azione(altra);
    }
  }
}

void FormPresunti::AssegnaBanca(int indice, std::string_view modo, std::size_t riga) {
  if (modo != ModoPresunti) {
    return;
  }
  std::string codice(Nullo);
  std::string descrizione = "ANNULLA";
  if (indice > 0) {
    codice = banche_.Codice(indice);
    descrizione = banche_.voci[static_cast<std::size_t>(indice)];
  } else if (griglia_.Righe.Testo(riga, Ordine).empty()) {
    // A row without a document has nothing that could lose its bank.
    codice.clear();
    descrizione.clear();
  }
  PerOgniRigaDelDocumento(riga, [&](std::size_t altra) {
    griglia_.Righe.ImpostaTag(altra, NuovaBanca, codice);
    griglia_.Righe.ImpostaTesto(altra, NuovaBanca, descrizione);
  });
  griglia_.Cambiata();
}

void FormPresunti::ChiudiBanca(std::size_t riga, int indice) {
  griglia_.ImpostaSpunta(riga, "RADIO1", true);
  AssegnaBanca(indice, Modo, riga);
}

void FormPresunti::SceltaBanca() {
  if (const auto riga = griglia_.RigaSelezionata()) {
    AssegnaBanca(griglia_.Stato().indiceBanca, Modo, *riga);
  }
}

void FormPresunti::CambiaCheck(std::size_t riga, std::string_view chiave, bool spunta) {
  if (spunta) {
    AssegnaBanca(griglia_.Stato().indiceBanca, Modo, riga);
    griglia_.ImpostaSpunta(riga, chiave, true);
    return;
  }
  PerOgniRigaDelDocumento(riga, [this, chiave](std::size_t altra) {
    griglia_.Righe.ImpostaTag(altra, NuovaBanca, "");
    griglia_.Righe.ImpostaTesto(altra, NuovaBanca, "");
    griglia_.ImpostaSpunta(altra, chiave, false);
  });
}

bool FormPresunti::LeggiVariazione(std::size_t riga, VariazioneConsegna& variazione) const {
  const RigheGriglia& righe = griglia_.Righe;
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

VariazioniConsegna FormPresunti::LeggiVariazioni() const {
  VariazioniConsegna variazioni;
  std::unordered_set<std::string> documenti;
  for (std::size_t posto = 0; posto < griglia_.Righe.Quante(); ++posto) {
    const std::size_t riga = griglia_.Righe.RigaAlPosto(posto);
    VariazioneConsegna variazione;
    // One record a document: the host and the database know a document, not its rows. Letters count as written, so that
    // two documents apart only by them never become one.
    if (LeggiVariazione(riga, variazione) &&
        documenti.emplace(SenzaSpaziAiLati(griglia_.Righe.Testo(riga, Ordine))).second) {
      variazioni.push_back(std::move(variazione));
    }
  }
  return variazioni;
}

} // namespace lumoscad
