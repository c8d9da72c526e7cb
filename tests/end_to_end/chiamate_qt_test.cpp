// A call that comes while another one runs: out of a timer of the calling program, which fires in our event loops, and
// from another thread. The windows, the request, the back end and the database are the real ones.

#include "Dimostrazione.hpp"
#include "FinestraFinta.hpp"
#include "common/Stato.hpp"
#include "lumoscad/LumoScadenze.hpp"
#include "platform/Services.hpp"
#include "platform/nexaro/Nexaro.hpp"
#include "platform/qt/QtDesktop.hpp"
#include "screens/FormConsegna.hpp"
#include "screens/FormPresunti.hpp"
#include "screens/frmLumoScadenzeBanche.hpp"
#include "support/OdbcConfiguration.hpp"
#include "support/Paths.hpp"

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <cstdlib>
#include <gmock/gmock.h>

namespace lumoscad::test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;
namespace fs = std::filesystem;

const std::string Altra = "-T BANCA /DEBITI -D 99 -H 10.9.9.9 -DB2SOURCE ALTRA -DB2SCHEMA altro";
const std::string Rifiutato = "Comando rifiutato: ";

std::string Esegui(const std::string& comando) {
  return LumoScadenze().EseguiLumoScad(comando);
}

int Volte(std::string_view dove, std::string_view che) {
  int volte = 0;
  for (auto posto = dove.find(che); posto != std::string_view::npos; posto = dove.find(che, posto + 1)) {
    ++volte;
  }
  return volte;
}

QWidget* Aperta(const QString& nome) {
  auto* finestra = QApplication::activeModalWidget();
  return finestra != nullptr && finestra->objectName() == nome ? finestra : nullptr;
}

std::string TestoBox(QWidget& box) {
  return Trova<QLabel>(box, "lblMessaggio").text().toStdString();
}

class NestedCall : public testing::Test {
 protected:
  NestedCall()
      : servizi_({[this]() -> Desktop& { return *desktop_; },
                  [this]() -> nexaro::HostLink& { return *host_; },
                  [this]() -> const nexaro::Environment& { return ambiente_; },
                  [] { return DateTime{2026, 3, 5, 14, 7, 9}; },
                  {},
                  qt::WhereTheWindowsAre}) {
    for (const auto& voce : demo.Ambiente()) {
      const auto segno = voce.find('=');
      ::setenv(voce.substr(0, segno).c_str(), voce.substr(segno + 1).c_str(), 1);
    }
    host_ = nexaro::CreateHostLink();
    ambiente_ = nexaro::ReadEnvironment();
    test::RunScript(demo.Connessione(), FileText(test::SourcePath("demo/comandi.sql")));
    prima = demo.Stato();
    orologio_.start();
    Ogni10(intruso_, [this] { Intrometti(); });
    Ogni10(secondo_, [this] { IntromettiAncora(); });
    Ogni10(persona_, [this] { Recita(); });
  }

  /// Runs `comando` on the demonstration. While `finestra` is open, and the person has done what `prepara` says, timers
  /// of the calling program give other commands; the person then closes the box of the refusal, plays `copione` and
  /// closes every other box.
  std::string EseguiConIntruso(const std::string& comando, const QString& finestra,
                               std::function<void(QDialog&)> copione = {}, std::function<void(QDialog&)> prepara = {}) {
    intera_ = "-D 01 -H " + demo.Indirizzo() + " -DB2SOURCE " + demo.Sorgente() + " -DB2SCHEMA main " + comando;
    bersaglio_ = finestra;
    copione_ = std::move(copione);
    prepara_ = std::move(prepara);
    testing::internal::CaptureStderr();
    auto risultato = Esegui(intera_);
    errori = testing::internal::GetCapturedStderr();
    return risultato;
  }
  /// The intruders were refused, the person read it once, and nothing of the running command has changed.
  void VerificaIntrusi() {
    EXPECT_THAT(intrusi, ElementsAre("error", "error", "error"));
    EXPECT_THAT(rifiuti, ElementsAre(StartsWith(Rifiutato)));
    EXPECT_EQ(Volte(errori, "LumoScad: " + Rifiutato), 3) << errori;
    EXPECT_EQ(Volte(errori, "LumoScad"), 3) << errori;
    EXPECT_EQ(stato().ComandoCorrente, intera_);
    EXPECT_EQ(stato().azienda, "01");
    EXPECT_EQ(stato().HostIP, demo.Indirizzo());
    EXPECT_FALSE(fs::exists(demo.Tmp() / "VBDEBITI"));
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
  }
  [[nodiscard]] std::string Chiamata() const { return FileText(demo.Registro()); }

