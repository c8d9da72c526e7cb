// The columns of a list window: those that stay in sight, those that the person made wider, and what is remembered.

#include "FinestraFinta.hpp"
#include "Palettes.hpp"
#include "platform/qt/ListView.hpp"
#include "platform/qt/WindowMemory.hpp"

#include <QAccessible>
#include <QApplication>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QScreen>
#include <QScrollBar>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <fstream>

namespace lumoscad::test {
namespace {

constexpr int Account = 0;
constexpr int Item = 1;

/// A list window too narrow for its columns.
void Narrow(FinestraFinta& fake, int width, const std::function<void(QDialog&, QTableView&)>& then) {
  Esegui(fake, [&](QDialog& window) {
    window.resize(width, 380);
    QCoreApplication::processEvents();
    then(window, Lista(window));
  });
}

QRect CellAt(const QTableView& list, int row, int column) {
  return list.visualRect(list.model()->index(row, column));
}

TEST(FrozenColumns, StayInSightHoweverFarTheListIsScrolled) {
  FinestraFinta fake(30);
  Narrow(fake, 640, [&](QDialog& window, QTableView& list) {
    QScrollBar& bar = *list.horizontalScrollBar();
    bar.setValue(0);
    const QRect account = CellAt(list, 2, Account);
    const QRect item = CellAt(list, 2, Item);
    const QImage before = list.viewport()->grab(account).toImage();
    for (const int place : {50, 200, bar.maximum()}) {
      bar.setValue(place);
      EXPECT_EQ(CellAt(list, 2, Account), account) << place;
      EXPECT_EQ(CellAt(list, 2, Item), item) << place;
      EXPECT_EQ(list.viewport()->grab(account).toImage(), before) << place;
      EXPECT_EQ(Trova<QWidget>(window, "TLwTestata_2").width(), item.width());
      EXPECT_EQ(list.indexAt(account.center()).column(), Account);
      EXPECT_EQ(list.indexAt(item.center()).column(), Item);
    }
  });
}

TEST(FrozenColumns, HideNoCellThatIsGoneTo) {
  FinestraFinta fake(30);
  Narrow(fake, 640, [&](QDialog&, QTableView& list) {
    const int end = CellAt(list, 0, Item).right();
    for (int pass = 0; pass < 2; ++pass) {
      const Qt::Key key = pass == 0 ? Qt::Key_Right : Qt::Key_Left;
      for (int step = 0; step < 12; ++step) {
        QTest::keyClick(&list, key);
        const int column = list.currentIndex().column();
        const QRect cell = CellAt(list, list.currentIndex().row(), column);
        EXPECT_GE(cell.left(), 0) << column;
        if (column > Item) {
          EXPECT_GT(cell.left(), end) << column;
          EXPECT_LE(cell.right(), list.viewport()->width()) << column;
        }
      }
    }
    EXPECT_EQ(list.currentIndex().column(), Account);
    EXPECT_TRUE(list.hasFocus()) << "they are the list's own cells, and no stop of their own";
  });
}

TEST(FrozenColumns, TakeClicksForTheirOwnCells) {
  FinestraFinta fake(30);
  Narrow(fake, 640, [&](QDialog&, QTableView& list) {
    list.horizontalScrollBar()->setValue(list.horizontalScrollBar()->maximum());
    Clicca(list, 3, Item);
    EXPECT_EQ(list.currentIndex().column(), Item);
    EXPECT_GE(fake.ultimaX, fake.Inizio(Item));
    EXPECT_LT(fake.ultimaX, fake.Inizio(Item + 1));
    Clicca(list, 3, FinestraFinta::ColonnaSpuntaBanca);
    EXPECT_TRUE(fake.spunte.count({3, FinestraFinta::ColonnaSpuntaBanca}));
  });
}

TEST(FrozenColumns, NeverLieUnderAnOpenEditor) {
  FinestraFinta fake(30);
  Narrow(fake, 640, [&](QDialog& window, QTableView& list) {
    Clicca(list, 3, FinestraFinta::ColonnaData);
    const auto& editor = Trova<QWidget>(window, "FrameScad");
    ASSERT_TRUE(editor.isVisible());
    list.horizontalScrollBar()->setValue(list.horizontalScrollBar()->maximum());
    EXPECT_GE(list.viewport()->mapFromGlobal(editor.mapToGlobal(QPoint(0, 0))).x(), CellAt(list, 3, Item).right());
  });
}

TEST(FrozenColumns, ArePresentOnceToAssistiveTools) {
  FinestraFinta fake(30);
  Narrow(fake, 640, [&](QDialog& window, QTableView& list) {
    list.horizontalScrollBar()->setValue(list.horizontalScrollBar()->maximum());
    EXPECT_EQ(window.findChildren<QTableView*>().size(), 1);
    QAccessibleInterface* const face = QAccessible::queryAccessibleInterface(&list);
    ASSERT_NE(face, nullptr);
    EXPECT_EQ(face->tableInterface()->columnCount(),
              list.model()->columnCount() - list.horizontalHeader()->hiddenSectionCount());
    const QRect shown = face->tableInterface()->cellAt(2, Account)->rect();
    EXPECT_EQ(list.viewport()->mapFromGlobal(shown.topLeft()), CellAt(list, 2, Account).topLeft());
    EXPECT_EQ(face->childAt(shown.center().x(), shown.center().y())->text(QAccessible::Name), "Bianchi & Figli S.r.l.");
  });
}

TEST(FrozenColumns, LeaveRoomForTheOthersInASmallWindow) {
  FinestraFinta fake(30);
  Narrow(fake, 640, [&](QDialog& window, QTableView& list) {
    window.setMinimumSize(0, 0);
    for (const int width : {300, 420, 640}) {
      window.resize(width, 380);
      QCoreApplication::processEvents();
      const auto& view = static_cast<qt::ListView&>(list);
      EXPECT_LE(view.Frozen().Width(), list.viewport()->width() * 3 / 5) << width;
    }
  });
}

/// The first view of a window of this size: the account and both ticks of the first row are in it.
void ShowsAccountAndTicks(QDialog& window, const QSize& size) {
  window.resize(size);
  QCoreApplication::processEvents();
  static_cast<qt::ListView&>(Lista(window)).ShowTicks();
  const QTableView& list = Lista(window);
  const QRect area = list.viewport()->rect();
  const int frozen = static_cast<const qt::ListView&>(list).Frozen().Width();
  EXPECT_GT(frozen, 0);
  EXPECT_TRUE(area.contains(CellAt(list, 0, Account)));
  for (const int column : {FinestraFinta::ColonnaSpuntaData, FinestraFinta::ColonnaSpuntaBanca}) {
    EXPECT_TRUE(area.contains(CellAt(list, 0, column))) << column;
    EXPECT_GE(CellAt(list, 0, column).left(), frozen) << column;
  }
}

TEST(FirstView, HasTheAccountAndTheTicksOnASmallScreenOfTwiceTheScale) {
  FinestraFinta fake(30);
  Esegui(fake, [](QDialog& window) { ShowsAccountAndTicks(window, {640 - 24, 400 - 56}); });
}

TEST(FirstView, HasTheAccountAndTheTicksWithTextOfTwiceTheSize) {
  const DesktopLook look;
  DesktopLook::SetTextSize(24);
  FinestraFinta fake(30);
  Esegui(fake, [](QDialog& window) { ShowsAccountAndTicks(window, {1280 - 24, 800 - 56}); });
}

/// The point of the heading strip at the right border of a column's heading, and the heading there.
std::pair<QWidget*, QPoint> Border(QDialog& window, const char* heading) {
  auto& widget = Trova<QWidget>(window, heading);
  return {&widget, {widget.width() - 2, widget.height() / 2}};
}

/// The person's settings of the windows in a folder of their own, for a scope.
class OwnSettings {
 public:
  OwnSettings() { QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, folder_.path()); }
  OwnSettings(const OwnSettings&) = delete;
  OwnSettings& operator=(const OwnSettings&) = delete;
  ~OwnSettings() {
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("/dev/null/nowhere"));
  }

