// What a person does all day, played in the real window by the gestures that there always were and by those for many
// rows: how many keys each takes. A key is a gesture; both ways must leave the same rows.

#include "FinestraFinta.hpp"
#include "platform/qt/QtDesktop.hpp"
#include "screens/frmLumoScadenzeBanche.hpp"
#include "support/TestBench.hpp"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QTest>

#include <gtest/gtest.h>

#include <array>
#include <cstdio>

namespace lumoscad::test {
namespace {

using Colonna = frmLumoScadenzeBanche::Colonna;

constexpr int HowMany = 2421;
constexpr int OfCustomer = 30; ///< instalments of the customer that is looked for
constexpr int OfBank = 210;    ///< instalments of the bank that is given up
constexpr const char* Customer = "ROSSI MOBILI";
constexpr const char* OldBank = "BANCA DEL PIAVE";
constexpr const char* NewBank = "CREDITO MONTANO";
constexpr const char* Amount = "1.584,36";
constexpr const char* NewDate = "20/01/2027";

/// The keys that a hand presses, counted.
class Hand {
 public:
  int pressed = 0;

  /// What has the keyboard: what has dropped down, before what is below it.
  static QWidget* Held() {
    QWidget* const popup = QApplication::activePopupWidget();
    QWidget* const held = popup == nullptr ? QApplication::focusWidget() : popup;
    return popup != nullptr && popup->focusWidget() != nullptr ? popup->focusWidget() : held;
  }

  void Press(Qt::Key key, Qt::KeyboardModifiers held = {}, int times = 1) {
    for (int time = 0; time < times; ++time) {
      QTest::keyClick(Held(), key, held);
      ++pressed;
    }
  }
  void Type(const char* text) {
    for (const QChar letter : QString::fromUtf8(text)) {
      QTest::keyClicks(Held(), letter);
      ++pressed;
    }
  }
};

class Tasks : public testing::Test {
 protected:
  Tasks() : desktop_(qt::CreateDesktop()) {
    ActiveServices().desktop = [this]() -> Desktop& { return *desktop_; };
  }

  /// Plays `gestures` in a window of its own; the keys that they took.
  int Played(const std::function<void(QTableView&, Hand&)>& gestures) {
    frmLumoScadenzeBanche screen;
    grid_ = &screen.griglia();
    Fill();
    Hand hand;
    Recita([&](QDialog& window) {
      window_ = &window;
      gestures(Trova<QTableView>(window, "LVScadenzeBanche"), hand);
    });
    grid_->Mostra();
    grid_ = nullptr;
    return hand.pressed;
  }

  void Fill() {
    grid_->cmbBanche = grid_->cmbBanche2 = {{" ", OldBank, "BANCA VERDE", NewBank}, {"B01", "B02", "B03"}};
    for (int i = 0; i < HowMany; ++i) {
      const bool ofCustomer = i >= 1500 && i < 1500 + OfCustomer;
      const std::string number = std::to_string(1000 + i / 25);
      const std::string account = ofCustomer ? Customer : (i < 1500 ? "CLIENTE " : "SOCIETA ") + number;
      const std::string item = "2026/" + std::to_string(i / 3);
      const bool ofBank = i % 11 == 0 && i / 11 < OfBank;
      const char* const bank = ofBank ? OldBank : i % 2 == 0 ? "BANCA VERDE" : "";
      const std::string amount = i == 2000 ? Amount : std::to_string(100 + i % 800) + "," + std::to_string(10 + i % 80);
      const auto row = grid_->righe.Aggiungi({account, item, "31/03/2026", "31/03/2026", bank, amount, "", "31/03/2026",
                                              std::to_string(i % 3 + 1), "", bank, "2026/03/31"});
      grid_->righe.ImpostaTag(row, Colonna::Conto, ofCustomer ? "C-ROSSI" : "C" + number);
      grid_->righe.ImpostaTag(row, Colonna::Banca, ofBank ? "B01" : i % 2 == 0 ? "B02" : "");
    }
    grid_->Resize();
  }

