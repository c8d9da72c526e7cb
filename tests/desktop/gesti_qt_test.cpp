// Every gesture of the table in the real window of a list, with real keys and clicks.

#include "FinestraFinta.hpp"
#include "TuttiITasti.hpp"
#include "platform/qt/ListView.hpp"
#include "platform/qt/QtDesktop.hpp"
#include "screens/frmLumoScadenzeBanche.hpp"
#include "support/TestBench.hpp"

#include <QAbstractItemView>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QLineEdit>
#include <QListView>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QTableWidget>
#include <QTest>

#include <gmock/gmock.h>

#include <algorithm>
#include <iterator>

namespace lumoscad::test {
namespace {

using Schermata = frmLumoScadenzeBanche;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int Rows = 30;

/// The credits' screen, made anew for each showing: thirty rows of five customers, with two instalments of each item.
class CreditsForKeys {
 public:
  CreditsForKeys() {
    griglia.modo = "DEBITI/CREDITI";
    griglia.cmbBanche = griglia.cmbBanche2 = {{" ", "BANCA ALFA", "BANCA BETA"}, {"B01", "B02"}};
    for (int i = 0; i < Rows; ++i) {
      const std::string conto = i < 24 ? "CLIENTE " + std::to_string(10 + i / 6) : "ZORZI";
      const std::string partita = "2006 " + std::to_string(100 + i / 2);
      const bool scaduta = i % 3 == 0;
      const std::string data = scaduta ? "31/01/2006" : "31/03/2006";
      const std::string banca = i % 5 == 0 ? "BANCA ALFA" : "";
      griglia.righe.Aggiungi({conto, partita, data, data, banca, "100,00", "", data, std::to_string(i % 2 + 1), "",
                              banca, scaduta ? "2006/01/31" : "2006/03/31"});
      const auto riga = static_cast<std::size_t>(i);
      griglia.righe.ImpostaTag(riga, Schermata::Conto, conto);
      griglia.righe.ImpostaTag(riga, Schermata::Banca, banca.empty() ? "" : "B01");
      griglia.righe.ImpostaTag(riga, Schermata::NuovaBanca, banca.empty() ? "" : "B01");
    }
    griglia.Resize();
  }

  [[nodiscard]] std::vector<std::size_t> Ticked(int which) const {
    return RowsWhere([&](std::size_t row) { return griglia.righe.Spuntata(row, which); });
  }
  [[nodiscard]] std::vector<std::size_t> WithDate(std::string_view date) const {
    return RowsWhere([&](std::size_t row) { return griglia.righe.Testo(row, Schermata::NuovaScadenza) == date; });
  }
  [[nodiscard]] std::vector<std::size_t> Selected() const {
    return RowsWhere([&](std::size_t row) { return griglia.Selezione().Contiene(row); });
  }
  /// Makes a cell the current one, its row the only one that is selected.
  static void GoTo(QDialog& window, int row, int column) {
    Lista(window).setFocus();
    Lista(window).setCurrentIndex(Lista(window).model()->index(row, column));
  }
  /// Gives one row a new date by typing it.
  static void Change(QDialog& window, int row) {
    GoTo(window, row, Schermata::NuovaScadenza);
    TypeText("200127");
    PressKey("Return");
    GoTo(window, row, 0);
  }

  Schermata schermata;
  Griglia& griglia = schermata.griglia();

 private:
  [[nodiscard]] std::vector<std::size_t> RowsWhere(const std::function<bool(std::size_t)>& holds) const {
    std::vector<std::size_t> rows;
    for (std::size_t row = 0; row < griglia.righe.Quante(); ++row) {
      if (holds(row)) {
        rows.push_back(row);
      }
    }
    return rows;
  }
};

class KeysOfTheList : public testing::Test {
 protected:
  KeysOfTheList() : desktop_(qt::CreateDesktop()) {
    ActiveServices().desktop = [this]() -> Desktop& { return *desktop_; };
  }