  [[nodiscard]] std::string File() const { return folder_.filePath("LumoScad/Finestre.ini").toStdString(); }
  [[nodiscard]] bool Kept() const { return std::ifstream(File()).good(); }
  [[nodiscard]] std::string Text() const {
    std::ifstream file(File());
    return {std::istreambuf_iterator<char>(file), {}};
  }

 private:
  QTemporaryDir folder_;
};

void Drag(QDialog& window, const char* heading, int pixels) {
  const auto [widget, from] = Border(window, heading);
  QTest::mousePress(widget, Qt::LeftButton, {}, from);
  QTest::mouseMove(widget, from + QPoint(pixels / 2, 0));
  QTest::mouseMove(widget, from + QPoint(pixels, 0));
  QTest::mouseRelease(widget, Qt::LeftButton, {}, from + QPoint(pixels, 0));
}

TEST(ColumnBorders, AreDraggedAndDoNotSort) {
  const OwnSettings settings;
  FinestraFinta fake(30);
  Esegui(fake, [&](QDialog& window) {
    window.resize(1400, 500);
    QCoreApplication::processEvents();
    const QTableView& list = Lista(window);
    const int before = list.columnWidth(Item);
    Drag(window, "TLwTestata_2", 40);
    EXPECT_EQ(list.columnWidth(Item), before + 40);
    EXPECT_EQ(fake.Volte("clicTestata 2"), 0);
    Drag(window, "TLwTestata_3", 15);
    EXPECT_EQ(fake.Volte("clicTestata 3"), 0);
    QTest::mouseClick(&Trova<QWidget>(window, "TLwTestata_2"), Qt::LeftButton, {}, QPoint(20, 20));
    EXPECT_EQ(fake.Volte("clicTestata 2"), 1) << "away from the border it sorts as ever";
    EXPECT_EQ(Trova<QWidget>(window, "TLwTestata_2").width(), before + 40);
  });
}

