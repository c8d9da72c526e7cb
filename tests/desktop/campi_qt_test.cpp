// The date fields and the bank boxes of the real windows: keys, the calendar that drops down, and typing for a bank.

#include "FinestraFinta.hpp"
#include "ScadenzarioAperto.hpp"
#include "platform/qt/MonthView.hpp"
#include "platform/qt/QtDesktop.hpp"
#include "screens/frmLumoScadenzeBanche.hpp"
#include "support/TestBench.hpp"

#include <QAbstractItemView>
#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>
#include <QWheelEvent>

#include <gmock/gmock.h>

namespace lumoscad::test {
namespace {

using Schermata = frmLumoScadenzeBanche;
using testing::IsEmpty;

/// The calendar that is open; null where there is none.
QWidget* Aperto() {
  QWidget* const popup = QApplication::activePopupWidget();
  return popup != nullptr && popup->objectName() == "CalendarPopup" ? popup : nullptr;
}

qt::MonthView& Giorni() {
  QWidget* const calendario = Aperto();
  auto* const giorni = calendario == nullptr ? nullptr : calendario->findChild<qt::MonthView*>("CalendarDays");
  if (giorni == nullptr) {
    throw std::runtime_error("no calendar is open");
  }
  return *giorni;
}

std::string Scritta(const char* nome) {
  return Giorni().parentWidget()->findChild<QLabel*>(nome)->text().toStdString();
}

/// Presses a key where the keyboard is: in the calendar while it is open.
void Batti(Qt::Key tasto, Qt::KeyboardModifiers con = {}) {
  QWidget* const popup = QApplication::activePopupWidget();
  QWidget* const dove = popup == nullptr ? QApplication::focusWidget() : popup->focusWidget();
  QTest::keyClick(dove == nullptr ? popup : dove, tasto, con);
}

void Digita(const char* testo) {
  QWidget* const popup = QApplication::activePopupWidget();
  QWidget* const dove = popup == nullptr ? QApplication::focusWidget() : popup->focusWidget();
  QTest::keyClicks(dove == nullptr ? popup : dove, testo);
}

class FieldsInTheWindow : public testing::Test {
 protected:
  FieldsInTheWindow() : desktop(qt::CreateDesktop()) {
    ActiveServices().desktop = [this]() -> Desktop& { return *desktop; };
    griglia.cmbBanche.voci =
        griglia.cmbBanche2.voci = {" ", "CASSA DELLA LUNIGIANA", "Banca del Garda", "Credito Tirreno"};
    griglia.cmbBanche.codici = griglia.cmbBanche2.codici = {"1820.01", "B02", "1820.03"};
    schermata.griglia().modo = "DEBITI/CREDITI";
    for (const char* scadenza : {"31/03/2006", "31/03/2006", "10/04/2006"}) {
      griglia.righe.Aggiungi(
          {"ROSSI", "2006 1", scadenza, "31/01/2006", "", "1.100,50", "", scadenza, "1", "", "", "x"});
    }
  }
  void Mostra(const std::function<void(QDialog&)>& copione) {
    griglia.Resize();
    Recita(copione);
    griglia.Mostra();
  }
  [[nodiscard]] std::string Nuova(std::size_t riga) const {
    return std::string(griglia.righe.Testo(riga, Schermata::NuovaScadenza));
  }
  [[nodiscard]] std::string NuovaBanca(std::size_t riga) const {
    return std::string(griglia.righe.Testo(riga, Schermata::NuovaBanca));
  }

