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
  finestra.nome = "frmLumoScadenzeBanche";
  finestra.titolo = "Scadenze";
  finestra.nomeLista = "LVScadenzeBanche";
  finestra.carattere = "Verdana";
  finestra.carattereTestate = "Verdana";
  finestra.campoData = "Nuova scadenza";
  finestra.campoBanca = "Nuova banca";
  finestra.etichette = {{"lblClienteFornitore", ""}, {"lblClienteFornitoreValue", ""}};
  finestra.banche = {" ", "Banca del Garda", "Cassa di Risparmio della Lunigiana", "Credito Tirreno"};
  finestra.bancheCella = finestra.banche;
  Colonne();
  stato.larghezzaLista = Inizio(12) + 50;
  stato.larghezzaQuadro = Inizio(12) + 100;
  stato.altezzaLista = static_cast<int>(std::min<std::size_t>(righe, 20)) * 240;
  Richiami();
  RichiamiEditor();
}

void FinestraFinta::Colonne() {
  finestra.colonne = {{"KConto", "Conto", 3000, Genere::Testo},
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
  finestra.testate = {{1, "Conto", 0, 0, 0, 3000, true},       {2, "Partita", 1, 1, 3000, 1200, true},
                      {5, "Scadenza", 2, 2, 4200, 1350, true}, {3, "Scad Orig.", 3, 3, 5550, 1350, false},
                      {6, "Banca", 4, 4, 6900, 2550, true},    {4, "Importo", 5, 5, 9450, 1350, false}};
}

void FinestraFinta::Richiami() {
  finestra.righe = [this] { return righe; };
  finestra.testo = [this](std::size_t riga, int colonna) { return TestoCella(riga, colonna); };
  finestra.spuntata = [this](std::size_t riga, int colonna) { return spunte.count({riga, colonna}) > 0; };
  finestra.stato = [this]() -> const StatoElenco& { return stato; };
  finestra.seleziona = [this](std::ptrdiff_t riga) {
    gesti.push_back("seleziona " + std::to_string(riga));
    stato.selezionata = riga;
  };
  finestra.premeMouse = [this](int x, int) {
    gesti.emplace_back("premeMouse");
    ultimaX = x;
  };
  finestra.clic = [this](int alto) { Clic(alto); };
  finestra.clicTestata = [this](int indice) {
    gesti.push_back("clicTestata " + std::to_string(indice));
    stato.crescente = stato.testataOrdinata != indice || !stato.crescente;
    stato.testataOrdinata = indice;
    inverso = !stato.crescente;
    ++stato.ordine;
  };
  finestra.clicFuori = [this] {
    gesti.emplace_back("clicFuori");
    ChiudiEditor();
  };
  finestra.conferma = [this] {
    gesti.emplace_back("conferma");
    if (allaConferma) {
      allaConferma();
    }
    stato.scaricata = true;
  };
  finestra.annulla = [this] {
    gesti.emplace_back("annulla");
    stato.scaricata = true;
  };
  finestra.chiudi = [this] {
    gesti.emplace_back("chiudi");
    stato.scaricata = true;
  };
}

void FinestraFinta::RichiamiEditor() {
  finestra.testoEditor = [this](std::string_view testo) {
    gesti.push_back("testoEditor " + std::string(testo));
    stato.data.testo = testo;
  };
  finestra.tastoEditor = [this](int codice) {
    gesti.push_back("tastoEditor " + std::to_string(codice));
    nuovaData = stato.data.testo;
    ChiudiEditor();
  };
  finestra.scegliBancaCella = [this](int indice) {
    gesti.push_back("scegliBancaCella " + std::to_string(indice));
    stato.banca.indice = indice;
  };
  finestra.perdeFuocoBancaCella = [this] {
    gesti.emplace_back("perdeFuocoBancaCella");
    stato.banca.visibile = false;
    ++stato.contenuto;
  };
  finestra.abbandonaEditor = [this] {
    gesti.emplace_back("abbandonaEditor");
    ChiudiEditor();
  };
  finestra.testoScadenza = [this](std::string_view testo) {
    gesti.push_back("testoScadenza " + std::string(testo));
    stato.testoScadenza = testo;
  };
  finestra.clicScadenza = [this] { gesti.emplace_back("clicScadenza"); };
  finestra.scegliBanca = [this](int indice) {
    gesti.push_back("scegliBanca " + std::to_string(indice));
    stato.indiceBanca = indice;
  };
}

void FinestraFinta::Clic(int alto) {
  gesti.push_back("clic " + std::to_string(alto));
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
    stato.data.larghezza = finestra.colonne[ColonnaData].larghezza - 60;
    stato.data.testo = std::string(TestoCella(riga, ColonnaData));
  } else if (colonna == ColonnaBanca) {
    stato.banca.visibile = true;
    stato.banca.posto = stato.selezionata;
    stato.banca.sinistra = Inizio(ColonnaBanca);
    stato.banca.larghezza = finestra.colonne[ColonnaBanca].larghezza - 60;
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

std::string_view FinestraFinta::TestoCella(std::size_t riga, int colonna) {
  ++letture;
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
    somma += finestra.colonne[static_cast<std::size_t>(c)].larghezza;
  }
  return somma;
}

void Esegui(FinestraFinta& finta, const std::function<void(QDialog&)>& copione) {
  qt::FinestraElencoQt elenco(finta.finestra, nullptr);
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