TEST(ColumnBorders, FitTheContentsOnADoubleClick) {
  const OwnSettings settings;
  FinestraFinta fake(30);
  fake.texts[{7, 4}] = "Banca Popolare della Valle del Chiampo e dei Comuni Uniti";
  Esegui(fake, [&](QDialog& window) {
    const QTableView& list = Lista(window);
    const auto [widget, point] = Border(window, "TLwTestata_6");
    QTest::mouseDClick(widget, Qt::LeftButton, {}, point);
    const int text = QFontMetrics(list.font()).horizontalAdvance(QString::fromStdString(fake.texts[{7, 4}]));
    EXPECT_GE(list.columnWidth(4), text + 12);
    EXPECT_LE(list.columnWidth(4), text + 24);
  });
}

TEST(WindowMemory, KeepsNothingUntilThePersonChangesSomething) {
  const OwnSettings settings;
  for (int time = 0; time < 2; ++time) {
    FinestraFinta fake(30);
    Esegui(fake, [&](QDialog& window) {
      QTest::keyClick(&Lista(window), Qt::Key_Space);
      EXPECT_EQ(Lista(window).columnWidth(Item), 80);
    });
    EXPECT_FALSE(settings.Kept());
  }
}

TEST(WindowMemory, GivesTheWidthsBackAndForgetsThemWhenAsked) {
  const OwnSettings settings;
  FinestraFinta first(30);
  Esegui(first, [&](QDialog& window) { Drag(window, "TLwTestata_2", 40); });
  EXPECT_TRUE(settings.Kept());
  for (const char* word : {"Rossi", "Banca", "2006", "100"}) {
    EXPECT_EQ(settings.Text().find(word), std::string::npos) << "no data of a row: " << settings.Text();
  }
  FinestraFinta second(30);
  Esegui(second, [&](QDialog& window) {
    EXPECT_EQ(Lista(window).columnWidth(Item), 120);
    QTest::keyClick(&Lista(window), Qt::Key_0, Qt::ControlModifier);
    EXPECT_EQ(Lista(window).columnWidth(Item), 80);
  });
  FinestraFinta third(30);
  Esegui(third, [&](QDialog& window) { EXPECT_EQ(Lista(window).columnWidth(Item), 80); });
}

TEST(WindowMemory, CountsAsNothingWhereItCannotBeRead) {
  const OwnSettings settings;
  qt::WindowMemory memory(QStringLiteral("frmLumoScadenzeBanche"));
  memory.RememberColumnWidths({{"KPartita", 120}, {"KSconosciuta", 60}, {"KConto", 9}, {"KBanca", -5}});
  memory.RememberSize({0, 700000});
  EXPECT_FALSE(memory.Size());
  FinestraFinta fake(30);
  Esegui(fake, [&](QDialog& window) { EXPECT_EQ(Lista(window).columnWidth(Item), 120); });
  for (const char* text :
       {"", "[frmLumoScadenzeBanche]\nlarghezze=@Variant(\\0\\0)\ndimensione=x, y\n", "\x01\x02 [[[ ="}) {
    std::ofstream(settings.File(), std::ios::trunc) << text;
    FinestraFinta again(30);
    Esegui(again, [&](QDialog& window) { EXPECT_EQ(Lista(window).columnWidth(Item), 80) << text; });
  }
}

