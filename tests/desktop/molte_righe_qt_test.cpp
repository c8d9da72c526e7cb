// Many rows at once in the real windows, with real keys and clicks.

#include "FinestraFinta.hpp"
#include "platform/qt/QtDesktop.hpp"
#include "screens/frmLumoScadenzeBanche.hpp"
#include "support/TestBench.hpp"

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QTest>
#include <QTimer>

#include <gmock/gmock.h>

namespace lumoscad::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// The credits' screen in its real window, with thirty rows of five customers; its message boxes are answered.
class ManyRows : public testing::Test {
 protected:
  using Schermata = frmLumoScadenzeBanche;

  ManyRows() : desktop(qt::CreateDesktop()) {
    ActiveServices().desktop = [this]() -> Desktop& { return *desktop; };
    griglia.cmbBanche = griglia.cmbBanche2 = {{" ", "BANCA ALFA", "BANCA BETA"}, {"B01", "B02"}};
    for (int i = 0; i < 30; ++i) {
      const std::string conto = "CLIENTE " + std::to_string(10 + i / 6);
      const std::string partita = "2006 " + std::to_string(100 + i);
      griglia.righe.Aggiungi(
          {conto, partita, "31/03/2006", "31/03/2006", "", "100,00", "", "31/03/2006", "1", "", "", "2006/03/31"});
    }
    griglia.Resize();
    risponditore_.setInterval(5);
    QObject::connect(&risponditore_, &QTimer::timeout, &risponditore_, [this] {
      auto* aperta = QApplication::activeModalWidget();
      if (aperta != nullptr && aperta->objectName() == "MostraMessaggio") {
        box.push_back(Trova<QLabel>(*aperta, "lblMessaggio").text().toStdString());
        QTest::keyClick(aperta, Qt::Key_Return);
      }
    });
  }

  void Mostra(const std::function<void(QDialog&)>& copione) {
    risponditore_.start();
    Recita(copione);
    griglia.Mostra();
  }
  static void Premi(QTableView& lista, int riga, int colonna, Qt::KeyboardModifiers con = {}) {
    const QPoint centro = lista.visualRect(lista.model()->index(riga, colonna)).center();
    QTest::mouseClick(lista.viewport(), Qt::LeftButton, con, centro);
  }
  static void Tasto(Qt::Key tasto, Qt::KeyboardModifiers con = {}) {
    QTest::keyClick(QApplication::focusWidget(), tasto, con);
  }
  /// Each letter to whatever has the focus by then.
  static void Scrivi(const char* testo) {
    for (const QChar lettera : QString::fromUtf8(testo)) {
      QTest::keyClicks(QApplication::focusWidget(), lettera);
    }
  }
  /// The rows that the table shows as selected.
  static std::vector<int> Scelte(const QTableView& lista) {
    std::vector<int> righe;
    for (const QModelIndex& indice : lista.selectionModel()->selectedRows()) {
      righe.push_back(indice.row());
    }
    std::sort(righe.begin(), righe.end());
    return righe;
  }
  [[nodiscard]] std::vector<std::size_t> Spuntate(int quale) const {
    std::vector<std::size_t> righe;
    for (std::size_t riga = 0; riga < griglia.righe.Quante(); ++riga) {
      if (griglia.righe.Spuntata(riga, quale)) {
        righe.push_back(riga);
      }
    }
    return righe;
  }
  [[nodiscard]] std::vector<std::size_t> ConData(std::string_view data) const {
    std::vector<std::size_t> righe;
    for (std::size_t riga = 0; riga < griglia.righe.Quante(); ++riga) {
      if (griglia.righe.Testo(riga, Schermata::NuovaScadenza) == data) {
        righe.push_back(riga);
      }
    }
    return righe;
  }

  TestBench banco;
  std::unique_ptr<Desktop> desktop;
  Schermata schermata;
  Griglia& griglia = schermata.griglia();
  std::vector<std::string> box;

 private:
  QTimer risponditore_;
};

