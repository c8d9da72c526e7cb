#include "FinestraFinta.hpp"

#include "platform/qt/ListWindowQt.hpp"

#include <QApplication>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iomanip>
#include <sstream>

namespace lumoscad::test {

namespace {

using Genere = ListColumn::Kind;

constexpr std::array Clienti{"Rossi Ferramenta S.n.c.", "Oleificio Santa Chiara", "Bianchi & Figli S.r.l.",
                             "Cooperativa Agricola Val d'Orcia", "Tipografia Moretti"};
constexpr std::array Banche{"", "Banca del Garda", "Cassa di Risparmio della Lunigiana", "Credito Tirreno"};

std::string Data(std::size_t riga, std::size_t mesi) {
  std::ostringstream testo;
  testo << std::setfill('0') << std::setw(2) << riga % 28 + 1 << '/' << std::setw(2) << (riga / 28 + mesi) % 12 + 1
        << "/2006";
  return testo.str();
}

} // namespace

FinestraFinta::FinestraFinta(std::size_t quante) : righe(quante) {
  description.name = "frmLumoScadenzeBanche";
  description.title = "Scadenze";
  description.listName = "LVScadenzeBanche";
  description.fontName = "Verdana";
  description.headingFont = "Verdana";
  description.dateField = "Nuova scadenza";
  description.bankField = "Nuova banca";
  description.labels = {{"lblClienteFornitore", ""}, {"lblClienteFornitoreValue", ""}};
  description.banks = {" ", "Banca del Garda", "Cassa di Risparmio della Lunigiana", "Credito Tirreno"};
  description.cellBanks = description.banks;
  Colonne();
  stato.listWidth = Inizio(12) + 50;
  stato.pictureWidth = Inizio(12) + 100;
  stato.listHeight = static_cast<int>(std::min<std::size_t>(righe, 20)) * 240;
}

void FinestraFinta::Colonne() {
  description.columns = {{"KConto", "Conto", 3000, Genere::Text},
                         {"KPartita", "Partita", 1200, Genere::Text},
                         {"KScadenza", "Scadenza", 1350, Genere::Text},
                         {"KScadenzaOrig", "Scad. orig.", 1350, Genere::Text},
                         {"KBanca", "Banca", 2550, Genere::Text},
                         {"KImporto", "Importo", 1350, Genere::Amount},
                         {"KRadio1", "", 375, Genere::Tick},
                         {"KNuovaScadenza", "Nuova Scad", 1350, Genere::DateEditor, 2},
                         {"KNumeroRata1", "NumeroRata", 0, Genere::Text},
                         {"KRadio2", "", 375, Genere::Tick},
                         {"KNuovaBanca", "NuovaBanca", 2550, Genere::BankEditor, 4},
                         {"KScadenzaOrdinaData", "ScadenzaOrdinaData", 0, Genere::Text}};
  description.headings = {{1, "Conto", 0, 0, 0, 3000, true},       {2, "Partita", 1, 1, 3000, 1200, true},
                          {5, "Scadenza", 2, 2, 4200, 1350, true}, {3, "Scad Orig.", 3, 3, 5550, 1350, false},
                          {6, "Banca", 4, 4, 6900, 2550, true},    {4, "Importo", 5, 5, 9450, 1350, false}};
}

void FinestraFinta::Record(const std::string& gesture, const std::string& value) {
  gesti.push_back(value.empty() ? gesture : gesture + " " + value);
  const auto also = during.find(gesture);
  if (also != during.end()) {
    also->second();
  }
}

void FinestraFinta::Seleziona(std::ptrdiff_t riga) {
  Record("seleziona", std::to_string(riga));
  stato.selected = riga;
}

void FinestraFinta::LVScadenze_MouseDown(int x, int /*y*/) {
  Record("premeMouse");
  ultimaX = x;
}

void FinestraFinta::LVScadenze_ItemCheck(std::size_t riga) {
  Record("spunta", std::to_string(riga));
}

void FinestraFinta::TLwTestata_Click(int indice) {
  Record("clicTestata", std::to_string(indice));
  stato.ascending = stato.sortedHeading != indice || !stato.ascending;
  stato.sortedHeading = indice;
  inverso = !stato.ascending;
  ++stato.order;
}

void FinestraFinta::Form_Click() {
  Record("clicFuori");
  ChiudiEditor();
}

void FinestraFinta::PictureOk_Click() {
  Record("conferma");
  stato.unloaded = true;
}

void FinestraFinta::PictureAnnulla_Click() {
  Record("annulla");
  stato.unloaded = true;
}

void FinestraFinta::Form_QueryUnload() {
  Record("chiudi");
  stato.unloaded = true;
}

void FinestraFinta::TextScad_Change(std::string_view testo) {
  Record("testoEditor", std::string(testo));
  stato.data.text = testo;
}

void FinestraFinta::TextScad_KeyPress(int codice) {
  Record("tastoEditor", std::to_string(codice));
  nuovaData = stato.data.text;
  ChiudiEditor();
}

void FinestraFinta::TextScad_LostFocus() {
  Record("perdeFuocoEditor");
}

void FinestraFinta::cmbBanche2_Click(int indice) {
  Record("scegliBancaCella", std::to_string(indice));
  stato.bank.index = indice;
}

void FinestraFinta::cmbBanche2_LostFocus() {
  Record("perdeFuocoBancaCella");
  stato.bank.visible = false;
  ++stato.content;
}

void FinestraFinta::AbbandonaEditor() {
  Record("abbandonaEditor");
  ChiudiEditor();
}

void FinestraFinta::TextScadenza_Change(std::string_view testo) {
  Record("testoScadenza", std::string(testo));
  stato.dueDateText = testo;
}

void FinestraFinta::TextScadenza_Click() {
  Record("clicScadenza");
}

void FinestraFinta::TextScadenza_LostFocus() {
  Record("perdeFuocoScadenza");
}

void FinestraFinta::cmbBanche_Click(int indice) {
  Record("scegliBanca", std::to_string(indice));
  stato.bankIndex = indice;
}

void FinestraFinta::LVScadenze_Click(int alto) {
  Record("clic", std::to_string(alto));
  ChiudiEditor();
  int colonna = 0;
  while (colonna < 12 && ultimaX >= Inizio(colonna + 1)) {
    ++colonna;
  }
  const auto riga = static_cast<std::size_t>(stato.selected);
  if (colonna == ColonnaSpuntaData || colonna == ColonnaSpuntaBanca) {
    if (spunte.erase({riga, colonna}) == 0) {
      spunte.insert({riga, colonna});
    }
    ++stato.content;
  } else if (colonna == ColonnaData) {
    stato.data.visible = true;
    stato.data.place = stato.selected;
    stato.data.left = Inizio(ColonnaData);
    stato.data.width = description.columns[ColonnaData].width - 60;
    stato.data.text = std::string(CellText(riga, ColonnaData));
  } else if (colonna == ColonnaBanca) {
    stato.bank.visible = true;
    stato.bank.place = stato.selected;
    stato.bank.left = Inizio(ColonnaBanca);
    stato.bank.width = description.columns[ColonnaBanca].width - 60;
    stato.bank.index = 2;
  }
  stato.scrollBarsHidden = righe > 20 && (stato.data.visible || stato.bank.visible);
}

void FinestraFinta::ChiudiEditor() {
  stato.data.visible = false;
  stato.bank.visible = false;
  stato.scrollBarsHidden = false;
  ++stato.content;
}

std::string_view FinestraFinta::CellText(std::size_t riga, int colonna) const {
  ++letture;
  if (whileReading) {
    whileReading();
  }
  const auto own = texts.find({riga, colonna});
  if (own != texts.end()) {
    return own->second;
  }
  const std::size_t i = inverso ? righe - 1 - riga : riga;
  switch (colonna) {
  case 0:
    return Clienti[i % Clienti.size()];
  case 1:
    return cella_ = std::to_string(100 + i);
  case 2:
  case 3:
    return cella_ = Data(i, 0);
  case ColonnaData:
    return cella_ = Data(i, i % 7 == 3 ? 2 : 0);
  case 4:
    return Banche[i % Banche.size()];
  case ColonnaBanca:
    return i % 5 == 1 ? Banche[(i + 1) % Banche.size()] : Banche[i % Banche.size()];
  case 5:
    return cella_ = std::to_string(i * 137 % 90000) + ",50";
  default:
    return {};
  }
}

std::string_view FinestraFinta::Distinzione(std::size_t riga, int colonna) const {
  const auto trovata = distinzioni.find(riga);
  return colonna == 1 && trovata != distinzioni.end() ? std::string_view(trovata->second) : std::string_view();
}

int FinestraFinta::Volte(const std::string& gesto) const {
  return static_cast<int>(std::count(gesti.begin(), gesti.end(), gesto));
}

int FinestraFinta::Inizio(int colonna) const {
  int somma = 0;
  for (int c = 0; c < colonna; ++c) {
    somma += description.columns[static_cast<std::size_t>(c)].width;
  }
  return somma;
}

void Esegui(FinestraFinta& finta, const std::function<void(QDialog&)>& copione) {
  qt::ListWindowQt elenco(finta, nullptr);
  QTimer::singleShot(0, &elenco, [&] {
    EXPECT_TRUE(QTest::qWaitForWindowActive(&elenco));
    try {
      copione(elenco);
    } catch (const std::exception& errore) {
      ADD_FAILURE() << errore.what();
    }
    elenco.close();
  });
  EXPECT_FALSE(elenco.Display());
}

void Recita(std::function<void(QDialog&)> copione) {
  QTimer::singleShot(0, qApp, [copione = std::move(copione)] {
    auto* finestra = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    if (finestra == nullptr) {
      // A screen that is still loading lets pending events run.
      QTimer::singleShot(5, qApp, [copione] { Recita(copione); });
      return;
    }
    EXPECT_TRUE(QTest::qWaitForWindowActive(finestra));
    try {
      copione(*finestra);
    } catch (const std::exception& errore) {
      ADD_FAILURE() << errore.what();
    }
    finestra->close();
  });
}

QTableView& Lista(QDialog& finestra) {
  return Trova<QTableView>(finestra, "LVScadenzeBanche");
}

void Clicca(QTableView& lista, int riga, int colonna) {
  const QPoint centro = lista.visualRect(lista.model()->index(riga, colonna)).center();
  QTest::mouseClick(lista.viewport(), Qt::LeftButton, {}, centro);
}

bool Visibile(QDialog& finestra, const char* nome) {
  return Trova<QWidget>(finestra, nome).isVisible();
}

} // namespace lumoscad::test
