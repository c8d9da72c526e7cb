// The gestures in cells, fields and panels of a list, and those of the mouse: what they do in the real window.

#include "TastiDellElenco.hpp"
#include "platform/qt/ListView.hpp"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QLineEdit>
#include <QListView>
#include <QListWidget>
#include <QMenu>
#include <QTableWidget>
#include <QTest>

#include <gmock/gmock.h>

#include <algorithm>

namespace lumoscad::test {

using testing::ElementsAre;
using testing::IsEmpty;

void KeysOfTheList::AddCellTrials() {
  trials_[Gesture::CloseCell] = [this](const Tried& t) {
    CreditsForKeys::GoTo(t.Window(), 4, Schermata::NuovaScadenza);
    TypeText("200127");
    t.Press();
    EXPECT_FALSE(Visibile(t.Window(), "FrameScad"));
    EXPECT_THAT(screen_->WithDate("20/01/2027"), ElementsAre(4));
    EXPECT_EQ(Current(), 5U);
  };
  trials_[Gesture::NextCell] = [this](const Tried& t) {
    CreditsForKeys::GoTo(t.Window(), 4, Schermata::NuovaScadenza);
    TypeText("200127");
    t.Press();
    EXPECT_THAT(screen_->WithDate("20/01/2027"), ElementsAre(4));
    EXPECT_EQ(Current(), t.Which() == 0 ? 4U : 3U);
    EXPECT_EQ(Lista(t.Window()).currentIndex().column(), Schermata::NuovaBanca);
  };
  trials_[Gesture::AbandonCell] = [this](const Tried& t) {
    CreditsForKeys::GoTo(t.Window(), 4, Schermata::NuovaScadenza);
    TypeText("200127");
    t.Press();
    EXPECT_FALSE(Visibile(t.Window(), "FrameScad"));
    EXPECT_TRUE(t.Window().isVisible());
    EXPECT_THAT(screen_->WithDate("20/01/2027"), IsEmpty());
  };
}

void KeysOfTheList::AddFieldTrials() {
  const auto steps = [](const char* wanted) {
    return [wanted](const Tried& t) {
      auto& top = Trova<QLineEdit>(t.Window(), "TextScadenza");
      top.setFocus();
      TypeText("15/01/2027");
      t.Press();
      EXPECT_EQ(top.text(), wanted);
      CreditsForKeys::GoTo(t.Window(), 4, Schermata::NuovaScadenza);
      TypeText("15/01/2027");
      t.Press();
      EXPECT_EQ(Trova<QLineEdit>(t.Window(), "TextScad").text(), wanted);
    };
  };
  trials_[Gesture::DayLater] = steps("16/01/2027");
  trials_[Gesture::DayEarlier] = steps("14/01/2027");
  trials_[Gesture::MonthLater] = steps("15/02/2027");
  trials_[Gesture::MonthEarlier] = steps("15/12/2026");
  trials_[Gesture::OpenCalendar] = [](const Tried& t) {
    Trova<QLineEdit>(t.Window(), "TextScadenza").setFocus();
    t.Press();
    QWidget* const popup = QApplication::activePopupWidget();
    ASSERT_NE(popup, nullptr);
    EXPECT_EQ(popup->objectName(), "CalendarPopup");
    popup->close();
  };
  trials_[Gesture::ShortDate] = [](const Tried& t) {
    auto& top = Trova<QLineEdit>(t.Window(), "TextScadenza");
    for (const auto& [typed, wanted] : {std::pair("fm", "31/03/2006"), std::pair("+30", "04/04/2006")}) {
      top.setFocus();
      top.selectAll();
      TypeText(typed);
      Lista(t.Window()).setFocus();
      EXPECT_EQ(top.text(), wanted);
    }
  };
}

void KeysOfTheList::AddBankTrials() {
  const auto entries = [](QComboBox& box) {
    auto* list = qobject_cast<QListView*>(box.view());
    int shown = 0;
    for (int entry = 0; entry < box.count(); ++entry) {
      shown += list->isRowHidden(entry) ? 0 : 1;
    }
    return shown;
  };
  const auto typing = [](const Tried& t, const char* text) -> QComboBox& {
    auto& box = Trova<QComboBox>(t.Window(), "cmbBanche");
    box.setFocus();
    TypeText(text);
    EXPECT_TRUE(box.view()->isVisible());
    return box;
  };
  trials_[Gesture::NarrowBanks] = [=](const Tried& t) {
    auto& box = typing(t, "bet");
    EXPECT_EQ(entries(box), 1);
    box.hidePopup();
  };
  trials_[Gesture::WidenBanks] = [=](const Tried& t) {
    auto& box = typing(t, "ba");
    TypeText("x");
    EXPECT_EQ(entries(box), 0);
    t.Press();
    EXPECT_EQ(entries(box), 2);
    box.hidePopup();
  };
  trials_[Gesture::ChooseBank] = [=, this](const Tried& t) {
    auto& box = typing(t, "bet");
    t.Press();
    EXPECT_FALSE(box.view()->isVisible());
    EXPECT_EQ(screen_->griglia.Stato().bankIndex, 2);
  };
  trials_[Gesture::CloseBanks] = [=, this](const Tried& t) {
    auto& box = typing(t, "bet");
    t.Press();
    EXPECT_FALSE(box.view()->isVisible());
    EXPECT_EQ(screen_->griglia.Stato().bankIndex, 0);
    EXPECT_TRUE(t.Window().isVisible());
  };
}

void KeysOfTheList::AddCalendarTrials() {
  const auto days = [](std::vector<const char*> wanted) {
    return [wanted](const Tried& t) {
      auto& top = Trova<QLineEdit>(t.Window(), "TextScadenza");
      top.setFocus();
      TypeText("15/01/2027");
      PressKey("F4");
      t.Press();
      PressKey("Return");
      EXPECT_EQ(top.text(), wanted.at(t.Which()));
    };
  };
  trials_[Gesture::CalendarDay] = days({"14/01/2027", "16/01/2027"});
  trials_[Gesture::CalendarWeek] = days({"08/01/2027", "22/01/2027"});
  trials_[Gesture::CalendarMonth] = days({"15/12/2026", "15/02/2027"});
  trials_[Gesture::CalendarEndDays] = days({"01/01/2027", "31/01/2027"});
  trials_[Gesture::CalendarChoose] = [](const Tried& t) {
    auto& top = Trova<QLineEdit>(t.Window(), "TextScadenza");
    top.setFocus();
    TypeText("15/01/2027");
    PressKey("F4");
    PressKey("Right");
    t.Press();
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
    EXPECT_EQ(top.text(), "16/01/2027");
  };
  trials_[Gesture::CalendarClose] = [](const Tried& t) {
    auto& top = Trova<QLineEdit>(t.Window(), "TextScadenza");
    top.setFocus();
    TypeText("15/01/2027");
    PressKey("F4");
    PressKey("Right");
    t.Press();
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
    EXPECT_EQ(top.text(), "15/01/2027");
    EXPECT_TRUE(t.Window().isVisible());
  };
}

void KeysOfTheList::AddPanelTrials() {
  trials_[Gesture::FilterDone] = [](const Tried& t) {
    PressKey("Ctrl+F");
    TypeText("zorzi");
    t.Press();
    EXPECT_TRUE(Lista(t.Window()).hasFocus());
    EXPECT_EQ(Lista(t.Window()).model()->rowCount(), 6);
  };
  trials_[Gesture::FilterClear] = [](const Tried& t) {
    PressKey("Ctrl+F");
    TypeText("zorzi");
    t.Press();
    EXPECT_TRUE(t.Window().isVisible());
    EXPECT_FALSE(Visibile(t.Window(), "FilterBar"));
    EXPECT_EQ(Lista(t.Window()).model()->rowCount(), Rows);
  };
  trials_[Gesture::TakeBack] = [this](const Tried& t) {
    CreditsForKeys::Change(t.Window(), 3);
    PressKey("F7");
    t.Press();
    EXPECT_THAT(screen_->WithDate("20/01/2027"), IsEmpty());
  };
  trials_[Gesture::FilterBehind] = [this](const Tried& t) {
    PressKey("F6");
    Trova<QListWidget>(t.Window(), "EffectPanel").setCurrentRow(1);
    t.Press();
    EXPECT_EQ(screen_->griglia.Visibili(), 6U);
    t.Press();
    EXPECT_EQ(screen_->griglia.Visibili(), static_cast<std::size_t>(Rows));
  };
  trials_[Gesture::EffectsClear] = [this](const Tried& t) {
    PressKey("F6");
    Trova<QListWidget>(t.Window(), "EffectPanel").setCurrentRow(1);
    PressKey("Return");
    EXPECT_EQ(screen_->griglia.Visibili(), 6U);
    t.Press();
    EXPECT_EQ(screen_->griglia.Visibili(), static_cast<std::size_t>(Rows));
    EXPECT_TRUE(t.Window().isVisible());
  };
}

void KeysOfTheList::AddHelpTrials() {
  const auto inHelp = [](const std::function<void(QDialog&)>& look) {
    bool seen = false;
    InModalWindow("HelpWindow", [&](QDialog& help) {
      look(help);
      seen = true;
    });
    PressKey("F1");
    EXPECT_TRUE(seen);
  };
  const auto shown = [](QDialog& help) {
    auto& table = Trova<QTableWidget>(help, "HelpTable");
    int rows = 0;
    for (int row = 0; row < table.rowCount(); ++row) {
      rows += table.isRowHidden(row) ? 0 : 1;
    }
    return rows;
  };
  trials_[Gesture::HelpSearch] = [=](const Tried&) {
    inHelp([&](QDialog& help) {
      TypeText("CALENDARIO f4");
      EXPECT_EQ(shown(help), 2) << "what opens it and what closes it";
    });
  };
  trials_[Gesture::HelpRows] = [=](const Tried& t) {
    inHelp([&](QDialog& help) {
      PressKey("Down");
      auto& table = Trova<QTableWidget>(help, "HelpTable");
      EXPECT_TRUE(table.hasFocus());
      t.Press();
      EXPECT_EQ(table.hasFocus(), t.Which() == 1);
      EXPECT_EQ(Trova<QLineEdit>(help, "HelpSearch").hasFocus(), t.Which() == 0);
      EXPECT_EQ(table.currentRow(), t.Which() == 1 ? 1 : 0);
    });
  };
  trials_[Gesture::HelpPrint] = [=](const Tried& t) {
    inHelp([&](QDialog&) {
      bool asked = false;
      InModalWindow("SaveHelp", [&asked](QDialog&) { asked = true; });
      t.Press();
      EXPECT_TRUE(asked);
    });
  };
  trials_[Gesture::HelpClose] = [=](const Tried& t) {
    inHelp([&](QDialog& help) {
      t.Press();
      EXPECT_FALSE(help.isVisible());
    });
    EXPECT_TRUE(t.Window().isVisible());
  };
}

void KeysOfTheList::AddMouseTrials() {
  const auto click = [](const Tried& t, int row, int column, Qt::KeyboardModifiers held = {}) {
    auto& list = Lista(t.Window());
    QTest::mouseClick(list.viewport(), Qt::LeftButton, held, Middle(list, row, column));
  };
  trials_[Gesture::MouseTick] = [=, this](const Tried& t) {
    click(t, 4, Schermata::Radio2);
    EXPECT_THAT(screen_->Ticked(1), ElementsAre(4));
  };
  trials_[Gesture::MouseOpen] = [=](const Tried& t) {
    click(t, 4, Schermata::NuovaScadenza);
    EXPECT_TRUE(Visibile(t.Window(), "FrameScad"));
  };
  trials_[Gesture::MouseSelect] = [=, this](const Tried& t) {
    click(t, 4, 0);
    click(t, 6, 0, Qt::ShiftModifier);
    click(t, 9, 0, Qt::ControlModifier);
    EXPECT_THAT(screen_->Selected(), ElementsAre(4, 5, 6, 9));
  };
  trials_[Gesture::MouseTickUpTo] = [=, this](const Tried& t) {
    click(t, 4, Schermata::Radio2);
    click(t, 6, Schermata::Radio2, Qt::ShiftModifier);
    EXPECT_THAT(screen_->Ticked(1), ElementsAre(4, 5, 6));
  };
  trials_[Gesture::MouseDrag] = [this](const Tried& t) {
    auto& list = Lista(t.Window());
    QTest::mousePress(list.viewport(), Qt::LeftButton, {}, Middle(list, 3, Schermata::Radio2));
    QTest::mouseMove(list.viewport(), Middle(list, 5, Schermata::Radio2));
    QTest::mouseRelease(list.viewport(), Qt::LeftButton, {}, Middle(list, 5, Schermata::Radio2));
    EXPECT_THAT(screen_->Ticked(1), ElementsAre(3, 4, 5));
  };
  trials_[Gesture::MouseMenu] = [](const Tried& t) {
    auto& list = Lista(t.Window());
    const QPoint where = Middle(list, 5, 0);
    QContextMenuEvent right(QContextMenuEvent::Mouse, where, list.viewport()->mapToGlobal(where));
    QApplication::sendEvent(list.viewport(), &right);
    auto& menu = Trova<QMenu>(t.Window(), "ListMenu");
    EXPECT_TRUE(menu.isVisible());
    menu.close();
  };
  trials_[Gesture::MouseSort] = [this](const Tried& t) {
    QTest::mouseClick(&Trova<QWidget>(t.Window(), "TLwTestata_2"), Qt::LeftButton);
    EXPECT_EQ(screen_->griglia.Stato().sortedHeading, 2);
  };
  trials_[Gesture::MouseWidth] = [](const Tried& t) {
    auto& heading = Trova<QWidget>(t.Window(), "TLwTestata_1");
    const QPoint border(heading.width() - 1, heading.height() / 2);
    const int before = Lista(t.Window()).columnWidth(Schermata::Conto);
    QTest::mousePress(&heading, Qt::LeftButton, {}, border);
    QTest::mouseMove(&heading, border + QPoint(30, 0));
    QTest::mouseRelease(&heading, Qt::LeftButton, {}, border + QPoint(30, 0));
    EXPECT_EQ(Lista(t.Window()).columnWidth(Schermata::Conto), before + 30);
  };
  trials_[Gesture::MouseFit] = [](const Tried& t) {
    auto& heading = Trova<QWidget>(t.Window(), "TLwTestata_1");
    auto& list = static_cast<qt::ListView&>(Lista(t.Window()));
    QTest::mouseDClick(&heading, Qt::LeftButton, {}, QPoint(heading.width() - 1, heading.height() / 2));
    EXPECT_EQ(list.columnWidth(Schermata::Conto), list.ContentWidth(Schermata::Conto));
  };
  trials_[Gesture::MouseBar] = [this](const Tried& t) {
    PressKey("F6");
    auto& panel = Trova<QListWidget>(t.Window(), "EffectPanel");
    QTest::mouseClick(panel.viewport(), Qt::LeftButton, {}, panel.visualItemRect(panel.item(1)).center());
    EXPECT_EQ(screen_->griglia.Visibili(), 6U);
  };
}

} // namespace lumoscad::test