  TestBench banco;
  std::unique_ptr<Desktop> desktop;
  Schermata schermata;
  Griglia& griglia = schermata.griglia();
};

TEST_F(FieldsInTheWindow, ArrowsMoveTheDateOfTheCellByADayAndPagesByAMonth) {
  Mostra([&](QDialog& finestra) {
    Clicca(Lista(finestra), 1, Schermata::NuovaScadenza);
    auto& editor = Trova<QLineEdit>(finestra, "TextScad");
    for (const auto& [tasto, data] :
         {std::pair(Qt::Key_Up, "01/04/2006"), std::pair(Qt::Key_Down, "31/03/2006"),
          std::pair(Qt::Key_PageDown, "28/02/2006"), std::pair(Qt::Key_PageUp, "31/03/2006")}) {
      Batti(tasto);
      EXPECT_EQ(editor.text(), data);
      EXPECT_EQ(editor.selectedText(), data) << "what is typed next replaces it";
    }
    Batti(Qt::Key_Up);
    EXPECT_TRUE(editor.hasFocus());
    EXPECT_EQ(griglia.Stato().selected, 1) << "the list does not move below the editor";
    Batti(Qt::Key_Return);
    EXPECT_EQ(Nuova(1), "01/04/2006");
  });
}

TEST_F(FieldsInTheWindow, KeysWithModifiersStayWhatTheyWere) {
  Mostra([&](QDialog& finestra) {
    Clicca(Lista(finestra), 0, Schermata::NuovaScadenza);
    for (const Qt::KeyboardModifier con : {Qt::ShiftModifier, Qt::ControlModifier, Qt::AltModifier}) {
      Batti(Qt::Key_Up, con);
      Batti(Qt::Key_F4, con);
    }
    EXPECT_EQ(Trova<QLineEdit>(finestra, "TextScad").text(), "31/03/2006");
    EXPECT_EQ(Aperto(), nullptr);
  });
}

TEST_F(FieldsInTheWindow, ADayChosenInTheCalendarIsWrittenAsIfTyped) {
  Mostra([&](QDialog& finestra) {
    Clicca(Lista(finestra), 0, Schermata::NuovaScadenza);
    auto& editor = Trova<QLineEdit>(finestra, "TextScad");
    Batti(Qt::Key_F4);
    EXPECT_EQ(Giorni().Day(), QDate(2006, 3, 31));
    EXPECT_EQ(Scritta("CalendarMonth"), "marzo 2006");
    EXPECT_EQ(Scritta("CalendarDayName"), "venerdì 31 marzo 2006");
    EXPECT_EQ(Scritta("CalendarDayDue"), "2 rate, 2.201,00");
    Batti(Qt::Key_Right);
    EXPECT_EQ(Scritta("CalendarMonth"), "aprile 2006");
    Batti(Qt::Key_Down);
    Batti(Qt::Key_Down);
    Batti(Qt::Key_Right);
    Batti(Qt::Key_Right);
    EXPECT_EQ(Scritta("CalendarDayName"), "lunedì 17 aprile 2006 · Lunedì dell'Angelo");
    Batti(Qt::Key_Return);
    EXPECT_EQ(Aperto(), nullptr);
    EXPECT_EQ(editor.text(), "17/04/2006");
    EXPECT_TRUE(editor.isVisible()) << "the editor closes as ever, not with the calendar";
    EXPECT_TRUE(editor.hasFocus());
    EXPECT_EQ(Nuova(0), "31/03/2006");
    Batti(Qt::Key_Return);
    EXPECT_EQ(Nuova(0), "17/04/2006");
    EXPECT_EQ(Nuova(1), "31/03/2006");
  });
}

TEST_F(FieldsInTheWindow, TheCalendarGoesFromMonthToMonthByKeysWheelAndButtons) {
  Mostra([&](QDialog& finestra) {
    Clicca(Lista(finestra), 0, Schermata::NuovaScadenza);
    Batti(Qt::Key_F4);
    for (const auto& [tasto, giorno] :
         {std::pair(Qt::Key_PageDown, QDate(2006, 4, 30)), std::pair(Qt::Key_PageUp, QDate(2006, 3, 30)),
          std::pair(Qt::Key_Home, QDate(2006, 3, 1)), std::pair(Qt::Key_End, QDate(2006, 3, 31)),
          std::pair(Qt::Key_Left, QDate(2006, 3, 30)), std::pair(Qt::Key_Up, QDate(2006, 3, 23))}) {
      Batti(tasto);
      EXPECT_EQ(Giorni().Day(), giorno);
    }
    QTest::mouseClick(Aperto()->findChild<QToolButton*>("CalendarNextMonth"), Qt::LeftButton);
    EXPECT_EQ(Giorni().Day(), QDate(2006, 4, 23));
    QTest::mouseClick(Aperto()->findChild<QToolButton*>("CalendarPreviousMonth"), Qt::LeftButton);
    EXPECT_EQ(Giorni().Day(), QDate(2006, 3, 23));
    const QPointF centro = Giorni().viewport()->rect().center();
    QWheelEvent rotella(centro, Giorni().viewport()->mapToGlobal(centro), {}, {0, -120}, {}, {}, Qt::NoScrollPhase,
                        false);
    QCoreApplication::sendEvent(Giorni().viewport(), &rotella);
    EXPECT_EQ(Giorni().Day(), QDate(2006, 4, 23));
    Batti(Qt::Key_F4);
    EXPECT_EQ(Aperto(), nullptr);
  });
}

TEST_F(FieldsInTheWindow, EscClosesTheCalendarAloneAndWritesNothing) {
  Mostra([&](QDialog& finestra) {
    Clicca(Lista(finestra), 0, Schermata::NuovaScadenza);
    auto& editor = Trova<QLineEdit>(finestra, "TextScad");
    Batti(Qt::Key_F4);
    Batti(Qt::Key_Right);
    Batti(Qt::Key_Escape);
    EXPECT_EQ(Aperto(), nullptr);
    EXPECT_EQ(editor.text(), "31/03/2006");
    EXPECT_TRUE(editor.hasFocus());
    EXPECT_TRUE(finestra.isVisible());
  });
}

TEST_F(FieldsInTheWindow, AClickOnADayChoosesIt) {
  Mostra([&](QDialog& finestra) {
    auto& campo = Trova<QLineEdit>(finestra, "TextScadenza");
    campo.setFocus();
    Batti(Qt::Key_F4);
    EXPECT_EQ(Giorni().Day(), QDate(2006, 3, 5)) << "an empty field at the top opens on today";
    qt::MonthView& giorni = Giorni();
    const QRect cella = giorni.visualRect(giorni.Model().CellOf(QDate(2006, 3, 15)));
    QTest::mouseMove(giorni.viewport(), cella.center());
    QTest::mouseClick(giorni.viewport(), Qt::LeftButton, {}, cella.center());
    EXPECT_EQ(Aperto(), nullptr);
    EXPECT_EQ(campo.text(), "15/03/2006");
    EXPECT_EQ(griglia.Stato().dueDateText, "15/03/2006");
    EXPECT_TRUE(campo.hasFocus());
  });
}

TEST_F(FieldsInTheWindow, EveryDayOfTheCalendarTellsItselfToAssistiveTools) {
  Mostra([&](QDialog& finestra) {
    Clicca(Lista(finestra), 0, Schermata::NuovaScadenza);
    Batti(Qt::Key_F4);
    EXPECT_EQ(Giorni().accessibleName(), "Giorni di marzo 2006");
    QAccessibleInterface* const giorni = QAccessible::queryAccessibleInterface(&Giorni());
    ASSERT_NE(giorni, nullptr);
    QAccessibleTableInterface* const tabella = giorni->tableInterface();
    ASSERT_NE(tabella, nullptr);
    EXPECT_EQ(tabella->rowCount(), 6);
    QAccessibleInterface* const ultimo = tabella->cellAt(4, 4);
    ASSERT_NE(ultimo, nullptr);
    EXPECT_EQ(ultimo->text(QAccessible::Name), "venerdì 31 marzo 2006 · 2 rate, 2.201,00");
    EXPECT_EQ(tabella->cellAt(0, 6)->text(QAccessible::Name), "domenica 5 marzo 2006 · oggi");
    EXPECT_EQ(Aperto()->findChild<QToolButton*>("CalendarNextMonth")->accessibleName(), "Mese seguente (Pag giù)");
    Batti(Qt::Key_Escape);
  });
}

TEST_F(FieldsInTheWindow, AShortFormAtTheTopIsWrittenOutWhenTheFieldIsLeft) {
  Mostra([&](QDialog& finestra) {
    auto& campo = Trova<QLineEdit>(finestra, "TextScadenza");
    campo.setFocus();
    Digita("+30");
    EXPECT_EQ(campo.text(), "+30");
    Batti(Qt::Key_Tab);
    EXPECT_EQ(campo.text(), "04/04/2006");
    campo.setFocus();
    campo.selectAll();
    Digita("+3x");
    Batti(Qt::Key_Tab);
    EXPECT_EQ(campo.text(), "+3x");
  });
}

TEST_F(FieldsInTheWindow, TypingForABankNarrowsItsListAndChoosesNothing) {
  Mostra([&](QDialog& finestra) {
    Clicca(Lista(finestra), 1, Schermata::NuovaBanca);
    auto& combo = Trova<QComboBox>(finestra, "cmbBanche2");
    QSignalSpy scelte(&combo, &QComboBox::activated);
    Digita("lun");
    auto& voci = static_cast<QListView&>(*combo.view());
    ASSERT_TRUE(voci.isVisible());
    EXPECT_TRUE(voci.isRowHidden(0));
    EXPECT_FALSE(voci.isRowHidden(1));
    EXPECT_TRUE(voci.isRowHidden(2));
    EXPECT_TRUE(voci.isRowHidden(3));
    EXPECT_EQ(voci.currentIndex().row(), 1);
    EXPECT_EQ(scelte.count(), 0);
    EXPECT_EQ(combo.currentIndex(), 0);
    EXPECT_TRUE(griglia.Stato().bank.visible);
    Batti(Qt::Key_Return);
    EXPECT_FALSE(voci.isVisible());
    ASSERT_EQ(scelte.count(), 1) << "Enter is the choice, once";
    EXPECT_EQ(scelte.at(0).at(0).toInt(), 1) << "by its place in the whole list";
    EXPECT_EQ(griglia.Stato().bank.index, 1);
    EXPECT_TRUE(combo.isVisible()) << "the editor closes as ever";
    for (int voce = 0; voce < combo.count(); ++voce) {
      EXPECT_FALSE(voci.isRowHidden(voce));
    }
    Batti(Qt::Key_Return);
    EXPECT_EQ(NuovaBanca(1), "CASSA DELLA LUNIGIANA");
    EXPECT_EQ(scelte.count(), 1);
  });
}

TEST_F(FieldsInTheWindow, TheNarrowedListIsAsWideAsItsNames) {
  griglia.cmbBanche2.voci[3] = "Credito Tirreno e di tutta la costa fino alle isole, filiale di Rio";
  Mostra([&](QDialog& finestra) {
    Clicca(Lista(finestra), 1, Schermata::NuovaBanca);
    Digita("tirr");
    const QAbstractItemView& voci = *Trova<QComboBox>(finestra, "cmbBanche2").view();
    ASSERT_TRUE(voci.isVisible());
    EXPECT_GE(voci.viewport()->width(), voci.sizeHintForColumn(0));
    Batti(Qt::Key_Escape);
  });
}

TEST_F(FieldsInTheWindow, ABankIsFoundByItsCodeAndTakenByAClick) {
  Mostra([&](QDialog& finestra) {
    auto& combo = Trova<QComboBox>(finestra, "cmbBanche");
    combo.setFocus();
    QSignalSpy scelte(&combo, &QComboBox::activated);
    Digita("1820.03");
    QAbstractItemView& voci = *combo.view();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(voci.window()));
    const QRect voce = voci.visualRect(combo.model()->index(3, 0));
    EXPECT_LE(voce.bottom(), voci.viewport()->height()) << "the list has shrunk to what is left in it";
    QTest::qWait(QApplication::doubleClickInterval() + 50); // a click at once belongs to the opening of the list
    QTest::mouseMove(voci.viewport(), voce.center());
    QTest::mouseClick(voci.viewport(), Qt::LeftButton, {}, voce.center());
    ASSERT_EQ(scelte.count(), 1);
    EXPECT_EQ(scelte.at(0).at(0).toInt(), 3);
    EXPECT_EQ(griglia.Stato().bankIndex, 3);
  });
}

TEST_F(FieldsInTheWindow, EscClosesTheNarrowedListWithoutAChoice) {
  Mostra([&](QDialog& finestra) {
    Clicca(Lista(finestra), 1, Schermata::NuovaBanca);
    auto& combo = Trova<QComboBox>(finestra, "cmbBanche2");
    QSignalSpy scelte(&combo, &QComboBox::activated);
    Digita("garda");
    Batti(Qt::Key_Escape);
    EXPECT_EQ(scelte.count(), 0);
    EXPECT_EQ(combo.currentIndex(), 0);
    EXPECT_FALSE(combo.view()->isVisible());
    EXPECT_TRUE(combo.isVisible()) << "the first Esc closes the list, the next one the editor";
    Batti(Qt::Key_Escape);
    EXPECT_FALSE(combo.isVisible());
    EXPECT_EQ(NuovaBanca(1), "");
    EXPECT_TRUE(finestra.isVisible());
  });
}

TEST_F(FieldsInTheWindow, WhereNothingIsLeftEnterChoosesNothingAndBackspaceGoesBack) {
  Mostra([&](QDialog& finestra) {
    auto& combo = Trova<QComboBox>(finestra, "cmbBanche");
    combo.setFocus();
    QSignalSpy scelte(&combo, &QComboBox::activated);
    Digita("tirz");
    Batti(Qt::Key_Return);
    EXPECT_EQ(scelte.count(), 0);
    EXPECT_TRUE(combo.view()->isVisible());
    Batti(Qt::Key_Backspace);
    EXPECT_EQ(combo.view()->currentIndex().row(), 3);
    Batti(Qt::Key_Return);
    ASSERT_EQ(scelte.count(), 1);
    EXPECT_EQ(scelte.at(0).at(0).toInt(), 3);
  });
}

TEST_F(FieldsInTheWindow, ArrowsInABankBoxChooseAsEver) {
  Mostra([&](QDialog& finestra) {
    auto& combo = Trova<QComboBox>(finestra, "cmbBanche");
    combo.setFocus();
    QSignalSpy scelte(&combo, &QComboBox::activated);
    Batti(Qt::Key_Down);
    Batti(Qt::Key_Down);
    Batti(Qt::Key_Up);
    EXPECT_EQ(scelte.count(), 3);
    EXPECT_EQ(griglia.Stato().bankIndex, 1);
    EXPECT_FALSE(combo.view()->isVisible());
  });
}

TEST_F(FieldsInTheWindow, ArrowsInTheNarrowedListGoAmongWhatIsLeft) {
  Mostra([&](QDialog& finestra) {
    auto& combo = Trova<QComboBox>(finestra, "cmbBanche");
    combo.setFocus();
    QSignalSpy scelte(&combo, &QComboBox::activated);
    Digita("1820");
    EXPECT_EQ(combo.view()->currentIndex().row(), 1);
    Batti(Qt::Key_Down);
    EXPECT_EQ(combo.view()->currentIndex().row(), 3);
    EXPECT_EQ(scelte.count(), 0);
    Batti(Qt::Key_Return);
    ASSERT_EQ(scelte.count(), 1);
    EXPECT_EQ(scelte.at(0).at(0).toInt(), 3);
  });
}

class FieldsOfTheItem : public ScadenzarioAperto {};

TEST_F(FieldsOfTheItem, OpeningTheCalendarDoesNotCountAsLeavingTheEditor) {
  Mostra([&](QDialog& finestra) {
    Clicca(ListaScad(finestra), 1, ColonnaNuova);
    Tasto(Qt::Key_F4);
    EXPECT_EQ(Giorni().Day(), QDate(2006, 4, 30)) << "an empty editor opens on the row's present date";
    QTest::qWait(50);
    EXPECT_TRUE(form.griglia().Stato().data.visible);
    Batti(Qt::Key_Left);
    Batti(Qt::Key_Return);
    EXPECT_TRUE(form.griglia().Stato().data.visible);
    EXPECT_EQ(form.griglia().Stato().data.text, "29/04/2006");
    EXPECT_EQ(Nuova(1), "");
    Batti(Qt::Key_Return);
    EXPECT_EQ(Nuova(1), "29/04/2006");
  });
  EXPECT_THAT(box, IsEmpty());
}

TEST_F(FieldsOfTheItem, KeysInTheTopFieldCountAsTypedAndTakeTheTicksAway) {
  Mostra([&](QDialog& finestra) {
    Clicca(ListaScad(finestra), 0, Casella);
    EXPECT_EQ(Spuntate(), 1);
    Trova<QLineEdit>(finestra, "TextScadenza").setFocus();
    Batti(Qt::Key_Up);
    EXPECT_EQ(form.griglia().Stato().dueDateText, "06/03/2006");
    EXPECT_EQ(Spuntate(), 0);
  });
}

} // namespace
} // namespace lumoscad::test