  Dimostrazione demo;
  Fotografia prima;
  std::vector<std::string> intrusi; ///< the results of the calls within the call
  std::vector<std::string> rifiuti; ///< the boxes of the refusals
  std::vector<std::string> box;     ///< the other boxes
  std::string errori;               ///< the standard error

 private:
  static void Ogni10(QTimer& timer, const std::function<void()>& azione) {
    QObject::connect(&timer, &QTimer::timeout, &timer, azione);
    timer.start(10);
  }
  static QWidget* BoxDelRifiuto() {
    auto* aperto = Aperta("MostraMessaggio");
    return aperto != nullptr && TestoBox(*aperto).starts_with(Rifiutato) ? aperto : nullptr;
  }
  void Intrometti() {
    if (BoxDelRifiuto() == nullptr && Aperta(bersaglio_) != nullptr && intrusi.empty() && !prepara_ &&
        !std::exchange(intromesso_, true)) {
      intrusi.push_back(Esegui(Altra));
    }
  }
  void IntromettiAncora() {
    if (BoxDelRifiuto() != nullptr && intrusi.size() < 2) {
      intrusi.push_back(Esegui(intrusi.empty() ? "-T FOO" : Altra));
    }
  }
  void Recita() {
    if (orologio_.elapsed() > 15000) { // what nobody answers must fail the test, not hold it up
      if (auto* rimasta = QApplication::activeModalWidget()) {
        EXPECT_TRUE(false) << "left open: " << rimasta->objectName().toStdString();
        rimasta->close();
      }
    } else if (auto* rifiuto = BoxDelRifiuto()) {
      if (intrusi.size() >= 2) {
        rifiuti.push_back(TestoBox(*rifiuto));
        QTest::keyClick(rifiuto, Qt::Key_Return);
      }
    } else if (auto* messaggio = Aperta("MostraMessaggio")) {
      if (bersaglio_ != "MostraMessaggio" || intrusi.size() >= 3) {
        box.push_back(TestoBox(*messaggio));
        QTest::keyClick(messaggio, Qt::Key_Return);
      }
    } else if (auto* lista = qobject_cast<QDialog*>(Aperta(bersaglio_));
               lista != nullptr && (prepara_ || (intrusi.size() >= 3 && copione_))) {
      std::exchange(prepara_ ? prepara_ : copione_, {})(*lista);
    }
  }

  std::unique_ptr<Desktop> desktop_ = qt::CreateDesktop();
  std::unique_ptr<nexaro::HostLink> host_;
  nexaro::Environment ambiente_;
  StatoSostituito stato_;
  ReplacedServices servizi_;
  QString bersaglio_;
  std::string intera_;
  std::function<void(QDialog&)> prepara_;
  std::function<void(QDialog&)> copione_;
  bool intromesso_ = false;
  QElapsedTimer orologio_;
  QTimer intruso_;
  QTimer secondo_;
  QTimer persona_;
};

/// Ticks the first row of `nomeLista` with the date at the top, where there is one, and confirms.
std::function<void(QDialog&)> SpuntaEConferma(const char* nomeLista, int colonna, const char* data) {
  return [=](QDialog& finestra) {
    if (auto* campo = finestra.findChild<QLineEdit*>("TextScadenza")) {
      QTest::keyClicks(campo, data);
    }
    Clicca(Trova<QTableView>(finestra, nomeLista), 0, colonna);
    QTest::mouseClick(&Trova<QWidget>(finestra, "PictureOk"), Qt::LeftButton);
  };
}

