// Every gesture of the table in the real window of a single item, with real keys and clicks.

#include "ScadenzarioAperto.hpp"
#include "TuttiITasti.hpp"
#include "platform/qt/ListView.hpp"

#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QTableWidget>
#include <QTest>

#include <gmock/gmock.h>

#include <memory>

namespace lumoscad::test {
namespace {

/// The window with its four instalments, made anew for each showing.
class ItemForKeys final : public ScadenzarioAperto {
 public:
  void TestBody() override {}
  void Show(const std::function<void(QDialog&)>& script) { Mostra(script); }
  static void GoTo(QDialog& window, int row, int column) {
    ListaScad(window).setFocus();
    ListaScad(window).setCurrentIndex(ListaScad(window).model()->index(row, column));
  }
  /// Gives the second instalment a new date by typing it.
  void Change(QDialog& window) const {
    GoTo(window, 1, ColonnaNuova);
    TypeText("200127");
    PressKey("Return");
    ASSERT_EQ(Nuova(1), "20/01/2027");
  }

  using ScadenzarioAperto::Casella;
  using ScadenzarioAperto::ColonnaNuova;
  using ScadenzarioAperto::ColonnaScadenza;
  using ScadenzarioAperto::confermate;
  using ScadenzarioAperto::form;
  using ScadenzarioAperto::ListaScad;
  using ScadenzarioAperto::Nuova;
  using ScadenzarioAperto::Spuntate;
};

class KeysOfTheItem : public testing::Test {
 protected:
  void AddWindowTrials();
  void AddListTrials();
  void AddFieldTrials();
  void AddCalendarTrials();
  void AddHelpTrials();
  void AddMouseTrials();

