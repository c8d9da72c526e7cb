#include "screens/Griglia.hpp"

#include "common/Testo.hpp"
#include "platform/Servizi.hpp"

#include <algorithm>
#include <utility>

namespace lumoscad {
namespace {

constexpr int AltezzaRiga = 240;
constexpr int MargineEditor = 60;
constexpr int MargineLista = 50;
constexpr int MargineQuadro = 100;
constexpr int SinistraLista = 30; ///< of the list within `picScadenzeBanche`, and of that within the window
constexpr int AltoLista = 30;
constexpr int TastoTab = 9;
constexpr int TastoInvio = 13;

/// Names the window that is showing, for as long as it does.
class Mostrata {
 public:
  Mostrata(const FinestraElenco*& posto, const FinestraElenco& finestra) : posto_(posto = &finestra) {}
  Mostrata(const Mostrata&) = delete;
  Mostrata& operator=(const Mostrata&) = delete;
  ~Mostrata() { posto_ = nullptr; }

 private:
  const FinestraElenco*& posto_;
};

} // namespace

Griglia::Griglia(DescrizioneGriglia descrizione, RegoleGriglia regole)
    : Righe(descrizione.colonne.size(), descrizione.colonneConTag), Titolo(descrizione.titolo),
      descrizione_(std::move(descrizione)), regole_(std::move(regole)) {
  MisuraColonne({});
}

void Griglia::Azzera() {
  Righe.Svuota();
  Tag.clear();
  Etichette.clear();
  const StatoElenco vuoto;
  const auto ordine = stato_.ordine + 1;
  stato_ = vuoto;
  stato_.ordine = ordine;
  motivoChiusura_.clear();
  chiaveInModifica_.clear();
  colonnaOrdine_ = 0;
  saltaClic_ = false;
}

void Griglia::MisuraColonne(const std::vector<int>& nascoste) {
  larghezze_.clear();
  for (const ColonnaElenco& colonna : descrizione_.colonne) {
    larghezze_.push_back(colonna.larghezza);
  }
  for (const int nascosta : nascoste) {
    larghezze_[static_cast<std::size_t>(nascosta)] = 0;
  }
}

void Griglia::Resize(const std::vector<int>& nascoste) {
  MisuraColonne(nascoste);
  testate_.clear();
  int sinistra = 0;
  for (const TestataGriglia& testata : descrizione_.testate) {
    const int larghezza = Larghezza(testata.colonna);
    testate_.push_back({testata.indice, testata.testo, testata.colonna, testata.colonna, sinistra, larghezza,
                        testata.colonnaOrdine >= 0});
    sinistra += larghezza;
  }
  const int colonne = static_cast<int>(descrizione_.colonne.size());
  stato_.sinistraLista = SinistraLista + SinistraLista;
  stato_.larghezzaLista = SinistraColonna(colonne) + MargineLista;
  stato_.larghezzaQuadro = SinistraColonna(colonne) + MargineQuadro;
  stato_.altezzaLista = static_cast<int>(std::min(Righe.Quante(), std::size_t{RigheSenzaScorrere})) * AltezzaRiga;
  stato_.crescente = true;
  for (const TestataGriglia& testata : descrizione_.testate) {
    if (testata.colonnaOrdine == 0) {
      stato_.testataOrdinata = testata.indice;
    }
  }
  Ordina(0);
  stato_.selezionata = Righe.Quante() > 0 ? 0 : -1;
}

void Griglia::Mostra() {
  FinestraElenco finestra = Finestra();
  const Mostrata mostrata(aperta_, finestra);
  servizi().desktop().MostraElenco(finestra);
}

std::string Griglia::ChiaveRiga(std::size_t riga) const {
  std::string chiave;
  for (int colonna = 0; colonna < descrizione_.colonneChiave; ++colonna) {
    chiave += Righe.Testo(riga, colonna);
  }
  return chiave;
}

std::optional<std::size_t> Griglia::RigaSelezionata() const {
  if (stato_.selezionata < 0 || static_cast<std::size_t>(stato_.selezionata) >= Righe.Quante()) {
    return std::nullopt;
  }
  return Righe.RigaAlPosto(static_cast<std::size_t>(stato_.selezionata));
}

int Griglia::SinistraColonna(int colonna) const {
  int sinistra = 0;
  for (int i = 0; i < colonna; ++i) {
    sinistra += Larghezza(i);
  }
  return sinistra;
}

int Griglia::TrovaCoordinate(int x) const {
  const int colonne = static_cast<int>(descrizione_.colonne.size());
  int destra = 0;
  for (int colonna = 0; colonna < colonne; ++colonna) {
    destra += Larghezza(colonna);
    if (destra > x) {
      return colonna;
    }
  }
  return colonne;
}

void Griglia::ApriEditor(EditorCella& editor, int top, int left, int width) {
  const auto riga = RigaSelezionata();
  if (!riga) {
    return;
  }
  editor.alto = top;
  editor.sinistra = left;
  editor.larghezza = width;
  editor.visibile = true;
  rigaInModifica_ = *riga;
  chiaveInModifica_ = ChiaveRiga(*riga);
  editor.posto = PostoInModifica();
}

void Griglia::InserisciScadenza(int top, int left, int width) {
  if (!Modificabile()) {
    return;
  }
  if (Righe.Quante() > RigheSenzaScorrere) {
    NascondiBarrette();
  }
  TogliBanca();
  if (const auto riga = RigaSelezionata()) {
    stato_.data.testo = Righe.Testo(*riga, descrizione_.colonnaNuovaData);
    ApriEditor(stato_.data, top, left, width);
  }
}

void Griglia::InserisciBanca(int top, int left, int width) {
  if (!Modificabile()) {
    return;
  }
  if (Righe.Quante() > RigheSenzaScorrere) {
    NascondiBarrette();
  }
  TogliScadenza();
  TogliBanca();
  if (const auto riga = RigaSelezionata()) {
    stato_.banca.indice = TrovaRigaBanca(cmbBanche2, Righe.Testo(*riga, descrizione_.colonnaNuovaBanca));
    ApriEditor(stato_.banca, top, left, width);
  }
}

std::optional<std::size_t> Griglia::RigaInModifica() const {
  if (rigaInModifica_ < Righe.Quante() && ChiaveRiga(rigaInModifica_) == chiaveInModifica_) {
    return rigaInModifica_;
  }
  for (std::size_t posto = 0; posto < Righe.Quante(); ++posto) {
    if (ChiaveRiga(Righe.RigaAlPosto(posto)) == chiaveInModifica_) {
      return Righe.RigaAlPosto(posto);
    }
  }
  return std::nullopt;
}

std::ptrdiff_t Griglia::PostoInModifica() const {
  const auto riga = RigaInModifica();
  return riga ? static_cast<std::ptrdiff_t>(Righe.PostoDellaRiga(*riga)) : -1;
}

void Griglia::TogliScadenza() {
  if (!stato_.data.visibile || !Modificabile()) {
    return;
  }
  stato_.data.visibile = false;
  const std::string testo = stato_.data.testo;
  if (const auto riga = RigaInModifica()) {
    regole_.chiudiData(*riga, testo);
    Cambiata();
  }
}

void Griglia::TogliBanca() {
  if (!stato_.banca.visibile || !Modificabile()) {
    return;
  }
  stato_.banca.visibile = false;
  const int indice = stato_.banca.indice;
  const bool conTesto = indice >= 0 && static_cast<std::size_t>(indice) < cmbBanche2.size() &&
                        !cmbBanche2[static_cast<std::size_t>(indice)].empty();
  if (const auto riga = conTesto ? RigaInModifica() : std::nullopt) {
    regole_.chiudiBanca(*riga, indice);
    Cambiata();
  }
}

void Griglia::AbbandonaEditor() {
  stato_.data.visibile = false;
  stato_.banca.visibile = false;
  RimettiBarrette();
}

int Griglia::QualeSpunta(std::string_view chiave) const {
  return chiave == "RADIO2" && descrizione_.colonnaSpunta2 >= 0 ? 1 : 0;
}

void Griglia::ImpostaSpunta(std::size_t riga, std::string_view chiave, bool spuntata) {
  Righe.ImpostaSpunta(riga, QualeSpunta(chiave), spuntata);
  Cambiata();
}

void Griglia::ShowComboDropdown(std::string_view combo, bool show) const {
  if (aperta_ != nullptr && aperta_->mostraTendina) {
    aperta_->mostraTendina(combo, show);
  }
}

void Griglia::CambiaCheck(std::string_view chiave) {
  if (const auto riga = Modificabile() ? RigaSelezionata() : std::nullopt) {
    regole_.cambiaCheck(*riga, chiave, !Righe.Spuntata(*riga, QualeSpunta(chiave)));
    Cambiata();
  }
}

void Griglia::DeselezionaTutto(std::string_view chiave) {
  if (!Modificabile()) {
    return;
  }
  for (std::size_t riga = 0; riga < Righe.Quante(); ++riga) {
    Righe.ImpostaSpunta(riga, QualeSpunta(chiave), false);
  }
  Cambiata();
}

void Griglia::NascondiBarrette() {
  stato_.barretteNascoste = true;
}

void Griglia::RimettiBarrette() {
  stato_.barretteNascoste = false;
}

int Griglia::TrovaRigaBanca(const std::vector<std::string>& combo, std::string_view testo) {
  const auto trovata = std::find(combo.begin(), combo.end(), testo);
  return trovata == combo.end() ? 0 : static_cast<int>(trovata - combo.begin());
}

void Griglia::ImpostaTestoScadenza(std::string_view testo) {
  stato_.testoScadenza = testo;
}

void Griglia::Seleziona(std::ptrdiff_t posto) {
  const bool valido = posto >= 0 && static_cast<std::size_t>(posto) < Righe.Quante();
  stato_.selezionata = valido ? posto : -1;
}

void Griglia::LVScadenze_MouseDown(int x, int y) {
  mouseX_ = x;
  mouseY_ = y;
}

void Griglia::LVScadenze_ItemCheck(std::size_t posto) {
  Seleziona(static_cast<std::ptrdiff_t>(posto));
  saltaClic_ = true;
  Cambiata();
}

void Griglia::LVScadenze_Click(int topRiga) {
  if (std::exchange(saltaClic_, false) || !RigaSelezionata()) {
    return;
  }
  const int alto = AltoLista + AltoLista + topRiga;
  const int colonna = TrovaCoordinate(mouseX_);
  const auto sinistra = [&] { return SinistraLista + SinistraLista + SinistraColonna(colonna); };
  if (colonna == descrizione_.colonnaSpunta1) {
    CambiaCheck("RADIO1");
  } else if (colonna == descrizione_.colonnaSpunta2) {
    CambiaCheck("RADIO2");
  } else if (colonna == descrizione_.colonnaNuovaData) {
    TogliScadenza();
    InserisciScadenza(alto, sinistra(), Larghezza(colonna) - MargineEditor);
  } else if (colonna == descrizione_.colonnaNuovaBanca) {
    InserisciBanca(alto, sinistra(), Larghezza(colonna) - MargineEditor);
  } else {
    Form_Click();
  }
}

void Griglia::Form_Click() {
  TogliBanca();
  TogliScadenza();
  RimettiBarrette();
}

void Griglia::TLwTestata_Click(int indice) {
  const auto testata = std::find_if(descrizione_.testate.begin(), descrizione_.testate.end(),
                                    [&](const TestataGriglia& t) { return t.indice == indice; });
  if (testata == descrizione_.testate.end() || testata->colonnaOrdine < 0) {
    return;
  }
  stato_.testataOrdinata = indice;
  stato_.crescente = testata->colonnaOrdine == colonnaOrdine_ ? !stato_.crescente : true;
  Ordina(testata->colonnaOrdine);
}

void Griglia::Ordina(int colonna) {
  const auto selezionata = RigaSelezionata();
  colonnaOrdine_ = colonna;
  Righe.Ordina(colonna, stato_.crescente);
  if (selezionata) {
    stato_.selezionata = static_cast<std::ptrdiff_t>(Righe.PostoDellaRiga(*selezionata));
  }
  // The selection may be elsewhere: an open editor stays with the row on which it was opened.
  for (EditorCella* editor : {&stato_.data, &stato_.banca}) {
    if (editor->visibile) {
      editor->posto = PostoInModifica();
    }
  }
  ++stato_.ordine;
}

void Griglia::TextScad_Change(std::string_view testo) {
  stato_.data.testo = testo;
}

void Griglia::TextScad_KeyPress(int codice) {
  if (codice == TastoTab || codice == TastoInvio) {
    TogliScadenza();
    RimettiBarrette();
  }
}

void Griglia::cmbBanche2_Click(int indice) {
  stato_.banca.indice = indice;
}

void Griglia::cmbBanche2_LostFocus() {
  // The editor also loses the focus when it was closed for the date editor, which keeps the scroll bars covered.
  if (!stato_.banca.visibile) {
    return;
  }
  TogliBanca();
  RimettiBarrette();
}

void Griglia::TextScadenza_Change(std::string_view testo) {
  stato_.testoScadenza = testo;
}

void Griglia::TextScadenza_Click() {
  regole_.clicScadenza();
}

void Griglia::cmbBanche_Click(int indice) {
  stato_.indiceBanca = indice;
  if (Modificabile()) {
    regole_.sceltaBanca();
  }
}

void Griglia::PictureOk_Click() {
  Form_Click();
  regole_.conferma();
  Scarica();
}

void Griglia::PictureAnnulla_Click() {
  Form_QueryUnload();
}

void Griglia::Form_QueryUnload() {
  regole_.annulla();
  motivoChiusura_ = "closed";
  Scarica();
}

FinestraElenco Griglia::Finestra() {
  FinestraElenco finestra;
  finestra.nome = descrizione_.nome;
  finestra.titolo = Titolo;
  finestra.nomeLista = descrizione_.nomeLista;
  finestra.carattere = descrizione_.carattere;
  finestra.carattereTestate = descrizione_.carattereTestate;
  finestra.righeSenzaScorrere = RigheSenzaScorrere;
  finestra.colonne = descrizione_.colonne;
  for (std::size_t colonna = 0; colonna < larghezze_.size(); ++colonna) {
    finestra.colonne[colonna].larghezza = larghezze_[colonna];
  }
  finestra.testate = testate_;
  finestra.etichette = Etichette;
  if (descrizione_.colonnaNuovaData >= 0 && Larghezza(descrizione_.colonnaNuovaData) > 0) {
    finestra.campoData = descrizione_.campoData;
  }
  finestra.campoBanca = descrizione_.campoBanca;
  finestra.banche = cmbBanche;
  finestra.bancheCella = cmbBanche2;
  CollegaLettura(finestra);
  CollegaGesti(finestra);
  return finestra;
}

void Griglia::CollegaLettura(FinestraElenco& finestra) {
  finestra.righe = [this] { return Righe.Quante(); };
  finestra.testo = [this](std::size_t posto, int colonna) { return Righe.Testo(Righe.RigaAlPosto(posto), colonna); };
  finestra.spuntata = [this](std::size_t posto, int colonna) {
    return Righe.Spuntata(Righe.RigaAlPosto(posto), colonna == descrizione_.colonnaSpunta2 ? 1 : 0);
  };
  finestra.stato = [this]() -> const StatoElenco& { return stato_; };
}

void Griglia::CollegaGesti(FinestraElenco& finestra) {
  finestra.seleziona = [this](std::ptrdiff_t posto) { Seleziona(posto); };
  finestra.premeMouse = [this](int x, int y) { LVScadenze_MouseDown(x, y); };
  finestra.clic = [this](int topRiga) { LVScadenze_Click(topRiga); };
  finestra.clicTestata = [this](int indice) { TLwTestata_Click(indice); };
  finestra.clicFuori = [this] { Form_Click(); };
  finestra.testoEditor = [this](std::string_view testo) { TextScad_Change(testo); };
  finestra.tastoEditor = [this](int codice) { TextScad_KeyPress(codice); };
  finestra.scegliBancaCella = [this](int indice) { cmbBanche2_Click(indice); };
  finestra.perdeFuocoBancaCella = [this] { cmbBanche2_LostFocus(); };
  finestra.abbandonaEditor = [this] { AbbandonaEditor(); };
  finestra.testoScadenza = [this](std::string_view testo) { TextScadenza_Change(testo); };
  finestra.clicScadenza = [this] { TextScadenza_Click(); };
  finestra.scegliBanca = [this](int indice) { cmbBanche_Click(indice); };
  finestra.conferma = [this] { PictureOk_Click(); };
  finestra.annulla = [this] { PictureAnnulla_Click(); };
  finestra.chiudi = [this] { Form_QueryUnload(); };
}

} // namespace lumoscad