TEST_F(NestedCall, ATimersCallInTheListOfInstalmentsIsRefusedAndTheConfirmationGoesWhereItBelongs) {
  EXPECT_EQ(EseguiConIntruso("-T BANCA /CREDITI -C 20100023", "frmLumoScadenzeBanche",
                             SpuntaEConferma("LVScadenzeBanche", frmLumoScadenzeBanche::Radio1, "150426")),
            "");
  VerificaIntrusi();
  EXPECT_THAT(Chiamata(), StartsWith("ACCETTATA\t"));
  EXPECT_THAT(Chiamata(), HasSubstr("\t01\tCANALIZZAZIONE\tCREDITI\tT01\t/tmp/T0120260305140709.dos\t"));
  EXPECT_THAT(Contenuto(demo.Tmp()), IsEmpty()) << "the list is free again";
  EXPECT_THAT(Differenze(prima, demo.Stato()), SizeIs(2));
}

TEST_F(NestedCall, ATimersCallInTheListOfBanksIsRefusedAndTheConfirmationGoesWhereItBelongs) {
  EXPECT_EQ(EseguiConIntruso("-T BANCA /PRESUNTI -C 20100012 -TIPOMOVIMENTI V", "FormPresunti",
                             SpuntaEConferma("LVPresunti", FormPresunti::Radio, "")),
            "");
  VerificaIntrusi();
  EXPECT_THAT(Chiamata(), HasSubstr("\t01\tCANALIZZAZIONE\tPRESUNTI\tT01\t"));
  EXPECT_THAT(Contenuto(demo.Tmp()), IsEmpty());
}

TEST_F(NestedCall, ATimersCallInTheListOfDeliveriesIsRefusedAndTheConfirmationGoesWhereItBelongs) {
  EXPECT_EQ(EseguiConIntruso("-T CONSEGNA /PRESUNTI -C 20100012 -TIPOMOVIMENTI V -B TUTTE", "FormConsegna",
                             SpuntaEConferma("LVScadenzePresunti", FormConsegna::Radio, "150426")),
            "");
  VerificaIntrusi();
  EXPECT_THAT(Chiamata(), HasSubstr("\t01\tCONSEGNA\tPRESUNTI\tT01\t"));
  EXPECT_THAT(Contenuto(demo.Tmp()), IsEmpty());
}

TEST_F(NestedCall, ATimersCallLeavesAnOpenEditorAsItWas) {
  const auto prepara = [](QDialog& finestra) {
    auto& lista = Trova<QTableView>(finestra, "LVScadenzeBanche");
    Clicca(lista, 0, frmLumoScadenzeBanche::NuovaScadenza);
    QTest::keyClicks(&Trova<QWidget>(finestra, "TextScad"), "1504");
  };
  const auto copione = [](QDialog& finestra) {
    auto& editor = Trova<QLineEdit>(finestra, "TextScad");
    EXPECT_TRUE(editor.isVisible());
    EXPECT_EQ(editor.text(), "1504");
    QTest::keyClicks(&editor, "26");
    QTest::keyClick(&editor, Qt::Key_Return);
    QTest::mouseClick(&Trova<QWidget>(finestra, "PictureOk"), Qt::LeftButton);
  };
  EXPECT_EQ(EseguiConIntruso("-T BANCA /CREDITI -C 20100023", "frmLumoScadenzeBanche", copione, prepara), "");
  VerificaIntrusi();
  EXPECT_THAT(Chiamata(), HasSubstr(",20260415,"));
  EXPECT_THAT(box, SizeIs(1)) << "the host's message";
}

TEST_F(NestedCall, ATimersCallInABoxIsRefusedAndTheBoxStays) {
  EXPECT_EQ(EseguiConIntruso("-T SOSPESO /A -C 20100001 -P AB   123 -DEMO", "MostraMessaggio"), "");
  VerificaIntrusi();
  EXPECT_THAT(box, ElementsAre("La partita è stata sospesa"));
}

TEST_F(NestedCall, ATimersCallInTheBoxOfAnErrorIsRefusedAndTheBoxStays) {
  EXPECT_EQ(EseguiConIntruso("-T BANCA /CREDITI -SC", "MostraMessaggio"), "error");
  EXPECT_THAT(intrusi, Each("error"));
  EXPECT_THAT(rifiuti, SizeIs(1));
  EXPECT_THAT(box, ElementsAre(StartsWith("9\n")));
}

TEST_F(NestedCall, ATimersCallInTheBoxOfATakenListIsRefusedAndTheListStaysTaken) {
  Scrivi(demo.Tmp() / "VBCREDITI", "Utente : T02\r\nieri\r\n");
  EXPECT_EQ(EseguiConIntruso("-T BANCA /CREDITI", "MostraMessaggio"), "error");
  VerificaIntrusi();
  EXPECT_THAT(box, ElementsAre(StartsWith("Area CREDITI in manutenzione")));
  EXPECT_EQ(FileText(demo.Tmp() / "VBCREDITI"), "Utente : T02\r\nieri\r\n");
}