  std::unique_ptr<ItemForKeys> screen_;
  Trials trials_;
};

void KeysOfTheItem::AddWindowTrials() {
  trials_[Gesture::Help] = [](const Tried& t) {
    bool seen = false;
    InModalWindow("HelpWindow", [&seen](QDialog&) { seen = true; });
    t.Press();
    EXPECT_TRUE(seen);
  };
  for (const Gesture confirm : {Gesture::Confirm, Gesture::ConfirmButton}) {
    trials_[confirm] = [this](const Tried& t) {
      t.Press();
      EXPECT_TRUE(QTest::qWaitFor([&t] { return !t.Window().isVisible(); }));
      EXPECT_EQ(screen_->confermate.size(), 1U);
    };
  }
  for (const Gesture leave : {Gesture::Leave, Gesture::LeaveButton}) {
    trials_[leave] = [this](const Tried& t) {
      t.Press();
      EXPECT_TRUE(QTest::qWaitFor([&t] { return !t.Window().isVisible(); }));
      EXPECT_TRUE(screen_->confermate.empty());
    };
  }
  trials_[Gesture::NextField] = [](const Tried& t) {
    t.Press();
    const char* wanted = t.Which() == 0 ? "PictureOk" : "PicSelezionaTutto";
    EXPECT_EQ(QApplication::focusWidget(), &Trova<QWidget>(t.Window(), wanted));
  };
  trials_[Gesture::SelectEverything] = [this](const Tried& t) {
    Trova<QLineEdit>(t.Window(), "TextScadenza").setFocus();
    TypeText("200127");
    t.Press();
    EXPECT_TRUE(QTest::qWaitFor([this] { return screen_->Spuntate() == 4; }));
  };
  trials_[Gesture::Undo] = [this](const Tried& t) {
    screen_->Change(t.Window());
    t.Press();
    EXPECT_EQ(screen_->Nuova(1), "");
  };
  trials_[Gesture::Redo] = [this](const Tried& t) {
    screen_->Change(t.Window());
    PressKey("Ctrl+Z");
    t.Press();
    EXPECT_EQ(screen_->Nuova(1), "20/01/2027");
  };
  trials_[Gesture::Copy] = [](const Tried& t) {
    QGuiApplication::clipboard()->clear();
    ItemForKeys::ListaScad(t.Window()).setFocus();
    t.Press();
    const QString copied = QGuiApplication::clipboard()->text();
    EXPECT_EQ(copied.count(QLatin1Char('\n')), 5) << copied.toStdString();
    EXPECT_TRUE(copied.contains("12.400,00"));
  };
  trials_[Gesture::Details] = [](const Tried& t) {
    bool seen = false;
    InModalWindow("FormDettagli", [&seen](QDialog&) { seen = true; });
    t.Press();
    EXPECT_TRUE(seen);
  };
  trials_[Gesture::ResetLayout] = [](const Tried& t) {
    auto& list = static_cast<qt::ListView&>(ItemForKeys::ListaScad(t.Window()));
    list.SetWidth(ItemForKeys::ColonnaScadenza, 300);
    t.Press();
    EXPECT_TRUE(list.GivenWidths().empty());
  };
}

void KeysOfTheItem::AddListTrials() {
  trials_[Gesture::Move] = [](const Tried& t) {
    ItemForKeys::GoTo(t.Window(), 1, 1);
    t.Press();
    const int row = ItemForKeys::ListaScad(t.Window()).currentIndex().row();
    switch (static_cast<Movement>(t.Which())) {
    case Movement::Up:
    case Movement::PageUp:
    case Movement::First:
      EXPECT_EQ(row, 0);
      break;
    case Movement::Down:
      EXPECT_EQ(row, 2);
      break;
    case Movement::PageDown:
    case Movement::Last:
      EXPECT_EQ(row, 3);
      break;
    }
  };
  trials_[Gesture::Across] = [](const Tried& t) {
    ItemForKeys::GoTo(t.Window(), 1, 2);
    t.Press();
    EXPECT_EQ(ItemForKeys::ListaScad(t.Window()).currentIndex().column(), t.Which() == 0 ? 1 : 3);
  };
  trials_[Gesture::Tick] = [this](const Tried& t) {
    ItemForKeys::GoTo(t.Window(), 1, 1);
    t.Press();
    EXPECT_EQ(screen_->Spuntate(), 1);
  };
  trials_[Gesture::OpenCell] = [](const Tried& t) {
    ItemForKeys::GoTo(t.Window(), 1, 1);
    t.Press();
    EXPECT_TRUE(Visibile(t.Window(), "FrameScad"));
  };
  trials_[Gesture::TypeDigit] = [](const Tried& t) {
    ItemForKeys::GoTo(t.Window(), 1, 1);
    TypeText("2");
    EXPECT_EQ(Trova<QLineEdit>(t.Window(), "TextScad").text(), "2");
  };
  trials_[Gesture::CloseCell] = [this](const Tried& t) {
    ItemForKeys::GoTo(t.Window(), 1, 1);
    TypeText("200127");
    t.Press();
    EXPECT_EQ(screen_->Nuova(1), "20/01/2027");
    EXPECT_EQ(ItemForKeys::ListaScad(t.Window()).currentIndex().row(), 2);
  };
  trials_[Gesture::AbandonCell] = [this](const Tried& t) {
    ItemForKeys::GoTo(t.Window(), 1, 1);
    TypeText("200127");
    t.Press();
    EXPECT_FALSE(Visibile(t.Window(), "FrameScad"));
    EXPECT_TRUE(t.Window().isVisible());
    EXPECT_EQ(screen_->Nuova(1), "");
  };
}

void KeysOfTheItem::AddFieldTrials() {
  const auto steps = [](const char* wanted) {
    return [wanted](const Tried& t) {
      auto& top = Trova<QLineEdit>(t.Window(), "TextScadenza");
      top.setFocus();
      TypeText("15/01/2027");
      t.Press();
      EXPECT_EQ(top.text(), wanted);
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
    top.setFocus();
    TypeText("fm");
    ItemForKeys::ListaScad(t.Window()).setFocus();
    EXPECT_EQ(top.text(), "31/03/2006");
  };
}

void KeysOfTheItem::AddCalendarTrials() {
  const auto days = [](std::vector<const char*> wanted, bool writes = true) {
    return [wanted, writes](const Tried& t) {
      auto& top = Trova<QLineEdit>(t.Window(), "TextScadenza");
      top.setFocus();
      TypeText("15/01/2027");
      PressKey("F4");
      t.Press();
      if (writes) {
        PressKey("Return");
      }
      EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
      EXPECT_EQ(top.text(), wanted.at(writes ? t.Which() : 0));
    };
  };
  trials_[Gesture::CalendarDay] = days({"14/01/2027", "16/01/2027"});
  trials_[Gesture::CalendarWeek] = days({"08/01/2027", "22/01/2027"});
  trials_[Gesture::CalendarMonth] = days({"15/12/2026", "15/02/2027"});
  trials_[Gesture::CalendarEndDays] = days({"01/01/2027", "31/01/2027"});
  trials_[Gesture::CalendarChoose] = days({"15/01/2027"}, false);
  trials_[Gesture::CalendarClose] = days({"15/01/2027"}, false);
}

void KeysOfTheItem::AddHelpTrials() {
  const auto inHelp = [](const std::function<void(QDialog&)>& look) {
    bool seen = false;
    InModalWindow("HelpWindow", [&](QDialog& help) {
      look(help);
      seen = true;
    });
    PressKey("F1");
    EXPECT_TRUE(seen);
  };
  trials_[Gesture::HelpSearch] = [=](const Tried&) {
    inHelp([](QDialog& help) {
      auto& table = Trova<QTableWidget>(help, "HelpTable");
      for (int row = 0; row < table.rowCount(); ++row) {
        EXPECT_NE(table.item(row, 0)->text(), "Ctrl+F") << "this window has no filter";
      }
      TypeText("ctrl+z");
      EXPECT_EQ(table.item(table.currentRow(), 1)->text(), "Annulla l'ultimo gesto");
    });
  };
  trials_[Gesture::HelpRows] = [=](const Tried& t) {
    inHelp([&](QDialog& help) {
      PressKey("Down");
      t.Press();
      EXPECT_EQ(Trova<QTableWidget>(help, "HelpTable").hasFocus(), t.Which() == 1);
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

void KeysOfTheItem::AddMouseTrials() {
  trials_[Gesture::MouseTick] = [this](const Tried& t) {
    Clicca(ItemForKeys::ListaScad(t.Window()), 1, ItemForKeys::Casella);
    EXPECT_EQ(screen_->Spuntate(), 1);
  };
  trials_[Gesture::MouseOpen] = [](const Tried& t) {
    Clicca(ItemForKeys::ListaScad(t.Window()), 1, ItemForKeys::ColonnaNuova);
    EXPECT_TRUE(Visibile(t.Window(), "FrameScad"));
  };
  const auto drag = [](const Tried& t, int by) {
    auto& list = ItemForKeys::ListaScad(t.Window());
    auto& heading = Trova<QWidget>(t.Window(), "KScadenza");
    const QPoint border(heading.width() - 1, heading.height() / 2);
    const auto widths = [&list] {
      int sum = 0;
      for (int column = 0; column < list.model()->columnCount(); ++column) {
        sum += list.isColumnHidden(column) ? 0 : list.columnWidth(column) * (column + 1);
      }
      return sum;
    };
    const int before = widths();
    if (by == 0) {
      QTest::mouseDClick(&heading, Qt::LeftButton, {}, border);
    } else {
      QTest::mousePress(&heading, Qt::LeftButton, {}, border);
      QTest::mouseMove(&heading, border + QPoint(by, 0));
      QTest::mouseRelease(&heading, Qt::LeftButton, {}, border + QPoint(by, 0));
    }
    EXPECT_NE(widths(), before);
    EXPECT_FALSE(static_cast<qt::ListView&>(list).GivenWidths().empty());
  };
  trials_[Gesture::MouseWidth] = [drag](const Tried& t) { drag(t, 25); };
  trials_[Gesture::MouseFit] = [drag](const Tried& t) { drag(t, 0); };
}

TEST_F(KeysOfTheItem, DoWhatTheTableOfGesturesSaysEachOfThem) {
  AddWindowTrials();
  AddListTrials();
  AddFieldTrials();
  AddCalendarTrials();
  AddHelpTrials();
  AddMouseTrials();
  TryEveryKey(GestureScreens::Item, trials_, [this](const auto& script) {
    screen_ = std::make_unique<ItemForKeys>();
    screen_->Show(script);
    screen_.reset();
  });
}

} // namespace
} // namespace lumoscad::test
