// The editors that open over a cell: the new date and the new bank of a row.

#include "common/Testo.hpp"
#include "common/Utilities.hpp"
#include "platform/Services.hpp"
#include "screens/DataScritta.hpp"
#include "screens/Griglia.hpp"

#include <algorithm>
#include <utility>

namespace lumoscad {
namespace {

constexpr int TastoTab = 9;
constexpr int TastoInvio = 13;

} // namespace

std::optional<std::size_t> Griglia::RigaInModifica() const {
  if (!descrizione_.primaConChiave && rigaInModifica_ < righe.Quante() &&
      ChiaveRiga(rigaInModifica_) == chiaveInModifica_) {
    return rigaInModifica_;
  }
  for (std::size_t posto = 0; posto < righe.Quante(); ++posto) {
    if (ChiaveRiga(righe.RigaAlPosto(posto)) == chiaveInModifica_) {
      return righe.RigaAlPosto(posto);
    }
  }
  return std::nullopt;
}

std::ptrdiff_t Griglia::PostoInModifica() const {
  const auto riga = RigaInModifica();
  const auto posto = riga ? vista_.Posto(*riga) : std::nullopt;
  return posto ? static_cast<std::ptrdiff_t>(*posto) : -1;
}

void Griglia::NascondiSeScorre() {
  if (vista_.Quante() > static_cast<std::size_t>(descrizione_.righeSenzaScorrere)) {
    NascondiBarrette();
  }
}

void Griglia::NascondiBarrette() {
  stato_.scrollBarsHidden = true;
}

void Griglia::RimettiBarrette() {
  stato_.scrollBarsHidden = false;
}

void Griglia::ApriEditor(CellEditor& editor, std::size_t riga, int top, int left, int width) {
  editor.top = top;
  editor.left = left;
  editor.width = width;
  editor.visible = true;
  rigaInModifica_ = riga;
  chiaveInModifica_ = ChiaveRiga(riga);
  editor.place = stato_.selected;
  editorToccato_ = false;
  molteInModifica_.clear();
  if (gesti_.SuMolte()) {
    molteInModifica_ = scelta_.InVistaPerNumero();
    gesti_.Annuncia(molteInModifica_.size());
  }
}

void Griglia::InserisciScadenza(int top, int left, int width) {
  if (!Modificabile()) {
    return;
  }
  NascondiSeScorre();
  TogliBanca();
  if (const auto riga = RigaSelezionata()) {
    stato_.data.text = righe.Testo(*riga, descrizione_.data.colonna);
    ApriEditor(stato_.data, *riga, top, left, width);
  }
}

void Griglia::TogliScadenza() {
  if (!stato_.data.visible || !Modificabile()) {
    return;
  }
  stato_.data.visible = false;
  if (descrizione_.data.fuocoChiude) {
    RimettiBarrette(); // nobody does it after the focus has gone
  }
  const auto molte = std::exchange(molteInModifica_, {});
  if (!molte.empty()) {
    Avvisa({});
    if (editorToccato_) {
      gesti_.DaiData(molte, stato_.data.text);
    }
    return;
  }
  const GestoGriglia gesto(*this, descrizione_.nomeData);
  const NuovaDataGriglia& data = descrizione_.data;
  const std::string& testo = stato_.data.text;
  const bool scritta = data.senza == SenzaData::Presente ? MaggioreDiSpazio(testo) : !testo.empty();
  const auto riga = RigaInModifica();
  const std::string nuova = scritta ? Utilities::ControllaData(DataEspansa(testo, riga)) : std::string();
  if (riga) {
    ScriviTesto(*riga, data.colonna, scritta ? nuova : DataTolta(*riga));
    Cambiata();
  }
}

std::string Griglia::DataEspansa(std::string_view testo, std::optional<std::size_t> riga) const {
  return dataScritta::Espandi(testo, riga ? DataPresente(*riga) : std::string_view(), ActiveServices().localTime());
}

std::string_view Griglia::DataPresente(std::size_t riga) const {
  const int colonna = descrizione_.data.colonna;
  return colonna >= 0 && descrizione_.colonne[static_cast<std::size_t>(colonna)].present >= 0
             ? TestoPresente(riga, colonna)
             : std::string_view();
}

void Griglia::TextScad_Change(std::string_view testo) {
  stato_.data.text = testo;
  editorToccato_ = true;
}

void Griglia::TextScad_KeyPress(int codice) {
  if (codice == TastoInvio || (codice == TastoTab && descrizione_.data.tabChiude)) {
    editorToccato_ = true; // of several rows it writes what it shows, too
    TogliScadenza();
    RimettiBarrette();
  }
}

void Griglia::TextScad_LostFocus() {
  if (descrizione_.data.fuocoChiude) {
    TogliScadenza();
  }
}

int Griglia::TrovaRigaBanca(const std::vector<std::string>& combo, std::string_view testo) {
  const auto trovata = std::find(combo.begin(), combo.end(), testo);
  return trovata == combo.end() ? 0 : static_cast<int>(trovata - combo.begin());
}

void Griglia::InserisciBanca(int top, int left, int width) {
  if (!Modificabile()) {
    return;
  }
  NascondiSeScorre();
  TogliScadenza();
  TogliBanca();
  if (const auto riga = RigaSelezionata()) {
    stato_.bank.index = TrovaRigaBanca(cmbBanche2.voci, righe.Testo(*riga, descrizione_.banca.colonna));
    ApriEditor(stato_.bank, *riga, top, left, width);
  }
}

void Griglia::TogliBanca() {
  if (!stato_.bank.visible || !Modificabile()) {
    return;
  }
  stato_.bank.visible = false;
  const int indice = stato_.bank.index;
  const auto& voci = cmbBanche2.voci;
  const bool conTesto =
      indice >= 0 && static_cast<std::size_t>(indice) < voci.size() && !voci[static_cast<std::size_t>(indice)].empty();
  const auto molte = std::exchange(molteInModifica_, {});
  if (!molte.empty()) {
    Avvisa({});
    if (editorToccato_ && conTesto) {
      gesti_.DaiBanca(molte, indice);
    }
    return;
  }
  if (const auto riga = conTesto ? RigaInModifica() : std::nullopt) {
    const GestoGriglia gesto(*this, "banca");
    ScriviSpunta(*riga, descrizione_.banca.spunta, true);
    AssegnaBanca({*riga}, indice, descrizione_.banca.codiciInAlto ? cmbBanche : cmbBanche2);
    Cambiata();
  }
}

void Griglia::cmbBanche2_Click(int indice) {
  stato_.bank.index = indice;
  editorToccato_ = true;
}

void Griglia::cmbBanche2_LostFocus() {
  // The editor also loses the focus when it was closed for the date editor, which keeps the scroll bars covered.
  if (!stato_.bank.visible) {
    return;
  }
  TogliBanca();
  RimettiBarrette();
}

void Griglia::AbbandonaEditor() {
  stato_.data.visible = false;
  stato_.bank.visible = false;
  molteInModifica_.clear();
  RimettiBarrette();
}

} // namespace lumoscad
