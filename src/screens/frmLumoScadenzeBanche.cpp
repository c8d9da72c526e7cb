#include "screens/frmLumoScadenzeBanche.hpp"

#include "common/Stato.hpp"
#include "common/Testo.hpp"
#include "common/Utilities.hpp"
#include "database/db2Searches.hpp"
#include "database/moduloDatabase.hpp"
#include "platform/RuntimeError.hpp"
#include "screens/Caricamento.hpp"
#include "screens/DataDiRiga.hpp"

#include <optional>
#include <utility>
#include <vector>

namespace lumoscad {
namespace {

using Schermata = frmLumoScadenzeBanche;

constexpr std::string_view ModoDebitiCrediti = "DEBITI/CREDITI";

DescrizioneGriglia Descrizione() {
  using Genere = ListColumn::Kind;
  DescrizioneGriglia d;
  d.nome = "frmLumoScadenzeBanche";
  d.nomeLista = "LVScadenzeBanche";
  d.carattere = "Verdana";
  d.colonne = {{"KConto", "Conto", 3450, Genere::Text},
               {"KPartita", "Partita", 1500, Genere::Text},
               {"KScadenza", "Scadenza", 1500, Genere::Text},
               {"KScadenzaOrig", "Scad. orig.", 1500, Genere::Text},
               {"KBanca", "Banca", 2700, Genere::Text},
               {"KImporto", "Importo", 1650, Genere::Amount},
               {"KRadio1", "", 420, Genere::Tick},
               {"KNuovaScadenza", "Nuova Scad", 1500, Genere::DateEditor, Schermata::Scadenza},
               {"KNumeroRata1", "NumeroRata", 0, Genere::Text},
               {"KRadio2", "", 420, Genere::Tick},
               {"KNuovaBanca", "NuovaBanca", 2700, Genere::BankEditor, Schermata::Banca},
               {"KScadenzaOrdinaData", "ScadenzaOrdinaData", 0, Genere::Text}};
  d.colonneConTag = {Schermata::Conto, Schermata::Partita, Schermata::Banca, Schermata::NuovaScadenza,
                     Schermata::NuovaBanca};
  // "Scad Orig." and "Importo" do not sort; "Banca" sorts by the new bank, "Scadenza" by the copy that sorts by time.
  d.testate = {{1, "Conto", Schermata::Conto, Schermata::Conto},
               {2, "Partita", Schermata::Partita, Schermata::Partita},
               {5, "Scadenza", Schermata::Scadenza, Schermata::ScadenzaOrdinaData},
               {3, "Scad Orig.", Schermata::ScadenzaOrig, -1},
               {6, "Banca", Schermata::Banca, Schermata::NuovaBanca},
               {4, "Importo", Schermata::Importo, -1}};
  d.campoData = "Nuova scadenza";
  d.campoBanca = "Nuova banca";
  d.colonneChiave = Schermata::Banca + 1;
  d.colonnaSpunta1 = Schermata::Radio1;
  d.colonnaSpunta2 = Schermata::Radio2;
  d.data.colonna = Schermata::NuovaScadenza;
  d.banca.colonna = Schermata::NuovaBanca;
  d.banca.spunta = 1;
  d.banca.modoSpunte = ModoDebitiCrediti;
  d.colonnaConto = Schermata::Conto;
  d.colonnaPartita = Schermata::Partita;
  d.colonnaScadenza = Schermata::Scadenza;
  d.colonnaOriginale = Schermata::ScadenzaOrig;
  d.colonnaOrdina = Schermata::ScadenzaOrdinaData;
  d.colonnaBanca = Schermata::Banca;
  d.colonnaImporto = Schermata::Importo;
  d.colonnaRata = Schermata::NumeroRata;
  d.nomeRiga = "rata";
  d.nomeRighe = "rate";
  d.nomeData = "scadenza";
  return d;
}

/// One row of the list as the database gives it. The views live until the next row; an empty one stands for no value.
struct RigaScadenza {
  std::string_view CodiceConto;
  std::string_view DescrizioneConto;
  std::string_view NumeroPartita;
  std::string_view idPartita;
  std::string_view DataScadenza; ///< "YYYY-MM-DD"
  std::string_view NumeroRata;
  std::string_view codiceBanca;
  std::string_view dataScadenzaOriginale; ///< the same
  std::string_view descrizioneBanca;
  std::string_view Importo; ///< as the database writes it
};

/// The columns of the list, found once.
class Lettura {
 public:
  explicit Lettura(ado::Recordset& righe)
      : righe_(righe), conto_(righe.ColumnIndex("CODICECONTO")),
        descrizioneConto_(righe.ColumnIndex("DESCRIZIONECONTO")), numeroPartita_(righe.ColumnIndex("NUMEROPARTITA")),
        partita_(righe.ColumnIndex("IDPARTITA")), scadenza_(righe.ColumnIndex("DATASCADENZA")),
        rata_(righe.ColumnIndex("NUMERORATA")), banca_(righe.ColumnIndex("CODICEBANCA")),
        originale_(righe.ColumnIndex("DATASCADENZAORIGINALE")),
        descrizioneBanca_(righe.ColumnIndex("DESCRIZIONEBANCA")), importo_(righe.ColumnIndex("IMPORTOEURO")) {}

