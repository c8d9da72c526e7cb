#include "FinestraFinta.hpp"

#include "platform/qt/ListHeadings.hpp"
#include "platform/qt/ListIcons.hpp"
#include "platform/qt/ListModel.hpp"
#include "platform/qt/ListWindowQt.hpp"
#include "support/WorkClock.hpp"

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QComboBox>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QScrollBar>
#include <QTableView>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace lumoscad::test {
namespace {

using testing::ElementsAre;

TEST(ListWindow, EveryControlCarriesItsOwnName) {
  FinestraFinta finta(30);
  Esegui(finta, [](QDialog& finestra) {
    EXPECT_EQ(finestra.objectName(), "frmLumoScadenzeBanche");
    for (const char* nome : {"picScadenzeBanche",
                             "LVScadenzeBanche",
                             "TLwTestata_1",
                             "PTestata_1",
                             "TLwTestata_4",
                             "PTestata_4",
                             "TLwTestataQuadratino",
                             "FrameScad",
                             "TextScad",
                             "FrameBanca",
                             "cmbBanche2",
                             "FrameNuovaScadenza",
                             "lblScadenza",
                             "TextScadenza",
                             "FrameNuovaBanca",
                             "lblBanche",
                             "cmbBanche",
                             "lblClienteFornitore",
                             "lblClienteFornitoreValue",
                             "FrameRigaScadenza",
                             "FrameRigaBanca",
                             "RigaScura",
                             "RigaSepara",
                             "FrameSeparatore",
                             "PicScrollVerticale",
                             "PicScrollOrizzontale",
                             "FrameOkAnnulla",
                             "PictureOk",
                             "PictureAnnulla",
                             "KNuovaScadenza",
                             "KNuovaBanca"}) {
      EXPECT_NE(finestra.findChild<QWidget*>(nome), nullptr) << nome;
    }
    EXPECT_FALSE(Visibile(finestra, "lblClienteFornitore"));
    EXPECT_FALSE(Visibile(finestra, "FrameScad"));
    EXPECT_TRUE(Lista(finestra).isColumnHidden(8));
  });
}

TEST(ListWindow, TakesThePicturesOfItsTicksFromItsImageList) {
  FinestraFinta finta(3);
  Esegui(finta, [&](QDialog& finestra) {
    const auto* immagini = finestra.findChild<QObject*>("IL_Small");
    ASSERT_NE(immagini, nullptr);
    EXPECT_EQ(immagini->property("chiavi").toStringList(),
              QStringList({"CHKON", "CHKOFF", "OPTON", "OPTOFF", "SORTED", "UNSORTED"}));
    const auto* modello = Lista(finestra).model();
    const auto icona = [&](int riga, int colonna) {
      return modello->index(riga, colonna).data(qt::ListModel::ReportIconRole);
    };
    EXPECT_EQ(icona(0, FinestraFinta::ColonnaSpuntaData), "CHKOFF");
    Clicca(Lista(finestra), 0, FinestraFinta::ColonnaSpuntaData);
    EXPECT_EQ(icona(0, FinestraFinta::ColonnaSpuntaData), "CHKON");
    EXPECT_FALSE(icona(0, 0).isValid());
  });
}

TEST(ListWindow, TheImageListDrawsEachPictureItHoldsAndNoOther) {
  const qt::ListImages immagini(nullptr);
  const auto disegna = [&immagini](const char* chiave) {
    QImage foglio(16, 16, QImage::Format_ARGB32);
    foglio.fill(Qt::magenta);
    QPainter disegno(&foglio);
    immagini.Draw(disegno, foglio.rect(), chiave);
    return foglio;
  };
  std::vector<QImage> disegnate{disegna("QUADRATINO")}; // a picture, but not of the image list: the empty sheet
  for (const char* chiave : {"CHKON", "CHKOFF", "OPTON", "OPTOFF", "SORTED", "UNSORTED"}) {
    const QImage foglio = disegna(chiave);
    for (const QImage& altra : disegnate) {
      EXPECT_NE(foglio, altra) << chiave;
    }
    disegnate.push_back(foglio);
  }
  QImage vuoto(16, 16, QImage::Format_ARGB32);
  vuoto.fill(Qt::magenta);
  EXPECT_EQ(disegnate.front(), vuoto);
}

TEST(ListWindow, StartsOnTheFirstRowAndTheFirstCellThatDoesSomething) {
  FinestraFinta finta(3);
  Esegui(finta, [&](QDialog& finestra) {
    EXPECT_TRUE(Lista(finestra).hasFocus());
    EXPECT_EQ(Lista(finestra).currentIndex().row(), 0);
    EXPECT_EQ(Lista(finestra).currentIndex().column(), FinestraFinta::ColonnaSpuntaData);
    EXPECT_THAT(finta.gesti, ElementsAre("seleziona 0"));
  });
}

TEST(ListWindow, AClickSelectsPressesAndClicksInThisOrder) {
  FinestraFinta finta(30);
  Esegui(finta, [&](QDialog& finestra) {
    finta.gesti.clear();
    Clicca(Lista(finestra), 4, FinestraFinta::ColonnaSpuntaData);
    EXPECT_THAT(finta.gesti, ElementsAre("seleziona 4", "premeMouse", "clic 960"));
    EXPECT_GE(finta.ultimaX, finta.Inizio(FinestraFinta::ColonnaSpuntaData));
    EXPECT_LT(finta.ultimaX, finta.Inizio(FinestraFinta::ColonnaSpuntaData + 1));
    EXPECT_TRUE(finta.spunte.count({4, FinestraFinta::ColonnaSpuntaData}));
    Clicca(Lista(finestra), 4, FinestraFinta::ColonnaSpuntaData);
    EXPECT_TRUE(finta.spunte.empty());
  });
}

TEST(ListWindow, AStretchedOrScrolledColumnIsStillHitAtItsNominalPlace) {
  FinestraFinta finta(30);
  Esegui(finta, [&](QDialog& finestra) {
    for (const int larghezza : {700, 1180, 1600}) {
      finestra.resize(larghezza, 600);
      QTableView& lista = Lista(finestra);
      for (const int colonna : {0, 3, 5, 6, 9}) {
        lista.scrollTo(lista.model()->index(0, colonna));
        Clicca(lista, 0, colonna);
        EXPECT_GE(finta.ultimaX, finta.Inizio(colonna)) << larghezza;
        EXPECT_LT(finta.ultimaX, finta.Inizio(colonna + 1)) << larghezza;
      }
    }
  });
}

TEST(ListWindow, AClickBelowTheLastRowIsAClickOutsideAndKeepsTheSelection) {
  FinestraFinta finta(2);
  Esegui(finta, [&](QDialog& finestra) {
    QTableView& lista = Lista(finestra);
    finestra.resize(1180, 600);
    for (const int colonna : {FinestraFinta::ColonnaSpuntaData, FinestraFinta::ColonnaData, 0}) {
      Clicca(lista, 1, 0);
      finta.gesti.clear();
      const QPoint sotto(lista.visualRect(lista.model()->index(1, colonna)).center().x(), 24 * 4);
      QTest::mouseClick(lista.viewport(), Qt::LeftButton, {}, sotto);
      EXPECT_THAT(finta.gesti, ElementsAre("premeMouse", "clicFuori"));
      EXPECT_EQ(lista.currentIndex().row(), 1);
      EXPECT_FALSE(Visibile(finestra, "FrameScad"));
      EXPECT_TRUE(finta.spunte.empty());
    }
  });
}

TEST(ListWindow, ThePictureIsFiftyTwipsWiderThanTheListAndTheRestAsWideAsTheList) {
  FinestraFinta finta(30);
  Esegui(finta, [&](QDialog& finestra) {
    const auto& lista = Lista(finestra);
    const auto& quadro = Trova<QWidget>(finestra, "picScadenzeBanche");
    constexpr int Cinquanta = 50 / TwipsPerPixelX;
    for (const int larghezza : {700, 1180, 1600}) {
      finestra.resize(larghezza, 600);
      QCoreApplication::processEvents();
      EXPECT_EQ(quadro.width(), lista.width() + Cinquanta) << larghezza;
      for (const char* nome :
           {"FrameRigaScadenza", "FrameRigaBanca", "RigaScura", "FrameSeparatore", "RigaSepara", "FrameOkAnnulla"}) {
        const auto& altro = Trova<QWidget>(finestra, nome);
        EXPECT_EQ(altro.width(), lista.width()) << nome << " " << larghezza;
        EXPECT_EQ(altro.mapTo(&finestra, QPoint(0, 0)).x(), lista.mapTo(&finestra, QPoint(0, 0)).x()) << nome;
      }
    }
    EXPECT_EQ(quadro.sizeHint().width(), lista.sizeHint().width() + Cinquanta);
  });
}

TEST(ListWindow, AListThatDoesNotScrollTakesTheWidthOfItsColumnsAndFifty) {
  FinestraFinta finta(3);
  Esegui(finta, [&](QDialog& finestra) {
    const int colonne = finta.Inizio(static_cast<int>(finta.description.columns.size()));
    EXPECT_EQ(Lista(finestra).sizeHint().width(), (colonne + 50) / TwipsPerPixelX);
    EXPECT_EQ(Trova<QWidget>(finestra, "picScadenzeBanche").sizeHint().width(), (colonne + 100) / TwipsPerPixelX);
  });
}

TEST(ListWindow, HeadingsStayOverTheirColumnsAfterScrollingAndStretching) {
  FinestraFinta finta(30);
  Esegui(finta, [&](QDialog& finestra) {
    QTableView& lista = Lista(finestra);
    for (const int larghezza : {600, 1500}) {
      finestra.resize(larghezza, 600);
      QCoreApplication::processEvents();
      lista.horizontalScrollBar()->setValue(lista.horizontalScrollBar()->maximum() / 2);
      for (const ListHeading& testata : finta.description.headings) {
        auto& widget = Trova<QWidget>(finestra, ("TLwTestata_" + std::to_string(testata.index)).c_str());
        const QPoint sinistra = lista.viewport()->mapFromGlobal(widget.mapToGlobal(QPoint(0, 0)));
        EXPECT_EQ(sinistra.x(), lista.visualRect(lista.model()->index(0, testata.first)).left()) << testata.text;
        EXPECT_EQ(widget.width(), lista.columnWidth(testata.first)) << testata.text;
      }
    }
  });
}

TEST(ListWindow, AHeadingClickReloadsTheRowsAndShowsTheIndicator) {
  FinestraFinta finta(30);
  Esegui(finta, [&](QDialog& finestra) {
    const QAbstractItemModelTester controllo(Lista(finestra).model());
    auto& conto = Trova<QWidget>(finestra, "TLwTestata_1");
    Clicca(Lista(finestra), 3, 0);
    QTest::mouseClick(&conto, Qt::LeftButton);
    EXPECT_EQ(Trova<QWidget>(finestra, "PTestata_1").property("immagine"), "SORTED");
    QTest::mouseClick(&conto, Qt::LeftButton);
    EXPECT_EQ(finta.Volte("clicTestata 1"), 2);
    EXPECT_EQ(Trova<QWidget>(finestra, "PTestata_2").property("immagine"), "UNSORTED");
    EXPECT_EQ(Lista(finestra).model()->index(0, 1).data(), "129");
    EXPECT_EQ(Lista(finestra).currentIndex().row(), 3);
    QTest::keyClick(&Lista(finestra), Qt::Key_5, Qt::ControlModifier);
    EXPECT_EQ(finta.Volte("clicTestata 5"), 1);
  });
}

TEST(ListWindow, ArrowsHomeEndAndPagesMoveTheSelection) {
  FinestraFinta finta(100);
  Esegui(finta, [&](QDialog& finestra) {
    QTableView& lista = Lista(finestra);
    QTest::keyClick(&lista, Qt::Key_Down);
    QTest::keyClick(&lista, Qt::Key_Right);
    EXPECT_EQ(finta.stato.selected, 1);
    EXPECT_EQ(lista.currentIndex().column(), FinestraFinta::ColonnaData);
    QTest::keyClick(&lista, Qt::Key_End);
    EXPECT_EQ(finta.stato.selected, 99);
    QTest::keyClick(&lista, Qt::Key_PageUp);
    EXPECT_LT(finta.stato.selected, 99);
    QTest::keyClick(&lista, Qt::Key_Home);
    EXPECT_EQ(finta.stato.selected, 0);
    EXPECT_EQ(lista.currentIndex().column(), FinestraFinta::ColonnaData);
  });
}

TEST(ListWindow, FreeAreasReportAClickOutside) {
  FinestraFinta finta(30);
  Esegui(finta, [&](QDialog& finestra) {
    int attesi = 0;
    for (const char* nome : {"FrameRigaScadenza", "FrameRigaBanca", "RigaScura"}) {
      auto& zona = Trova<QWidget>(finestra, nome);
      QTest::mouseClick(&zona, Qt::LeftButton, {}, QPoint(zona.width() - 5, 1));
      EXPECT_EQ(finta.Volte("clicFuori"), ++attesi) << nome;
    }
    QTest::mouseClick(&finestra, Qt::LeftButton, {}, QPoint(3, 3));
    EXPECT_EQ(finta.Volte("clicFuori"), ++attesi);
    QTest::mouseClick(&Trova<QWidget>(finestra, "TLwTestata_4"), Qt::LeftButton);
    EXPECT_EQ(finta.Volte("clicFuori"), attesi);
  });
}

TEST(ListWindow, TheTopFieldsReportClicksTextsAndChoices) {
  FinestraFinta finta(30);
  Esegui(finta, [&](QDialog& finestra) {
    auto& data = Trova<QLineEdit>(finestra, "TextScadenza");
    QTest::mouseClick(&data, Qt::LeftButton);
    QTest::keyClicks(&data, "1/2/06");
    EXPECT_EQ(finta.Volte("clicScadenza"), 1);
    EXPECT_EQ(finta.stato.dueDateText, "1/2/06");
    QTest::keyClick(&data, Qt::Key_Tab);
    auto& banca = Trova<QComboBox>(finestra, "cmbBanche");
    EXPECT_TRUE(banca.hasFocus());
    QTest::keyClick(&banca, Qt::Key_Down);
    EXPECT_EQ(finta.Volte("scegliBanca 1"), 1);
    QTest::keyClick(&banca, Qt::Key_Tab);
    EXPECT_TRUE(Lista(finestra).hasFocus());
    QTest::keyClick(&Lista(finestra), Qt::Key_Tab);
    EXPECT_TRUE(Trova<QWidget>(finestra, "PictureOk").hasFocus());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    EXPECT_TRUE(Trova<QWidget>(finestra, "PictureAnnulla").hasFocus());
  });
}

TEST(ListWindow, ADateTypedAfterAClickIntoTheTopFieldReplacesTheOldOne) {
  FinestraFinta finta(30);
  finta.stato.dueDateText = "01/02/2006";
  Esegui(finta, [&](QDialog& finestra) {
    auto& data = Trova<QLineEdit>(finestra, "TextScadenza");
    QTest::mouseClick(&data, Qt::LeftButton);
    EXPECT_EQ(data.selectedText(), "01/02/2006");
    QTest::keyClicks(&data, "15");
    EXPECT_EQ(finta.stato.dueDateText, "15");
    QTest::mouseClick(&data, Qt::LeftButton);
    EXPECT_FALSE(data.hasSelectedText()) << "a further click places the cursor";
  });
}

TEST(ListWindow, ANormalisedDateOfTheScreenIsShownInTheTopField) {
  FinestraFinta finta(30);
  finta.during["clic"] = [&] { finta.stato.dueDateText = "01/02/2006"; };
  Esegui(finta, [&](QDialog& finestra) {
    Clicca(Lista(finestra), 0, FinestraFinta::ColonnaSpuntaData);
    EXPECT_EQ(Trova<QLineEdit>(finestra, "TextScadenza").text(), "01/02/2006");
  });
}

/// An access key shows the button pressed for a moment before it counts.
void ConTastoDiScelta(QDialog& finestra, Qt::Key tasto) {
  QTest::keyClick(&finestra, tasto, Qt::AltModifier);
  EXPECT_TRUE(QTest::qWaitFor([&finestra] { return !finestra.isVisible(); }));
}

TEST(ListWindow, TheButtonsAndTheirKeysConfirmAndCancel) {
  const auto risultato = [](const std::function<void(QDialog&)>& copione) {
    FinestraFinta finta(3);
    Esegui(finta, copione);
    return finta.gesti.back();
  };
  EXPECT_EQ(risultato([](QDialog& f) { QTest::mouseClick(&Trova<QWidget>(f, "PictureOk"), Qt::LeftButton); }),
            "conferma");
  EXPECT_EQ(risultato([](QDialog& f) { QTest::mouseClick(&Trova<QWidget>(f, "PictureAnnulla"), Qt::LeftButton); }),
            "annulla");
  EXPECT_EQ(risultato([](QDialog& f) { ConTastoDiScelta(f, Qt::Key_C); }), "conferma");
  EXPECT_EQ(risultato([](QDialog& f) { QTest::keyClick(&f, Qt::Key_Return, Qt::ControlModifier); }), "conferma");
  EXPECT_EQ(risultato([](QDialog& f) { ConTastoDiScelta(f, Qt::Key_A); }), "annulla");
  EXPECT_EQ(risultato([](QDialog& f) { f.close(); }), "chiudi");
}

TEST(ListWindow, EscLeavesAListWithoutChangesAtOnce) {
  FinestraFinta finta(0);
  Esegui(finta, [](QDialog& f) { QTest::keyClick(&Lista(f), Qt::Key_Escape); });
  EXPECT_EQ(finta.gesti.back(), "annulla");
}

TEST(ListWindow, EscOverChangesGoesToAnnullaFirst) {
  FinestraFinta finta(3);
  Esegui(finta, [&](QDialog& f) {
    ASSERT_TRUE(Lista(f).model()->index(1, FinestraFinta::ColonnaBanca).data(qt::ListModel::ChangedRole).toBool());
    QTest::keyClick(&Lista(f), Qt::Key_Escape);
    EXPECT_TRUE(f.isVisible());
    EXPECT_EQ(finta.Volte("annulla"), 0);
    EXPECT_TRUE(Trova<QWidget>(f, "PictureAnnulla").hasFocus());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    EXPECT_FALSE(f.isVisible());
  });
  EXPECT_EQ(finta.gesti.back(), "annulla");
}

TEST(ListWindow, GesturesThatArriveInsideAGestureAreDropped) {
  FinestraFinta finta(30);
  Esegui(finta, [&](QDialog& finestra) {
    finta.during["conferma"] = [&] { Clicca(Lista(finestra), 3, FinestraFinta::ColonnaSpuntaData); };
    finta.gesti.clear();
    QTest::mouseClick(&Trova<QWidget>(finestra, "PictureOk"), Qt::LeftButton);
    EXPECT_THAT(finta.gesti, ElementsAre("conferma"));
    EXPECT_FALSE(finestra.isVisible());
  });
}

TEST(ListWindow, AMillionRowsMoveSortAndEditWithoutAPause) {
  FinestraFinta finta(1'000'000);
  Esegui(finta, [&](QDialog& finestra) {
    QTableView& lista = Lista(finestra);
    const auto misura = [&](const char* che, const std::function<void()>& gesto) {
      const test::WorkClock orologio;
      gesto();
      QCoreApplication::processEvents();
      EXPECT_LT(orologio.Milliseconds(), 100) << che;
    };
    misura("tick", [&] { QTest::keyClick(&lista, Qt::Key_Space); });
    misura("end", [&] { QTest::keyClick(&lista, Qt::Key_End); });
    misura("sort", [&] { QTest::keyClick(&lista, Qt::Key_1, Qt::ControlModifier); });
    misura("page", [&] { QTest::keyClick(&lista, Qt::Key_PageUp); });
    misura("edit", [&] {
      QTest::keyClick(&lista, Qt::Key_Right);
      QTest::keyClick(&lista, Qt::Key_F2);
    });
    EXPECT_TRUE(Visibile(finestra, "TextScad"));
    misura("write", [&] { QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return); });
    misura("home", [&] { QTest::keyClick(&lista, Qt::Key_Home); });
    EXPECT_LT(finta.letture, 20'000U);
  });
}

} // namespace
} // namespace lumoscad::test
