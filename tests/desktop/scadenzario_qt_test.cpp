#include "ScadenzarioAperto.hpp"

#include "platform/RuntimeError.hpp"

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QWindow>

#include <gmock/gmock.h>

namespace lumoscad::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class ItemWindow : public ScadenzarioAperto {};

TEST_F(ItemWindow, EveryControlCarriesItsOwnName) {
  Mostra([](QDialog& finestra) {
    EXPECT_EQ(finestra.objectName(), "FormLumoScad");
    for (const char* nome : {"LWScad", "FrameScadenzeBase", "TextScad", "PicScrollVerticale", "PicScrollOrizzontale",
                             "RigaSepara", "FrameSeparatore", "FrameDesc", "LabelPartita", "LabelDescPartita",
                             "LabelCliFor", "LabelDescCliFor", "PicSelezionaTutto", "FrameNuovaScadenza", "LabelNScad",
                             "TextScadenza", "FrameOkAnnulla", "PictureOk", "PictureAnnulla"}) {
      EXPECT_NE(finestra.findChild<QWidget*>(nome), nullptr) << nome;
    }
    EXPECT_EQ(finestra.findChild<QObject*>("IL_Small"), nullptr) << "its list has check boxes";
  });
}

TEST_F(ItemWindow, CarriesTheLabelOfEarlierDaysButNeverShowsIt) {
  const auto cerca = [](QDialog& finestra) {
    auto& etichetta = Trova<QLabel>(finestra, "Label1");
    EXPECT_EQ(etichetta.text(), "Questa FormLumoScad non viene piu' utilizzata !!!  Ciao, a presto !!");
    EXPECT_EQ(etichetta.font().family(), "MS Sans Serif");
    EXPECT_FALSE(etichetta.isVisible());
  };
  Mostra(cerca);
  MostraExtra(cerca);
}

TEST_F(ItemWindow, ShowsTheDescriptionOfAnItemAndNoneOfAnExtraSchedule) {
  Mostra([](QDialog& finestra) {
    EXPECT_TRUE(Visibile(finestra, "LabelPartita"));
    EXPECT_TRUE(Visibile(finestra, "LabelCliFor"));
    EXPECT_EQ(Trova<QLabel>(finestra, "LabelDescPartita").text(), "2006 152");
    EXPECT_EQ(Trova<QLabel>(finestra, "LabelDescCliFor").text(), "Oleificio Santa Chiara");
  });
  MostraExtra([](QDialog& finestra) {
    for (const char* nome : {"LabelPartita", "LabelDescPartita", "LabelCliFor", "LabelDescCliFor"}) {
      EXPECT_FALSE(Visibile(finestra, nome)) << nome;
    }
    EXPECT_TRUE(Visibile(finestra, "LWScad"));
  });
}

TEST_F(ItemWindow, ItsRowsObeyTheModelContract) {
  Mostra([](QDialog& finestra) {
    auto& lista = ListaScad(finestra);
    const QAbstractItemModelTester controllo(lista.model(), QAbstractItemModelTester::FailureReportingMode::Fatal);
    EXPECT_EQ(lista.model()->rowCount(), 4);
    EXPECT_EQ(lista.model()->index(2, ColonnaScadenza).data().toString(), "31/05/2006");
    Scrivi("1");
    Tasto(Qt::Key_Return);
    Tasto(Qt::Key_Space);
  });
}

TEST_F(ItemWindow, AClickInTheBoxTicksAndDoesNotOpenTheEditor) {
  Mostra([this](QDialog& finestra) {
    Clicca(ListaScad(finestra), 2, Casella);
    EXPECT_TRUE(form.griglia().righe.Spuntata(2, 0));
    EXPECT_EQ(Spuntate(), 1);
    EXPECT_FALSE(Visibile(finestra, "TextScad"));
    EXPECT_EQ(ListaScad(finestra).model()->index(2, Casella).data(Qt::CheckStateRole).toInt(), Qt::Checked);
    Clicca(ListaScad(finestra), 2, Casella);
    EXPECT_EQ(Spuntate(), 0);
  });
}

