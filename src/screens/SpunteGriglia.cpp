// What the ticks of a row and the fields at the top write into the rows.

#include "common/Testo.hpp"
#include "common/Utilities.hpp"
#include "screens/Griglia.hpp"

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
  if (quale == descrizione_.banca.spunta) {
    SpuntaBanca(*riga, spunta);
  } else {
    SpuntaData(*riga, spunta);
  }
  Cambiata();
}

void Griglia::DeselezionaTutto(std::string_view chiave) {
  if (!Modificabile()) {
    return;
  }
  for (std::size_t riga = 0; riga < righe.Quante(); ++riga) {
    righe.ImpostaSpunta(riga, QualeSpunta(chiave), false);
  }
  Cambiata();
}

void Griglia::SpuntaData(std::size_t riga, bool spunta) {
  const NuovaDataGriglia& data = descrizione_.data;
  if (!spunta) {
    righe.ImpostaTesto(riga, data.colonna, DataTolta(riga));
    righe.ImpostaSpunta(riga, 0, false);
    return;
  }
  if (MaggioreDiSpazio(stato_.dueDateText)) {
    stato_.dueDateText = Utilities::ControllaData(DataEspansa(stato_.dueDateText));
  }
  if (data.soloConData && !MaggioreDiSpazio(stato_.dueDateText)) {
    return;
  }
  righe.ImpostaTesto(riga, data.colonna, stato_.dueDateText);
  righe.ImpostaSpunta(riga, 0, true);
}

std::string_view Griglia::DataTolta(std::size_t riga) const {
  return descrizione_.data.senza == SenzaData::Presente ? TestoPresente(riga, descrizione_.data.colonna)
                                                        : std::string_view();
}

void Griglia::SpuntaCasella(std::size_t riga, bool spuntata) {
  righe.ImpostaSpunta(riga, 0, spuntata);
  std::string nuova;
  if (MaggioreDiSpazio(stato_.dueDateText)) {
    nuova = Utilities::ControllaData(DataEspansa(stato_.dueDateText));
  }
  righe.ImpostaTesto(riga, descrizione_.data.colonna, spuntata ? nuova : std::string());
  Cambiata();
}

void Griglia::TextScadenza_Change(std::string_view testo) {
  stato_.dueDateText = testo;
  if (descrizione_.caselle) {
    DeselezionaTutto("RADIO1"); // the dates that the ticks copied stay in their rows
  }
}

void Griglia::TextScadenza_Click() {
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

void Griglia::cmbBanche_Click(int indice) {
  stato_.bankIndex = indice;
  if (!Modificabile()) {
    return;
  }
  if (!descrizione_.banca.modoSpunte.empty() && modo == descrizione_.banca.modoSpunte) {
    Form_Click();
    DeselezionaTutto("RADIO2");
  } else if (const auto riga = RigaSelezionata()) {
    AssegnaBanca(*riga, indice, cmbBanche);
    Cambiata();
  }
}

void Griglia::SpuntaBanca(std::size_t riga, bool spunta) {
  const int quale = descrizione_.banca.spunta;
  if (spunta) {
    AssegnaBanca(riga, stato_.bankIndex, cmbBanche);
    righe.ImpostaSpunta(riga, quale, true);
    return;
  }
  for (const std::size_t altra : RigheDelGruppo(riga)) {
    ScriviBanca(altra, "", BancaTolta(altra));
    righe.ImpostaSpunta(altra, quale, false);
  }
}

void Griglia::AssegnaBanca(std::size_t riga, int indice, const BancheCombo& combo) {
  const NuovaBancaGriglia& banca = descrizione_.banca;
  if (banca.colonna < 0 || (!banca.modoAssegna.empty() && modo != banca.modoAssegna)) {
    return;
  }
  std::string codice(Nullo);
  std::string testo = "ANNULLA";
  if (indice > 0) {
    codice = combo.Codice(indice);
    testo = combo.voci[static_cast<std::size_t>(indice)];
  } else if (NienteDaTogliere(riga)) {
    // An earlier choice on the row must not stay in sight.
    codice.clear();
    testo = BancaTolta(riga);
  }
  for (const std::size_t altra : RigheDelGruppo(riga)) {
    ScriviBanca(altra, codice, testo);
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

void Griglia::ScriviBanca(std::size_t riga, std::string_view codice, std::string_view testo) {
  righe.ImpostaTag(riga, descrizione_.banca.colonna, codice);
  righe.ImpostaTesto(riga, descrizione_.banca.colonna, testo);
}

std::vector<std::size_t> Griglia::RigheDelGruppo(std::size_t riga) const {
  const int gruppo = descrizione_.banca.gruppo;
  if (gruppo < 0) {
    return {riga};
  }
  std::vector<std::size_t> delGruppo;
  const std::string_view testo = righe.Testo(riga, gruppo);
  for (std::size_t altra = 0; altra < righe.Quante(); ++altra) {
    if (righe.Testo(altra, gruppo) == testo) {
      delGruppo.push_back(altra);
    }
  }
  return delGruppo;
}

} // namespace lumoscad