  [[nodiscard]] int WithDate(const char* date) const {
    int rows = 0;
    for (std::size_t row = 0; row < grid_->righe.Quante(); ++row) {
      rows += grid_->righe.Testo(row, Colonna::NuovaScadenza) == date ? 1 : 0;
    }
    return rows;
  }
  [[nodiscard]] int MovedToNewBank() const {
    int rows = 0;
    for (std::size_t row = 0; row < grid_->righe.Quante(); ++row) {
      rows +=
          grid_->righe.Tag(row, Colonna::Banca) == "B01" && grid_->righe.Tag(row, Colonna::NuovaBanca) == "B03" ? 1 : 0;
    }
    return rows;
  }
  [[nodiscard]] std::string Current(const QTableView& list, int column) const {
    return std::string(grid_->CellText(static_cast<std::size_t>(list.currentIndex().row()), column));
  }
  static void ToColumn(const QTableView& list, Hand& hand, int column) {
    while (list.currentIndex().column() != column) {
      hand.Press(list.currentIndex().column() < column ? Qt::Key_Right : Qt::Key_Left);
    }
  }
  /// By pages, and then row by row, as far as the customer's first row.
  void PageToCustomer(const QTableView& list, Hand& hand) const {
    const auto before = [&](int row) {
      return grid_->CellText(static_cast<std::size_t>(row), Colonna::Conto) < Customer;
    };
    while (before(list.currentIndex().row())) {
      hand.Press(Qt::Key_PageDown);
    }
    hand.Press(Qt::Key_PageUp);
    while (before(list.currentIndex().row())) {
      hand.Press(Qt::Key_Down);
    }
  }
  [[nodiscard]] QString Foot() const { return Trova<QLabel>(*window_, "FootEffect").text(); }

  static void Report(const char* task, int before, int now, int most) {
    std::printf("gesti  %-45s prima %4d  ora %3d  al più %3d\n", task, before, now, most);
    EXPECT_LE(now, most) << task;
    EXPECT_LT(now, before) << task;
  }

  Griglia* grid_ = nullptr;
  QDialog* window_ = nullptr;