TEST(WindowMemory, KeepsASizeAndWhetherAPanelIsOpen) {
  const OwnSettings settings;
  const qt::WindowMemory memory(QStringLiteral("FormPresunti"));
  EXPECT_FALSE(memory.Size());
  EXPECT_FALSE(memory.Open("effetto"));
  memory.RememberSize({900, 700});
  memory.RememberOpen("effetto", true);
  EXPECT_EQ(memory.Size(), QSize(900, 700));
  EXPECT_EQ(memory.Open("effetto"), true);
  EXPECT_FALSE(qt::WindowMemory(QStringLiteral("FormConsegna")).Size()) << "each window has its own";
  memory.Forget();
  EXPECT_FALSE(memory.Size());
  EXPECT_FALSE(memory.Open("effetto"));
}

/// Presses F3 in the window and hands over what comes up, which is closed with Esc afterwards.
void WithDetails(QDialog& window, const std::function<void(QDialog&)>& then) {
  bool came = false;
  QTimer::singleShot(20, qApp, [&] {
    auto* details = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    ASSERT_NE(details, nullptr);
    came = details->objectName() == QStringLiteral("FormDettagli");
    then(*details);
    QTest::keyClick(details, Qt::Key_Escape);
  });
  QTest::keyClick(&window, Qt::Key_F3);
  EXPECT_TRUE(came);
}

TEST(RowDetails, ComeUpWithF3AndLeaveTheListAsItWas) {
  FinestraFinta fake(30);
  fake.dettagli = {{"Conto", "Rossi & Figli <S.n.c.>"}, {"Codice conto", "C01"}, {"Rata", "2"}};
  Esegui(fake, [&](QDialog& window) {
    fake.gesti.clear();
    WithDetails(window, [](QDialog& details) {
      EXPECT_EQ(Trova<QLabel>(details, "Dettaglio0").text(), "Rossi & Figli <S.n.c.>");
      EXPECT_EQ(Trova<QLabel>(details, "Dettaglio1").accessibleName(), "Codice conto: C01");
      EXPECT_TRUE(QTest::qWaitFor([&] { return Trova<QWidget>(details, "PulsanteChiudi").hasFocus(); }));
    });
    EXPECT_TRUE(fake.gesti.empty());
    EXPECT_EQ(window.focusWidget(), &Lista(window)) << "which has the keyboard again with the window";
    EXPECT_TRUE(window.isVisible());
  });
}

TEST(RowDetails, StayOnTheScreenHoweverManyThereAre) {
  FinestraFinta fake(3);
  fake.dettagli.assign(60, {"Conto", "Un nome lungo che non sta su una riga sola nemmeno in una finestra molto larga"});
  Esegui(fake, [&](QDialog& window) {
    WithDetails(window,
                [](QDialog& details) { EXPECT_LE(details.height(), details.screen()->availableSize().height()); });
  });
}

TEST(RowDetails, AreNotShownOfAnEmptyList) {
  FinestraFinta fake(0);
  Esegui(fake, [&](QDialog& window) {
    QTest::keyClick(&window, Qt::Key_F3);
    EXPECT_EQ(QApplication::activeModalWidget(), &window);
  });
}

TEST(Distinctions, StandAtTheEndOfTheItemsCell) {
  FinestraFinta fake(6);
  Esegui(fake, [&](QDialog& window) {
    window.resize(1400, 400);
    QCoreApplication::processEvents();
    QTableView& list = Lista(window);
    const QRect cell = CellAt(list, 3, Item);
    const QImage without = list.viewport()->grab(cell).toImage();
    fake.distinzioni[3] = "rata 2";
    list.viewport()->update();
    const QImage with = list.viewport()->grab(cell).toImage();
    const int half = cell.width() / 2;
    const QRect left(0, 0, half, cell.height());
    const QRect right(half, 0, cell.width() - half, cell.height());
    EXPECT_EQ(without.copy(left), with.copy(left));
    EXPECT_NE(without.copy(right), with.copy(right));
    EXPECT_EQ(list.model()->index(3, Item).data(), "103");
    EXPECT_EQ(list.model()->index(3, Item).data(Qt::AccessibleTextRole), "103, rata 2");
  });
}

} // namespace
} // namespace lumoscad::test
