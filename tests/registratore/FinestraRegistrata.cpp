#include "FinestraRegistrata.hpp"

#include <algorithm>

namespace lumoscad::prova {
namespace {

/// Longer lists are written by their first rows and a digest of them all.
constexpr std::size_t RigheIntere = 12;
constexpr std::size_t RigheDiAssaggio = 3;

std::string SiNo(bool valore) {
  return valore ? "sì" : "no";
}

std::string Numero(long long valore) {
  return std::to_string(valore);
}

std::string Editor(const EditorCella& editor) {
  if (!editor.visibile) {
    return "chiuso";
  }
  return "aperto alto " + Numero(editor.alto) + " sinistra " + Numero(editor.sinistra) + " larghezza " +
         Numero(editor.larghezza) + " testo " + Cita(editor.testo) + " indice " + Numero(editor.indice);
}

std::string Unite(const std::vector<std::string>& parti, std::string_view separatore) {
  std::string testo;
  for (std::size_t i = 0; i < parti.size(); ++i) {
    testo.append(i == 0 ? "" : separatore).append(parti[i]);
  }
  return testo;
}

} // namespace

void FinestraRegistrata::Seleziona(std::ptrdiff_t riga) {
  Gesto("seleziona " + Numero(riga), [&] { vera_.Seleziona(riga); });
}

void FinestraRegistrata::LVScadenze_MouseDown(int x, int y) {
  Gesto("preme il mouse su " + ColonnaSotto(x), [&] { vera_.LVScadenze_MouseDown(x, y); });
}

void FinestraRegistrata::LVScadenze_Click(int topRiga) {
  Gesto("clic alto " + Numero(topRiga), [&] { vera_.LVScadenze_Click(topRiga); });
}

void FinestraRegistrata::LVScadenze_ItemCheck(std::size_t riga) {
  Gesto("spunta " + Numero(static_cast<long long>(riga)), [&] { vera_.LVScadenze_ItemCheck(riga); });
}

void FinestraRegistrata::TLwTestata_Click(int indice) {
  Gesto("clic testata " + Numero(indice), [&] { vera_.TLwTestata_Click(indice); });
}

void FinestraRegistrata::Form_Click() {
  Gesto("clic fuori", [&] { vera_.Form_Click(); });
}

void FinestraRegistrata::TextScad_Change(std::string_view testo) {
  Gesto("scrive nella cella " + Cita(testo), [&] { vera_.TextScad_Change(testo); });
}

void FinestraRegistrata::TextScad_KeyPress(int codice) {
  Gesto("tasto nella cella " + Numero(codice), [&] { vera_.TextScad_KeyPress(codice); });
}

void FinestraRegistrata::TextScad_LostFocus() {
  Gesto("lascia la cella", [&] { vera_.TextScad_LostFocus(); });
}

void FinestraRegistrata::cmbBanche2_Click(int indice) {
  Gesto("banca nella cella " + Numero(indice), [&] { vera_.cmbBanche2_Click(indice); });
}

void FinestraRegistrata::cmbBanche2_LostFocus() {
  Gesto("lascia la banca della cella", [&] { vera_.cmbBanche2_LostFocus(); });
}

void FinestraRegistrata::AbbandonaEditor() {
  Gesto("abbandona l'editor", [&] { vera_.AbbandonaEditor(); });
}

void FinestraRegistrata::TextScadenza_Change(std::string_view testo) {
  Gesto("scrive in alto " + Cita(testo), [&] { vera_.TextScadenza_Change(testo); });
}

void FinestraRegistrata::TextScadenza_Click() {
  Gesto("clic sulla data in alto", [&] { vera_.TextScadenza_Click(); });
}

void FinestraRegistrata::TextScadenza_LostFocus() {
  Gesto("lascia la data in alto", [&] { vera_.TextScadenza_LostFocus(); });
}

void FinestraRegistrata::cmbBanche_Click(int indice) {
  Gesto("banca in alto " + Numero(indice), [&] { vera_.cmbBanche_Click(indice); });
}

void FinestraRegistrata::PictureOk_Click() {
  Gesto("Conferma", [&] { vera_.PictureOk_Click(); });
}

void FinestraRegistrata::PictureAnnulla_Click() {
  Gesto("Annulla", [&] { vera_.PictureAnnulla_Click(); });
}

void FinestraRegistrata::Form_QueryUnload() {
  Gesto("chiude la finestra", [&] { vera_.Form_QueryUnload(); });
}

std::string FinestraRegistrata::ColonnaSotto(int x) const {
  int fine = 0;
  for (const auto& colonna : vera_.Description().colonne) {
    fine += colonna.larghezza;
    if (x < fine) {
      return colonna.chiave;
    }
  }
  return "niente";
}

std::vector<std::string> FinestraRegistrata::Riga(std::size_t riga) const {
  std::vector<std::string> celle;
  for (int colonna = 0; colonna < static_cast<int>(vera_.Description().colonne.size()); ++colonna) {
    const bool spunta =
        vera_.Description().colonne[static_cast<std::size_t>(colonna)].genere == ColonnaElenco::Genere::Spunta;
    celle.push_back(spunta ? (vera_.Ticked(riga, colonna) ? "[x]" : "[ ]")
                           : std::string(vera_.CellText(riga, colonna)));
  }
  return celle;
}

FinestraRegistrata::Aspetto FinestraRegistrata::Guarda() const {
  const StatoElenco& stato = vera_.Stato();
  Aspetto aspetto;
  aspetto.stato = {"riga selezionata " + Numero(stato.selezionata),
                   "editor della data " + Editor(stato.data),
                   "editor della banca " + Editor(stato.banca),
                   "data in alto " + Cita(stato.testoScadenza),
                   "banca in alto " + Numero(stato.indiceBanca),
                   "testata ordinata " + Numero(stato.testataOrdinata) + (stato.crescente ? " crescente" : " calante"),
                   "barrette nascoste " + SiNo(stato.barretteNascoste),
                   "lista " + Numero(stato.larghezzaLista) + " x " + Numero(stato.altezzaLista),
                   "scaricata " + SiNo(stato.scaricata)};
  if (item_ != nullptr) {
    const StatoScadenzario& suo = item_->Stato();
    aspetto.stato.push_back("PicSelezionaTutto " + Cita(suo.selezionaTutto));
    aspetto.stato.push_back("descrizione visibile " + SiNo(suo.descrizioneVisibile));
    aspetto.stato.push_back("primo piano " + SiNo(suo.primoPiano));
  }
  for (std::size_t riga = 0; riga < vera_.RowCount(); ++riga) {
    aspetto.righe.push_back(Unite(Riga(riga), "|"));
  }
  return aspetto;
}

void FinestraRegistrata::Descrivi() {
  std::vector<std::string> testo{"finestra " + vera_.Description().nome + " " + Cita(vera_.Description().titolo) +
                                 " lista " + vera_.Description().nomeLista + " carattere " +
                                 Cita(vera_.Description().carattere) + " righe senza scorrere " +
                                 Numero(vera_.Description().righeSenzaScorrere)};
  for (const auto& colonna : vera_.Description().colonne) {
    testo.push_back("  colonna " + colonna.chiave + " " + Cita(colonna.intestazione) + " larga " +
                    Numero(colonna.larghezza) + " genere " + Numero(static_cast<int>(colonna.genere)) + " attuale " +
                    Numero(colonna.attuale));
  }
  for (const auto& testata : vera_.Description().testate) {
    testo.push_back("  testata " + Numero(testata.indice) + " " + Cita(testata.testo) + " colonne " +
                    Numero(testata.prima) + "-" + Numero(testata.ultima) + " sinistra " + Numero(testata.sinistra) +
                    " larga " + Numero(testata.larghezza) + (testata.ordina ? " ordina" : ""));
  }
  for (const auto& etichetta : vera_.Description().etichette) {
    testo.push_back("  etichetta " + etichetta.nome + " " + Cita(etichetta.testo));
  }
  for (const auto& riga : item_ != nullptr ? item_->Description().descrizione : std::vector<RigaDescrizione>()) {
    testo.push_back("  descrizione " + riga.didascalia.nome + " " + Cita(riga.didascalia.testo) + " " +
                    riga.valore.nome + " " + Cita(riga.valore.testo));
  }
  testo.push_back(
      "  campo della data " + (vera_.Description().campoData ? Cita(*vera_.Description().campoData) : "assente") +
      ", della banca " + (vera_.Description().campoBanca ? Cita(*vera_.Description().campoBanca) : "assente"));
  testo.push_back("  banche " + Unite(vera_.Description().banche, "|"));
  testo.push_back("  banche della cella " + (vera_.Description().bancheCella == vera_.Description().banche
                                                 ? "le stesse"
                                                 : Unite(vera_.Description().bancheCella, "|")));
  registro_.AnnotaUnaVolta(testo);
  const Aspetto aspetto = Guarda();
  registro_.Annota("  stato " + Unite(aspetto.stato, ", "));
  DescriviRighe(aspetto.righe);
}

void FinestraRegistrata::DescriviRighe(const std::vector<std::string>& righe) {
  const bool intere = righe.size() <= RigheIntere;
  registro_.Annota("  righe: " + Numero(static_cast<long long>(righe.size())) +
                   (intere ? "" : " impronta " + Impronta(Unite(righe, "\n"))));
  for (std::size_t riga = 0; riga < (intere ? righe.size() : RigheDiAssaggio); ++riga) {
    registro_.Annota("    " + Numero(static_cast<long long>(riga)) + " " + righe[riga]);
  }
}

void FinestraRegistrata::Differenze(const Aspetto& prima, const Aspetto& dopo) {
  for (std::size_t i = 0; i < dopo.stato.size(); ++i) {
    if (prima.stato[i] != dopo.stato[i]) {
      registro_.Annota("    " + dopo.stato[i]);
    }
  }
  if (prima.righe == dopo.righe) {
    return;
  }
  auto ordinate = prima.righe;
  auto nuove = dopo.righe;
  std::sort(ordinate.begin(), ordinate.end());
  std::sort(nuove.begin(), nuove.end());
  if (ordinate == nuove || prima.righe.size() != dopo.righe.size()) {
    DescriviRighe(dopo.righe);
    return;
  }
  for (std::size_t riga = 0; riga < dopo.righe.size(); ++riga) {
    if (prima.righe[riga] != dopo.righe[riga]) {
      registro_.Annota("    riga " + Numero(static_cast<long long>(riga)) + " " + dopo.righe[riga]);
    }
  }
}

void FinestraRegistrata::Gesto(const std::string& quale, const std::function<void()>& azione) {
  const Aspetto prima = Guarda();
  registro_.Annota("  gesto: " + quale);
  azione();
  Differenze(prima, Guarda());
}

} // namespace lumoscad::prova