  void Show(const std::function<void(QDialog&)>& script) {
    screen_ = std::make_unique<CreditsForKeys>();
    Recita(script);
    screen_->griglia.Mostra();
  }
  void AddWindowTrials();
  void AddSelectionTrials();
  void AddListTrials();
  void AddMovementTrials();
  void AddCellTrials();
  void AddFieldTrials();
  void AddBankTrials();
  void AddCalendarTrials();
  void AddPanelTrials();
  void AddHelpTrials();
  void AddMouseTrials();
  void ExpectMoved(const Tried& tried, std::size_t from) const;
  [[nodiscard]] std::size_t Current() const { return screen_->griglia.RigaSelezionata().value_or(Rows); }
  [[nodiscard]] static QPoint Middle(QTableView& list, int row, int column) {
    return list.visualRect(list.model()->index(row, column)).center();
  }

  TestBench bench_;
  std::unique_ptr<Desktop> desktop_;
  std::unique_ptr<CreditsForKeys> screen_;
  Trials trials_;
};

void KeysOfTheList::AddWindowTrials() {
  trials_[Gesture::Help] = [](const Tried& t) {
    bool seen = false;
    InModalWindow("HelpWindow", [&seen](QDialog&) { seen = true; });
    t.Press();
    EXPECT_TRUE(seen);
  };
  for (const Gesture confirm : {Gesture::Confirm, Gesture::ConfirmButton}) {
    trials_[confirm] = [this](const Tried& t) {
      t.Press();
      EXPECT_TRUE(QTest::qWaitFor([&t] { return !t.Window().isVisible(); })) << "a button is seen to go down first";
      EXPECT_TRUE(screen_->griglia.Confermata());
    };
  }
  for (const Gesture leave : {Gesture::Leave, Gesture::LeaveButton}) {
    trials_[leave] = [this](const Tried& t) {
      t.Press();
      EXPECT_TRUE(QTest::qWaitFor([&t] { return !t.Window().isVisible(); })) << "a button is seen to go down first";
      EXPECT_FALSE(screen_->griglia.Confermata());
      EXPECT_EQ(screen_->griglia.MotivoChiusura(), "closed");
    };
  }
  const auto focuses = [](const Tried& t, const char* name) {
    t.Press();
    EXPECT_EQ(QApplication::focusWidget(), &Trova<QWidget>(t.Window(), name));
  };
  trials_[Gesture::NextField] = [focuses](const Tried& t) { focuses(t, t.Which() == 0 ? "PictureOk" : "cmbBanche"); };
  trials_[Gesture::FirstField] = [focuses](const Tried& t) { focuses(t, "TextScadenza"); };
  trials_[Gesture::SecondField] = [focuses](const Tried& t) { focuses(t, "cmbBanche"); };
  trials_[Gesture::Find] = [focuses](const Tried& t) {
    focuses(t, "TextFiltro");
    EXPECT_TRUE(Visibile(t.Window(), "FilterBar"));
  };
  trials_[Gesture::Sort] = [this](const Tried& t) {
    t.Press();
    const int heading = static_cast<int>(t.Which()) + 1;
    const bool sorts = heading == 2 || heading == 5 || heading == 6;
    EXPECT_EQ(screen_->griglia.Stato().sortedHeading, sorts ? heading : 1);
    EXPECT_EQ(screen_->griglia.Stato().ascending, heading != 1) << "it was sorted by the first one before";
  };
  trials_[Gesture::Undo] = [this](const Tried& t) {
    CreditsForKeys::Change(t.Window(), 3);
    EXPECT_THAT(screen_->WithDate("20/01/2027"), ElementsAre(3));
    t.Press();
    EXPECT_THAT(screen_->WithDate("20/01/2027"), IsEmpty());
  };
  trials_[Gesture::Redo] = [this](const Tried& t) {
    CreditsForKeys::Change(t.Window(), 3);
    PressKey("Ctrl+Z");
    t.Press();
    EXPECT_THAT(screen_->WithDate("20/01/2027"), ElementsAre(3));
  };
  trials_[Gesture::Copy] = [](const Tried& t) {
    QGuiApplication::clipboard()->clear();
    t.Press();
    EXPECT_TRUE(QGuiApplication::clipboard()->text().startsWith("Conto\tPartita\t"));
  };
  trials_[Gesture::Paste] = [this](const Tried& t) {
    QGuiApplication::clipboard()->setText("20/01/2027");
    CreditsForKeys::GoTo(t.Window(), 7, 0);
    t.Press();
    EXPECT_THAT(screen_->WithDate("20/01/2027"), ElementsAre(7));
  };
  trials_[Gesture::Save] = [](const Tried& t) {
    bool seen = false;
    InModalWindow("SaveList", [&seen](QDialog&) { seen = true; });
    t.Press();
    EXPECT_TRUE(seen);
  };
  trials_[Gesture::Effects] = [](const Tried& t) {
    t.Press();
    EXPECT_TRUE(Visibile(t.Window(), "EffectPanel"));
    t.Press();
    EXPECT_FALSE(Visibile(t.Window(), "EffectPanel"));
  };
  trials_[Gesture::Changes] = [](const Tried& t) {
    CreditsForKeys::Change(t.Window(), 3);
    t.Press();
    EXPECT_TRUE(Visibile(t.Window(), "ChangesList"));
    t.Press();
    EXPECT_FALSE(Visibile(t.Window(), "ChangesList"));
  };
  trials_[Gesture::Details] = [](const Tried& t) {
    bool seen = false;
    InModalWindow("FormDettagli", [&seen](QDialog&) { seen = true; });
    t.Press();
    EXPECT_TRUE(seen);
  };
  trials_[Gesture::ResetLayout] = [](const Tried& t) {
    auto& list = static_cast<qt::ListView&>(Lista(t.Window()));
    list.SetWidth(Schermata::Conto, 400);
    t.Press();
    EXPECT_TRUE(list.GivenWidths().empty());
  };
}

void KeysOfTheList::AddSelectionTrials() {
  const auto selects = [this](std::size_t rows) {
    return [this, rows](const Tried& t) {
      CreditsForKeys::GoTo(t.Window(), 1, 0);
      t.Press();
      EXPECT_EQ(screen_->Selected().size(), rows);
    };
  };
  trials_[Gesture::SelectAll] = selects(Rows);
  trials_[Gesture::InvertSelection] = selects(Rows - 1);
  trials_[Gesture::SelectAccount] = selects(6);
  trials_[Gesture::SelectItem] = selects(2);
  trials_[Gesture::SelectBank] = selects(24);
  trials_[Gesture::SelectMonth] = selects(20);
  trials_[Gesture::SelectOverdue] = selects(10);
}

/// The key was one of a movement's, and led from a row to another one.
void KeysOfTheList::ExpectMoved(const Tried& tried, std::size_t from) const {
  switch (static_cast<Movement>(tried.Which())) {
  case Movement::Up:
    EXPECT_EQ(Current(), from - 1);
    break;
  case Movement::Down:
    EXPECT_EQ(Current(), from + 1);
    break;
  case Movement::PageUp:
    EXPECT_LT(Current(), from - 1);
    break;
  case Movement::PageDown:
    EXPECT_GT(Current(), from + 1);
    break;
  case Movement::First:
    EXPECT_EQ(Current(), 0U);
    break;
  case Movement::Last:
    EXPECT_EQ(Current(), static_cast<std::size_t>(Rows) - 1);
    break;
  }
}

void KeysOfTheList::AddMovementTrials() {
  trials_[Gesture::Move] = [this](const Tried& t) {
    CreditsForKeys::GoTo(t.Window(), 12, 0);
    t.Press();
    ExpectMoved(t, 12);
    EXPECT_THAT(screen_->Selected(), ElementsAre(Current()));
  };
  trials_[Gesture::Across] = [](const Tried& t) {
    CreditsForKeys::GoTo(t.Window(), 12, Schermata::Scadenza);
    t.Press();
    EXPECT_EQ(Lista(t.Window()).currentIndex().column(), t.Which() == 0 ? Schermata::Partita : Schermata::ScadenzaOrig);
  };
  trials_[Gesture::Extend] = [this](const Tried& t) {
    CreditsForKeys::GoTo(t.Window(), 12, 0);
    t.Press();
    ExpectMoved(t, 12);
    const std::size_t rows = std::max<std::size_t>(Current(), 12) - std::min<std::size_t>(Current(), 12) + 1;
    EXPECT_EQ(screen_->Selected().size(), rows);
  };
  trials_[Gesture::MoveAlone] = [this](const Tried& t) {
    CreditsForKeys::GoTo(t.Window(), 12, 0);
    t.Press();
    ExpectMoved(t, 12);
    EXPECT_THAT(screen_->Selected(), ElementsAre(12));
  };
  trials_[Gesture::AddRange] = [this](const Tried& t) {
    auto& list = Lista(t.Window());
    CreditsForKeys::GoTo(t.Window(), 12, 0);
    QTest::mouseClick(list.viewport(), Qt::LeftButton, Qt::ControlModifier, Middle(list, 14, 0));
    t.Press();
    ExpectMoved(t, 14);
    const std::size_t rows = std::max<std::size_t>(Current(), 14) - std::min<std::size_t>(Current(), 14) + 1;
    const bool over = Current() <= 12;
    EXPECT_EQ(screen_->Selected().size(), over ? rows : rows + 1) << "the twelfth row stays selected";
  };
  trials_[Gesture::ToggleRow] = [this](const Tried& t) {
    CreditsForKeys::GoTo(t.Window(), 12, 0);
    PressKey("Ctrl+Down");
    t.Press();
    EXPECT_THAT(screen_->Selected(), ElementsAre(12, 13));
  };
}

void KeysOfTheList::AddListTrials() {
  trials_[Gesture::Tick] = [this](const Tried& t) {
    CreditsForKeys::GoTo(t.Window(), 4, Schermata::Radio2);
    t.Press();
    EXPECT_THAT(screen_->Ticked(1), ElementsAre(4));
  };
  trials_[Gesture::TickUpTo] = [this](const Tried& t) {
    CreditsForKeys::GoTo(t.Window(), 4, Schermata::Radio2);
    PressKey("Space");
    PressKey("Ctrl+Down");
    PressKey("Ctrl+Down");
    t.Press();
    EXPECT_THAT(screen_->Ticked(1), ElementsAre(4, 5, 6));
  };
  trials_[Gesture::OpenCell] = [](const Tried& t) {
    CreditsForKeys::GoTo(t.Window(), 4, Schermata::NuovaScadenza);
    t.Press();
    EXPECT_TRUE(Visibile(t.Window(), "FrameScad"));
  };
  trials_[Gesture::TypeDigit] = [](const Tried& t) {
    CreditsForKeys::GoTo(t.Window(), 4, Schermata::NuovaScadenza);
    TypeText("2");
    EXPECT_EQ(Trova<QLineEdit>(t.Window(), "TextScad").text(), "2");
    EXPECT_TRUE(Visibile(t.Window(), "FrameScad"));
  };
  trials_[Gesture::JumpTo] = [this](const Tried&) {
    TypeText("z");
    EXPECT_EQ(Current(), 24U);
  };
  trials_[Gesture::Menu] = [](const Tried& t) {
    t.Press();
    auto& menu = Trova<QMenu>(t.Window(), "ListMenu");
    EXPECT_TRUE(menu.isVisible());
    menu.close();
  };
}

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

TEST_F(KeysOfTheList, DoWhatTheTableOfGesturesSaysEachOfThem) {
  AddWindowTrials();
  AddSelectionTrials();
  AddMovementTrials();
  AddListTrials();
  AddCellTrials();
  AddFieldTrials();
  AddBankTrials();
  AddCalendarTrials();
  AddPanelTrials();
  AddHelpTrials();
  AddMouseTrials();
  TryEveryKey(GestureScreens::Lists, trials_, [this](const auto& script) { Show(script); });
}

TEST_F(KeysOfTheList, AreToldInTheMenuAndInTheToolTipsAsTheTableHasThem) {
  Show([](QDialog& window) {
    PressKey("Menu");
    auto& menu = Trova<QMenu>(window, "ListMenu");
    int known = 0;
    for (const QAction* entry : menu.actions()) {
      for (const GestureEntry& gesture : GestureTable()) {
        if (entry->text().toStdString() == gesture.name && !gesture.keys.empty()) {
          EXPECT_EQ(entry->shortcut().toString(QKeySequence::PortableText).toStdString(), KeysOf(gesture).front());
          ++known;
        }
      }
    }
    EXPECT_GE(known, 7);
    menu.close();
    EXPECT_EQ(Trova<QPushButton>(window, "PictureOk").toolTip(), "Conferma le variazioni (Ctrl+Invio)");
    EXPECT_EQ(Trova<QPushButton>(window, "PictureAnnulla").toolTip(), "Chiude senza variare nulla (Esc)");
    EXPECT_EQ(Trova<QWidget>(window, "TLwTestata_2").toolTip(), "Ordina per Partita (Ctrl+2)");
    EXPECT_EQ(Trova<QWidget>(window, "TLwTestata_4").toolTip(), "Importo");
  });
}

} // namespace
} // namespace lumoscad::test
