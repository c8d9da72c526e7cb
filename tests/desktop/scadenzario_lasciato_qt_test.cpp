// The single item's window when a field is left: by another row, by a control, by a message.

#include "ScadenzarioAperto.hpp"

#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <gmock/gmock.h>

#include <array>
#include <utility>

namespace lumoscad::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class ItemWindowLeft : public ScadenzarioAperto {
 protected:
  /// Presses a real button of the mouse, which goes up again over the message that the press brings up: the window is
  /// never told of that.
  void PremiEMolla(QDialog& finestra, const QPoint& punto) {
    bool mollato = false;
    alBox = [&] {
      if (!std::exchange(mollato, true)) {
        QTest::mouseRelease(finestra.windowHandle(), Qt::LeftButton, {}, punto);
      }
    };
    QTest::mousePress(finestra.windowHandle(), Qt::LeftButton, {}, punto);
    EXPECT_TRUE(mollato) << "no message came up";
    alBox = {};
  }
};

QPoint Mezzo(const QDialog& finestra, const QWidget& widget) {
  return widget.mapTo(&finestra, widget.rect().center());
}

TEST_F(ItemWindowLeft, SelectAllByItsKeyLeavesTheTopFieldFirstAsAClickDoes) {
  for (const bool conTasto : {false, true}) {
    box.clear();
    form.Svuota();
    form.Aggiungi("31/03/2006", "31/03/2006", "1.250,00");
    Mostra([&](QDialog& finestra) {
      Premi(finestra, "TextScadenza");
      Scrivi("31/13/06");
      if (conTasto) {
        Tasto(Qt::Key_S, Qt::AltModifier);
      } else {
        Premi(finestra, "PicSelezionaTutto");
      }
      EXPECT_TRUE(QTest::qWaitFor([this] { return box.size() >= 2; })); // a key lets a button go a moment later
      EXPECT_THAT(box, ElementsAre(HasSubstr("Mese errato: 31/13/06"), "Inserisci una scadenza"));
      EXPECT_EQ(Trova<QLineEdit>(finestra, "TextScadenza").text(), " ");
      EXPECT_EQ(Spuntate(), 0);
    });
  }
}

TEST_F(ItemWindowLeft, SelectAllByItsKeyWritesTheOpenEditorFirstAsAClickDoes) {
  Mostra([this](QDialog& finestra) {
    Clicca(ListaScad(finestra), 0, ColonnaNuova);
    Scrivi("150606");
    Tasto(Qt::Key_S, Qt::AltModifier);
    EXPECT_EQ(Nuova(0), "15/06/2006");
    EXPECT_FALSE(Visibile(finestra, "TextScad"));
  });
}

TEST_F(ItemWindowLeft, AClickOnSelectAllThatBringsAMessageUpStillCounts) {
  Mostra([this](QDialog& finestra) {
    Premi(finestra, "TextScadenza");
    Scrivi("31/13/06");
    auto& tutto = Trova<QPushButton>(finestra, "PicSelezionaTutto");
    PremiEMolla(finestra, Mezzo(finestra, tutto));
    EXPECT_THAT(box, ElementsAre(HasSubstr("Mese errato: 31/13/06"), "Inserisci una scadenza"));
    EXPECT_FALSE(tutto.isDown());
    EXPECT_EQ(Spuntate(), 0);
  });
}

TEST_F(ItemWindowLeft, AClickOnARowThatBringsAMessageUpStillOpensIt) {
  Mostra([this](QDialog& finestra) {
    auto& lista = ListaScad(finestra);
    Clicca(lista, 0, ColonnaNuova);
    Scrivi("31/13/06");
    const QPoint cella = lista.visualRect(lista.model()->index(2, ColonnaNuova)).center();
    PremiEMolla(finestra, lista.viewport()->mapTo(&finestra, cella));
    EXPECT_THAT(box, ElementsAre(HasSubstr("Mese errato: 31/13/06")));
    EXPECT_TRUE(Visibile(finestra, "TextScad"));
    EXPECT_EQ(form.griglia().Stato().data.place, 2);
  });
}

TEST_F(ItemWindowLeft, AClickOnConfermaThatBringsAMessageUpLeavesTheWindowOpenForAnother) {
  EXPECT_EQ(Mostra([this](QDialog& finestra) {
              Clicca(ListaScad(finestra), 0, ColonnaNuova);
              Scrivi("31/13/06");
              auto& conferma = Trova<QPushButton>(finestra, "PictureOk");
              PremiEMolla(finestra, Mezzo(finestra, conferma));
              EXPECT_THAT(box, ElementsAre(HasSubstr("Mese errato: 31/13/06")));
              EXPECT_TRUE(finestra.isVisible());
              EXPECT_FALSE(conferma.isDown());
              EXPECT_THAT(confermate, IsEmpty());
              Premi(finestra, "PictureOk");
              EXPECT_FALSE(finestra.isVisible());
            }),
            "");
  EXPECT_THAT(confermate, ElementsAre("Scad"));
}

