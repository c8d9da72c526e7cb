#include "screens/FormLumoScad.hpp"

#include "common/Messaggi.hpp"
#include "common/Stato.hpp"
#include "platform/Services.hpp"

#include <utility>

namespace lumoscad {
namespace {

using Schermata = FormLumoScad;

constexpr std::string_view ModoScad = "Scad";
constexpr std::string_view ModoExtra = "Extra";
constexpr std::string_view TestoSeleziona = "Seleziona tutto";
constexpr std::string_view TestoDeseleziona = "Deseleziona tutto";
constexpr int Vero = -1; ///< True as a number in the calling program

DescrizioneGriglia Descrizione() {
  using Genere = ListColumn::Kind;
  DescrizioneGriglia d;
  d.nome = "FormLumoScad";
  d.nomeLista = "LWScad";
  d.carattere = "Verdana";
  d.righeSenzaScorrere = Schermata::RigheInVista;
  d.colonne = {{"KSpunta", "", 420, Genere::Tick},
               {"KScadenza", "Scadenza", 1800, Genere::Text},
               {"KScadOrig", "Scad. orig.", 1800, Genere::Text},
               {"KImporto", "Importo", 1950, Genere::Amount},
               {"KNuovaScadenza", "Nuova scadenza", 1950, Genere::DateEditor, Schermata::Scadenza}};
  d.campoData = "Nuova scadenza";
  d.colonneChiave = Schermata::Scadenza + 1;
  d.primaConChiave = true;
  d.colonnaSpunta1 = Schermata::Casella;
  d.caselle = true;
  d.data.colonna = Schermata::NuovaScadenza;
  d.data.senza = SenzaData::Vuota;
  d.data.tabChiude = false;
  d.data.fuocoChiude = true;
  d.data.ovunque = true;
  d.data.scarto = 60;
  d.colonnaScadenza = Schermata::Scadenza;
  d.colonnaImporto = Schermata::Importo;
  d.nomeRiga = "rata";
  d.nomeRighe = "rate";
  d.nomeData = "scadenza";
  return d;
}

} // namespace

FormLumoScad::FormLumoScad(Conferma conferma, Conferma confermaExtra)
    : griglia_(Descrizione()), conferma_(std::move(conferma)), confermaExtra_(std::move(confermaExtra)) {
  griglia_.ripreso = [this] { MostraSelezionaTutto(); };
  Svuota();
}

void FormLumoScad::Svuota() {
  griglia_.Azzera();
  LabelDescPartita.clear();
  LabelDescCliFor.clear();
  finestra_ = {};
  MostraSelezionaTutto();
}

/// The text tells what was done last, not what the next click will do.
void FormLumoScad::MostraSelezionaTutto() {
  finestra_.selectEverything = griglia_.aspetto == TutteTolte ? TestoDeseleziona : TestoSeleziona;
}

void FormLumoScad::Aggiungi(std::string_view scadenza, std::string_view originale, std::string_view importo) {
  griglia_.righe.Aggiungi({"", scadenza, originale, importo, ""});
}

std::string FormLumoScad::VisualizzaScad() {
  return Visualizza(ModoScad);
}

std::string FormLumoScad::VisualizzaExtra() {
  return Visualizza(ModoExtra);
}

std::string FormLumoScad::Visualizza(std::string_view modo) {
  griglia_.modo = modo;
  griglia_.titolo = modo == ModoScad ? "LumoScad - Scadenze della partita" : "LumoScad - Scadenze extra";
  risultato_.clear();
  confermaDopo_ = false;
  descrizione_.description = {{{"LabelPartita", "Partita:"}, {"LabelDescPartita", LabelDescPartita}},
                              {{"LabelCliFor", "Cliente/Fornitore:"}, {"LabelDescCliFor", LabelDescCliFor}}};
  descrizione_.farewell = {"Label1", "Questa FormLumoScad non viene piu' utilizzata !!!  Ciao, a presto !!"};
  descrizione_.farewellFont = "MS Sans Serif";
  finestra_.descriptionVisible = modo == ModoScad;
  ResizeScad();
  griglia_.Prepara();
  ActiveServices().desktop().ShowSingleItem(*this);
  if (!griglia_.Confermata()) {
    risultato_ = griglia_.MotivoChiusura();
  }
  if (confermaDopo_) {
    risultato_ = EseguiConferma();
  }
  return risultato_;
}

std::string FormLumoScad::EseguiConferma() const {
  return Modo() == ModoScad ? conferma_() : confermaExtra_();
}

void FormLumoScad::SetTopMostWindow(bool topmost) {
  finestra_.onTop = topmost;
}

void FormLumoScad::SetTopMostWindow(int topmost) {
  SetTopMostWindow(topmost == Vero);
}

void FormLumoScad::PicSelezionaTutto_Click() {
  // Exactly one blank, which the field holds once it was left without a date; a field never entered holds nothing,
  // and the rows are then ticked with an empty date.
  if (griglia_.Stato().dueDateText == " ") {
    MostraMessaggio("Inserisci una scadenza", "");
    return;
  }
  const GestoGriglia gesto(griglia_, "spunta di tutto", GestoGriglia::Nome::Solo);
  griglia_.aspetto = SelezionaTutto() ? TutteTolte : TutteMesse;
  for (std::size_t riga = 0; riga < griglia_.righe.Quante(); ++riga) {
    griglia_.SpuntaCasella(riga, SelezionaTutto());
  }
  MostraSelezionaTutto();
}

void FormLumoScad::PictureOk_Click() {
  TogliTextScad();
  if (stato().demoPresunti) {
    confermaDopo_ = true;
  } else {
    risultato_ = EseguiConferma();
  }
  griglia_.PictureOk_Click();
}

} // namespace lumoscad