TEST_F(ManyRows, AreSelectedByShiftAndCtrlWithTheMouse) {
  Mostra([&](QDialog& finestra) {
    QTableView& lista = Lista(finestra);
    Premi(lista, 2, 0);
    EXPECT_THAT(Scelte(lista), ElementsAre(2));
    Premi(lista, 5, 0, Qt::ShiftModifier);
    EXPECT_THAT(Scelte(lista), ElementsAre(2, 3, 4, 5));
    Premi(lista, 3, 0, Qt::ControlModifier);
    Premi(lista, 8, 0, Qt::ControlModifier);
    EXPECT_THAT(Scelte(lista), ElementsAre(2, 4, 5, 8));
    EXPECT_EQ(lista.currentIndex().row(), 8);
    Premi(lista, 1, 0);
    EXPECT_THAT(Scelte(lista), ElementsAre(1));
  });
}

TEST_F(ManyRows, AreSelectedByShiftAndCtrlWithTheKeys) {
  Mostra([&](QDialog& finestra) {
    QTableView& lista = Lista(finestra);
    Tasto(Qt::Key_Down);
    Tasto(Qt::Key_Down, Qt::ShiftModifier);
    Tasto(Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_THAT(Scelte(lista), ElementsAre(1, 2, 3));
    Tasto(Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_THAT(Scelte(lista), ElementsAre(1, 2));
    Tasto(Qt::Key_Down, Qt::ControlModifier);
    Tasto(Qt::Key_Down, Qt::ControlModifier);
    EXPECT_THAT(Scelte(lista), ElementsAre(1, 2));
    Tasto(Qt::Key_Space, Qt::ControlModifier);
    EXPECT_THAT(Scelte(lista), ElementsAre(1, 2, 4));
    Tasto(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(Scelte(lista).size(), 30U);
    Tasto(Qt::Key_End, Qt::ShiftModifier);
    EXPECT_EQ(Scelte(lista).size(), 26U) << "from the anchor to the end";
    Tasto(Qt::Key_Up);
    EXPECT_THAT(Scelte(lista), ElementsAre(28));
  });
}

TEST_F(ManyRows, AreTickedTogetherByTheSpaceBar) {
  Mostra([&](QDialog& finestra) {
    QTableView& lista = Lista(finestra);
    auto& inAlto = Trova<QLineEdit>(finestra, "TextScadenza");
    inAlto.setFocus();
    Scrivi("200127");
    lista.setFocus();
    Premi(lista, 1, Schermata::Conto);
    Premi(lista, 3, Schermata::Conto, Qt::ShiftModifier);
    while (lista.currentIndex().column() != Schermata::Radio1) {
      Tasto(Qt::Key_Right);
    }
    EXPECT_THAT(Scelte(lista), ElementsAre(1, 2, 3)) << "moving within a row leaves the selection";
    Tasto(Qt::Key_Space);
    EXPECT_THAT(Spuntate(0), ElementsAre(1, 2, 3));
    EXPECT_THAT(ConData("20/01/2027"), ElementsAre(1, 2, 3));
    EXPECT_EQ(inAlto.text(), "20/01/2027");
    EXPECT_THAT(Scelte(lista), ElementsAre(1, 2, 3));
    EXPECT_EQ(griglia.Stato().notice, "3 rate: scadenza 20/01/2027");
    Tasto(Qt::Key_Space);
    EXPECT_THAT(Spuntate(0), IsEmpty());
    EXPECT_THAT(ConData("20/01/2027"), IsEmpty());
  });
}

TEST_F(ManyRows, AreTickedByAClickOnTheTickOfOneOfThem) {
  Mostra([&](QDialog& finestra) {
    QTableView& lista = Lista(finestra);
    Premi(lista, 1, Schermata::Conto);
    Premi(lista, 3, Schermata::Conto, Qt::ShiftModifier);
    Premi(lista, 2, Schermata::Radio2);
    EXPECT_THAT(Spuntate(1), ElementsAre(1, 2, 3));
    EXPECT_THAT(Scelte(lista), ElementsAre(1, 2, 3));
    Premi(lista, 9, Schermata::Radio2);
    EXPECT_THAT(Spuntate(1), ElementsAre(1, 2, 3, 9)) << "a tick outside the selection is one row's";
    EXPECT_THAT(Scelte(lista), ElementsAre(9));
  });
}

TEST_F(ManyRows, TakeTheTickOfTheAnchorUpToAShiftClickBothWays) {
  Mostra([&](QDialog& finestra) {
    QTableView& lista = Lista(finestra);
    Premi(lista, 4, Schermata::Radio2);
    Premi(lista, 7, Schermata::Radio2, Qt::ShiftModifier);
    EXPECT_THAT(Spuntate(1), ElementsAre(4, 5, 6, 7));
    Premi(lista, 2, Schermata::Radio2, Qt::ShiftModifier);
    EXPECT_THAT(Spuntate(1), ElementsAre(2, 3, 4, 5, 6, 7));
    Premi(lista, 6, Schermata::Radio2);
    Premi(lista, 3, Schermata::Radio2, Qt::ShiftModifier);
    EXPECT_THAT(Spuntate(1), ElementsAre(2, 7));
  });
}

TEST_F(ManyRows, TakeTheTickOfTheAnchorUpToShiftSpace) {
  Mostra([&](QDialog& finestra) {
    QTableView& lista = Lista(finestra);
    Premi(lista, 4, Schermata::Radio2);
    Tasto(Qt::Key_Down, Qt::ControlModifier);
    Tasto(Qt::Key_Down, Qt::ControlModifier);
    Tasto(Qt::Key_Space, Qt::ShiftModifier);
    EXPECT_THAT(Spuntate(1), ElementsAre(4, 5, 6));
  });
}

TEST_F(ManyRows, AreTickedByDraggingOverTheirTicks) {
  Mostra([&](QDialog& finestra) {
    QTableView& lista = Lista(finestra);
    const auto centro = [&](int riga) {
      return lista.visualRect(lista.model()->index(riga, Schermata::Radio2)).center();
    };
    QTest::mousePress(lista.viewport(), Qt::LeftButton, {}, centro(3));
    QTest::mouseMove(lista.viewport(), centro(4));
    QTest::mouseMove(lista.viewport(), centro(6));
    QTest::mouseMove(lista.viewport(), centro(5));
    QTest::mouseRelease(lista.viewport(), Qt::LeftButton, {}, centro(5));
    EXPECT_THAT(Spuntate(1), ElementsAre(3, 4, 5));
    EXPECT_THAT(Scelte(lista), ElementsAre(3, 4, 5));
  });
}

TEST_F(ManyRows, GetADateThatIsTypedOnOneOfThem) {
  Mostra([&](QDialog& finestra) {
    QTableView& lista = Lista(finestra);
    Premi(lista, 1, Schermata::Conto);
    Premi(lista, 3, Schermata::Conto, Qt::ShiftModifier);
    while (lista.currentIndex().column() != Schermata::NuovaScadenza) {
      Tasto(Qt::Key_Right);
    }
    Scrivi("200127");
    EXPECT_EQ(griglia.Stato().notice, "Il valore vale per 3 rate");
    Tasto(Qt::Key_Return);
    EXPECT_THAT(ConData("20/01/2027"), ElementsAre(1, 2, 3));
    EXPECT_EQ(griglia.Stato().notice, "3 rate: scadenza 20/01/2027");
    EXPECT_THAT(Scelte(lista), ElementsAre(1, 2, 3)) << "a gesture keeps the selection";
    EXPECT_TRUE(lista.hasFocus());
    EXPECT_THAT(box, IsEmpty());
  });
}

TEST_F(ManyRows, StayAsTheyAreWhenTheDateIsRefusedWithOneBox) {
  Mostra([&](QDialog& finestra) {
    QTableView& lista = Lista(finestra);
    Tasto(Qt::Key_A, Qt::ControlModifier);
    while (lista.currentIndex().column() != Schermata::NuovaScadenza) {
      Tasto(Qt::Key_Right);
    }
    Scrivi("310227");
    Tasto(Qt::Key_Return);
    EXPECT_EQ(box.size(), 1U);
    EXPECT_EQ(ConData("31/03/2006").size(), 30U);
  });
}

TEST_F(ManyRows, AreTakenBackByOneKeyAndDoneAgainByAnother) {
  Mostra([&](QDialog& finestra) {
    QTableView& lista = Lista(finestra);
    Tasto(Qt::Key_A, Qt::ControlModifier);
    while (lista.currentIndex().column() != Schermata::NuovaScadenza) {
      Tasto(Qt::Key_Right);
    }
    Scrivi("200127");
    Tasto(Qt::Key_Return);
    EXPECT_EQ(ConData("20/01/2027").size(), 30U);
    Tasto(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_THAT(ConData("20/01/2027"), IsEmpty());
    EXPECT_EQ(Trova<QLabel>(finestra, "FootNotice").text(), "Annullato: scadenza di 30 rate");
    Tasto(Qt::Key_Y, Qt::ControlModifier);
    EXPECT_EQ(ConData("20/01/2027").size(), 30U);
    Tasto(Qt::Key_Z, Qt::ControlModifier);
    Tasto(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(ConData("20/01/2027").size(), 30U);
  });
}

TEST_F(ManyRows, AreTakenBackFromTheFieldAtTheTopWhenItHasNothingOfItsOwn) {
  Mostra([&](QDialog& finestra) {
    Premi(Lista(finestra), 4, Schermata::Radio2);
    auto& inAlto = Trova<QLineEdit>(finestra, "TextScadenza");
    inAlto.setFocus();
    Scrivi("2");
    Tasto(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(inAlto.text(), "") << "first what was typed in it";
    EXPECT_THAT(Spuntate(1), ElementsAre(4));
  });
}

TEST_F(ManyRows, AreFoundByWhatIsTypedAndShownAgainByEsc) {
  Mostra([&](QDialog& finestra) {
    QTableView& lista = Lista(finestra);
    EXPECT_EQ(finestra.findChild<QWidget*>("FilterBar"), nullptr);
    Tasto(Qt::Key_F, Qt::ControlModifier);
    EXPECT_TRUE(Visibile(finestra, "FilterBar"));
    Scrivi("conto:12");
    EXPECT_EQ(lista.model()->rowCount(), 6);
    EXPECT_EQ(Trova<QLabel>(finestra, "FilterCount").text(), "6 di 30");
    EXPECT_EQ(Trova<QLabel>(finestra, "lblRighe").text(), "30 righe");
    Tasto(Qt::Key_Return);
    EXPECT_TRUE(lista.hasFocus());
    Tasto(Qt::Key_A, Qt::ControlModifier);
    while (lista.currentIndex().column() != Schermata::NuovaScadenza) {
      Tasto(Qt::Key_Right);
    }
    Scrivi("200127");
    Tasto(Qt::Key_Return);
    Tasto(Qt::Key_F, Qt::ControlModifier);
    Tasto(Qt::Key_Escape);
    EXPECT_FALSE(Visibile(finestra, "FilterBar"));
    EXPECT_TRUE(lista.hasFocus());
    EXPECT_EQ(lista.model()->rowCount(), 30);
    EXPECT_THAT(ConData("20/01/2027"), ElementsAre(12, 13, 14, 15, 16, 17));
  });
}

TEST_F(ManyRows, AreReachedByTabFromTheFieldsAboveThroughTheFilterWhereItIsShown) {
  Mostra([&](QDialog& finestra) {
    Trova<QWidget>(finestra, "cmbBanche").setFocus();
    Tasto(Qt::Key_Tab);
    EXPECT_TRUE(Lista(finestra).hasFocus());
    Tasto(Qt::Key_F, Qt::ControlModifier);
    EXPECT_TRUE(Trova<QWidget>(finestra, "TextFiltro").hasFocus());
    Tasto(Qt::Key_Tab);
    Tasto(Qt::Key_Tab);
    Tasto(Qt::Key_Tab);
    EXPECT_TRUE(Lista(finestra).hasFocus());
  });
}

TEST_F(ManyRows, HaveTheirFilterAboveThemAlsoBesideAPanelThatWasThereBefore) {
  Mostra([&](QDialog& finestra) {
    Tasto(Qt::Key_F6);
    Tasto(Qt::Key_F, Qt::ControlModifier);
    const auto alto = [&finestra](QWidget& parte) { return parte.mapTo(&finestra, QPoint(0, 0)).y(); };
    auto& filtro = Trova<QWidget>(finestra, "TextFiltro");
    EXPECT_TRUE(QTest::qWaitFor([&] { return alto(filtro) > 0 && alto(filtro) < alto(Lista(finestra)); }));
  });
}

TEST_F(ManyRows, ThatAreChangedOutOfSightKeepEscFromClosing) {
  Mostra([&](QDialog& finestra) {
    QTableView& lista = Lista(finestra);
    Premi(lista, 0, Schermata::NuovaScadenza);
    Scrivi("200127");
    Tasto(Qt::Key_Return);
    Tasto(Qt::Key_F, Qt::ControlModifier);
    Scrivi("cliente 14");
    Tasto(Qt::Key_Return);
    Tasto(Qt::Key_Escape);
    EXPECT_TRUE(finestra.isVisible());
    EXPECT_TRUE(Trova<QWidget>(finestra, "PictureAnnulla").hasFocus());
  });
}

TEST_F(ManyRows, AreReachedByALetterTypedInTheList) {
  griglia.righe.ImpostaTesto(20, Schermata::Conto, "ZORZI");
  griglia.Resize();
  Mostra([&](QDialog& finestra) {
    Scrivi("z");
    EXPECT_EQ(Lista(finestra).currentIndex().row(), 29);
    EXPECT_EQ(griglia.RigaSelezionata(), 20U);
  });
}

TEST_F(ManyRows, AreOfferedInTheMenuOfTheList) {
  Mostra([&](QDialog& finestra) {
    QTableView& lista = Lista(finestra);
    Tasto(Qt::Key_Menu);
    auto& menu = Trova<QMenu>(finestra, "ListMenu");
    EXPECT_TRUE(menu.isVisible());
    menu.close();
    for (const auto& [tasto, con] : {std::pair(Qt::Key_Menu, Qt::KeyboardModifiers()),
                                     std::pair(Qt::Key_F10, Qt::KeyboardModifiers(Qt::ShiftModifier))}) {
      lista.setFocus();
      Tasto(tasto, con);
      EXPECT_TRUE(menu.isVisible());
      menu.close();
    }
    QContextMenuEvent destro(QContextMenuEvent::Mouse, lista.visualRect(lista.model()->index(5, 0)).center(),
                             lista.viewport()->mapToGlobal(lista.visualRect(lista.model()->index(5, 0)).center()));
    QApplication::sendEvent(lista.viewport(), &destro);
    EXPECT_TRUE(menu.isVisible());
    EXPECT_THAT(Scelte(lista), ElementsAre(5));
    QStringList voci;
    for (const QAction* voce : menu.actions()) {
      voci << voce->text();
    }
    EXPECT_TRUE(voci.contains("Seleziona visibili (30)\tCtrl+A")) << voci.join("|").toStdString();
    EXPECT_TRUE(voci.contains("Seleziona tutto il conto"));
    menu.close();
    lista.setFocus();
    Tasto(Qt::Key_I, Qt::ControlModifier);
    EXPECT_EQ(Scelte(lista).size(), 29U);
    Tasto(Qt::Key_M, Qt::ControlModifier);
    EXPECT_EQ(Scelte(lista).size(), 30U) << "all fall in one month";
  });
}

} // namespace
} // namespace lumoscad::test
