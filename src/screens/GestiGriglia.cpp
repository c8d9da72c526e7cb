// Many rows at once: selecting them, and giving them ticks, dates and banks.

#include "screens/GestiGriglia.hpp"

#include "common/Testo.hpp"
#include "common/Utilities.hpp"
#include "screens/Griglia.hpp"

#include <algorithm>
#include <iterator>
#include <unordered_map>
#include <utility>

namespace lumoscad {

GestoGriglia::GestoGriglia(Griglia& griglia, std::string_view nome, Nome come) : griglia_(griglia), nome_(nome) {
  griglia.passi_.Comincia(nome, come == Nome::ConRighe,
                          come == Nome::Unibile ? PassiGriglia::Unione::ConPrecedente : PassiGriglia::Unione::Nessuna,
                          griglia.InAlto());
  griglia.stato_.notice.clear();
}

GestoGriglia::~GestoGriglia() {
  griglia_.passi_.Chiudi(griglia_.InAlto());
  if (!griglia_.passi_.Aperto()) {
    griglia_.AvvisaNonInVista(nome_);
  }
}

bool GestiGriglia::SelezioneMultipla() const {
  return !griglia_.descrizione_.caselle;
}

bool GestiGriglia::Scelta(std::size_t posto) const {
  return posto < griglia_.Visibili() && griglia_.scelta_.Contiene(griglia_.RigaVisibile(posto));
}

std::vector<ListGestures::Places> GestiGriglia::Scelte() const {
  return griglia_.scelta_.Posti();
}

std::size_t GestiGriglia::QuanteScelte() const {
  return griglia_.scelta_.Quante();
}

std::size_t GestiGriglia::RigheTotali() const {
  return griglia_.righe.Quante();
}

std::size_t GestiGriglia::RigheInVista() const {
  return griglia_.Visibili();
}

std::size_t GestiGriglia::QuanteVariate() const {
  return griglia_.ElencoVariate().size();
}

std::size_t GestiGriglia::VariateNonInVista() const {
  const auto variate = griglia_.ElencoVariate();
  return static_cast<std::size_t>(
      std::count_if(variate.begin(), variate.end(), [this](std::size_t riga) { return !griglia_.InVista(riga); }));
}

bool GestiGriglia::SuMolte() const {
  const SelezioneGriglia& scelta = griglia_.scelta_;
  const auto riga = griglia_.RigaSelezionata();
  if (!SelezioneMultipla() || scelta.Quante() < 2 || !riga || !scelta.Contiene(*riga)) {
    return false;
  }
  return !griglia_.vista_.Ristretta() || scelta.InVistaPerNumero().size() > 1;
}

bool GestiGriglia::ColonnaAttiva(int colonna) const {
  const DescrizioneGriglia& d = griglia_.descrizione_;
  return colonna == d.colonnaSpunta1 || colonna == d.colonnaSpunta2 || colonna == d.data.colonna ||
         colonna == d.banca.colonna;
}

std::optional<int> GestiGriglia::SpuntaDellaColonna(int colonna) const {
  const DescrizioneGriglia& d = griglia_.descrizione_;
  if (colonna == d.colonnaSpunta1) {
    return 0;
  }
  return colonna == d.colonnaSpunta2 ? std::optional(1) : std::nullopt;
}

RowPress GestiGriglia::Premi(std::size_t posto, int x, HeldKeys tasti) {
  trascinata_ = false;
  premuta_.reset();
  if (!SelezioneMultipla() || posto >= griglia_.Visibili()) {
    return RowPress::Plain;
  }
  const std::size_t riga = griglia_.RigaVisibile(posto);
  const int colonna = griglia_.TrovaCoordinate(x);
  if (tasti.shift || tasti.control) {
    if (tasti.shift && !tasti.control && SpuntaDellaColonna(colonna)) {
      SpuntaFinoA(posto, colonna);
    } else {
      griglia_.Form_Click();
      Scegli(riga, tasti);
    }
    return RowPress::Done;
  }
  premuta_ = riga;
  colonnaPremuta_ = colonna;
  if (griglia_.scelta_.Quante() > 1 && griglia_.scelta_.Contiene(riga) && ColonnaAttiva(colonna)) {
    Corrente(riga);
    return RowPress::Kept;
  }
  return RowPress::Plain;
}

void GestiGriglia::Scegli(std::size_t riga, HeldKeys tasti) {
  if (tasti.shift) {
    griglia_.scelta_.Estendi(riga, tasti.control);
  } else {
    griglia_.scelta_.Cambia(riga);
  }
  Corrente(riga);
}

void GestiGriglia::Corrente(std::size_t riga) {
  griglia_.PortaA(riga);
  griglia_.SegnaSelezione();
}

void GestiGriglia::Trascina(std::size_t posto) {
  if (!premuta_ || posto >= griglia_.Visibili()) {
    return;
  }
  const std::size_t riga = griglia_.RigaVisibile(posto);
  if (!trascinata_) {
    if (riga == *premuta_) {
      return;
    }
    trascinata_ = true;
    griglia_.scelta_.Solo(*premuta_);
  }
  griglia_.scelta_.Estendi(riga, false);
  Corrente(riga);
}

void GestiGriglia::Rilascia() {
  const auto premuta = std::exchange(premuta_, std::nullopt);
  if (!std::exchange(trascinata_, false) || !premuta) {
    return;
  }
  griglia_.Form_Click();
  const auto quale = SpuntaDellaColonna(colonnaPremuta_);
  const auto riga = griglia_.RigaSelezionata();
  if (quale && riga) {
    SpuntaRighe(Tratto(*premuta, *riga), *quale, !griglia_.righe.Spuntata(*premuta, *quale));
  }
}

bool GestiGriglia::EditorDiMolte() const {
  return !griglia_.molteInModifica_.empty();
}

void GestiGriglia::Vai(std::size_t posto, HeldKeys tasti) {
  if (posto >= griglia_.Visibili()) {
    return;
  }
  const std::size_t riga = griglia_.RigaVisibile(posto);
  if (tasti.shift && SelezioneMultipla()) {
    Scegli(riga, tasti);
  } else if (tasti.control && SelezioneMultipla()) {
    Corrente(riga);
  } else {
    griglia_.Seleziona(static_cast<std::ptrdiff_t>(posto));
  }
}

void GestiGriglia::Annulla() {
  griglia_.Annulla();
}

void GestiGriglia::Rifai() {
  griglia_.Rifai();
}

std::string GestiGriglia::DaAnnullare() const {
  const PassoGriglia* const passo = griglia_.passi_.DaAnnullare();
  return passo == nullptr ? std::string() : griglia_.NomePasso(*passo);
}

std::string GestiGriglia::DaRifare() const {
  const PassoGriglia* const passo = griglia_.passi_.DaRifare();
  return passo == nullptr ? std::string() : griglia_.NomePasso(*passo);
}

std::vector<std::size_t> GestiGriglia::Tratto(std::size_t riga, std::size_t altra) const {
  const auto primo = griglia_.vista_.Posto(riga);
  const auto secondo = griglia_.vista_.Posto(altra);
  std::vector<std::size_t> righe;
  if (primo && secondo) {
    for (std::size_t posto = std::min(*primo, *secondo); posto <= std::max(*primo, *secondo); ++posto) {
      righe.push_back(griglia_.RigaVisibile(posto));
    }
  }
  return righe;
}

void GestiGriglia::SpuntaFinoA(std::size_t posto, int colonna) {
  const auto quale = SpuntaDellaColonna(colonna);
  if (!SelezioneMultipla() || !quale || posto >= griglia_.Visibili()) {
    return;
  }
  griglia_.Form_Click();
  const std::size_t riga = griglia_.RigaVisibile(posto);
  const std::size_t ancora = griglia_.scelta_.Ancora().value_or(riga);
  if (ancora != riga && griglia_.InVista(ancora)) {
    SpuntaRighe(Tratto(ancora, riga), *quale, griglia_.righe.Spuntata(ancora, *quale));
  }
  Corrente(riga);
}

void GestiGriglia::CambiaCheck(std::string_view chiave) {
  const auto riga = griglia_.RigaSelezionata();
  if (riga) {
    const int quale = griglia_.QualeSpunta(chiave);
    SpuntaRighe(griglia_.scelta_.InVista(), quale, !griglia_.righe.Spuntata(*riga, quale));
  }
}

void GestiGriglia::SpuntaRighe(const std::vector<std::size_t>& righe, int quale, bool spunta) {
  if (!griglia_.Modificabile()) {
    return;
  }
  const GestoGriglia gesto(griglia_, spunta ? "spunta" : "spunta tolta");
  std::vector<std::size_t> altrimenti;
  std::copy_if(righe.begin(), righe.end(), std::back_inserter(altrimenti),
               [&](std::size_t riga) { return griglia_.righe.Spuntata(riga, quale) != spunta; });
  if (quale == griglia_.descrizione_.banca.spunta) {
    griglia_.SpuntaBanche(altrimenti, spunta);
  } else {
    if (spunta && !DataInAltoBuona()) {
      return;
    }
    for (const std::size_t riga : altrimenti) {
      griglia_.ScriviData(riga, spunta);
    }
  }
  griglia_.Cambiata();
  Avvisa(righe, spunta ? EsitoSpunta(quale) : "spunta tolta");
}

/// What the rows got whose tick `quale` was set: the bank or the date at the top.
std::string GestiGriglia::EsitoSpunta(int quale) const {
  if (quale == griglia_.descrizione_.banca.spunta) {
    return EsitoBanca(griglia_.stato_.bankIndex, griglia_.cmbBanche);
  }
  const std::string& data = griglia_.stato_.dueDateText;
  return MaggioreDiSpazio(data) ? griglia_.descrizione_.nomeData + " " + data : "spunta";
}

std::string GestiGriglia::EsitoBanca(int indice, const BancheCombo& combo) {
  return indice > 0 ? "banca " + combo.voci[static_cast<std::size_t>(indice)] : "banca tolta";
}

/// Checks the date at the top once for all rows that it is for. One that is refused stays as it was typed.
bool GestiGriglia::DataInAltoBuona() {
  std::string& testo = griglia_.stato_.dueDateText;
  if (!MaggioreDiSpazio(testo)) {
    if (griglia_.descrizione_.data.soloConData) {
      griglia_.Avvisa("Nessuna spunta: scrivi prima la data in alto");
    }
    return !griglia_.descrizione_.data.soloConData;
  }
  std::string data = Utilities::ControllaData(griglia_.DataEspansa(testo));
  if (!MaggioreDiSpazio(data)) {
    griglia_.Avvisa("Nessuna variazione: la data in alto non è valida");
    return false;
  }
  testo = std::move(data);
  return true;
}

void GestiGriglia::DaiData(const std::vector<std::size_t>& righe, const std::string& testo) {
  const GestoGriglia gesto(griglia_, griglia_.descrizione_.nomeData);
  const bool scritta = MaggioreDiSpazio(testo);
  std::unordered_map<std::string, std::string> controllate;
  std::vector<const std::string*> nuove;
  const bool diOgnuna = griglia_.DataEspansa(testo) != testo; // a short form, which counts from each row's own date
  for (const std::size_t riga : righe) {
    if (!scritta) {
      break;
    }
    if (!diOgnuna && !nuove.empty()) {
      nuove.assign(righe.size(), nuove.front());
      break;
    }
    const auto [controllata, prima] = controllate.try_emplace(griglia_.DataEspansa(testo, riga));
    if (prima) {
      controllata->second = Utilities::ControllaDataSenzaMessaggi(controllata->first);
    }
    if (!MaggioreDiSpazio(controllata->second)) {
      static_cast<void>(Utilities::ControllaData(controllata->first)); // says what is wrong with it, once for all
      griglia_.Avvisa("Nessuna variazione: la data scritta non è valida");
      return;
    }
    nuove.push_back(&controllata->second);
  }
  for (std::size_t i = 0; i < righe.size(); ++i) {
    griglia_.ScriviTesto(righe[i], griglia_.descrizione_.data.colonna,
                         scritta ? std::string_view(*nuove[i]) : griglia_.DataTolta(righe[i]));
  }
  griglia_.Cambiata();
  const std::string& nome = griglia_.descrizione_.nomeData;
  Avvisa(righe, !scritta                  ? nome + " come prima"
                : controllate.size() == 1 ? nome + " " + *nuove.front()
                                          : nome + " " + testo);
}

void GestiGriglia::DaiBanca(const std::vector<std::size_t>& righe, int indice) {
  const NuovaBancaGriglia& banca = griglia_.descrizione_.banca;
  const BancheCombo& combo = banca.codiciInAlto ? griglia_.cmbBanche : griglia_.cmbBanche2;
  const GestoGriglia gesto(griglia_, "banca");
  for (const std::size_t riga : righe) {
    griglia_.ScriviSpunta(riga, banca.spunta, true);
  }
  griglia_.AssegnaBanca(righe, indice, combo);
  griglia_.Cambiata();
  Avvisa(righe, EsitoBanca(indice, combo));
}

void GestiGriglia::DaiBancaInAlto() {
  const auto righe = griglia_.scelta_.InVista();
  const int indice = griglia_.stato_.bankIndex;
  const GestoGriglia gesto(griglia_, "banca");
  griglia_.AssegnaBanca(righe, indice, griglia_.cmbBanche);
  griglia_.Cambiata();
  Avvisa(righe, EsitoBanca(indice, griglia_.cmbBanche));
}

void GestiGriglia::Annuncia(std::size_t righe) {
  griglia_.Avvisa("Il valore vale per " + griglia_.QuanteRighe(righe));
}

void GestiGriglia::Avvisa(const std::vector<std::size_t>& righe, std::string_view esito) {
  const InsiemeRighe& mosse = griglia_.passi_.Mosse();
  const auto ferme = static_cast<std::size_t>(
      std::count_if(righe.begin(), righe.end(), [&](std::size_t riga) { return !mosse.Contiene(riga); }));
  std::string avviso = griglia_.QuanteRighe(mosse.Quante());
  avviso.append(": ").append(esito);
  if (ferme > 0) {
    avviso += "; " + Migliaia(ferme) + " già così";
  }
  griglia_.Avvisa(avviso + griglia_.NonInVista(mosse));
}

} // namespace lumoscad
