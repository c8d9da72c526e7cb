#include "screens/Griglia.hpp"

#include "common/Testo.hpp"
#include "platform/Services.hpp"

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

// The kinds of cells, as the steps count them: the ticks, then text and tag of each column in turn.
constexpr int CampoSpunte = 0;

constexpr int CampoTesto(int colonna) {
  return 1 + 2 * colonna;
}
constexpr int CampoTag(int colonna) {
  return 2 + 2 * colonna;
}

/// Forgets how the window opens its drop-downs once it is gone.
class Tendina {
 public:
  explicit Tendina(ListWindow::DropDown& tendina) : tendina_(tendina) {}
  Tendina(const Tendina&) = delete;
  Tendina& operator=(const Tendina&) = delete;
  ~Tendina() { tendina_ = nullptr; }

 private:
  ListWindow::DropDown& tendina_;
};

} // namespace

Griglia::Griglia(DescrizioneGriglia descrizione)
    : righe(descrizione.colonne.size(), descrizione.colonneConTag), titolo(descrizione.titolo),
      descrizione_(std::move(descrizione)) {
  MisuraColonne({});
}

void Griglia::Azzera() {
  righe.Svuota();
  Tag.clear();
  etichette.clear();
  avviso.clear();
  vista_.MostraTutte();
  scelta_.Svuota();
  passi_.Svuota();
  resoconto_.Azzera();
  toccate_ = {};
  filtro_ = {};
  ricerca_.reset();
  dietro_.reset();
  daRivedere_ = false;
  aspetto = 0;
  const auto ordine = stato_.order + 1;
  stato_ = {};
  stato_.order = ordine;
  SegnaSelezione();
  motivoChiusura_.clear();
  chiaveInModifica_.clear();
  colonnaOrdine_ = 0;
  saltaClic_ = false;
  confermata_ = false;
  abbandonata_ = false;
}

