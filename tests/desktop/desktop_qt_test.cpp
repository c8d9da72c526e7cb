#include "FinestraFinta.hpp"

#include "platform/RuntimeError.hpp"
#include "platform/qt/QtDesktop.hpp"
#include "support/WorkClock.hpp"

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QThread>
#include <QTimer>
#include <QWindow>

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

namespace lumoscad::test {
namespace {

/// Runs `copione` on the modal window that is shown next.
void SullaFinestra(const std::function<void(QDialog&)>& copione) {
  QTimer::singleShot(20, qApp, [copione] {
    auto* dialogo = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    ASSERT_NE(dialogo, nullptr);
    copione(*dialogo);
  });
}

TEST(Desktop, ABoxShowsPlainTextWithItsLineBreaksAndOnlyOk) {
  const auto desktop = qt::CreateDesktop();
  bool vista = false;
  SullaFinestra([&](QDialog& box) {
    vista = true;
    EXPECT_EQ(box.objectName(), "MostraMessaggio");
    EXPECT_EQ(box.windowTitle(), "LumoScad");
    auto& testo = Trova<QLabel>(box, "lblMessaggio");
    EXPECT_EQ(testo.text(), "ERRORE: 9\nuna riga\nun'altra <b>qui</b> è così");
    EXPECT_EQ(testo.textFormat(), Qt::PlainText);
    EXPECT_EQ(box.findChildren<QPushButton*>().size(), 1);
    EXPECT_EQ(box.findChildren<QPushButton*>().first()->text(), "OK");
    QTest::keyClick(&box, Qt::Key_Return);
  });
  desktop->ShowBox("ERRORE: 9\r\nuna riga\run'altra <b>qui</b> è così", "LumoScad");
  EXPECT_TRUE(vista);
}

TEST(Desktop, ALongTextScrollsAndLeavesOkOnTheScreen) {
  const auto desktop = qt::CreateDesktop();
  SullaFinestra([](QDialog& box) {
    EXPECT_TRUE(Trova<QPlainTextEdit>(box, "lblMessaggio").isReadOnly());
    EXPECT_LE(box.height(), box.screen()->availableSize().height());
    QTest::mouseClick(&Trova<QPushButton>(box, "PulsanteOk"), Qt::LeftButton);
  });
  std::string lungo;
  for (int riga = 0; riga < 400; ++riga) {
    lungo += "riga " + std::to_string(riga) + "\r";
  }
  desktop->ShowBox(lungo, "LumoScad");
}

TEST(Desktop, ABoxOf32KiBWithoutALineBreakOpensAtOnce) {
  const auto desktop = qt::CreateDesktop();
  const test::WorkClock orologio;
  SullaFinestra([](QDialog& box) { QTest::keyClick(&box, Qt::Key_Return); });
  desktop->ShowBox(std::string(32U << 10U, 'x'), "LumoScad");
  EXPECT_LT(orologio.Milliseconds(), 3000);
}

TEST(Desktop, TheHourglassIsOneLevelHoweverOftenItIsSet) {
  const auto desktop = qt::CreateDesktop();
  desktop->SetPointer(Pointer::Hourglass);
  desktop->SetPointer(Pointer::Hourglass);
  ASSERT_NE(QGuiApplication::overrideCursor(), nullptr);
  EXPECT_EQ(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
  desktop->SetPointer(Pointer::Standard);
  EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
  desktop->SetPointer(Pointer::Standard);
  EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
}

TEST(Desktop, ThePointerOfTheCallingProgramComesBack) {
  QGuiApplication::setOverrideCursor(Qt::CrossCursor);
  {
    const auto desktop = qt::CreateDesktop();
    desktop->SetPointer(Pointer::Hourglass);
  }
  ASSERT_NE(QGuiApplication::overrideCursor(), nullptr);
  EXPECT_EQ(QGuiApplication::overrideCursor()->shape(), Qt::CrossCursor);
  QGuiApplication::restoreOverrideCursor();
}

TEST(Desktop, PendingEventsRunAndAMillionCallsStayCheap) {
  const auto desktop = qt::CreateDesktop();
  bool arrivato = false;
  QTimer::singleShot(0, qApp, [&arrivato] { arrivato = true; });
  const test::WorkClock orologio;
  for (int riga = 0; riga < 1'000'000; ++riga) {
    desktop->RunPendingEvents();
  }
  EXPECT_TRUE(arrivato);
  EXPECT_LT(orologio.Milliseconds(), 1000);
}

/// Tells the desktop of rows, as the reading of a list does, until `until` holds or it is given up; how long it took.
qint64 Leggi(Desktop& desktop, const std::function<bool(std::size_t)>& fino) {
  QElapsedTimer orologio;
  orologio.start();
  std::size_t righe = 0;
  while (desktop.RowRead(++righe) && !fino(righe) && orologio.elapsed() < 20'000) {
    QThread::msleep(1);
  }
  return orologio.elapsed();
}

QDialog* Lettura() {
  auto* const dialogo = qobject_cast<QDialog*>(QApplication::activeModalWidget());
  return dialogo != nullptr && dialogo->objectName() == "FormLettura" ? dialogo : nullptr;
}

TEST(Desktop, SaysHowFarALongReadingIsAndThenTakesItsWindowAway) {
  const auto desktop = qt::CreateDesktop();
  const qint64 comparsa = Leggi(*desktop, [](std::size_t) { return Lettura() != nullptr; });
  ASSERT_NE(Lettura(), nullptr);
  EXPECT_GE(comparsa, 500);
  const QPointer<QDialog> finestra = Lettura();
  auto& testo = Trova<QLabel>(*finestra, "lblLettura");
  Leggi(*desktop, [&](std::size_t righe) { return righe >= 50; });
  EXPECT_TRUE(finestra->isVisible());
  EXPECT_TRUE(testo.text().startsWith("Lettura dell'elenco: ")) << testo.text().toStdString();
  EXPECT_TRUE(testo.text().endsWith(" righe"));
  desktop->ReadingEnded();
  EXPECT_TRUE(finestra.isNull());
  EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

TEST(Desktop, SaysNothingOfAShortReadingHoweverOftenThereIsOne) {
  const auto desktop = qt::CreateDesktop();
  for (int lettura = 0; lettura < 8; ++lettura) {
    QElapsedTimer orologio;
    orologio.start();
    for (std::size_t riga = 1; orologio.elapsed() < 100; ++riga) {
      EXPECT_TRUE(desktop->RowRead(riga));
    }
    if (orologio.elapsed() < 500) { // on a busy machine it may have been a long one
      EXPECT_EQ(Lettura(), nullptr);
    }
    desktop->ReadingEnded();
  }
}

TEST(Desktop, EscGivesALongReadingUpAndTheNextOneIsNotGivenUp) {
  const auto desktop = qt::CreateDesktop();
  Leggi(*desktop, [](std::size_t) { return Lettura() != nullptr; });
  ASSERT_NE(Lettura(), nullptr);
  for (const Qt::Key tasto : {Qt::Key_Return, Qt::Key_Space, Qt::Key_F4}) {
    QTest::keyClick(Lettura(), tasto);
  }
  Lettura()->close();
  Leggi(*desktop, [](std::size_t righe) { return righe >= 40; });
  ASSERT_NE(Lettura(), nullptr) << "no other key ends it, nor does its close box";
  EXPECT_TRUE(Lettura()->isVisible());
  QTest::keyClick(Lettura(), Qt::Key_Escape);
  const qint64 dopo = Leggi(*desktop, [](std::size_t) { return false; });
  EXPECT_LT(dopo, 20'000);
  EXPECT_FALSE(desktop->RowRead(1000)) << "it stays given up";
  desktop->ReadingEnded();
  EXPECT_TRUE(desktop->RowRead(1));
  desktop->ReadingEnded();
}

TEST(Desktop, GivesTheCallersWindowsNoInputWhileAListIsRead) {
  const auto desktop = qt::CreateDesktop();
  QPushButton chiamante(QStringLiteral("Registra"));
  int premuto = 0;
  QObject::connect(&chiamante, &QPushButton::clicked, [&premuto] { ++premuto; });
  chiamante.resize(200, 60);
  chiamante.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&chiamante));
  const auto premi = [&chiamante] {
    QTest::mouseClick(chiamante.windowHandle(), Qt::LeftButton, Qt::NoModifier, QPoint(100, 30));
  };
  premi();
  EXPECT_EQ(premuto, 1) << "without a reading it takes it";
  Leggi(*desktop, [](std::size_t) { return Lettura() != nullptr; });
  ASSERT_NE(Lettura(), nullptr);
  premi();
  Leggi(*desktop, [](std::size_t righe) { return righe >= 40; });
  EXPECT_EQ(premuto, 1);
  desktop->ReadingEnded();
  premi();
  EXPECT_EQ(premuto, 2);
}

TEST(Desktop, AListIsShownUntilTheScreenUnloadsItself) {
  const auto desktop = qt::CreateDesktop();
  FinestraFinta finta(5);
  SullaFinestra([](QDialog& finestra) { QTest::mouseClick(&Trova<QWidget>(finestra, "PictureOk"), Qt::LeftButton); });
  desktop->ShowList(finta);
  EXPECT_EQ(finta.gesti.back(), "conferma");
  EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

TEST(Desktop, AnEmptyListCanBeShownAndClosed) {
  const auto desktop = qt::CreateDesktop();
  FinestraFinta finta(0);
  SullaFinestra([](QDialog& finestra) {
    auto& lista = Trova<QWidget>(finestra, "LVScadenzeBanche");
    for (const Qt::Key tasto : {Qt::Key_Down, Qt::Key_End, Qt::Key_Space, Qt::Key_Return, Qt::Key_7, Qt::Key_Escape}) {
      QTest::keyClick(&lista, tasto);
    }
  });
  desktop->ShowList(finta);
  EXPECT_EQ(finta.gesti, std::vector<std::string>{"annulla"});
}

TEST(Desktop, WhatAGestureThrowsLeavesTheCallAfterTheWindowIsGone) {
  const auto desktop = qt::CreateDesktop();
  FinestraFinta finta(5);
  finta.during["conferma"] = [] { throw RuntimeError(errors::DuplicateKey, "La chiave è già presente."); };
  SullaFinestra([](QDialog& finestra) { QTest::mouseClick(&Trova<QWidget>(finestra, "PictureOk"), Qt::LeftButton); });
  try {
    desktop->ShowList(finta);
    FAIL() << "no error came out";
  } catch (const RuntimeError& errore) {
    EXPECT_EQ(errore.Number(), errors::DuplicateKey);
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
  }
}

TEST(Desktop, ACellThatCannotBeReadClosesTheListAndReportsTheError) {
  const auto desktop = qt::CreateDesktop();
  FinestraFinta finta(5);
  finta.whileReading = [] { throw RuntimeError(51, "Cella illeggibile."); };
  EXPECT_THROW(desktop->ShowList(finta), RuntimeError);
}

TEST(Desktop, ABoxInsideAGestureKeepsTheEditorUntilItIsAnswered) {
  const auto desktop = qt::CreateDesktop();
  FinestraFinta finta(30);
  finta.during["tastoEditor"] = [&] {
    SullaFinestra([](QDialog& box) { QTest::keyClick(&box, Qt::Key_Return); });
    desktop->ShowBox("Mese errato: 13", "LumoScad");
  };
  Esegui(finta, [&](QDialog& finestra) {
    auto& lista = Trova<QWidget>(finestra, "LVScadenzeBanche");
    QTest::keyClick(&lista, Qt::Key_Right);
    QTest::keyClick(&lista, Qt::Key_F2);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_FALSE(Trova<QWidget>(finestra, "FrameScad").isVisible());
    EXPECT_EQ(finta.stato.selected, 1);
    EXPECT_EQ(finestra.focusWidget(), &lista);
  });
}

TEST(Desktop, ABoxShownByTheBankChoiceDoesNotCloseTheBankEditorTwice) {
  const auto desktop = qt::CreateDesktop();
  FinestraFinta finta(30);
  finta.during["scegliBancaCella"] = [&] {
    SullaFinestra([](QDialog& box) { QTest::keyClick(&box, Qt::Key_Return); });
    desktop->ShowBox("Banca", "LumoScad");
  };
  Esegui(finta, [&](QDialog& finestra) {
    auto& lista = Trova<QWidget>(finestra, "LVScadenzeBanche");
    for (int passo = 0; passo < 3; ++passo) {
      QTest::keyClick(&lista, Qt::Key_Right);
    }
    QTest::keyClick(&lista, Qt::Key_F2);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Down);
    EXPECT_EQ(finta.Volte("perdeFuocoBancaCella"), 0);
    EXPECT_TRUE(Trova<QWidget>(finestra, "cmbBanche2").isVisible());
  });
}

TEST(Desktop, TheWaitWindowRunsItsWorkOnceAndCannotBeClosed) {
  const auto desktop = qt::CreateDesktop();
  int volte = 0;
  QTimer::singleShot(30, qApp, [] {
    auto* attesa = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    ASSERT_NE(attesa, nullptr);
    EXPECT_EQ(attesa->objectName(), "FormAspetta");
    QTest::keyClick(attesa, Qt::Key_Escape);
    attesa->close();
    EXPECT_TRUE(attesa->isVisible());
    EXPECT_EQ(Trova<QLabel>(*attesa, "lblAttesa").text(), "Attendere, sto variando il movimento");
    EXPECT_NE(attesa->findChild<QTimer*>("Timer1"), nullptr);
  });
  QElapsedTimer orologio;
  orologio.start();
  desktop->ShowWait("Attendere, sto variando il movimento", 200, [&] {
    ++volte;
    ASSERT_NE(QApplication::activeModalWidget(), nullptr);
    ASSERT_NE(QGuiApplication::overrideCursor(), nullptr);
    QTest::qWait(250);
  });
  EXPECT_GE(orologio.elapsed(), 400);
  EXPECT_EQ(volte, 1);
  EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
}

/// Runs `mostra` in an event loop of the calling program, which ends all loops while the window is open.
void ConUnUscita(const std::function<void()>& mostra) {
  QTimer::singleShot(0, qApp, [&] {
    QTimer::singleShot(30, qApp, [] { QCoreApplication::exit(); });
    mostra();
  });
  QCoreApplication::exec();
}

TEST(Desktop, AWaitWindowThatTheCallingProgramEndsDoesNotRunItsWorkLater) {
  const auto desktop = qt::CreateDesktop();
  int volte = 0;
  ConUnUscita([&] {
    desktop->ShowWait("Attendere", 200, [&] { ++volte; });
    QTest::qWait(300);
  });
  EXPECT_EQ(volte, 0);
}

TEST(Desktop, ABoxThatTheCallingProgramEndsCountsAsNotShown) {
  const auto desktop = qt::CreateDesktop();
  bool sollevato = false;
  ConUnUscita([&] {
    try {
      desktop->ShowBox("Buongiorno", "LumoScad");
    } catch (const RuntimeError& errore) {
      sollevato = errore.Text().find("chiuso dal programma chiamante") != std::string::npos;
    }
  });
  EXPECT_TRUE(sollevato);
}

TEST(Desktop, AListThatTheCallingProgramEndsIsClosedAsByItsCloseBox) {
  const auto desktop = qt::CreateDesktop();
  FinestraFinta finta(5);
  ConUnUscita([&] { desktop->ShowList(finta); });
  EXPECT_EQ(finta.gesti.back(), "chiudi");
  EXPECT_TRUE(finta.stato.unloaded);
}

TEST(Desktop, WhatTheWaitedWorkThrowsComesOut) {
  const auto desktop = qt::CreateDesktop();
  EXPECT_THROW(desktop->ShowWait("Attendere", 1, [] { throw RuntimeError(51, "x"); }), RuntimeError);
  EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
  EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

/// A window of the calling program, with the keyboard, that goes as soon as one of ours is open over it.
void ConFinestraChePassa(const std::function<void()>& mostra, const std::function<void(QDialog&)>& chiudi) {
  auto* delChiamante = new QWidget;
  delChiamante->show();
  delChiamante->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(delChiamante));
  bool rimasta = false;
  SullaFinestra([&](QDialog& nostra) {
    ASSERT_NE(&nostra, delChiamante);
    EXPECT_EQ(nostra.parent(), nullptr);
    EXPECT_EQ(nostra.windowHandle()->transientParent(), delChiamante->windowHandle()) << "it stays above that window";
    delete delChiamante;
    QTest::qWait(20);
    rimasta = nostra.isVisible();
    chiudi(nostra);
  });
  mostra();
  EXPECT_TRUE(rimasta);
}

TEST(Desktop, AWindowOfTheCallingProgramThatGoesTakesNoneOfOursWithIt) {
  const auto desktop = qt::CreateDesktop();
  const auto invio = [](QDialog& box) { QTest::keyClick(&box, Qt::Key_Return); };
  ConFinestraChePassa([&] { desktop->ShowBox("Buongiorno", "LumoScad"); }, invio);
  FinestraFinta finta(5);
  ConFinestraChePassa([&] { desktop->ShowList(finta); }, [](QDialog& lista) { lista.close(); });
  EXPECT_EQ(finta.gesti.back(), "chiudi");
  int volte = 0;
  ConFinestraChePassa([&] { desktop->ShowWait("Attendere", 100, [&] { ++volte; }); }, [](QDialog&) {});
  EXPECT_EQ(volte, 1);
}

TEST(Desktop, AForkedCopyOfTheProcessShowsNoWindowOnTheScreenOfTheOther) {
  const auto desktop = qt::CreateDesktop();
  const pid_t copia = ::fork();
  if (copia == 0) {
    ::alarm(10);
    try {
      desktop->ShowBox("Buongiorno", "LumoScad");
    } catch (const RuntimeError& errore) {
      ::_exit(errore.Text().find("copia") != std::string::npos ? 0 : 1);
    }
    ::_exit(2);
  }
  int stato = -1;
  ASSERT_EQ(::waitpid(copia, &stato, 0), copia);
  EXPECT_TRUE(WIFEXITED(stato) && WEXITSTATUS(stato) == 0) << stato;
}

TEST(Desktop, OurWindowOpensOverTheMiddleOfTheCallingPrograms) {
  const auto desktop = qt::CreateDesktop();
  QWidget delChiamante;
  delChiamante.setGeometry(300, 200, 400, 300);
  delChiamante.show();
  delChiamante.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&delChiamante));
  SullaFinestra([&](QDialog& box) {
    const QPoint distanza = box.frameGeometry().center() - delChiamante.frameGeometry().center();
    EXPECT_LT(distanza.manhattanLength(), 40);
    QTest::keyClick(&box, Qt::Key_Return);
  });
  desktop->ShowBox("Buongiorno", "LumoScad");
}

TEST(Desktop, TheCallingProgramsLoopSurvivesTheLastOfOurWindows) {
  ASSERT_TRUE(QGuiApplication::quitOnLastWindowClosed());
  const auto desktop = qt::CreateDesktop();
  bool finita = false;
  bool dopo = false;
  QEventLoop ciclo;
  QObject::connect(qApp, &QCoreApplication::aboutToQuit, qApp, [&finita] { finita = true; });
  QTimer::singleShot(0, qApp, [&] {
    SullaFinestra([](QDialog& box) { QTest::keyClick(&box, Qt::Key_Return); });
    desktop->ShowBox("Fatto", "LumoScad");
    QTimer::singleShot(50, qApp, [&] {
      dopo = true;
      ciclo.quit();
    });
  });
  ciclo.exec();
  EXPECT_TRUE(dopo);
  EXPECT_FALSE(finita);
  EXPECT_TRUE(QGuiApplication::quitOnLastWindowClosed());
}

} // namespace
} // namespace lumoscad::test
