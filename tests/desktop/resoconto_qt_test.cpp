// What a list window says of its rows, and what is taken from it and brought into it, with real keys and clicks.

#include "FinestraFinta.hpp"
#include "platform/qt/Look.hpp"
#include "platform/qt/QtDesktop.hpp"
#include "screens/frmLumoScadenzeBanche.hpp"
#include "support/Paths.hpp"
#include "support/TestBench.hpp"

#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QListWidget>
#include <QMimeData>
#include <QPushButton>
#include <QScreen>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolButton>

#include <gmock/gmock.h>

namespace lumoscad::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

/// The credits' screen in its real window, with three rows of two customers.
class ReportInWindow : public testing::Test {
 protected:
  using Schermata = frmLumoScadenzeBanche;

  ReportInWindow() : desktop_(qt::CreateDesktop()) {
    ActiveServices().desktop = [this]() -> Desktop& { return *desktop_; };
    griglia_.cmbBanche = griglia_.cmbBanche2 = {{" ", "BANCA ALFA", "BANCA BETA"}, {"B01", "B02"}};
    for (const char* conto : {"BIANCHI", "ROSSI", "VERDI"}) {
      griglia_.righe.Aggiungi(
          {conto, "2006 1", "31/03/2026", "31/03/2026", "", "1.000,10", "", "31/03/2026", "1", "", "", "2026/03/31"});
    }
    griglia_.Resize();
  }

  void Mostra(const std::function<void(QDialog&)>& copione) {
    Recita(copione);
    griglia_.Mostra();
  }
  static void Tasto(Qt::Key tasto, Qt::KeyboardModifiers con = {}) {
    QTest::keyClick(QApplication::focusWidget(), tasto, con);
  }
  static std::string Piede(QDialog& finestra) { return Trova<QLabel>(finestra, "FootEffect").text().toStdString(); }
  static std::string Esito(QDialog& finestra) { return Trova<QLabel>(finestra, "FootNotice").text().toStdString(); }
  static void Incolla(const char* testo) {
    QGuiApplication::clipboard()->setText(QString::fromUtf8(testo));
    Tasto(Qt::Key_V, Qt::ControlModifier);
  }
  /// Presses Ctrl+S and gives the file this name in the dialog that comes.
  static void Salva(QDialog& finestra, const QString& percorso) {
    finestra.activateWindow(); // as a desktop does
    ASSERT_TRUE(QTest::qWaitForWindowActive(&finestra));
    QTimer::singleShot(0, [percorso] {
      auto* chiede = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
      ASSERT_NE(chiede, nullptr);
      auto* nome = chiede->findChild<QLineEdit*>();
      ASSERT_NE(nome, nullptr);
      nome->setText(percorso);
      QTest::keyClick(nome, Qt::Key_Return);
    });
    QTest::keyClick(&Lista(finestra), Qt::Key_S, Qt::ControlModifier);
  }
  static QByteArray Letto(const QString& percorso) {
    QFile file(percorso);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
  }

  TestBench banco_;
  std::unique_ptr<Desktop> desktop_;
  frmLumoScadenzeBanche schermata_;
  Griglia& griglia_ = schermata_.griglia();
};

