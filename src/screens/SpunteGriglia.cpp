// What the ticks of a row and the fields at the top write into the rows.

#include "common/Testo.hpp"
#include "common/Utilities.hpp"
#include "screens/Griglia.hpp"

#include <unordered_set>

namespace lumoscad {

int Griglia::QualeSpunta(std::string_view chiave) const {
  return chiave == "RADIO2" && descrizione_.colonnaSpunta2 >= 0 ? 1 : 0;
}

std::string_view Griglia::TestoPresente(std::size_t riga, int colonna) const {
  return righe.Testo(riga, descrizione_.colonne[static_cast<std::size_t>(colonna)].present);
}

void Griglia::CambiaCheck(std::string_view chiave) {
  const auto riga = Modificabile() ? RigaSelezionata() : std::nullopt;
  if (!riga) {
    return;
  }
  const int quale = QualeSpunta(chiave);
  const bool spunta = !righe.Spuntata(*riga, quale);
  const GestoGriglia gesto(*this, spunta ? "spunta" : "spunta tolta");
  if (quale == descrizione_.banca.spunta) {
    SpuntaBanche({*riga}, spunta);
  } else {
    SpuntaData(*riga, spunta);
  }
  Cambiata();
}

void Griglia::DeselezionaTutto(std::string_view chiave) {
  if (!Modificabile()) {
    return;
  }
  const GestoGriglia gesto(*this, "spunte tolte");
  for (std::size_t riga = 0; riga < righe.Quante(); ++riga) {
    ScriviSpunta(riga, QualeSpunta(chiave), false);
  }
  Cambiata();
}

void Griglia::SpuntaData(std::size_t riga, bool spunta) {
  if (spunta) {
    if (MaggioreDiSpazio(stato_.dueDateText)) {
      stato_.dueDateText = Utilities::ControllaData(DataEspansa(stato_.dueDateText));
    }
    if (descrizione_.data.soloConData && !MaggioreDiSpazio(stato_.dueDateText)) {
      return;
    }
  }
  ScriviData(riga, spunta);
}

/// The row gets the date at the top as it stands there, or loses its own.
void Griglia::ScriviData(std::size_t riga, bool spunta) {
  ScriviTesto(riga, descrizione_.data.colonna, spunta ? std::string_view(stato_.dueDateText) : DataTolta(riga));
  ScriviSpunta(riga, 0, spunta);
}

std::string_view Griglia::DataTolta(std::size_t riga) const {
  return descrizione_.data.senza == SenzaData::Presente ? TestoPresente(riga, descrizione_.data.colonna)
                                                        : std::string_view();
}

void Griglia::SpuntaCasella(std::size_t riga, bool spuntata) {
  const GestoGriglia gesto(*this, spuntata ? "spunta" : "spunta tolta");
  ScriviSpunta(riga, 0, spuntata);
  std::string nuova;
  if (MaggioreDiSpazio(stato_.dueDateText)) {
    nuova = Utilities::ControllaData(DataEspansa(stato_.dueDateText));
  }
  ScriviTesto(riga, descrizione_.data.colonna, spuntata ? nuova : std::string());
  Cambiata();
}

void Griglia::TextScadenza_Change(std::string_view testo) {
  const GestoGriglia gesto(*this, "data in alto", GestoGriglia::Nome::Unibile);
  stato_.dueDateText = testo;
  if (descrizione_.caselle) {
    DeselezionaTutto("RADIO1"); // the dates that the ticks copied stay in their rows
  }
}

void Griglia::TextScadenza_Click() {
  const GestoGriglia gesto(*this, "spunte tolte");
  Form_Click();
  DeselezionaTutto("RADIO1");
}

void Griglia::TextScadenza_LostFocus() {
  if (!descrizione_.caselle) {
    return;
  }
  const std::string controllata = Utilities::ControllaData(DataEspansa(stato_.dueDateText));
  if (controllata != stato_.dueDateText) {
    TextScadenza_Change(controllata);
  }
}

void Griglia::EspandiTextScadenza() {
  if (!descrizione_.caselle) {
    stato_.dueDateText = DataEspansa(stato_.dueDateText);
  }
}

void Griglia::cmbBanche_Click(int indice) {
  const bool spunte = !descrizione_.banca.modoSpunte.empty() && modo == descrizione_.banca.modoSpunte;
  const GestoGriglia gesto(*this, spunte ? "banca in alto" : "banca",
                           spunte ? GestoGriglia::Nome::Solo : GestoGriglia::Nome::ConRighe);
  stato_.bankIndex = indice;
  if (!Modificabile()) {
    return;
  }
  if (spunte) {
    Form_Click();
    DeselezionaTutto("RADIO2");
  } else if (gesti_.SuMolte()) {
    gesti_.DaiBancaInAlto();
  } else if (const auto riga = RigaSelezionata()) {
    AssegnaBanca({*riga}, indice, cmbBanche);
    Cambiata();
  }
}

void Griglia::SpuntaBanche(const std::vector<std::size_t>& scelte, bool spunta) {
  const int quale = descrizione_.banca.spunta;
  if (spunta) {
    AssegnaBanca(scelte, stato_.bankIndex, cmbBanche);
    for (const std::size_t riga : scelte) {
      ScriviSpunta(riga, quale, true);
    }
    return;
  }
  for (const std::size_t riga : ConIGruppi(scelte)) {
    ScriviBanca(riga, "", BancaTolta(riga));
    ScriviSpunta(riga, quale, false);
  }
}

void Griglia::AssegnaBanca(const std::vector<std::size_t>& scelte, int indice, const BancheCombo& combo) {
  const NuovaBancaGriglia& banca = descrizione_.banca;
  if (banca.colonna < 0 || (!banca.modoAssegna.empty() && modo != banca.modoAssegna)) {
    return;
  }
  std::string_view codice(Nullo);
  std::string_view testo = "ANNULLA";
  if (indice > 0) {
    codice = combo.Codice(indice);
    testo = combo.voci[static_cast<std::size_t>(indice)];
  }
  for (const std::size_t riga : ConIGruppi(scelte)) {
    if (indice <= 0 && NienteDaTogliere(riga)) {
      // An earlier choice on the row must not stay in sight.
      ScriviBanca(riga, "", BancaTolta(riga));
    } else {
      ScriviBanca(riga, codice, testo);
    }
  }
}

bool Griglia::NienteDaTogliere(std::size_t riga) const {
  const NuovaBancaGriglia& banca = descrizione_.banca;
  return banca.gruppo >= 0
             ? righe.Testo(riga, banca.gruppo).empty()
             : righe.Tag(riga, descrizione_.colonne[static_cast<std::size_t>(banca.colonna)].present).empty();
}

std::string_view Griglia::BancaTolta(std::size_t riga) const {
  return descrizione_.banca.ripristina ? TestoPresente(riga, descrizione_.banca.colonna) : std::string_view();
}

std::vector<std::size_t> Griglia::ConIGruppi(const std::vector<std::size_t>& scelte) const {
  const int gruppo = descrizione_.banca.gruppo;
  if (gruppo < 0) {
    return scelte;
  }
  std::unordered_set<std::string_view> gruppi;
  for (const std::size_t riga : scelte) {
    gruppi.insert(righe.Testo(riga, gruppo));
  }
  std::vector<std::size_t> tutte;
  for (std::size_t riga = 0; riga < righe.Quante(); ++riga) {
    if (gruppi.contains(righe.Testo(riga, gruppo))) {
      tutte.push_back(riga);
    }
  }
  return tutte;
}

} // namespace lumoscad