 private:
  TestBench bench_;
  std::unique_ptr<Desktop> desktop_;
};

TEST_F(Tasks, MoveTheInstalmentsOfACustomerInAtMostTwelveKeys) {
  const int before = Played([&](QTableView& list, Hand& hand) {
    hand.Press(Qt::Key_N, Qt::AltModifier);
    hand.Type("200127");
    list.setFocus(); // by as many keys as there are fields between, which are not counted
    PageToCustomer(list, hand);
    ToColumn(list, hand, Colonna::Radio1);
    for (int row = 0; row < OfCustomer; ++row) {
      hand.Press(Qt::Key_Space);
      hand.Press(Qt::Key_Down);
    }
    EXPECT_EQ(WithDate(NewDate), OfCustomer);
  });
  const int now = Played([&](QTableView& list, Hand& hand) {
    hand.Type("ros");
    hand.Press(Qt::Key_T, Qt::ControlModifier);
    ToColumn(list, hand, Colonna::NuovaScadenza);
    hand.Type("200127");
    hand.Press(Qt::Key_Return);
    EXPECT_EQ(WithDate(NewDate), OfCustomer);
  });
  Report("30 rate di un cliente a un'altra data", before, now, 12);
}

TEST_F(Tasks, GiveTheInstalmentsOfABankAnotherOneInAtMostFourteenKeys) {
  const int before = Played([&](QTableView& list, Hand& hand) {
    hand.Press(Qt::Key_U, Qt::AltModifier);
    hand.Press(Qt::Key_Down, {}, 3);
    list.setFocus();
    hand.Press(Qt::Key_6, Qt::ControlModifier);
    for (int row = 0; row < HowMany && Current(list, Colonna::Banca) != OldBank; row += 20) {
      hand.Press(Qt::Key_PageDown);
    }
    while (list.currentIndex().row() > 0 &&
           grid_->CellText(static_cast<std::size_t>(list.currentIndex().row() - 1), Colonna::Banca) == OldBank) {
      hand.Press(Qt::Key_Up);
    }
    ToColumn(list, hand, Colonna::Radio2);
    for (int row = 0; row < OfBank; ++row) {
      hand.Press(Qt::Key_Space);
      hand.Press(Qt::Key_Down);
    }
    EXPECT_EQ(MovedToNewBank(), OfBank);
  });
  const int now = Played([&](QTableView& list, Hand& hand) {
    hand.Press(Qt::Key_F, Qt::ControlModifier);
    hand.Type("pia");
    hand.Press(Qt::Key_Return);
    hand.Press(Qt::Key_A, Qt::ControlModifier);
    ToColumn(list, hand, Colonna::NuovaBanca);
    hand.Press(Qt::Key_F2);
    hand.Type("mo");
    hand.Press(Qt::Key_Return); // chooses it in the list that has dropped down
    hand.Press(Qt::Key_Return); // closes the cell
    EXPECT_EQ(MovedToNewBank(), OfBank);
  });
  Report("210 rate di una banca a un'altra", before, now, 14);
}

TEST_F(Tasks, FindACustomerOrAnAmountInAtMostSixKeys) {
  const int paged = Played([&](QTableView& list, Hand& hand) {
    PageToCustomer(list, hand);
    EXPECT_EQ(Current(list, Colonna::Conto), Customer);
  });
  const int jumped = Played([&](QTableView& list, Hand& hand) {
    hand.Type("ros");
    EXPECT_EQ(Current(list, Colonna::Conto), Customer);
  });
  Report("un cliente", paged, jumped, 6);
  const int read = Played([&](QTableView& list, Hand& hand) {
    while (Current(list, Colonna::Importo) != Amount && list.currentIndex().row() + 1 < HowMany) {
      const int top = list.currentIndex().row();
      hand.Press(Qt::Key_PageDown);
      for (int row = top; row < list.currentIndex().row(); ++row) {
        if (grid_->CellText(static_cast<std::size_t>(row), Colonna::Importo) == Amount) {
          return;
        }
      }
    }
  });
  const int typed = Played([&](QTableView& list, Hand& hand) {
    hand.Press(Qt::Key_F, Qt::ControlModifier);
    hand.Type("1584");
    ASSERT_EQ(list.model()->rowCount(), 1);
    EXPECT_EQ(Current(list, Colonna::Importo), Amount);
  });
  Report("un importo", read, typed, 6);
}

TEST_F(Tasks, TakeAWrongDateOfThirtyRowsBackByOneKeyAndTellTheTotalsByNone) {
  const int before = Played([&](QTableView& list, Hand& hand) {
    Hand ready;
    ready.Type("ros");
    ready.Press(Qt::Key_T, Qt::ControlModifier);
    ToColumn(list, ready, Colonna::NuovaScadenza);
    ready.Type("200127");
    ready.Press(Qt::Key_Return);
    ready.Press(Qt::Key_Down); // one row alone is selected again
    ready.Press(Qt::Key_Up);
    for (int row = 0; row < OfCustomer; ++row) { // an emptied editor leaves the row's own date
      hand.Press(Qt::Key_F2);
      hand.Press(Qt::Key_Delete);
      hand.Press(Qt::Key_Return);
    }
    EXPECT_EQ(WithDate(NewDate), 0);
  });
  int told = -1;
  const int now = Played([&](QTableView& list, Hand& hand) {
    Hand ready;
    ready.Type("ros");
    ready.Press(Qt::Key_T, Qt::ControlModifier);
    ToColumn(list, ready, Colonna::NuovaScadenza);
    ready.Type("200127");
    ready.Press(Qt::Key_Return);
    EXPECT_TRUE(Foot().contains("30 variate: ")) << Foot().toStdString();
    EXPECT_TRUE(Foot().contains(QString::fromUtf8(" €"))) << Foot().toStdString();
    told = hand.pressed;
    hand.Press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(WithDate(NewDate), 0);
  });
  Report("una data sbagliata su 30 righe ripresa", before, now, 1);
  EXPECT_EQ(told, 0);
}

} // namespace
} // namespace lumoscad::test
