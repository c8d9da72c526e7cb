// Each screen once in its real window, with keys and mouse.

#include "Pagine.hpp"

#include "FinestraFinta.hpp"
#include "FinestreVere.hpp"
#include "screens/FormConsegna.hpp"
#include "screens/FormLumoScad.hpp"
#include "screens/FormPresunti.hpp"
#include "screens/frmLumoScadenzeBanche.hpp"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QTest>

#include <map>

namespace lumoscad::test {
namespace {

using Gesti = std::function<void(Scena&, QDialog&)>;

/// What a control shows.
QString Scritta(const QWidget& controllo) {
  if (const auto* etichetta = qobject_cast<const QLabel*>(&controllo)) {
    return etichetta->text();
  }
  if (const auto* campo = qobject_cast<const QLineEdit*>(&controllo)) {
    return campo->text();
  }
  if (const auto* combo = qobject_cast<const QComboBox*>(&controllo)) {
    return combo->currentText();
  }
  const auto* pulsante = qobject_cast<const QAbstractButton*>(&controllo);
  return pulsante == nullptr ? QString() : pulsante->text();
}

/// The window's named controls, in the order of their names.
void DescriviControlli(Scena& scena, const QDialog& finestra) {
  const auto predefinito = QApplication::font().family();
  std::map<std::string, std::string> controlli;
  for (const QWidget* controllo : finestra.findChildren<QWidget*>()) {
    const auto nome = controllo->objectName();
    const auto famiglia = controllo->font().family();
    // What the foot says beside the number of rows has tests of its own.
    const bool delPiede = nome.startsWith(QStringLiteral("Foot"));
    if (!nome.isEmpty() && !nome.startsWith(QStringLiteral("qt_")) && !delPiede) {
      controlli[nome.toStdString()] = std::string(controllo->isVisible() ? "" : " nascosto") + " carattere " +
                                      (famiglia == predefinito ? "{predefinito}" : famiglia.toStdString()) + " " +
                                      Cita(Scritta(*controllo).toStdString());
    }
  }
  std::vector<std::string> righe{"  controlli"};
  for (const auto& [nome, aspetto] : controlli) {
    righe.push_back("    " + nome + aspetto);
  }
  scena.AnnotaUnaVolta(righe);
}

/// Over which row of the list the frame of an editor stands.
void DescriviCornice(Scena& scena, QDialog& finestra, const QTableView& lista, const char* nome) {
  const auto& cornice = Trova<QWidget>(finestra, nome);
  const auto centro = lista.viewport()->mapFromGlobal(cornice.mapToGlobal(cornice.rect().center()));
  scena.Annota(std::string("  ") + nome +
               (cornice.isVisible() ? " sta sulla riga " + std::to_string(lista.rowAt(centro.y())) : " è nascosta"));
}

std::function<void(QDialog&)> ConDescrizione(Scena& scena, const Gesti& gesti) {
  return [&scena, gesti](QDialog& finestra) {
    DescriviControlli(scena, finestra);
    gesti(scena, finestra);
  };
}

Scenetta Gioca(std::string titolo, std::string comando, Gesti gesti) {
  return {std::move(titolo), [comando = std::move(comando), gesti = std::move(gesti)](Scena& scena) {
            FinestreVere finestre;
            finestre.copioni.push_back(ConDescrizione(scena, gesti));
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

/// A key with its modifiers, to whatever has the focus.
void Tasto(QDialog& finestra, Qt::Key tasto, Qt::KeyboardModifiers con = Qt::NoModifier) {
  QWidget* const dove = QApplication::focusWidget();
  QTest::keyClick(dove == nullptr ? &finestra : dove, tasto, con);
}

void Digita(const char* testo) {
  QTest::keyClicks(QApplication::focusWidget(), testo);
}

/// What the person does in the window of one open item.
Scenetta GiocaScadenzario(const std::string& modo, Gesti gesti) {
  return {"scadenzario " + modo + ", in una finestra vera", [modo, gesti = std::move(gesti)](Scena& scena) {
            FinestreVere finestre;
            finestre.copioni.push_back(ConDescrizione(scena, gesti));
            scena.desktop = &finestre;
            ApriScadenzario(scena, modo);
          }};
}

constexpr const char* Crediti = "-T BANCA /CREDITI -C 20100023";
constexpr const char* Presunti = "-T BANCA /PRESUNTI -C 20100012 -TIPOMOVIMENTI V -B TUTTE";
constexpr const char* Consegna = "-T CONSEGNA /PRESUNTI -C 20100012 -TIPOMOVIMENTI V -B TUTTE";

std::vector<Scenetta> ColMouse() {
  return {Gioca("crediti, in una finestra vera", Crediti,
                [](Scena& /*scena*/, QDialog& finestra) {
                  auto& lista = Trova<QTableView>(finestra, "LVScadenzeBanche");
                  Premi(finestra, "TLwTestata_5");
                  ScriviData(finestra, lista, 1, frmLumoScadenzeBanche::NuovaScadenza, "150426");
                  ScegliBanca(finestra, lista, 4, frmLumoScadenzeBanche::NuovaBanca);
                  Premi(finestra, "PictureOk");
                }),
          Gioca("crediti, un editor aperto mentre si spunta e si ordina, in una finestra vera", Crediti,
                [](Scena& scena, QDialog& finestra) {
                  auto& lista = Trova<QTableView>(finestra, "LVScadenzeBanche");
                  QTest::keyClicks(&Trova<QWidget>(finestra, "TextScadenza"), "200426");
                  Clicca(lista, 1, frmLumoScadenzeBanche::NuovaScadenza);
                  QTest::keyClicks(&Trova<QWidget>(finestra, "TextScad"), "150426");
                  DescriviCornice(scena, finestra, lista, "FrameScad");
                  Clicca(lista, 3, frmLumoScadenzeBanche::Radio1);
                  DescriviCornice(scena, finestra, lista, "FrameScad");
                  for (int volta = 0; volta < 2; ++volta) {
                    Premi(finestra, "TLwTestata_5");
                    DescriviCornice(scena, finestra, lista, "FrameScad");
                  }
                  Clicca(lista, 6, frmLumoScadenzeBanche::Radio2);
                  Premi(finestra, "PictureOk");
                }),
          Gioca("crediti, clic fuori e sotto l'ultima riga, in una finestra vera", Crediti,
                [](Scena& /*scena*/, QDialog& finestra) {
                  auto& lista = Trova<QTableView>(finestra, "LVScadenzeBanche");
                  Clicca(lista, 1, frmLumoScadenzeBanche::NuovaScadenza);
                  QTest::keyClicks(&Trova<QWidget>(finestra, "TextScad"), "150426");
                  const auto ultima = lista.visualRect(
                      lista.model()->index(lista.model()->rowCount() - 1, frmLumoScadenzeBanche::Scadenza));
                  QTest::mouseClick(lista.viewport(), Qt::LeftButton, {}, ultima.center() + QPoint(0, 40));
                  Clicca(lista, 2, frmLumoScadenzeBanche::NuovaBanca);
                  QTest::mouseClick(&finestra, Qt::LeftButton, {}, QPoint(3, 3));
                  Clicca(lista, 0, frmLumoScadenzeBanche::Conto);
                  Premi(finestra, "PictureAnnulla");
                }),
          Gioca("presunti, in una finestra vera", Presunti,
                [](Scena& /*scena*/, QDialog& finestra) {
                  auto& lista = Trova<QTableView>(finestra, "LVPresunti");
                  ScegliBanca(finestra, lista, 1, FormPresunti::NuovaBanca);
                  Premi(finestra, "PictureOk");
                }),
          Gioca("consegne, in una finestra vera", Consegna, [](Scena& /*scena*/, QDialog& finestra) {
            auto& lista = Trova<QTableView>(finestra, "LVScadenzePresunti");
            ScriviData(finestra, lista, 0, FormConsegna::NuovaConsegna, "31/02/26");
            ScriviData(finestra, lista, 1, FormConsegna::NuovaConsegna, "200526");
            Premi(finestra, "PictureOk");
          })};
}

std::vector<Scenetta> ConITasti() {
  return {
      Gioca("consegne, con i tasti", Consegna,
            [](Scena& /*scena*/, QDialog& finestra) {
              Tasto(finestra, Qt::Key_N, Qt::AltModifier);
              Digita("20/05/26");
              Tasto(finestra, Qt::Key_Tab);
              Tasto(finestra, Qt::Key_Home);
              Tasto(finestra, Qt::Key_Space);
              Tasto(finestra, Qt::Key_Down);
              Tasto(finestra, Qt::Key_Right);
              Tasto(finestra, Qt::Key_F2);
              Digita("27/05/26");
              Tasto(finestra, Qt::Key_Return, Qt::ControlModifier);
            }),
      Gioca("crediti, Esc nell'editor e Annulla con i tasti", Crediti,
            [](Scena& /*scena*/, QDialog& finestra) {
              auto& lista = Trova<QTableView>(finestra, "LVScadenzeBanche");
              Clicca(lista, 1, frmLumoScadenzeBanche::NuovaScadenza);
              Digita("150426");
              Tasto(finestra, Qt::Key_Escape);
              Tasto(finestra, Qt::Key_A, Qt::AltModifier);
            }),
      Gioca("crediti, la casella di chiusura", Crediti, [](Scena& /*scena*/, QDialog& finestra) { finestra.close(); })};
}

std::vector<Scenetta> Scadenzari() {
  std::vector<Scenetta> tutte;
  for (const char* modo : {"Scad", "Extra"}) {
    tutte.push_back(GiocaScadenzario(modo, [](Scena& /*scena*/, QDialog& finestra) {
      auto& lista = Trova<QTableView>(finestra, "LWScad");
      ScriviData(finestra, lista, 0, FormLumoScad::NuovaScadenza, "150606");
      QTest::keyClicks(&Trova<QWidget>(finestra, "TextScadenza"), "300906");
      Clicca(lista, 1, FormLumoScad::Casella);
      Premi(finestra, "PictureOk");
    }));
  }
  tutte.push_back(GiocaScadenzario("Scad, seleziona tutto", [](Scena& /*scena*/, QDialog& finestra) {
    QTest::keyClicks(&Trova<QWidget>(finestra, "TextScadenza"), "domani");
    Tasto(finestra, Qt::Key_S, Qt::AltModifier);
    Premi(finestra, "PicSelezionaTutto");
    Premi(finestra, "PictureAnnulla");
  }));
  return tutte;
}

} // namespace

std::vector<Scenetta> ReciteFinestreVere() {
  auto tutte = ColMouse();
  for (auto* altre : {ConITasti, Scadenzari}) {
    for (auto& scenetta : altre()) {
      tutte.push_back(std::move(scenetta));
    }
  }
  tutte.push_back({"l'attesa e i messaggi in finestre vere", [](Scena& scena) {
                     FinestreVere finestre;
                     scena.desktop = &finestre;
                     scena.Esegui("-T SOSPESO /A -C 20100001 -P AB   123");
                     scena.Esegui("-T PRESUNTO /A -S OC -A 06 -N uno");
                   }});
  return tutte;
}

} // namespace lumoscad::test