TEST_F(ReportInWindow, TellsSumsBehindTheNumberOfRows) {
  Mostra([](QDialog& finestra) {
    EXPECT_EQ(Trova<QLabel>(finestra, "lblRighe").text(), "3 righe");
    EXPECT_EQ(Piede(finestra), "·  Nessuna variazione");
    EXPECT_FALSE(Trova<QLabel>(finestra, "FootNotice").isVisible());
    Tasto(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(Trova<QLabel>(finestra, "lblRighe").text(), "3 righe");
    EXPECT_EQ(Piede(finestra), "·  3 scelte: 3.000,30 €  ·  Nessuna variazione");
    Incolla("B02");
    EXPECT_EQ(Piede(finestra), "·  3 scelte: 3.000,30 €  ·  3 spuntate: 3.000,30 €  ·  3 variate: 3.000,30 €");
    EXPECT_TRUE(Trova<QLabel>(finestra, "FootNotice").isVisible());
    EXPECT_EQ(Esito(finestra), "3 rate: banca incollata");
  });
}

TEST_F(ReportInWindow, CopiesAsTextAndAsATable) {
  Mostra([](QDialog& finestra) {
    Tasto(Qt::Key_C, Qt::ControlModifier);
    const QMimeData* copiate = QGuiApplication::clipboard()->mimeData();
    EXPECT_THAT(copiate->text().toStdString(), StartsWith("Conto\tPartita\tScadenza\t"));
    EXPECT_THAT(copiate->text().toStdString(), HasSubstr("\nROSSI\t2006 1\t31/03/2026\t31/03/2026\t\t1.000,10\t"));
    EXPECT_THAT(copiate->html().toStdString(), HasSubstr("<td align=\"right\">1.000,10</td>"));
    EXPECT_EQ(Esito(finestra), "Copiate 3 rate");
  });
}

TEST_F(ReportInWindow, LeavesCopyAndPasteOfAFieldToTheField) {
  Mostra([](QDialog& finestra) {
    auto& campo = Trova<QLineEdit>(finestra, "TextScadenza");
    campo.setFocus();
    Incolla("200127");
    EXPECT_EQ(campo.text(), "200127");
    EXPECT_EQ(Piede(finestra), "·  Nessuna variazione");
  });
}

TEST_F(ReportInWindow, OpensTheChangesAndTakesOneBack) {
  Mostra([this](QDialog& finestra) {
    Tasto(Qt::Key_F7);
    EXPECT_TRUE(finestra.findChild<QListView*>("ChangesList") == nullptr ||
                !Trova<QListView>(finestra, "ChangesList").isVisible())
        << "there are none";
    Tasto(Qt::Key_A, Qt::ControlModifier);
    Incolla("20/01/2027");
    auto& pulsante = Trova<QToolButton>(finestra, "FootChanges");
    EXPECT_TRUE(pulsante.isVisible());
    EXPECT_EQ(pulsante.text(), "Variazioni (3)");
    Tasto(Qt::Key_F7);
    auto& elenco = Trova<QListView>(finestra, "ChangesList");
    ASSERT_TRUE(elenco.isVisible());
    EXPECT_EQ(elenco.model()->index(1, 0).data().toString(),
              QStringLiteral("ROSSI, 2006 1, rata 1, 1.000,10 €: scadenza dal 31/03/2026 al 20/01/2027"));
    Tasto(Qt::Key_Down);
    Tasto(Qt::Key_Delete);
    EXPECT_EQ(elenco.model()->rowCount(), 2);
    EXPECT_EQ(griglia_.righe.Testo(1, Schermata::NuovaScadenza), "31/03/2026");
    EXPECT_EQ(Esito(finestra), "1 rata: come prima");
    Tasto(Qt::Key_Delete);
    Tasto(Qt::Key_Delete);
    EXPECT_FALSE(elenco.isVisible()) << "nothing is left";
    EXPECT_FALSE(pulsante.isVisible());
    EXPECT_EQ(QApplication::focusWidget(), &Trova<QTableView>(finestra, "LVScadenzeBanche"));
  });
}

TEST_F(ReportInWindow, ShowsTheEffectAndKeepsWhatIsBehindABarInSight) {
  Mostra([this](QDialog& finestra) {
    griglia_.righe.ImpostaTesto(2, Schermata::Scadenza, "30/04/2026");
    griglia_.righe.ImpostaTesto(2, Schermata::NuovaScadenza, "30/04/2026");
    const int larghezza = finestra.width();
    Tasto(Qt::Key_F6);
    auto& pannello = Trova<QListWidget>(finestra, "EffectPanel");
    ASSERT_TRUE(pannello.isVisible());
    EXPECT_EQ(pannello.item(1)->text(), "nessuna banca: prima 3.000,30 €, dopo 3.000,30 €");
    EXPECT_EQ(pannello.item(4)->text(), "04/2026: prima 1.000,10 €, dopo 1.000,10 €");
    QTest::mouseClick(pannello.viewport(), Qt::LeftButton, {}, pannello.visualItemRect(pannello.item(3)).center());
    EXPECT_EQ(Lista(finestra).model()->rowCount(), 2);
    EXPECT_TRUE(Visibile(finestra, "FilterBar"));
    EXPECT_EQ(Trova<QLabel>(finestra, "FilterCount").text(), "2 di 3");
    EXPECT_EQ(Trova<QPushButton>(finestra, "FilterBehind").text(), "Per mese: 03/2026  ✕");
    EXPECT_EQ(Esito(finestra), "Per mese: 03/2026: 2 rate, le altre non sono in vista");
    EXPECT_EQ(pannello.item(3)->text(), "03/2026: prima 2.000,20 €, dopo 2.000,20 €, solo questa in vista");
    Lista(finestra).setFocus();
    Tasto(Qt::Key_A, Qt::ControlModifier);
    Incolla("20/01/2027");
    EXPECT_EQ(pannello.item(3)->text(), "03/2026: prima 2.000,20 €, dopo 0,00 €, variata, solo questa in vista");
    QTest::mouseClick(&Trova<QPushButton>(finestra, "FilterBehind"), Qt::LeftButton);
    EXPECT_EQ(Lista(finestra).model()->rowCount(), 3);
    EXPECT_FALSE(Visibile(finestra, "FilterBar")) << "nobody asked for it";
    EXPECT_TRUE(Lista(finestra).hasFocus());
    Tasto(Qt::Key_F6);
    EXPECT_FALSE(pannello.isVisible());
    EXPECT_EQ(finestra.width(), larghezza);
  });
}

TEST_F(ReportInWindow, OpensThePanelAgainWhereThePersonLeftItOpen) {
  const QTemporaryDir settings(QString::fromStdString((BuildFolder() / "finestre-XXXXXX").string()));
  QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settings.path());
  const QString kept = settings.filePath("LumoScad/Finestre.ini");
  int alone = 0;
  Mostra([&](QDialog& finestra) {
    alone = finestra.width();
    EXPECT_EQ(finestra.findChild<QListWidget*>("EffectPanel"), nullptr);
  });
  EXPECT_FALSE(QFile::exists(kept)) << "nobody changed anything";
  Mostra([](QDialog&) { Tasto(Qt::Key_F6); });
  EXPECT_TRUE(QFile::exists(kept));
  for (int time = 0; time < 2; ++time) {
    Mostra([&](QDialog& finestra) {
      auto& pannello = Trova<QListWidget>(finestra, "EffectPanel");
      EXPECT_TRUE(pannello.isVisible());
      EXPECT_EQ(finestra.width(), std::min(alone + pannello.width(), finestra.screen()->availableSize().width()));
      EXPECT_TRUE(Lista(finestra).hasFocus()) << "the person begins in the list";
    });
  }
  Mostra([&](QDialog& finestra) {
    Tasto(Qt::Key_0, Qt::ControlModifier);
    EXPECT_FALSE(Trova<QListWidget>(finestra, "EffectPanel").isVisible());
    EXPECT_EQ(finestra.width(), alone);
  });
  Mostra([](QDialog& finestra) { EXPECT_EQ(finestra.findChild<QListWidget*>("EffectPanel"), nullptr); });
  QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("/dev/null/nowhere"));
}

