#include "FinestraRegistrata.hpp"

#include <algorithm>

namespace lumoscad::test {
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

std::string Editor(const CellEditor& editor) {
  if (!editor.visible) {
    return "chiuso";
  }
  return "aperto alto " + Numero(editor.top) + " sinistra " + Numero(editor.left) + " larghezza " +
         Numero(editor.width) + " testo " + Cita(editor.text) + " indice " + Numero(editor.index);
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
  for (const auto& colonna : vera_.Description().columns) {
    fine += colonna.width;
    if (x < fine) {
      return colonna.key;
    }
  }
  return "niente";
}

std::vector<std::string> FinestraRegistrata::Riga(std::size_t riga) const {
  std::vector<std::string> celle;
  for (int colonna = 0; colonna < static_cast<int>(vera_.Description().columns.size()); ++colonna) {
    const bool spunta = vera_.Description().columns[static_cast<std::size_t>(colonna)].kind == ListColumn::Kind::Tick;
    celle.push_back(spunta ? (vera_.Ticked(riga, colonna) ? "[x]" : "[ ]")
                           : std::string(vera_.CellText(riga, colonna)));
  }
  return celle;
}

FinestraRegistrata::Aspetto FinestraRegistrata::Guarda() const {
  const ListState& stato = vera_.Stato();
  Aspetto aspetto;
  aspetto.stato = {"riga selezionata " + Numero(stato.selected),
                   "editor della data " + Editor(stato.data),
                   "editor della banca " + Editor(stato.bank),
                   "data in alto " + Cita(stato.dueDateText),
                   "banca in alto " + Numero(stato.bankIndex),
                   "testata ordinata " + Numero(stato.sortedHeading) + (stato.ascending ? " crescente" : " calante"),
                   "barrette nascoste " + SiNo(stato.scrollBarsHidden),
                   "lista " + Numero(stato.listWidth) + " x " + Numero(stato.listHeight),
                   "scaricata " + SiNo(stato.unloaded)};
  if (item_ != nullptr) {
    const SingleItemState& suo = item_->Stato();
    aspetto.stato.push_back("PicSelezionaTutto " + Cita(suo.selectEverything));
    aspetto.stato.push_back("descrizione visibile " + SiNo(suo.descriptionVisible));
    aspetto.stato.push_back("primo piano " + SiNo(suo.onTop));
  }
  for (std::size_t riga = 0; riga < vera_.RowCount(); ++riga) {
    aspetto.righe.push_back(Unite(Riga(riga), "|"));
  }
  return aspetto;
}

void FinestraRegistrata::Descrivi() {
  std::vector<std::string> testo{"finestra " + vera_.Description().name + " " + Cita(vera_.Description().title) +
                                 " lista " + vera_.Description().listName + " carattere " +
                                 Cita(vera_.Description().fontName) + " righe senza scorrere " +
                                 Numero(vera_.Description().rowsWithoutScrolling)};
  for (const auto& colonna : vera_.Description().columns) {
    testo.push_back("  colonna " + colonna.key + " " + Cita(colonna.headingText) + " larga " + Numero(colonna.width) +
                    " genere " + Numero(static_cast<int>(colonna.kind)) + " attuale " + Numero(colonna.present));
  }
  for (const auto& testata : vera_.Description().headings) {
    testo.push_back("  testata " + Numero(testata.index) + " " + Cita(testata.text) + " colonne " +
                    Numero(testata.first) + "-" + Numero(testata.last) + " sinistra " + Numero(testata.left) +
                    " larga " + Numero(testata.width) + (testata.sorts ? " ordina" : ""));
  }
  for (const auto& etichetta : vera_.Description().labels) {
    testo.push_back("  etichetta " + etichetta.name + " " + Cita(etichetta.text));
  }
  for (const auto& riga : item_ != nullptr ? item_->Description().description : std::vector<DescriptionLine>()) {
    testo.push_back("  descrizione " + riga.caption.name + " " + Cita(riga.caption.text) + " " + riga.value.name + " " +
                    Cita(riga.value.text));
  }
  testo.push_back(
      "  campo della data " + (vera_.Description().dateField ? Cita(*vera_.Description().dateField) : "assente") +
      ", della banca " + (vera_.Description().bankField ? Cita(*vera_.Description().bankField) : "assente"));
  testo.push_back("  banche " + Unite(vera_.Description().banks, "|"));
  testo.push_back("  banche della cella " + (vera_.Description().cellBanks == vera_.Description().banks
                                                 ? "le stesse"
                                                 : Unite(vera_.Description().cellBanks, "|")));
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

} // namespace lumoscad::test