TEST_F(NestedCall, ATimersCallInTheWaitWindowIsRefusedAndTheRequestGoesWhereItBelongs) {
  const auto dopo =
      demo.StatoDopo("UPDATE EVENTOCONTABILE SET SOSPESA='S' WHERE EVENTOCONTABILEKEY IN (900001,900002)");
  EXPECT_EQ(EseguiConIntruso("-T SOSPESO /A -C 20100001 -P AB   123", "FormAspetta"), "");
  VerificaIntrusi();
  EXPECT_THAT(box, ElementsAre("Sospesa la partita AB123 del conto 20100001"));
  EXPECT_THAT(Chiamata(), StartsWith("ACCETTATA\tSospesa la partita AB123 del conto 20100001\t6\t01\tSOSPESOCREA\t"));
  EXPECT_THAT(Differenze(dopo, demo.Stato()), IsEmpty());
}

TEST_F(NestedCall, ACallingProgramThatEndsItsLoopInTheWaitWindowReadsAnErrorAndTheHostIsNotAsked) {
  std::string risultato;
  QTimer::singleShot(0, qApp, [&] {
    QTimer fine;
    QObject::connect(&fine, &QTimer::timeout, &fine, [&] {
      if (Aperta("FormAspetta") != nullptr) {
        fine.stop();
        QCoreApplication::exit();
      }
    });
    fine.start(10);
    risultato = EseguiConIntruso("-T SOSPESO /A -C 20100001 -P AB   123", "nessuna");
  });
  QCoreApplication::exec();
  EXPECT_EQ(risultato, "error");
  EXPECT_THAT(errori, HasSubstr("L'host non è stato interpellato"));
  EXPECT_FALSE(fs::exists(demo.Registro()));
  EXPECT_THAT(Differenze(prima, demo.Stato()), IsEmpty());
}

/// Runs `comando` on a thread of its own and lets the windows live meanwhile.
std::string EseguiSuUnThread(const std::string& comando) {
  std::string risultato;
  const std::unique_ptr<QThread> thread(QThread::create([&] { risultato = Esegui(comando); }));
  thread->start();
  EXPECT_TRUE(QTest::qWaitFor([&] { return thread->isFinished(); }, 20000));
  return risultato;
}

TEST_F(NestedCall, AThreadsCallIsRefusedWithoutABoxAndWithoutAWord) {
  testing::internal::CaptureStderr();
  for (const char* comando : {"-T FOO", "-T", "-T TEST", "-T BANCA /CREDITI -D 99 -H 10.9.9.9"}) {
    EXPECT_EQ(EseguiSuUnThread(comando), "error") << comando;
  }
  EXPECT_EQ(Volte(testing::internal::GetCapturedStderr(), "\n"), 4);
  EXPECT_THAT(box, IsEmpty());
  EXPECT_EQ(stato().ComandoCorrente, "");
  EXPECT_EQ(stato().azienda, "");
}

TEST_F(NestedCall, AThreadsCallIsRefusedWhileAListIsOpen) {
  std::vector<std::string> risultati;
  intrusi = {"", "", ""}; // no timer of this program gives a command
  const auto copione = [&](QDialog& finestra) {
    risultati = {EseguiSuUnThread(Altra), EseguiSuUnThread("-T FOO")};
    EXPECT_EQ(QApplication::activeModalWidget(), &finestra);
    EXPECT_EQ(stato().HostIP, demo.Indirizzo());
    QTest::mouseClick(&Trova<QWidget>(finestra, "PictureAnnulla"), Qt::LeftButton);
  };
  EXPECT_EQ(EseguiConIntruso("-T BANCA /CREDITI -C 20100023", "frmLumoScadenzeBanche", copione), "closed");
  EXPECT_THAT(risultati, ElementsAre("error", "error"));
  EXPECT_EQ(Volte(errori, "LumoScad: " + Rifiutato), 2) << errori;
  EXPECT_THAT(Contenuto(demo.Tmp()), IsEmpty());
}

} // namespace
} // namespace lumoscad::test