  [[nodiscard]] RigaScadenza Riga() {
    righe_.ReadRow(valori_);
    RigaScadenza riga;
    riga.CodiceConto = Campo(conto_);
    riga.DescrizioneConto = Campo(descrizioneConto_);
    riga.NumeroPartita = Campo(numeroPartita_);
    riga.idPartita = Campo(partita_);
    riga.DataScadenza = Campo(scadenza_);
    riga.NumeroRata = Campo(rata_);
    riga.codiceBanca = Campo(banca_);
    riga.dataScadenzaOriginale = Campo(originale_);
    riga.descrizioneBanca = Campo(descrizioneBanca_);
    riga.Importo = Campo(importo_);
    return riga;
  }

 private:
  [[nodiscard]] std::string_view Campo(std::size_t colonna) const { return valori_[colonna].value_or(""); }

  ado::Recordset& righe_;
  std::vector<std::optional<std::string_view>> valori_; ///< of the row, by column
  std::size_t conto_;
  std::size_t descrizioneConto_;
  std::size_t numeroPartita_;
  std::size_t partita_;
  std::size_t scadenza_;
  std::size_t rata_;
  std::size_t banca_;
  std::size_t originale_;
  std::size_t descrizioneBanca_;
  std::size_t importo_;
};

} // namespace

frmLumoScadenzeBanche::frmLumoScadenzeBanche() : griglia_(Descrizione()) {
  griglia_.modo = ModoDebitiCrediti;
}

void frmLumoScadenzeBanche::ResizeScadBanche() {
  griglia_.Resize();
}

void frmLumoScadenzeBanche::ResizeScadBanchePresunti() {
  griglia_.Resize({Radio1, NuovaScadenza});
}

void frmLumoScadenzeBanche::VisualizzaScadenzeBanche(std::string_view parAzienda,
                                                     const procedureLumoDB2::FiltroScadenze& filtro,
                                                     VariazioniCanalizzazione& variazioni) {
  MsgAnnulla msg;
  variazioni.clear();
  griglia_.Azzera();
  griglia_.titolo =
      "LumoScad - Scadenze e banche dei " + std::string(filtro.parModalita == "DEBITI" ? "fornitori" : "clienti");
  griglia_.etichette = {{"lblClienteFornitore", ""},
                        {"lblClienteFornitoreValue", ""},
                        {"lblPartitaMovimento", ""},
                        {"lblPartitaMovimentoValue", ""}};
  griglia_.cmbBanche = CaricaBanche(msg, CodiceRipetuto::Errore);
  griglia_.cmbBanche2 = CaricaBanche(msg, CodiceRipetuto::Errore);
  elaboraCreditiDebiti(parAzienda, filtro, msg);
  griglia_.avviso = AvvisoElenco(msg);
  if (griglia_.modo == ModoDebitiCrediti) {
    ResizeScadBanche();
  } else {
    ResizeScadBanchePresunti();
  }
  griglia_.Mostra();
  LeggiVariazioni(variazioni);
  if (!msg.Errore.empty()) {
    throw RuntimeError(errors::RecordedError, msg.Errore);
  }
}

void frmLumoScadenzeBanche::elaboraCreditiDebiti(std::string_view parAzienda,
                                                 const procedureLumoDB2::FiltroScadenze& filtro, MsgAnnulla& msg) {
  try {
    const auto connection = moduloDatabase::ApriConnessione(moduloDatabase::LeggiParametriDB2(stato().ComandoCorrente));
    const auto azienda = db2Searches::CercaAziendaLinea(*connection, parAzienda, " ", " ");
    if (auto righe = procedureLumoDB2::ElencoScadenze(*connection, azienda, filtro, msg)) {
      AggiungiRighe(*righe);
    }
  } catch (...) {
    msg.Errore = moduloDatabase::TestoErrore(CurrentError());
  }
}

void frmLumoScadenzeBanche::AggiungiRighe(ado::Recordset& righe) {
  std::vector<std::string_view> testi(Colonne);
  griglia_.righe.Prepara(righe.RecordCount());
  Caricamento caricamento;
  for (Lettura lettura(righe); !righe.Eof(); righe.MoveNext()) {
    const RigaScadenza letta = lettura.Riga();
    RichiediData(letta.CodiceConto, "DATASCADENZA", letta.DataScadenza);
    const bool originaleUguale = letta.dataScadenzaOriginale == letta.DataScadenza;
    if (!originaleUguale) {
      RichiediData(letta.CodiceConto, "DATASCADENZAORIGINALE", letta.dataScadenzaOriginale);
    }
    const std::string importo = letta.Importo.empty() ? std::string() : Utilities::FormattaImporto(letta.Importo);
    if (!caricamento.Avanza()) {
      griglia_.Abbandona();
      return;
    }
    if (importo == "0,00") {
      continue;
    }
    const std::string scadenza = Utilities::FormattaData(letta.DataScadenza);
    const std::string originale =
        originaleUguale ? std::string() : Utilities::FormattaData(letta.dataScadenzaOriginale);
    const std::string ordina = Utilities::FormattaDataOrdine(letta.DataScadenza);
    testi[Conto] = letta.DescrizioneConto;
    testi[Partita] = letta.NumeroPartita;
    testi[Scadenza] = scadenza;
    testi[ScadenzaOrig] = originaleUguale ? scadenza : originale;
    testi[Banca] = letta.descrizioneBanca;
    testi[Importo] = importo;
    testi[NuovaScadenza] = scadenza;
    testi[NumeroRata] = letta.NumeroRata;
    testi[NuovaBanca] = letta.descrizioneBanca;
    testi[ScadenzaOrdinaData] = ordina;
    const std::size_t riga = griglia_.righe.Aggiungi(testi);
    griglia_.righe.ImpostaTag(riga, Conto, letta.CodiceConto);
    griglia_.righe.ImpostaTag(riga, Partita, letta.idPartita);
    griglia_.righe.ImpostaTag(riga, Banca, letta.codiceBanca);
  }
}

std::string frmLumoScadenzeBanche::ChiaveElemento(std::size_t riga) const {
  const RigheGriglia& righe = griglia_.righe;
  std::string chiave = "K_";
  chiave.append(righe.Tag(riga, Conto)).append("_").append(righe.Testo(riga, Partita)).append("_");
  chiave.append(righe.Testo(riga, Scadenza)).append(righe.Testo(riga, NumeroRata));
  chiave.append(righe.Testo(riga, ScadenzaOrig)).append("_").append(righe.Tag(riga, Banca));
  return chiave;
}

void frmLumoScadenzeBanche::LeggiVariazioni(VariazioniCanalizzazione& variazioni) const {
  for (const std::size_t riga : griglia_.RigheConfermate()) {
    VariazioneCanalizzazione variazione;
    if (LeggiVariazione(riga, variazione)) {
      variazioni.push_back(std::move(variazione));
    }
  }
}

bool frmLumoScadenzeBanche::LeggiVariazione(std::size_t riga, VariazioneCanalizzazione& variazione) const {
  const RigheGriglia& righe = griglia_.righe;
  const auto oNullo = [](std::string_view testo) { return std::string(testo.empty() ? Nullo : testo); };
  const std::string_view nuovaBanca = righe.Tag(riga, NuovaBanca);
  const std::string_view banca = righe.Tag(riga, Banca);
  const std::string_view scadenza = righe.Testo(riga, Scadenza);
  const std::string_view nuova = righe.Testo(riga, NuovaScadenza);
  variazione.isBancaChanged = !nuovaBanca.empty() && nuovaBanca != banca && !(nuovaBanca == Nullo && banca.empty());
  variazione.isScadenzaChanged = MaggioreDiSpazio(nuova) && nuova != scadenza;
  if (!variazione.isBancaChanged && !variazione.isScadenzaChanged) {
    return false;
  }
  variazione.CodiceConto = righe.Tag(riga, Conto);
  variazione.NumeroPartita = righe.Testo(riga, Partita);
  variazione.idPartitaKey = righe.Tag(riga, Partita);
  variazione.VecchiaScadenza = oNullo(scadenza);
  variazione.NumeroRata = righe.Testo(riga, NumeroRata);
  variazione.NuovaScadenza = oNullo(variazione.isScadenzaChanged ? nuova : std::string_view());
  variazione.VecchiaBanca = oNullo(banca);
  variazione.NuovaBanca = nuovaBanca;
  variazione.ScadenzaOriginale = righe.Testo(riga, ScadenzaOrig);
  return true;
}

} // namespace lumoscad