TEST_F(ItemWindow, AClickInAnyOtherColumnOpensTheEditorOverTheNewDate) {
  Mostra([](QDialog& finestra) {
    auto& lista = ListaScad(finestra);
    for (int colonna = ColonnaScadenza; colonna <= ColonnaNuova; ++colonna) {
      Clicca(lista, 1, colonna);
      auto& cornice = Trova<QWidget>(finestra, "FrameScad");
      ASSERT_TRUE(cornice.isVisible()) << colonna;
      const QRect cella = lista.visualRect(lista.model()->index(1, ColonnaNuova));
      const QRect area(lista.viewport()->mapFromGlobal(cornice.mapToGlobal(QPoint(0, 0))), cornice.size());
      EXPECT_EQ(area, cella.adjusted(60 / TwipsPerPixelX, 0, 0, 0));
      EXPECT_TRUE(Trova<QWidget>(finestra, "TextScad").hasFocus());
      Tasto(Qt::Key_Escape);
      EXPECT_FALSE(cornice.isVisible());
    }
  });
}

TEST_F(ItemWindow, AClickBelowTheRowsClosesTheEditorAndOpensNone) {
  Mostra([this](QDialog& finestra) {
    auto& lista = ListaScad(finestra);
    Clicca(lista, 0, ColonnaNuova);
    Scrivi("150606");
    ASSERT_EQ(lista.rowAt(lista.viewport()->height() - 2), -1);
    QTest::mouseClick(lista.viewport(), Qt::LeftButton, {}, QPoint(40, lista.viewport()->height() - 2));
    EXPECT_FALSE(Visibile(finestra, "TextScad"));
    EXPECT_EQ(Nuova(0), "15/06/2006");
  });
}

TEST_F(ItemWindow, EnterWritesTheDateAndGoesToTheNextRow) {
  Mostra([this](QDialog& finestra) {
    Tasto(Qt::Key_F2);
    Scrivi("150606");
    Tasto(Qt::Key_Return);
    EXPECT_EQ(Nuova(0), "15/06/2006");
    EXPECT_FALSE(Visibile(finestra, "TextScad"));
    EXPECT_TRUE(ListaScad(finestra).hasFocus());
    EXPECT_EQ(form.griglia().Stato().selected, 1);
    Tasto(Qt::Key_Return);
    EXPECT_TRUE(Visibile(finestra, "TextScad"));
    EXPECT_EQ(Trova<QLineEdit>(finestra, "TextScad").text(), "");
  });
}

