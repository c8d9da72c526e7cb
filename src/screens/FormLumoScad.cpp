#include "screens/FormLumoScad.hpp"

#include "common/Messaggi.hpp"
#include "common/Stato.hpp"
#include "common/Testo.hpp"
#include "common/Utilities.hpp"
#include "platform/Servizi.hpp"

#include <algorithm>
#include <array>
#include <utility>

namespace lumoscad {
namespace {

constexpr std::string_view ModoScad = "Scad";
constexpr std::string_view ModoExtra = "Extra";
constexpr std::string_view TestoSeleziona = "Seleziona tutto";
constexpr std::string_view TestoDeseleziona = "Deseleziona tutto";
constexpr int TastoInvio = 13;
constexpr int Vero = -1; ///< True as a number in the calling program

constexpr int AltezzaRiga = 240;
constexpr int MargineEditor = 60;
constexpr int MargineLista = 50;
constexpr int MargineQuadro = 100;
constexpr int AltoBase = 30; ///< of `FrameScadenzeBase` within the window, and of the list within that
constexpr int SinistraBase = 30;
constexpr int LarghezzaSpunta = 420; ///< the check box stands before the first column
constexpr std::array<int, FormLumoScad::Colonne> Larghezze = {1800, 1800, 1950, 1950};

/// Left end of a column within the list.
int SinistraColonna(int colonna) {
  int sinistra = LarghezzaSpunta;
  for (int i = 0; i < colonna; ++i) {
    sinistra += Larghezze[static_cast<std::size_t>(i)];
  }
  return sinistra;
}

} // namespace

FormLumoScad::FormLumoScad(Conferma conferma, Conferma confermaExtra)
    : Righe(Colonne, {}), conferma_(std::move(conferma)), confermaExtra_(std::move(confermaExtra)) {
  Svuota();
}

void FormLumoScad::Svuota() {
  Righe.Svuota();
  LabelDescPartita.clear();
  LabelDescCliFor.clear();
  const auto ordine = stato_.ordine + 1;
  stato_ = {};
  stato_.ordine = ordine;
  finestra_ = {};
  finestra_.selezionaTutto = TestoSeleziona;
  selezionaTutto_ = false;
}

std::string FormLumoScad::VisualizzaScad() {
  return Visualizza(ModoScad);
}

std::string FormLumoScad::VisualizzaExtra() {
  return Visualizza(ModoExtra);
}

std::string FormLumoScad::Visualizza(std::string_view modo) {
  modo_ = modo;
  risultato_.clear();
  motivoChiusura_.clear();
  saltaClic_ = false;
  confermaDopo_ = false;
  stato_.scaricata = false;
  AbbandonaEditor();
  finestra_.descrizioneVisibile = modo == ModoScad;
  ResizeScad();
  FinestraScadenzario finestra = Finestra();
  servizi().desktop().MostraScadenzario(finestra);
  if (confermaDopo_) {
    risultato_ = EseguiConferma();
  }
  return risultato_;
}

std::string FormLumoScad::EseguiConferma() const {
  return modo_ == ModoScad ? conferma_() : confermaExtra_();
}

std::optional<std::size_t> FormLumoScad::RigaSelezionata() const {
  if (stato_.selezionata < 0 || static_cast<std::size_t>(stato_.selezionata) >= Righe.Quante()) {
    return std::nullopt;
  }
  return static_cast<std::size_t>(stato_.selezionata);
}

void FormLumoScad::InserisciScadenza(int top, int left, int width) {
  const auto riga = RigaSelezionata();
  if (!riga) {
    return;
  }
  stato_.barretteNascoste = Righe.Quante() > RigheInVista;
  stato_.data.alto = top;
  stato_.data.sinistra = left;
  stato_.data.larghezza = width;
  stato_.data.testo = Righe.Testo(*riga, NuovaScadenza);
  stato_.data.visibile = true;
  stato_.data.posto = stato_.selezionata;
  testoInModifica_ = Righe.Testo(*riga, Scadenza);
}

void FormLumoScad::TogliTextScad() {
  if (!stato_.data.visibile) {
    return;
  }
  AbbandonaEditor();
  const std::string testo = stato_.data.testo;
  const std::string nuova = testo.empty() ? "" : Utilities::ControllaData(testo);
  for (std::size_t riga = 0; riga < Righe.Quante(); ++riga) {
    if (Righe.Testo(riga, Scadenza) == testoInModifica_) {
      Righe.ImpostaTesto(riga, NuovaScadenza, nuova);
      Cambiata();
      return;
    }
  }
}

void FormLumoScad::AbbandonaEditor() {
  stato_.data.visibile = false;
  stato_.barretteNascoste = false;
}

void FormLumoScad::ResizeScad() {
  stato_.sinistraLista = SinistraBase + SinistraBase;
  stato_.larghezzaLista = SinistraColonna(Colonne) + MargineLista;
  stato_.larghezzaQuadro = SinistraColonna(Colonne) + MargineQuadro;
  stato_.altezzaLista = static_cast<int>(std::min(Righe.Quante(), std::size_t{RigheInVista})) * AltezzaRiga;
  stato_.selezionata = Righe.Quante() > 0 ? 0 : -1;
}

void FormLumoScad::SetTopMostWindow(bool topmost) {
  finestra_.primoPiano = topmost;
}

void FormLumoScad::SetTopMostWindow(int topmost) {
  SetTopMostWindow(topmost == Vero);
}

void FormLumoScad::Seleziona(std::ptrdiff_t riga) {
  const bool valida = riga >= 0 && static_cast<std::size_t>(riga) < Righe.Quante();
  stato_.selezionata = valida ? riga : -1;
}

void FormLumoScad::LWScad_Click(int topRiga) {
  if (std::exchange(saltaClic_, false)) {
    return;
  }
  TogliTextScad(); // the list took the focus from an editor that was open
  InserisciScadenza(AltoBase + AltoBase + topRiga,
                    SinistraBase + SinistraBase + SinistraColonna(NuovaScadenza) + MargineEditor,
                    Larghezze[NuovaScadenza] - MargineEditor);
}

void FormLumoScad::LWScad_ItemCheck(std::size_t riga, bool spuntata) {
  saltaClic_ = true;
  Spunta(riga, spuntata);
}

void FormLumoScad::Spunta(std::size_t riga, bool spuntata) {
  Righe.ImpostaSpunta(riga, 0, spuntata);
  std::string nuova;
  if (MaggioreDiSpazio(stato_.testoScadenza)) {
    nuova = Utilities::ControllaData(stato_.testoScadenza);
  }
  Righe.ImpostaTesto(riga, NuovaScadenza, spuntata ? nuova : std::string());
  Cambiata();
}

void FormLumoScad::TextScad_Change(std::string_view testo) {
  stato_.data.testo = testo;
}

void FormLumoScad::TextScad_KeyPress(int codice) {
  if (codice == TastoInvio) {
    TogliTextScad();
  }
}

void FormLumoScad::TextScad_LostFocus() {
  TogliTextScad();
}

void FormLumoScad::TextScadenza_Change(std::string_view testo) {
  stato_.testoScadenza = testo;
  for (std::size_t riga = 0; riga < Righe.Quante(); ++riga) {
    Righe.ImpostaSpunta(riga, 0, false); // the dates that the ticks copied stay in their rows
  }
  Cambiata();
}

void FormLumoScad::TextScadenza_LostFocus() {
  const std::string controllata = Utilities::ControllaData(stato_.testoScadenza);
  if (controllata != stato_.testoScadenza) {
    TextScadenza_Change(controllata);
  }
}

void FormLumoScad::PicSelezionaTutto_Click() {
  // Exactly one blank, which the field holds once it was left without a date; a field never entered holds nothing,
  // and the rows are then ticked with an empty date.
  if (stato_.testoScadenza == " ") {
    MostraMessaggio("Inserisci una scadenza", "");
    return;
  }
  selezionaTutto_ = !selezionaTutto_;
  for (std::size_t riga = 0; riga < Righe.Quante(); ++riga) {
    Spunta(riga, selezionaTutto_);
  }
  // The text tells what was done last, not what the next click will do.
  finestra_.selezionaTutto = selezionaTutto_ ? TestoSeleziona : TestoDeseleziona;
}

void FormLumoScad::PictureOk_Click() {
  TogliTextScad();
  if (stato().DemoPresunti) {
    confermaDopo_ = true;
  } else {
    risultato_ = EseguiConferma();
  }
  Scarica();
}

void FormLumoScad::PictureAnnulla_Click() {
  Form_QueryUnload();
}

void FormLumoScad::Form_QueryUnload() {
  motivoChiusura_ = "closed";
  risultato_ = motivoChiusura_;
  Scarica();
}

FinestraScadenzario FormLumoScad::Finestra() {
  using Genere = ColonnaElenco::Genere;
  FinestraScadenzario finestra;
  FinestraElenco& elenco = finestra.elenco;
  elenco.nome = "FormLumoScad";
  elenco.titolo = modo_ == ModoScad ? "LumoScad - Scadenze della partita" : "LumoScad - Scadenze extra";
  elenco.nomeLista = "LWScad";
  elenco.carattere = "Verdana";
  elenco.carattereTestate = "Verdana";
  elenco.righeSenzaScorrere = RigheInVista;
  elenco.colonne = {{"KSpunta", "", LarghezzaSpunta, Genere::Spunta},
                    {"KScadenza", "Scadenza", Larghezze[Scadenza], Genere::Testo},
                    {"KScadOrig", "Scad. orig.", Larghezze[ScadOrig], Genere::Testo},
                    {"KImporto", "Importo", Larghezze[Importo], Genere::Importo},
                    {"KNuovaScadenza", "Nuova scadenza", Larghezze[NuovaScadenza], Genere::EditorData, Scadenza + 1}};
  elenco.campoData = "Nuova scadenza";
  finestra.descrizione = {{{"LabelPartita", "Partita:"}, {"LabelDescPartita", LabelDescPartita}},
                          {{"LabelCliFor", "Cliente/Fornitore:"}, {"LabelDescCliFor", LabelDescCliFor}}};
  finestra.congedo = {"Label1", "Questa FormLumoScad non viene piu' utilizzata !!!  Ciao, a presto !!"};
  finestra.carattereCongedo = "MS Sans Serif";
  CollegaLettura(elenco);
  CollegaGesti(finestra);
  return finestra;
}

void FormLumoScad::CollegaLettura(FinestraElenco& elenco) {
  elenco.righe = [this] { return Righe.Quante(); };
  elenco.testo = [this](std::size_t riga, int colonna) {
    return colonna == 0 ? std::string_view() : Righe.Testo(riga, colonna - 1);
  };
  elenco.spuntata = [this](std::size_t riga, int) { return Righe.Spuntata(riga, 0); };
  elenco.stato = [this]() -> const StatoElenco& { return stato_; };
}

void FormLumoScad::CollegaGesti(FinestraScadenzario& finestra) {
  FinestraElenco& elenco = finestra.elenco;
  elenco.seleziona = [this](std::ptrdiff_t riga) { Seleziona(riga); };
  elenco.clic = [this](int topRiga) { LWScad_Click(topRiga); };
  elenco.testoEditor = [this](std::string_view testo) { TextScad_Change(testo); };
  elenco.tastoEditor = [this](int codice) { TextScad_KeyPress(codice); };
  elenco.abbandonaEditor = [this] { AbbandonaEditor(); };
  elenco.testoScadenza = [this](std::string_view testo) { TextScadenza_Change(testo); };
  elenco.conferma = [this] { PictureOk_Click(); };
  elenco.annulla = [this] { PictureAnnulla_Click(); };
  elenco.chiudi = [this] { Form_QueryUnload(); };
  finestra.stato = [this]() -> const StatoScadenzario& { return finestra_; };
  finestra.spunta = [this](std::size_t riga) { LWScad_ItemCheck(riga, !Righe.Spuntata(riga, 0)); };
  finestra.selezionaTutto = [this] { PicSelezionaTutto_Click(); };
  finestra.perdeFuocoEditor = [this] { TextScad_LostFocus(); };
  finestra.perdeFuocoScadenza = [this] { TextScadenza_LostFocus(); };
}

} // namespace lumoscad