void Griglia::MisuraColonne(const std::vector<int>& nascoste) {
  larghezze_.clear();
  for (const ListColumn& colonna : descrizione_.colonne) {
    larghezze_.push_back(colonna.width);
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
  const auto senzaScorrere = static_cast<std::size_t>(descrizione_.righeSenzaScorrere);
  stato_.listLeft = SinistraLista + SinistraLista;
  stato_.listWidth = SinistraColonna(colonne) + MargineLista;
  stato_.pictureWidth = SinistraColonna(colonne) + MargineQuadro;
  stato_.listHeight = static_cast<int>(std::min(righe.Quante(), senzaScorrere)) * AltezzaRiga;
  stato_.ascending = true;
  SegnaUguali();
  for (const TestataGriglia& testata : descrizione_.testate) {
    if (testata.colonnaOrdine == 0) {
      stato_.sortedHeading = testata.indice;
      Ordina(0);
    }
  }
  Seleziona(0);
}

void Griglia::Prepara() {
  AbbandonaEditor();
  resoconto_.Azzera();
  stato_.unloaded = false;
  motivoChiusura_.clear();
  saltaClic_ = false;
  confermata_ = false;
  finestra_ = {};
  finestra_.name = descrizione_.nome;
  finestra_.title = titolo;
  finestra_.listName = descrizione_.nomeLista;
  finestra_.fontName = descrizione_.carattere;
  finestra_.headingFont = descrizione_.carattereTestate;
  finestra_.rowsWithoutScrolling = descrizione_.righeSenzaScorrere;
  finestra_.columns = descrizione_.colonne;
  for (std::size_t colonna = 0; colonna < larghezze_.size(); ++colonna) {
    finestra_.columns[colonna].width = larghezze_[colonna];
    finestra_.columns[colonna].caption = Didascalia(static_cast<int>(colonna));
  }
  finestra_.headings = testate_;
  finestra_.labels = etichette;
  finestra_.warning = avviso;
  if (descrizione_.data.colonna >= 0 && Larghezza(descrizione_.data.colonna) > 0) {
    finestra_.dateField = descrizione_.campoData;
  }
  finestra_.bankField = descrizione_.campoBanca;
  finestra_.banks = cmbBanche.voci;
  finestra_.cellBanks = cmbBanche2.voci;
}

void Griglia::Abbandona() {
  righe.Svuota();
  motivoChiusura_ = "closed";
  abbandonata_ = true;
}

void Griglia::Mostra() {
  if (abbandonata_) {
    return;
  }
  Prepara();
  const Tendina tendina(tendina_);
  ActiveServices().desktop().ShowList(*this);
}

std::string_view Griglia::CellText(std::size_t posto, int colonna) const {
  return righe.Testo(vista_.Riga(posto), colonna);
}

bool Griglia::Ticked(std::size_t posto, int colonna) const {
  return righe.Spuntata(vista_.Riga(posto), colonna == descrizione_.colonnaSpunta2 ? 1 : 0);
}

void Griglia::SetDropDown(DropDown dropDown) {
  tendina_ = std::move(dropDown);
}

void Griglia::ShowComboDropdown(std::string_view combo, bool show) const {
  if (tendina_) {
    tendina_(combo, show);
  }
}

std::string Griglia::ChiaveRiga(std::size_t riga) const {
  std::string chiave;
  for (int colonna = 0; colonna < descrizione_.colonneChiave; ++colonna) {
    chiave += righe.Testo(riga, colonna);
  }
  return chiave;
}

std::optional<std::size_t> Griglia::RigaSelezionata() const {
  if (stato_.selected < 0 || static_cast<std::size_t>(stato_.selected) >= vista_.Quante()) {
    return std::nullopt;
  }
  return vista_.Riga(static_cast<std::size_t>(stato_.selected));
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

void Griglia::Seleziona(std::ptrdiff_t posto) {
  if (posto < 0 || static_cast<std::size_t>(posto) >= vista_.Quante()) {
    stato_.selected = -1;
    scelta_.Svuota();
    SegnaSelezione();
    return;
  }
  const std::size_t riga = vista_.Riga(static_cast<std::size_t>(posto));
  const bool lascia = riga != RigaSelezionata();
  stato_.selected = posto;
  scelta_.Solo(riga);
  SegnaSelezione();
  if (lascia && daRivedere_) {
    MostraPassate(false, true);
  }
}

/// Makes a row the current one, and leaves the selection as it is.
void Griglia::PortaA(std::optional<std::size_t> riga) {
  const auto posto = riga ? vista_.Posto(*riga) : std::nullopt;
  stato_.selected = posto ? static_cast<std::ptrdiff_t>(*posto) : -1;
}

void Griglia::LVScadenze_MouseDown(int x, int y) {
  mouseX_ = x;
  mouseY_ = y;
}

void Griglia::LVScadenze_ItemCheck(std::size_t posto) {
  saltaClic_ = true;
  if (descrizione_.caselle) {
    const std::size_t riga = vista_.Riga(posto);
    SpuntaCasella(riga, !righe.Spuntata(riga, 0));
  } else {
    Seleziona(static_cast<std::ptrdiff_t>(posto));
    Cambiata();
  }
}

void Griglia::LVScadenze_Click(int topRiga) {
  if (std::exchange(saltaClic_, false) || !RigaSelezionata()) {
    return;
  }
  const NuovaDataGriglia& data = descrizione_.data;
  const int alto = AltoLista + AltoLista + topRiga;
  const int colonna = data.ovunque ? data.colonna : TrovaCoordinate(mouseX_);
  const auto sinistra = [&] { return SinistraLista + SinistraLista + SinistraColonna(colonna); };
  const auto spunta = [this](std::string_view chiave) {
    if (gesti_.SuMolte()) {
      gesti_.CambiaCheck(chiave);
    } else {
      CambiaCheck(chiave);
    }
  };
  if (colonna == descrizione_.colonnaSpunta1) {
    spunta("RADIO1");
  } else if (colonna == descrizione_.colonnaSpunta2) {
    spunta("RADIO2");
  } else if (colonna == data.colonna) {
    TogliScadenza();
    InserisciScadenza(alto, sinistra() + data.scarto, Larghezza(colonna) - MargineEditor);
  } else if (colonna == descrizione_.banca.colonna) {
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
  stato_.sortedHeading = indice;
  stato_.ascending = testata->colonnaOrdine == colonnaOrdine_ ? !stato_.ascending : true;
  Ordina(testata->colonnaOrdine);
}

void Griglia::Ordina(int colonna) {
  const auto selezionata = RigaSelezionata();
  colonnaOrdine_ = colonna;
  righe.Ordina(colonna, stato_.ascending);
  vista_.Riordina();
  if (selezionata) {
    PortaA(selezionata);
  }
  VistaMutata();
}

/// The set or the order of the rows in sight changed.
void Griglia::VistaMutata() {
  // The selection may be elsewhere: an open editor stays with the row on which it was opened.
  for (CellEditor* editor : {&stato_.data, &stato_.bank}) {
    if (editor->visible) {
      editor->place = PostoInModifica();
    }
  }
  ++stato_.order;
}

bool Griglia::DataVariata(std::size_t riga) const {
  const int colonna = descrizione_.data.colonna;
  if (colonna < 0) {
    return false;
  }
  // A date that was refused leaves a blank behind, which is no change.
  const std::string_view nuova = righe.Testo(riga, colonna);
  return MaggioreDiSpazio(nuova) && nuova != TestoPresente(riga, colonna);
}

bool Griglia::BancaVariata(std::size_t riga) const {
  const int colonna = descrizione_.banca.colonna;
  if (colonna < 0) {
    return false;
  }
  const std::string_view nuova = righe.Tag(riga, colonna);
  const std::string_view banca = righe.Tag(riga, descrizione_.colonne[static_cast<std::size_t>(colonna)].present);
  return !nuova.empty() && nuova != banca && !(nuova == Nullo && banca.empty());
}

std::vector<std::size_t> Griglia::ElencoVariate() const {
  std::vector<std::size_t> variate;
  toccate_.Ognuna([&](std::size_t riga) {
    if (Variata(riga)) {
      variate.push_back(riga);
    }
  });
  return variate;
}

void Griglia::ScriviTesto(std::size_t riga, int colonna, std::string_view testo) {
  if (righe.Testo(riga, colonna) == testo) {
    return;
  }
  const std::uint32_t prima = righe.NumeroTesto(riga, colonna);
  righe.ImpostaTesto(riga, colonna, testo);
  toccate_.Aggiungi(riga);
  passi_.Annota(CampoTesto(colonna), riga, prima, righe.NumeroTesto(riga, colonna));
}

void Griglia::ScriviTag(std::size_t riga, int colonna, std::string_view tag) {
  if (righe.Tag(riga, colonna) == tag) {
    return;
  }
  const std::uint32_t prima = righe.NumeroTag(riga, colonna);
  righe.ImpostaTag(riga, colonna, tag);
  toccate_.Aggiungi(riga);
  passi_.Annota(CampoTag(colonna), riga, prima, righe.NumeroTag(riga, colonna));
}

void Griglia::ScriviSpunta(std::size_t riga, int quale, bool spuntata) {
  const std::uint8_t prima = righe.Spunte(riga);
  righe.ImpostaSpunta(riga, quale, spuntata);
  passi_.Annota(CampoSpunte, riga, prima, righe.Spunte(riga));
}

void Griglia::ScriviBanca(std::size_t riga, std::string_view codice, std::string_view testo) {
  ScriviTag(riga, descrizione_.banca.colonna, codice);
  ScriviTesto(riga, descrizione_.banca.colonna, testo);
}

void Griglia::ScriviNumero(int campo, std::size_t riga, std::uint32_t numero) {
  if (campo == CampoSpunte) {
    righe.ImpostaSpunte(riga, static_cast<std::uint8_t>(numero));
  } else if (const int colonna = (campo - 1) / 2; campo == CampoTesto(colonna)) {
    righe.ImpostaNumeroTesto(riga, colonna, numero);
  } else {
    righe.ImpostaNumeroTag(riga, colonna, numero);
  }
}

void Griglia::PictureOk_Click() {
  Form_Click();
  confermata_ = true;
  Scarica();
}

std::vector<std::size_t> Griglia::RigheConfermate() const {
  std::vector<std::size_t> confermate(confermata_ && Modificabile() ? righe.Quante() : 0);
  for (std::size_t posto = 0; posto < confermate.size(); ++posto) {
    confermate[posto] = righe.RigaAlPosto(posto);
  }
  return confermate;
}

void Griglia::PictureAnnulla_Click() {
  Form_QueryUnload();
}

void Griglia::Form_QueryUnload() {
  confermata_ = false;
  motivoChiusura_ = "closed";
  Scarica();
}

} // namespace lumoscad