TEST_F(ReportInWindow, MarksWhatTheFilterFoundAndNothingElse) {
  griglia_.righe.ImpostaTesto(1, Schermata::Importo, "1.584,36");
  Mostra([](QDialog& finestra) {
    QTableView& lista = Lista(finestra);
    const auto marked = [&lista](int row, int column) {
      const QImage picture = lista.viewport()->grab(lista.visualRect(lista.model()->index(row, column))).toImage();
      int pixels = 0;
      for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
          pixels += picture.pixelColor(x, y) == qt::look::Now().found ? 1 : 0;
        }
      }
      return pixels;
    };
    EXPECT_EQ(marked(1, Schermata::Importo), 0);
    Tasto(Qt::Key_F, Qt::ControlModifier);
    QTest::keyClicks(QApplication::focusWidget(), "1584");
    ASSERT_EQ(lista.model()->rowCount(), 1);
    EXPECT_GT(marked(0, Schermata::Importo), 50);
    EXPECT_EQ(marked(0, Schermata::Conto), 0);
    QApplication::focusWidget()->setProperty("text", "1584 ross");
    EXPECT_GT(marked(0, Schermata::Conto), 50);
    lista.setColumnWidth(Schermata::Conto, 45);
    EXPECT_GT(marked(0, Schermata::Conto), 0) << "as far as a text that is cut shows it";
    Tasto(Qt::Key_Escape);
    EXPECT_EQ(marked(0, Schermata::Importo) + marked(1, Schermata::Importo), 0);
  });
}

TEST_F(ReportInWindow, SavesForASpreadsheetAndForPrinting) {
  QTemporaryDir cartella(QString::fromStdString((BuildFolder() / "salvati-XXXXXX").string()));
  const QString csv = cartella.filePath("righe.csv");
  const QString pdf = cartella.filePath("righe.pdf");
  Mostra([&](QDialog& finestra) {
    Salva(finestra, csv);
    EXPECT_THAT(Esito(finestra), StartsWith("Salvato: "));
    Salva(finestra, pdf);
  });
  EXPECT_TRUE(Letto(csv).startsWith("\xEF\xBB\xBF"
                                    "Conto;Partita;"));
  EXPECT_EQ(Letto(csv).count("\r\n"), 4);
  EXPECT_TRUE(Letto(pdf).startsWith("%PDF-"));
  EXPECT_GT(Letto(pdf).size(), 2000);
}

} // namespace
} // namespace lumoscad::test
