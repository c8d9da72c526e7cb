#include "FinestraFinta.hpp"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QScrollBar>
#include <QTableView>
#include <QTest>

#include <gtest/gtest.h>

#include <tuple>

namespace lumoscad::test {
namespace {

TEST(CellEditor, SpaceTicksAndEnterOrF2OpensTheEditor) {
  FinestraFinta finta(30);
  Esegui(finta, [&](QDialog& finestra) {
    QTableView& lista = Lista(finestra);
    QTest::keyClick(&lista, Qt::Key_Space);
    EXPECT_TRUE(finta.spunte.count({0, FinestraFinta::ColonnaSpuntaData}));
    QTest::keyClick(&lista, Qt::Key_Right);
    QTest::keyClick(&lista, Qt::Key_Space);
    EXPECT_FALSE(finta.stato.data.visible);
    QTest::keyClick(&lista, Qt::Key_F2);
    EXPECT_TRUE(Visibile(finestra, "TextScad"));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    EXPECT_FALSE(Visibile(finestra, "TextScad"));
    QTest::keyClick(&lista, Qt::Key_Return);
    EXPECT_TRUE(Visibile(finestra, "TextScad"));
  });
}

TEST(CellEditor, EachEditorLiesOverItsCellSixtyTwipsNarrowerAndHasTheFocus) {
  constexpr int Sessanta = 60 / TwipsPerPixelX;
  FinestraFinta finta(30);
  Esegui(finta, [&](QDialog& finestra) {
    QTableView& lista = Lista(finestra);
    for (const int larghezza : {1180, 1600}) { // the columns at their nominal widths, and stretched
      finestra.resize(larghezza, 600);
      for (const auto& [colonna, nomeCornice, nomeCampo] :
           {std::tuple(FinestraFinta::ColonnaData, "FrameScad", "TextScad"),
            std::tuple(FinestraFinta::ColonnaBanca, "FrameBanca", "cmbBanche2")}) {
        Clicca(lista, 5, colonna);
        auto& cornice = Trova<QWidget>(finestra, nomeCornice);
        ASSERT_TRUE(cornice.isVisible()) << nomeCornice;
        EXPECT_TRUE(Trova<QWidget>(finestra, nomeCampo).hasFocus());
        const QRect cella = lista.visualRect(lista.model()->index(5, colonna));
        ASSERT_TRUE(lista.viewport()->rect().contains(cella));
        EXPECT_EQ(lista.viewport()->mapFromGlobal(cornice.mapToGlobal(QPoint(0, 0))), cella.topLeft());
        EXPECT_EQ(cornice.size(), cella.size() - QSize(Sessanta, 0)) << nomeCornice << " " << larghezza;
        EXPECT_GE(Trova<QWidget>(finestra, nomeCampo).width(), cornice.width() - 2);
        if (colonna == FinestraFinta::ColonnaData) {
          EXPECT_EQ(Trova<QLineEdit>(finestra, "TextScad").text(), "06/01/2006");
        }
      }
    }
  });
}

TEST(CellEditor, EnterWritesTheTypedDateAndGoesToTheNextRow) {
  FinestraFinta finta(30);
  Esegui(finta, [&](QDialog& finestra) {
    Clicca(Lista(finestra), 5, FinestraFinta::ColonnaData);
    QTest::keyClicks(QApplication::focusWidget(), "050307");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_EQ(finta.nuovaData, "050307");
    EXPECT_EQ(finta.Volte("tastoEditor 13"), 1);
    EXPECT_FALSE(Visibile(finestra, "FrameScad"));
    EXPECT_TRUE(Lista(finestra).hasFocus());
    EXPECT_EQ(finta.stato.selected, 6);
    EXPECT_EQ(Lista(finestra).currentIndex().column(), FinestraFinta::ColonnaData);
  });
}

TEST(CellEditor, TabWritesTheDateAndGoesToTheNextEditableCell) {
  FinestraFinta finta(30);
  Esegui(finta, [&](QDialog& finestra) {
    Clicca(Lista(finestra), 5, FinestraFinta::ColonnaData);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Delete);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    EXPECT_EQ(finta.nuovaData, "");
    EXPECT_EQ(finta.Volte("tastoEditor 9"), 1);
    EXPECT_EQ(finta.stato.selected, 5);
    EXPECT_EQ(Lista(finestra).currentIndex().column(), FinestraFinta::ColonnaBanca);
  });
}

TEST(CellEditor, ADigitOnADateCellOpensTheEditorWithIt) {
  FinestraFinta finta(30);
  Esegui(finta, [&](QDialog& finestra) {
    QTest::keyClick(&Lista(finestra), Qt::Key_Right);
    QTest::keyClick(&Lista(finestra), Qt::Key_3);
    EXPECT_EQ(Trova<QLineEdit>(finestra, "TextScad").text(), "3");
    QTest::keyClicks(QApplication::focusWidget(), "10306");
    EXPECT_EQ(finta.stato.data.text, "310306");
  });
}

TEST(CellEditor, AnOpenEditorCoversTheScrollBarsAndStopsTheWheel) {
  FinestraFinta finta(100);
  Esegui(finta, [&](QDialog& finestra) {
    QTableView& lista = Lista(finestra);
    Clicca(lista, 2, FinestraFinta::ColonnaData);
    EXPECT_TRUE(Visibile(finestra, "PicScrollVerticale"));
    const QPointF centro = lista.viewport()->rect().center();
    QWheelEvent rotella(centro, lista.viewport()->mapToGlobal(centro), {}, {0, -480}, {}, {}, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(lista.viewport(), &rotella);
    EXPECT_EQ(lista.verticalScrollBar()->value(), 0);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_FALSE(Visibile(finestra, "PicScrollVerticale"));
    QWheelEvent ancora(centro, lista.viewport()->mapToGlobal(centro), {}, {0, -480}, {}, {}, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(lista.viewport(), &ancora);
    EXPECT_GT(lista.verticalScrollBar()->value(), 0);
  });
}

TEST(CellEditor, TheBankEditorOpensClosedOnItsEntryAndClosesWhenItLosesTheFocus) {
  FinestraFinta finta(30);
  Esegui(finta, [&](QDialog& finestra) {
    Clicca(Lista(finestra), 1, FinestraFinta::ColonnaBanca);
    auto& combo = Trova<QComboBox>(finestra, "cmbBanche2");
    ASSERT_TRUE(combo.isVisible());
    EXPECT_TRUE(combo.hasFocus());
    EXPECT_EQ(combo.currentIndex(), 2);
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
    QTest::keyClick(&combo, Qt::Key_Down);
    EXPECT_EQ(finta.Volte("scegliBancaCella 3"), 1);
    EXPECT_EQ(finta.Volte("perdeFuocoBancaCella"), 0);
    QTest::keyClick(&combo, Qt::Key_Return);
    EXPECT_EQ(finta.Volte("perdeFuocoBancaCella"), 1);
    EXPECT_FALSE(combo.isVisible());
    EXPECT_EQ(finta.stato.selected, 2);
    EXPECT_TRUE(Lista(finestra).hasFocus());
  });
}

TEST(CellEditor, OpeningTheBankListDoesNotCountAsLeavingTheEditor) {
  FinestraFinta finta(30);
  Esegui(finta, [&](QDialog& finestra) {
    Clicca(Lista(finestra), 1, FinestraFinta::ColonnaBanca);
    auto& combo = Trova<QComboBox>(finestra, "cmbBanche2");
    combo.showPopup();
    QTest::qWait(50);
    EXPECT_EQ(finta.Volte("perdeFuocoBancaCella"), 0);
    combo.hidePopup();
    QTest::qWait(50);
    EXPECT_TRUE(combo.isVisible());
  });
}

TEST(CellEditor, TheChosenEntryOfAnOpenBankListStandsOut) {
  FinestraFinta finta(30);
  Esegui(finta, [&](QDialog& finestra) {
    for (const char* nome : {"cmbBanche", "cmbBanche2"}) {
      Clicca(Lista(finestra), 1, FinestraFinta::ColonnaBanca);
      auto& combo = Trova<QComboBox>(finestra, nome);
      combo.setCurrentIndex(2);
      combo.showPopup();
      QAbstractItemView& voci = *combo.view();
      ASSERT_TRUE(QTest::qWaitForWindowExposed(voci.window()));
      const auto fondo = [&voci](int voce) {
        const QRect riga = voci.visualRect(voci.model()->index(voce, 0));
        return voci.grab().toImage().pixelColor(
            voci.viewport()->mapToParent(QPoint(riga.right() - 8, riga.center().y())));
      };
      EXPECT_LT(fondo(2).lightness() + 100, fondo(1).lightness()) << nome;
      combo.hidePopup();
    }
  });
}

TEST(CellEditor, EscInAnEditorAbandonsItAndAppliesNothing) {
  FinestraFinta finta(30);
  Esegui(finta, [&](QDialog& finestra) {
    Clicca(Lista(finestra), 1, FinestraFinta::ColonnaBanca);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    EXPECT_EQ(finta.Volte("abbandonaEditor"), 1);
    EXPECT_EQ(finta.Volte("perdeFuocoBancaCella"), 0);
    EXPECT_FALSE(Visibile(finestra, "FrameBanca"));
    EXPECT_TRUE(finestra.isVisible());
    EXPECT_TRUE(Lista(finestra).hasFocus());
  });
}

TEST(CellEditor, AClickInAnotherCellClosesTheEditor) {
  FinestraFinta finta(30);
  Esegui(finta, [&](QDialog& finestra) {
    Clicca(Lista(finestra), 1, FinestraFinta::ColonnaData);
    Clicca(Lista(finestra), 8, 0);
    EXPECT_FALSE(Visibile(finestra, "FrameScad"));
    Clicca(Lista(finestra), 2, FinestraFinta::ColonnaData);
    Clicca(Lista(finestra), 9, FinestraFinta::ColonnaData);
    const QRect cella = Lista(finestra).visualRect(Lista(finestra).model()->index(9, FinestraFinta::ColonnaData));
    auto& cornice = Trova<QWidget>(finestra, "FrameScad");
    EXPECT_EQ(Lista(finestra).viewport()->mapFromGlobal(cornice.mapToGlobal(QPoint(0, 0))), cella.topLeft());
  });
}

TEST(CellEditor, AKeyInTheListGoesBackToTheOpenEditor) {
  FinestraFinta finta(30);
  Esegui(finta, [&](QDialog& finestra) {
    Clicca(Lista(finestra), 1, FinestraFinta::ColonnaData);
    Lista(finestra).setFocus();
    QTest::keyClick(&Lista(finestra), Qt::Key_Down);
    EXPECT_EQ(finta.stato.selected, 1);
    EXPECT_TRUE(Trova<QWidget>(finestra, "TextScad").hasFocus());
  });
}

} // namespace
} // namespace lumoscad::test