TEST_F(ItemWindowLeft, TheKeysOfConfermaConfirmAtOnceWithoutTheRefusedDate) {
  const std::array<std::pair<Qt::Key, Qt::KeyboardModifier>, 2> tasti{
      {{Qt::Key_Return, Qt::ControlModifier}, {Qt::Key_C, Qt::AltModifier}}};
  for (const auto& [tasto, con] : tasti) {
    box.clear();
    confermate.clear();
    Mostra([&, tasto = tasto, con = con](QDialog& finestra) {
      Clicca(ListaScad(finestra), 0, ColonnaNuova);
      Scrivi("31/13/06");
      Tasto(tasto, con);
      EXPECT_TRUE(QTest::qWaitFor([&] { return !finestra.isVisible(); })); // a key lets a button go a moment later
    });
    EXPECT_THAT(box, ElementsAre(HasSubstr("Mese errato: 31/13/06")));
    EXPECT_THAT(confermate, ElementsAre("Scad"));
    form.Svuota();
    form.Aggiungi("31/03/2006", "31/03/2006", "1.250,00");
  }
}

TEST_F(ItemWindowLeft, TheEditorIsGoneBeforeAMessageSaysThatItsDateIsRefused) {
  Mostra([this](QDialog& finestra) {
    int viste = 0;
    alBox = [&] { viste += Visibile(finestra, "FrameScad") ? 1 : 0; };
    Clicca(ListaScad(finestra), 0, ColonnaNuova);
    Scrivi("31/13/06");
    Tasto(Qt::Key_Return);
    Clicca(ListaScad(finestra), 1, ColonnaNuova);
    Scrivi("32/12/06");
    Premi(finestra, "TextScadenza");
    EXPECT_EQ(box.size(), 2U);
    EXPECT_EQ(viste, 0);
    alBox = {};
  });
}

TEST_F(ItemWindowLeft, AClickBelowTheLastRowOnlyLeavesTheEditor) {
  Mostra([this](QDialog& finestra) {
    auto& lista = ListaScad(finestra);
    finestra.resize(finestra.width(), finestra.height() + 200);
    for (const int colonna : {Casella, ColonnaNuova}) {
      Clicca(lista, 0, ColonnaNuova);
      Scrivi("150606");
      const QRect ultima = lista.visualRect(lista.model()->index(3, colonna));
      QTest::mouseClick(lista.viewport(), Qt::LeftButton, {}, ultima.center() + QPoint(0, 2 * ultima.height()));
      EXPECT_EQ(Nuova(0), "15/06/2006");
      EXPECT_EQ(form.griglia().Stato().selected, 0);
      EXPECT_EQ(Spuntate(), 0);
      EXPECT_FALSE(Visibile(finestra, "TextScad"));
    }
  });
}

TEST_F(ItemWindowLeft, ADateRefusedOnTheWayToAnotherRowIsSaidOnceAndTheOtherRowOpens) {
  Mostra([this](QDialog& finestra) {
    Clicca(ListaScad(finestra), 0, ColonnaNuova);
    Scrivi("31/13/06");
    Clicca(ListaScad(finestra), 2, ColonnaNuova);
    EXPECT_THAT(box, ElementsAre(HasSubstr("Mese errato: 31/13/06")));
    EXPECT_EQ(Nuova(0), " ");
    EXPECT_EQ(form.griglia().Stato().selected, 2);
    EXPECT_TRUE(Visibile(finestra, "TextScad"));
  });
}

TEST_F(ItemWindowLeft, AMessageInFrontDoesNotCountAsLeavingTheFields) {
  Mostra([this](QDialog& finestra) {
    Tasto(Qt::Key_F2);
    Scrivi("150606");
    desktop->ShowBox("Avviso", "LumoScad");
    EXPECT_TRUE(Visibile(finestra, "TextScad"));
    EXPECT_EQ(Nuova(0), "");
    Tasto(Qt::Key_Escape);
    Trova<QWidget>(finestra, "TextScadenza").setFocus();
    Scrivi("1");
    desktop->ShowBox("Avviso", "LumoScad");
    EXPECT_EQ(form.griglia().Stato().dueDateText, "1");
  });
}

TEST_F(ItemWindowLeft, LeavingTheEditorWritesItsDate) {
  Mostra([this](QDialog& finestra) {
    Clicca(ListaScad(finestra), 0, ColonnaNuova);
    Scrivi("150606");
    Premi(finestra, "TextScadenza");
    EXPECT_EQ(Nuova(0), "15/06/2006");
    Clicca(ListaScad(finestra), 1, ColonnaNuova);
    Scrivi("160606");
    Clicca(ListaScad(finestra), 3, Casella);
    EXPECT_EQ(Nuova(1), "16/06/2006");
    EXPECT_TRUE(form.griglia().righe.Spuntata(3, 0));
    EXPECT_FALSE(Visibile(finestra, "TextScad"));
  });
}

} // namespace
} // namespace lumoscad::test
