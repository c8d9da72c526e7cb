// Each screen once in its real window, with keys and mouse.

#include "Pagine.hpp"

#include "FinestraFinta.hpp"
#include "FinestreVere.hpp"

#include <QComboBox>
#include <QTest>

namespace lumoscad::prova {
namespace {

using Gesti = std::function<void(QDialog&)>;

Scenetta Gioca(std::string titolo, std::string comando, Gesti gesti) {
  return {std::move(titolo), [comando = std::move(comando), gesti = std::move(gesti)](Scena& scena) {
            FinestreVere finestre;
            finestre.copioni.push_back(gesti);
            scena.desktop = &finestre;
            scena.Esegui(comando);
          }};
}

void ScriviData(QDialog& finestra, QTableView& lista, int riga, int colonna, const char* data) {
  Clicca(lista, riga, colonna);
  auto& editor = Trova<QWidget>(finestra, "TextScad");
  QTest::keyClicks(&editor, data);
  QTest::keyClick(&editor, Qt::Key_Return);
}

void ScegliBanca(QDialog& finestra, QTableView& lista, int riga, int colonna) {
  Clicca(lista, riga, colonna);
  auto& combo = Trova<QComboBox>(finestra, "cmbBanche2");
  combo.hidePopup();
  QTest::keyClick(&combo, Qt::Key_Down);
  QTest::keyClick(&combo, Qt::Key_Return);
}

void Premi(QDialog& finestra, const char* nome) {
  QTest::mouseClick(&Trova<QWidget>(finestra, nome), Qt::LeftButton);
}

} // namespace

std::vector<Scenetta> ReciteFinestreVere() {
  return {
      Gioca("crediti, in una finestra vera", "-T BANCA /CREDITI -C 20100023",
            [](QDialog& finestra) {
              auto& lista = Trova<QTableView>(finestra, "LVScadenzeBanche");
              QTest::mouseClick(&Trova<QWidget>(finestra, "TLwTestata_5"), Qt::LeftButton);
              ScriviData(finestra, lista, 1, 7, "150426");
              ScegliBanca(finestra, lista, 4, 10);
              Premi(finestra, "PictureOk");
            }),
      Gioca("presunti, in una finestra vera", "-T BANCA /PRESUNTI -C 20100012 -TIPOMOVIMENTI V -B TUTTE",
            [](QDialog& finestra) {
              auto& lista = Trova<QTableView>(finestra, "LVPresunti");
              ScegliBanca(finestra, lista, 1, 7);
              Premi(finestra, "PictureOk");
            }),
      Gioca("consegne, in una finestra vera", "-T CONSEGNA /PRESUNTI -C 20100012 -TIPOMOVIMENTI V -B TUTTE",
            [](QDialog& finestra) {
              auto& lista = Trova<QTableView>(finestra, "LVScadenzePresunti");
              ScriviData(finestra, lista, 0, 7, "31/02/26");
              ScriviData(finestra, lista, 1, 7, "200526");
              Premi(finestra, "PictureOk");
            }),
  };
}

} // namespace lumoscad::prova