TEST_F(ItemWindow, TabLeavesTheEditorOpen) {
  Mostra([this](QDialog& finestra) {
    Tasto(Qt::Key_F2);
    Scrivi("150606");
    Tasto(Qt::Key_Tab);
    Tasto(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_TRUE(Trova<QWidget>(finestra, "TextScad").hasFocus());
    EXPECT_EQ(Trova<QLineEdit>(finestra, "TextScad").text(), "150606");
    EXPECT_EQ(Nuova(0), "");
  });
}

TEST_F(ItemWindow, ADigitOpensTheEditorWithIt) {
  Mostra([this](QDialog& finestra) {
    Tasto(Qt::Key_Down);
    Scrivi("1");
    EXPECT_EQ(Trova<QLineEdit>(finestra, "TextScad").text(), "1");
    Scrivi("50606");
    Tasto(Qt::Key_Return);
    EXPECT_EQ(Nuova(1), "15/06/2006");
  });
}

TEST_F(ItemWindow, SpaceTicksTheRowFromAnyColumn) {
  Mostra([this](QDialog& finestra) {
    Tasto(Qt::Key_Space);
    Tasto(Qt::Key_Down);
    Tasto(Qt::Key_Right);
    Tasto(Qt::Key_Right);
    Tasto(Qt::Key_Space);
    EXPECT_EQ(Spuntate(), 2);
    EXPECT_FALSE(Visibile(finestra, "TextScad"));
    Tasto(Qt::Key_F2);
    EXPECT_TRUE(Visibile(finestra, "TextScad")) << "the tick's own click must not swallow this one";
  });
}

TEST_F(ItemWindow, EscLeavesTheEditorThenTheWindow) {
  EXPECT_EQ(Mostra([](QDialog& finestra) {
              Tasto(Qt::Key_F2);
              Scrivi("150606");
              Tasto(Qt::Key_Escape);
              EXPECT_FALSE(Visibile(finestra, "TextScad"));
              EXPECT_TRUE(finestra.isVisible());
              Tasto(Qt::Key_Escape);
              EXPECT_FALSE(finestra.isVisible());
            }),
            "closed");
  EXPECT_EQ(Nuova(0), "");
  EXPECT_THAT(confermate, IsEmpty());
}

TEST_F(ItemWindow, EscOverANewDateGoesToAnnullaFirst) {
  EXPECT_EQ(Mostra([this](QDialog& finestra) {
              Tasto(Qt::Key_F2);
              Scrivi("150606");
              Tasto(Qt::Key_Return);
              EXPECT_EQ(Nuova(0), "15/06/2006");
              Tasto(Qt::Key_Escape);
              EXPECT_TRUE(finestra.isVisible());
              EXPECT_TRUE(Trova<QWidget>(finestra, "PictureAnnulla").hasFocus());
              Tasto(Qt::Key_Escape);
              EXPECT_FALSE(finestra.isVisible());
            }),
            "closed");
  EXPECT_THAT(confermate, IsEmpty());
}

TEST_F(ItemWindow, TheTopDateIsNormalisedWhenItIsLeft) {
  Mostra([this](QDialog& finestra) {
    auto& campo = Trova<QLineEdit>(finestra, "TextScadenza");
    Clicca(ListaScad(finestra), 1, Casella);
    Premi(finestra, "TextScadenza");
    Scrivi("010706");
    EXPECT_EQ(Spuntate(), 0) << "typing unticks";
    Tasto(Qt::Key_Tab);
    EXPECT_EQ(campo.text(), "01/07/2006");
    EXPECT_TRUE(Trova<QWidget>(finestra, "PicSelezionaTutto").hasFocus());
  });
}

TEST_F(ItemWindow, SelectAllTicksEveryRowWithTheTopDate) {
  Mostra([this](QDialog& finestra) {
    Premi(finestra, "TextScadenza");
    Scrivi("010706");
    auto& tutto = Trova<QPushButton>(finestra, "PicSelezionaTutto");
    EXPECT_EQ(tutto.text(), "&Seleziona tutto");
    Premi(finestra, "PicSelezionaTutto");
    EXPECT_EQ(Spuntate(), 4);
    EXPECT_EQ(Nuova(3), "01/07/2006");
    EXPECT_EQ(tutto.text(), "&Seleziona tutto");
    Tasto(Qt::Key_Space);
    EXPECT_EQ(Spuntate(), 0);
    EXPECT_EQ(Nuova(3), "");
    EXPECT_EQ(tutto.text(), "De&seleziona tutto");
  });
}

TEST_F(ItemWindow, SelectAllAsksForADateWhenTheTopFieldWasLeftEmpty) {
  Mostra([this](QDialog& finestra) {
    Premi(finestra, "TextScadenza");
    Premi(finestra, "PicSelezionaTutto");
    EXPECT_THAT(box, ElementsAre("Inserisci una scadenza"));
    EXPECT_EQ(Spuntate(), 0);
    EXPECT_EQ(Trova<QLineEdit>(finestra, "TextScadenza").text(), " ");
  });
}

TEST_F(ItemWindow, TheAccessKeysReachEveryControl) {
  EXPECT_EQ(Mostra([this](QDialog& finestra) {
              Tasto(Qt::Key_N, Qt::AltModifier);
              EXPECT_TRUE(Trova<QWidget>(finestra, "TextScadenza").hasFocus());
              Scrivi("010706");
              Tasto(Qt::Key_S, Qt::AltModifier);
              EXPECT_TRUE(QTest::qWaitFor([this] { return Spuntate() == 4; }));
              Tasto(Qt::Key_S, Qt::AltModifier);
              EXPECT_TRUE(QTest::qWaitFor([this] { return Spuntate() == 0; }));
              Tasto(Qt::Key_C, Qt::AltModifier);
              EXPECT_TRUE(QTest::qWaitFor([&finestra] { return !finestra.isVisible(); }));
            }),
            "");
  EXPECT_THAT(confermate, ElementsAre("Scad"));
}

TEST_F(ItemWindow, ConfermaWritesTheOpenEditorFirst) {
  esito = [this] { return Nuova(0); };
  EXPECT_EQ(Mostra([](QDialog& finestra) {
              Clicca(ListaScad(finestra), 0, ColonnaNuova);
              Scrivi("150606");
              Premi(finestra, "PictureOk");
              EXPECT_FALSE(finestra.isVisible());
            }),
            "15/06/2006");
}

TEST_F(ItemWindow, CtrlEnterConfirmsFromTheEditorToo) {
  esito = [this] { return Nuova(0); };
  EXPECT_EQ(MostraExtra([](QDialog&) {
              Tasto(Qt::Key_F2);
              Scrivi("150606");
              Tasto(Qt::Key_Return, Qt::ControlModifier);
            }),
            "15/06/2006");
  EXPECT_THAT(confermate, ElementsAre("Extra"));
}

TEST_F(ItemWindow, TheConfirmationRunsWhileTheWindowIsStillThere) {
  bool aperta = false;
  esito = [&] {
    aperta = QApplication::activeModalWidget() != nullptr;
    return std::string();
  };
  EXPECT_EQ(Mostra([](QDialog& finestra) { Premi(finestra, "PictureOk"); }), "");
  EXPECT_TRUE(aperta);
}

TEST_F(ItemWindow, TheConfirmationOfADemonstrationRunsOnceTheWindowIsGone) {
  stato().demoPresunti = true;
  bool aperta = true;
  esito = [&] {
    aperta = QApplication::activeModalWidget() != nullptr;
    return std::string("dopo");
  };
  EXPECT_EQ(Mostra([](QDialog& finestra) { Premi(finestra, "PictureOk"); }), "dopo");
  EXPECT_FALSE(aperta);
}

TEST_F(ItemWindow, AFailedConfirmationClosesTheWindowAndComesOut) {
  esito = []() -> std::string { throw RuntimeError(errors::SubscriptOutOfRange, "troppe scadenze"); };
  EXPECT_THROW(Mostra([](QDialog& finestra) { Premi(finestra, "PictureOk"); }), RuntimeError);
  EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

TEST_F(ItemWindow, AnnullaAndTheCloseBoxLeaveWithoutConfirming) {
  EXPECT_EQ(Mostra([](QDialog& finestra) { Premi(finestra, "PictureAnnulla"); }), "closed");
  EXPECT_EQ(Mostra([](QDialog& finestra) { finestra.close(); }), "closed");
  EXPECT_THAT(confermate, IsEmpty());
}

TEST_F(ItemWindow, AnEmptyListCanBeShownAndLeft) {
  form.Svuota();
  EXPECT_EQ(Mostra([](QDialog& finestra) {
              auto& lista = ListaScad(finestra);
              for (const Qt::Key tasto : {Qt::Key_Down, Qt::Key_Space, Qt::Key_Return, Qt::Key_F2, Qt::Key_7}) {
                QTest::keyClick(&lista, tasto);
              }
              QTest::mouseClick(lista.viewport(), Qt::LeftButton);
              Premi(finestra, "PicSelezionaTutto");
              EXPECT_FALSE(Visibile(finestra, "TextScad"));
              QTest::keyClick(&lista, Qt::Key_Escape);
            }),
            "closed");
}

TEST_F(ItemWindow, AnOpenEditorCoversTheScrollBarOfALongList) {
  for (int i = 0; i < 30; ++i) {
    form.Aggiungi("31/07/2006", "", "1,00");
  }
  Mostra([](QDialog& finestra) {
    Clicca(ListaScad(finestra), 2, ColonnaNuova);
    EXPECT_TRUE(Visibile(finestra, "PicScrollVerticale"));
    Tasto(Qt::Key_Escape);
    EXPECT_FALSE(Visibile(finestra, "PicScrollVerticale"));
  });
}

TEST_F(ItemWindow, ComesToTheTopAndGoesBackWhileItIsOpen) {
  form.SetTopMostWindow(true);
  Mostra([this](QDialog& finestra) {
    EXPECT_TRUE(finestra.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    EXPECT_TRUE(finestra.windowHandle()->flags().testFlag(Qt::WindowStaysOnTopHint));
    const QRect posto = finestra.geometry();
    form.SetTopMostWindow(1);
    Tasto(Qt::Key_Down);
    EXPECT_FALSE(finestra.windowHandle()->flags().testFlag(Qt::WindowStaysOnTopHint));
    EXPECT_TRUE(finestra.isVisible());
    EXPECT_EQ(finestra.geometry(), posto);
    form.SetTopMostWindow(-1);
    Tasto(Qt::Key_Up);
    EXPECT_TRUE(finestra.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    EXPECT_TRUE(finestra.windowHandle()->flags().testFlag(Qt::WindowStaysOnTopHint));
    EXPECT_TRUE(finestra.isVisible());
  });
}

TEST_F(ItemWindow, AnOpenEditorStopsTheWheel) {
  for (int i = 0; i < 30; ++i) {
    form.Aggiungi("31/07/2006", "", "1,00");
  }
  Mostra([](QDialog& finestra) {
    auto& lista = ListaScad(finestra);
    const auto gira = [&lista] {
      const QPointF centro = lista.viewport()->rect().center();
      QWheelEvent rotella(centro, lista.viewport()->mapToGlobal(centro), {}, {0, -480}, {}, {}, Qt::NoScrollPhase,
                          false);
      QCoreApplication::sendEvent(lista.viewport(), &rotella);
      return lista.verticalScrollBar()->value();
    };
    Clicca(lista, 2, ColonnaNuova);
    EXPECT_EQ(gira(), 0);
    EXPECT_TRUE(Visibile(finestra, "TextScad"));
    Tasto(Qt::Key_Escape);
    EXPECT_GT(gira(), 0);
  });
}

TEST_F(ItemWindow, ARowIsPaintedAgainWhenItsTickOrItsDateChanged) {
  Mostra([](QDialog& finestra) {
    const QSignalSpy cambiate(ListaScad(finestra).model(), &QAbstractItemModel::dataChanged);
    Tasto(Qt::Key_Space);
    EXPECT_EQ(cambiate.count(), 1);
    Tasto(Qt::Key_F2);
    EXPECT_EQ(cambiate.count(), 1);
    Scrivi("150606");
    Tasto(Qt::Key_Return);
    EXPECT_EQ(cambiate.count(), 2);
  });
}

/// With LUMOSCAD_IMMAGINE in the environment, the window is saved under that name.
TEST_F(ItemWindow, ShowsItsTextsWhole) {
  Mostra([this](QDialog& finestra) {
    Premi(finestra, "TextScadenza");
    Scrivi("150706");
    Clicca(ListaScad(finestra), 1, Casella);
    Clicca(ListaScad(finestra), 3, Casella);
    Clicca(ListaScad(finestra), 2, ColonnaNuova);
    Scrivi("300606");
    for (const auto* etichetta : finestra.findChildren<QLabel*>()) {
      EXPECT_GE(etichetta->width(), etichetta->sizeHint().width()) << etichetta->objectName().toStdString();
      EXPECT_GE(etichetta->height(), etichetta->sizeHint().height()) << etichetta->objectName().toStdString();
    }
    for (const auto* pulsante : finestra.findChildren<QPushButton*>()) {
      EXPECT_GE(pulsante->width(), pulsante->sizeHint().width()) << pulsante->objectName().toStdString();
    }
    EXPECT_EQ(Spuntate(), 2);
    if (const QString nome = qEnvironmentVariable("LUMOSCAD_IMMAGINE"); !nome.isEmpty()) {
      EXPECT_TRUE(finestra.grab().save(nome));
    }
  });
}

TEST_F(ItemWindow, TakesATickOfAllRowsBackByOneKey) {
  Mostra([this](QDialog& finestra) {
    auto& inAlto = Trova<QLineEdit>(finestra, "TextScadenza");
    inAlto.setFocus();
    Scrivi("200127");
    ListaScad(finestra).setFocus();
    Premi(finestra, "PicSelezionaTutto");
    Premi(finestra, "PicSelezionaTutto");
    EXPECT_EQ(Trova<QPushButton>(finestra, "PicSelezionaTutto").text(), "De&seleziona tutto");
    EXPECT_EQ(Spuntate(), 0);
    ListaScad(finestra).setFocus();
    Tasto(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(Spuntate(), 4);
    EXPECT_TRUE(form.SelezionaTutto());
    EXPECT_EQ(Trova<QPushButton>(finestra, "PicSelezionaTutto").text(), "&Seleziona tutto");
    EXPECT_EQ(Nuova(3), "20/01/2027");
    Tasto(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(Spuntate(), 0);
    EXPECT_EQ(Nuova(3), "");
    EXPECT_EQ(inAlto.text(), "20/01/2027");
    Tasto(Qt::Key_Y, Qt::ControlModifier);
    EXPECT_EQ(Spuntate(), 4);
  });
}

} // namespace
} // namespace lumoscad::test
