// Every gesture of the table in the real window of a list, with real keys and clicks.

#include "TastiDellElenco.hpp"
#include "platform/qt/ListView.hpp"

#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTest>

#include <gmock/gmock.h>

#include <algorithm>

namespace lumoscad::test {

using testing::ElementsAre;
using testing::IsEmpty;

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
    EXPECT_GE(known, 12);
    for (const char* name : {"Copia", "Dettagli della riga", "Tasti e gesti"}) {
      const auto actions = menu.actions();
      EXPECT_TRUE(std::any_of(actions.begin(), actions.end(), [name](const QAction* entry) {
        return entry->text() == QLatin1String(name);
      })) << name;
    }
    menu.close();
    EXPECT_EQ(Trova<QPushButton>(window, "PictureOk").toolTip(), "Conferma le variazioni (Ctrl+Invio)");
    EXPECT_EQ(Trova<QPushButton>(window, "PictureAnnulla").toolTip(), "Chiude senza variare nulla (Esc)");
    EXPECT_EQ(Trova<QWidget>(window, "TLwTestata_2").toolTip(), "Ordina per Partita (Ctrl+2)");
    EXPECT_EQ(Trova<QWidget>(window, "TLwTestata_4").toolTip(), "Importo");
  });
}

} // namespace lumoscad::test
