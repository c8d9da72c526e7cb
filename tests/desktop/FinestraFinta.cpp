#include "FinestraFinta.hpp"

#include "platform/qt/FinestraElencoQt.hpp"

#include <QApplication>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iomanip>
#include <sstream>

namespace lumoscad::prova {

namespace {

using Genere = ColonnaElenco::Genere;

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
  description.nome = "frmLumoScadenzeBanche";
  description.titolo = "Scadenze";
  description.nomeLista = "LVScadenzeBanche";
  description.carattere = "Verdana";
  description.carattereTestate = "Verdana";
  description.campoData = "Nuova scadenza";
  description.campoBanca = "Nuova banca";
  description.etichette = {{"lblClienteFornitore", ""}, {"lblClienteFornitoreValue", ""}};
  description.banche = {" ", "Banca del Garda", "Cassa di Risparmio della Lunigiana", "Credito Tirreno"};
  description.bancheCella = description.banche;
  Colonne();
  stato.larghezzaLista = Inizio(12) + 50;
  stato.larghezzaQuadro = Inizio(12) + 100;
  stato.altezzaLista = static_cast<int>(std::min<std::size_t>(righe, 20)) * 240;
}

void FinestraFinta::Colonne() {
  description.colonne = {{"KConto", "Conto", 3000, Genere::Testo},
                         {"KPartita", "Partita", 1200, Genere::Testo},
                         {"KScadenza", "Scadenza", 1350, Genere::Testo},
                         {"KScadenzaOrig", "Scad. orig.", 1350, Genere::Testo},
                         {"KBanca", "Banca", 2550, Genere::Testo},
                         {"KImporto", "Importo", 1350, Genere::Importo},
                         {"KRadio1", "", 375, Genere::Spunta},
                         {"KNuovaScadenza", "Nuova Scad", 1350, Genere::EditorData, 2},
                         {"KNumeroRata1", "NumeroRata", 0, Genere::Testo},
                         {"KRadio2", "", 375, Genere::Spunta},
                         {"KNuovaBanca", "NuovaBanca", 2550, Genere::EditorBanca, 4},
                         {"KScadenzaOrdinaData", "ScadenzaOrdinaData", 0, Genere::Testo}};
  description.testate = {{1, "Conto", 0, 0, 0, 3000, true},       {2, "Partita", 1, 1, 3000, 1200, true},
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
  stato.selezionata = riga;
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
  stato.crescente = stato.testataOrdinata != indice || !stato.crescente;
  stato.testataOrdinata = indice;
  inverso = !stato.crescente;
  ++stato.ordine;
}

void FinestraFinta::Form_Click() {
  Record("clicFuori");
  ChiudiEditor();
}

void FinestraFinta::PictureOk_Click() {
  Record("conferma");
  stato.scaricata = true;
}

void FinestraFinta::PictureAnnulla_Click() {
  Record("annulla");
  stato.scaricata = true;
}

void FinestraFinta::Form_QueryUnload() {
  Record("chiudi");
  stato.scaricata = true;
}

void FinestraFinta::TextScad_Change(std::string_view testo) {
  Record("testoEditor", std::string(testo));
  stato.data.testo = testo;
}

void FinestraFinta::TextScad_KeyPress(int codice) {
  Record("tastoEditor", std::to_string(codice));
  nuovaData = stato.data.testo;
  ChiudiEditor();
}

void FinestraFinta::TextScad_LostFocus() {
  Record("perdeFuocoEditor");
}

void FinestraFinta::cmbBanche2_Click(int indice) {
  Record("scegliBancaCella", std::to_string(indice));
  stato.banca.indice = indice;
}

void FinestraFinta::cmbBanche2_LostFocus() {
  Record("perdeFuocoBancaCella");
  stato.banca.visibile = false;
  ++stato.contenuto;
}

void FinestraFinta::AbbandonaEditor() {
  Record("abbandonaEditor");
  ChiudiEditor();
}

void FinestraFinta::TextScadenza_Change(std::string_view testo) {
  Record("testoScadenza", std::string(testo));
  stato.testoScadenza = testo;
}

void FinestraFinta::TextScadenza_Click() {
  Record("clicScadenza");
}

void FinestraFinta::TextScadenza_LostFocus() {
  Record("perdeFuocoScadenza");
}

void FinestraFinta::cmbBanche_Click(int indice) {
  Record("scegliBanca", std::to_string(indice));
  stato.indiceBanca = indice;
}

void FinestraFinta::LVScadenze_Click(int alto) {
  Record("clic", std::to_string(alto));
  ChiudiEditor();
  int colonna = 0;
  while (colonna < 12 && ultimaX >= Inizio(colonna + 1)) {
    ++colonna;
  }
  const auto riga = static_cast<std::size_t>(stato.selezionata);
  if (colonna == ColonnaSpuntaData || colonna == ColonnaSpuntaBanca) {
    if (spunte.erase({riga, colonna}) == 0) {
      spunte.insert({riga, colonna});
    }
    ++stato.contenuto;
  } else if (colonna == ColonnaData) {
    stato.data.visibile = true;
    stato.data.posto = stato.selezionata;
    stato.data.sinistra = Inizio(ColonnaData);
    stato.data.larghezza = description.colonne[ColonnaData].larghezza - 60;
    stato.data.testo = std::string(CellText(riga, ColonnaData));
  } else if (colonna == ColonnaBanca) {
    stato.banca.visibile = true;
    stato.banca.posto = stato.selezionata;
    stato.banca.sinistra = Inizio(ColonnaBanca);
    stato.banca.larghezza = description.colonne[ColonnaBanca].larghezza - 60;
    stato.banca.indice = 2;
  }
  stato.barretteNascoste = righe > 20 && (stato.data.visibile || stato.banca.visibile);
}

void FinestraFinta::ChiudiEditor() {
  stato.data.visibile = false;
  stato.banca.visibile = false;
  stato.barretteNascoste = false;
  ++stato.contenuto;
}

std::string_view FinestraFinta::CellText(std::size_t riga, int colonna) const {
  ++letture;
  if (whileReading) {
    whileReading();
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

int FinestraFinta::Volte(const std::string& gesto) const {
  return static_cast<int>(std::count(gesti.begin(), gesti.end(), gesto));
}

int FinestraFinta::Inizio(int colonna) const {
  int somma = 0;
  for (int c = 0; c < colonna; ++c) {
    somma += description.colonne[static_cast<std::size_t>(c)].larghezza;
  }
  return somma;
}

void Esegui(FinestraFinta& finta, const std::function<void(QDialog&)>& copione) {
  qt::FinestraElencoQt elenco(finta, nullptr);
  QTimer::singleShot(0, &elenco, [&] {
    EXPECT_TRUE(QTest::qWaitForWindowActive(&elenco));
    try {
      copione(elenco);
    } catch (const std::exception& errore) {
      ADD_FAILURE() << errore.what();
    }
    elenco.close();
  });
  EXPECT_FALSE(elenco.Mostra());
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

} // namespace lumoscad::prova
