// What assistive tools are told of the windows and can do in them, asked as the bridge to the tools asks.

#include "FinestraFinta.hpp"
#include "platform/qt/AccessibleItems.hpp"
#include "platform/qt/ListHeadings.hpp"
#include "platform/qt/QtDesktop.hpp"
#include "screens/frmLumoScadenzeBanche.hpp"
#include "support/TestBench.hpp"

#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QTimer>

#include <gmock/gmock.h>

#include <fstream>
#include <unistd.h>

namespace lumoscad::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

QAccessibleInterface& Face(QObject& object) {
  QAccessibleInterface* const face = QAccessible::queryAccessibleInterface(&object);
  if (face == nullptr) {
    throw std::runtime_error("no face");
  }
  return *face;
}

QAccessibleTableInterface& Table(QObject& object) {
  QAccessibleTableInterface* const table = Face(object).tableInterface();
  if (table == nullptr) {
    throw std::runtime_error("no table");
  }
  return *table;
}

std::string Name(QAccessibleInterface* face) {
  return face == nullptr ? "<null>" : face->text(QAccessible::Name).toStdString();
}

std::string Text(QObject& object, QAccessible::Text kind) {
  return Face(object).text(kind).toStdString();
}

/// The cell of a row under the heading `caption`.
QAccessibleInterface& Cell(QObject& list, int row, const QString& caption) {
  QAccessibleTableInterface& table = Table(list);
  for (int column = 0; column < table.columnCount(); ++column) {
    if (table.columnDescription(column) == caption) {
      return *table.cellAt(row, column);
    }
  }
  throw std::runtime_error("no column " + caption.toStdString());
}

void Settle() {
  for (int turn = 0; turn < 5; ++turn) {
    QCoreApplication::processEvents();
  }
}

/// Has an action done as a tool has it done, up to the end of what comes of it.
void Do(QAccessibleInterface& face, const QString& action) {
  ASSERT_NE(face.actionInterface(), nullptr);
  ASSERT_TRUE(face.actionInterface()->actionNames().contains(action)) << action.toStdString();
  face.actionInterface()->doAction(action);
  Settle();
}

const QString Press = QAccessibleActionInterface::pressAction();
const QString Toggle = QAccessibleActionInterface::toggleAction();
const QString SetFocus = QAccessibleActionInterface::setFocusAction();

/// The credits' screen in its real window; its message boxes are answered.
class ScreenReaders : public testing::Test {
 protected:
  using Schermata = frmLumoScadenzeBanche;

  ScreenReaders() : desktop(qt::CreateDesktop()) {
    ActiveServices().desktop = [this]() -> Desktop& { return *desktop; };
    griglia.cmbBanche = griglia.cmbBanche2 = {{" ", "BANCA ALFA", "BANCA BETA", "CASSA GAMMA"}, {"B01", "B02", "B03"}};
    griglia.modo = "DEBITI/CREDITI";
    griglia.titolo = "Scadenze";
    answers_.setInterval(5);
    QObject::connect(&answers_, &QTimer::timeout, &answers_, [this] {
      auto* open = QApplication::activeModalWidget();
      if (open != nullptr && open->objectName() == "MostraMessaggio") {
        box.push_back(Trova<QLabel>(*open, "lblMessaggio").text().toStdString());
        atBox();
        QTest::keyClick(open, Qt::Key_Return);
      }
    });
  }

  void Add(const std::string& account, const std::string& item, const std::string& due = "31/03/2006") {
    const std::string sorted = due.substr(6) + "/" + due.substr(3, 2) + "/" + due.substr(0, 2);
    const auto row = griglia.righe.Aggiungi(
        {account, item, due, "31/01/2006", "BANCA ALFA", "1.584,36", "", due, "1", "", "BANCA ALFA", sorted});
    griglia.righe.ImpostaTag(row, Schermata::Banca, "B01");
  }
  void Three() {
    Add("ALBA", "2006 1");
    Add("BIANCHI", "2006 2", "30/04/2006");
    Add("VERDI", "2006 3", "31/05/2006");
  }
  void Show(const std::function<void(QDialog&)>& script) {
    griglia.Resize();
    answers_.start();
    Recita(script);
    griglia.Mostra();
  }
  [[nodiscard]] std::string Date(std::size_t row) const {
    return std::string(griglia.righe.Testo(row, Schermata::NuovaScadenza));
  }
  [[nodiscard]] std::string Bank(std::size_t row) const {
    return std::string(griglia.righe.Testo(row, Schermata::NuovaBanca));
  }
  static void Write(QObject& field, const QString& text) {
    QAccessibleEditableTextInterface* const editable = Face(field).editableTextInterface();
    ASSERT_NE(editable, nullptr);
    editable->replaceText(0, Face(field).textInterface()->characterCount(), text);
  }

  TestBench banco;
  std::unique_ptr<Desktop> desktop;
  Schermata schermata;
  Griglia& griglia = schermata.griglia();
  std::vector<std::string> box;
  std::function<void()> atBox = [] {};

 private:
  QTimer answers_;
};

TEST_F(ScreenReaders, HearOfEachCellItsValueItsHeadingAndWhoseRowItIs) {
  Three();
  Show([&](QDialog& window) {
    QTableView& list = Lista(window);
    EXPECT_EQ(Table(list).rowCount(), 3);
    EXPECT_EQ(Table(list).columnCount(), 10) << "without the hidden ones";
    QAccessibleInterface& date = Cell(list, 1, "Nuova Scad");
    EXPECT_EQ(Name(&date), "30/04/2006");
    EXPECT_EQ(date.text(QAccessible::Description).toStdString(), "Nuova Scad, riga 2 di 3: BIANCHI, 2006 2");
    EXPECT_EQ(date.role(), QAccessible::Cell);
    EXPECT_EQ(date.tableCellInterface()->rowIndex(), 1);
    EXPECT_EQ(date.parent(), &Face(list));
    ASSERT_EQ(date.tableCellInterface()->columnHeaderCells().size(), 1);
    EXPECT_EQ(Name(date.tableCellInterface()->columnHeaderCells().first()), "Nuova Scad");
    EXPECT_EQ(date.tableCellInterface()->columnHeaderCells().first()->role(), QAccessible::ColumnHeader);
    ASSERT_EQ(date.tableCellInterface()->rowHeaderCells().size(), 2);
    EXPECT_EQ(Name(date.tableCellInterface()->rowHeaderCells().first()), "BIANCHI");
    QAccessibleInterface& tick = Cell(list, 1, "Spunta della nuova banca");
    EXPECT_EQ(Name(&tick), "non spuntata");
    EXPECT_TRUE(tick.state().checkable);
    EXPECT_FALSE(tick.state().checked);
    EXPECT_EQ(Name(tick.tableCellInterface()->columnHeaderCells().first()), "Spunta della nuova banca");
    EXPECT_FALSE(date.state().checkable);
  });
}

TEST_F(ScreenReaders, AreAnsweredAlsoWhereThereIsNoCell) {
  Show([&](QDialog& window) {
    QTableView& list = Lista(window);
    ASSERT_FALSE(list.currentIndex().isValid());
    EXPECT_EQ(Face(list).childCount(), 0);
    for (const auto& [row, column] : {std::pair{0, 0}, {-1, 3}, {5, 99}, {0, -7}}) {
      QAccessibleInterface* const none = Table(list).cellAt(row, column);
      ASSERT_NE(none, nullptr);
      EXPECT_FALSE(none->isValid());
      EXPECT_EQ(Name(none), "");
      EXPECT_TRUE(none->rect().isEmpty());
      ASSERT_NE(none->tableCellInterface(), nullptr);
      EXPECT_EQ(none->tableCellInterface()->rowExtent(), 1);
      EXPECT_FALSE(none->tableCellInterface()->isSelected());
      EXPECT_THAT(none->actionInterface()->actionNames(), IsEmpty());
    }
    EXPECT_EQ(Name(Table(list).cellAt(0, 0)->tableCellInterface()->columnHeaderCells().first()),
              "Conto, ordine crescente")
        << "the bridge asks the first row's cell for the heading";
    EXPECT_NE(Face(list).focusChild(), nullptr);
  });
}

TEST_F(ScreenReaders, TickAndEditAsTheSpaceBarAndF2Do) {
  Three();
  Show([&](QDialog& window) {
    QTableView& list = Lista(window);
    Write(Trova<QLineEdit>(window, "TextScadenza"), "20/01/2007");
    const int column = Schermata::Radio1;
    list.setCurrentIndex(list.model()->index(0, column));
    list.setFocus();
    QTest::keyClick(&list, Qt::Key_Space);
    Do(Cell(list, 2, "Spunta della nuova data"), Toggle);
    EXPECT_EQ(Date(0), "20/01/2007") << "by keyboard";
    EXPECT_EQ(Date(2), "20/01/2007") << "by the action";
    EXPECT_TRUE(Cell(list, 2, "Spunta della nuova data").state().checked);
    EXPECT_EQ(Name(&Cell(list, 2, "Spunta della nuova data")), "spuntata");
    EXPECT_EQ(Name(&Cell(list, 2, "Nuova Scad")), "20/01/2007, variata");
    EXPECT_EQ(Cell(list, 2, "Nuova Scad").text(QAccessible::Description).toStdString(),
              "Nuova Scad, riga 3 di 3: VERDI, 2006 3; era 31/05/2006");
    EXPECT_EQ(Cell(list, 2, "Spunta della nuova data").actionInterface()->localizedActionName(Toggle),
              "Togli la spunta");
    EXPECT_THAT(Cell(list, 2, "Spunta della nuova data").actionInterface()->keyBindingsForAction(Toggle),
                ElementsAre(QStringLiteral("Space")));
    Do(Cell(list, 2, "Spunta della nuova data"), Toggle);
    EXPECT_EQ(Date(2), "31/05/2006");
    Do(Cell(list, 1, "Nuova Scad"), Press);
    EXPECT_TRUE(Visibile(window, "FrameScad"));
    EXPECT_TRUE(Trova<QLineEdit>(window, "TextScad").hasFocus());
  });
  EXPECT_THAT(box, IsEmpty());
}

TEST_F(ScreenReaders, HearWhoseValueIsBeingWrittenAndWriteIt) {
  Three();
  Show([&](QDialog& window) {
    QTableView& list = Lista(window);
    auto& field = Trova<QLineEdit>(window, "TextScad");
    Do(Cell(list, 1, "Nuova Scad"), Press);
    EXPECT_EQ(Name(&Face(field)), "Nuova Scad, riga 2 di 3: BIANCHI, 2006 2");
    Write(field, "15/06/06");
    EXPECT_EQ(griglia.Stato().data.text, "15/06/06") << "the screen knows of it at once";
    EXPECT_EQ(Date(1), "30/04/2006");
    Do(Cell(list, 0, "Spunta della nuova data"), Toggle);
    EXPECT_TRUE(field.hasFocus()) << "the list keeps every key while a date is written";
    EXPECT_EQ(griglia.Stato().data.text, "15/06/06");
    Do(Cell(list, 1, "Nuova Scad"), Press);
    EXPECT_FALSE(Visibile(window, "FrameScad"));
    EXPECT_EQ(Date(1), "15/06/2006");
    EXPECT_EQ(Date(0), "31/03/2006");
    Do(Cell(list, 2, "NuovaBanca"), Press);
    auto& bank = Trova<QComboBox>(window, "cmbBanche2");
    ASSERT_TRUE(bank.isVisible());
    const auto labels = Face(bank).relations(QAccessible::Label);
    ASSERT_EQ(labels.size(), 1);
    EXPECT_EQ(Name(labels.first().first), "NuovaBanca, riga 3 di 3: VERDI, 2006 3");
  });
  EXPECT_THAT(box, IsEmpty());
}

TEST_F(ScreenReaders, AreToldWhenAnEditorWritesIntoSeveralRows) {
  Three();
  Show([&](QDialog& window) {
    QTableView& list = Lista(window);
    for (const int row : {0, 2}) {
      ASSERT_TRUE(Table(list).selectRow(row));
      Settle();
    }
    EXPECT_THAT(Table(list).selectedRows(), ElementsAre(0, 2));
    EXPECT_TRUE(Cell(list, 2, "Conto").state().selected);
    EXPECT_FALSE(Cell(list, 1, "Conto").state().selected);
    list.setFocus();
    list.setCurrentIndex(list.model()->index(2, list.currentIndex().column()));
    Do(Cell(list, 2, "Nuova Scad"), Press);
    EXPECT_EQ(Name(&Face(Trova<QLineEdit>(window, "TextScad"))), "Nuova Scad di 2 righe");
    Write(Trova<QLineEdit>(window, "TextScad"), "15/06/2006");
    Do(Cell(list, 2, "Nuova Scad"), Press);
    EXPECT_EQ(Date(0), "15/06/2006");
    EXPECT_EQ(Date(1), "30/04/2006");
    EXPECT_EQ(Date(2), "15/06/2006");
    ASSERT_TRUE(Table(list).unselectRow(0));
    Settle();
    EXPECT_THAT(Table(list).selectedRows(), ElementsAre(2));
  });
}

TEST_F(ScreenReaders, NeverActOnARowThatTookTheOthersPlace) {
  Three();
  Show([&](QDialog& window) {
    QTableView& list = Lista(window);
    QAccessibleInterface& tick = Cell(list, 0, "Spunta della nuova data");
    const QAccessible::Id id = QAccessible::uniqueId(&tick);
    tick.actionInterface()->doAction(Toggle);
    Trova<qt::HeadingQt>(window, "TLwTestata_1").click(); // the rows move before the action's turn comes
    Settle();
    EXPECT_EQ(QAccessible::accessibleInterface(id), nullptr) << "the old cell is gone";
    for (std::size_t row = 0; row < 3; ++row) {
      EXPECT_FALSE(griglia.righe.Spuntata(row, 0)) << row;
    }
  });
}

TEST_F(ScreenReaders, DoNothingBehindAMessage) {
  Three();
  Show([&](QDialog& window) {
    QTableView& list = Lista(window);
    atBox = [&] { Do(Cell(list, 0, "Spunta della nuova banca"), Toggle); };
    Do(Cell(list, 1, "Nuova Scad"), Press);
    Write(Trova<QLineEdit>(window, "TextScad"), "31/02/2006");
    Do(Cell(list, 1, "Nuova Scad"), Press);
    Settle();
  });
  EXPECT_EQ(box.size(), 1U);
  EXPECT_FALSE(griglia.righe.Spuntata(0, 1));
}

TEST_F(ScreenReaders, HearTheOrderInTheHeadingAndSortByIt) {
  Three();
  Show([&](QDialog& window) {
    QTableView& list = Lista(window);
    auto& heading = Trova<QWidget>(window, "TLwTestata_1");
    EXPECT_EQ(Name(&Face(heading)), "Conto, ordine crescente");
    EXPECT_EQ(Text(list, QAccessible::Description), "Per Conto, ordine crescente");
    Do(Face(heading), Press);
    EXPECT_EQ(Name(&Face(heading)), "Conto, ordine decrescente");
    EXPECT_EQ(Name(&Cell(list, 0, "Conto")), "VERDI");
    auto& other = Trova<QWidget>(window, "TLwTestata_5");
    EXPECT_EQ(Name(&Face(other)), "Scadenza");
    Do(Face(other), Press);
    EXPECT_EQ(Name(&Face(heading)), "Conto");
    EXPECT_EQ(Text(list, QAccessible::Description), "Per Scadenza, ordine crescente");
    EXPECT_THAT(Face(Trova<QWidget>(window, "TLwTestata_4")).actionInterface()->actionNames(), IsEmpty())
        << "the amount does not sort";
  });
}

/// The controls below `face` that have no name and no label, and how many controls there are.
void Nameless(QAccessibleInterface& face, std::vector<std::string>& nameless, int& controls) {
  const QAccessible::State state = face.state();
  const bool control = state.focusable || face.role() == QAccessible::Button || face.role() == QAccessible::CheckBox ||
                       face.role() == QAccessible::ColumnHeader;
  if (control && !state.invisible && face.role() != QAccessible::Dialog) {
    ++controls;
    const auto labels = face.relations(QAccessible::Label);
    if (Name(labels.isEmpty() ? &face : labels.first().first).empty()) {
      nameless.push_back(face.object()->metaObject()->className() + (" " + face.object()->objectName()).toStdString());
    }
  }
  if (face.tableInterface() != nullptr) {
    return; // its cells are controls of their own
  }
  for (int child = 0; child < face.childCount(); ++child) {
    QAccessibleInterface* const below = face.child(child);
    ASSERT_NE(below, nullptr) << Name(&face);
    Nameless(*below, nameless, controls);
  }
}

void ExpectNames(QWidget& window, int atLeast) {
  std::vector<std::string> nameless;
  int controls = 0;
  Nameless(Face(window), nameless, controls);
  EXPECT_THAT(nameless, IsEmpty());
  EXPECT_GE(controls, atLeast);
}

TEST_F(ScreenReaders, FindANameOnEveryControl) {
  Three();
  Show([&](QDialog& window) {
    QTableView& list = Lista(window);
    Do(Cell(list, 1, "Spunta della nuova banca"), Toggle);
    for (const Qt::Key key : {Qt::Key_F6, Qt::Key_F7}) {
      QTest::keyClick(&list, key);
    }
    QTest::keyClick(&list, Qt::Key_F, Qt::ControlModifier);
    Settle();
    ExpectNames(window, 20);
    list.setFocus();
    Recita([](QDialog& details) { ExpectNames(details, 2); });
    QTest::keyClick(&list, Qt::Key_F3);
  });
}

TEST_F(ScreenReaders, FindTheTotalsBelowTheBarsAndTheRowsBehindThem) {
  Three();
  Show([&](QDialog& window) {
    QTableView& list = Lista(window);
    QTest::keyClick(&list, Qt::Key_F6);
    auto& panel = Trova<QWidget>(window, "EffectPanel");
    EXPECT_EQ(Name(&Face(panel)), "Effetto delle variazioni");
    std::vector<std::string> entries;
    for (int entry = 0; entry < Face(panel).childCount(); ++entry) {
      entries.push_back(Name(Face(panel).child(entry)));
      EXPECT_EQ(Face(panel).child(entry)->role(), QAccessible::ListItem);
    }
    EXPECT_THAT(entries,
                ElementsAre("Per banca", "BANCA ALFA: prima 4.753,08 €, dopo 4.753,08 €", "Per mese",
                            "03/2006: prima 1.584,36 €, dopo 1.584,36 €", "04/2006: prima 1.584,36 €, dopo 1.584,36 €",
                            "05/2006: prima 1.584,36 €, dopo 1.584,36 €"));
    EXPECT_FALSE(Face(panel).child(0)->actionInterface()->actionNames().contains(Press)) << "a title";
    Do(*Face(panel).child(4), Press);
    EXPECT_EQ(list.model()->rowCount(), 1);
    EXPECT_EQ(Name(Face(panel).child(4)), "04/2006: prima 1.584,36 €, dopo 1.584,36 €, solo questa in vista");
    Do(*Face(panel).child(4), Press);
    EXPECT_EQ(list.model()->rowCount(), 3) << "the second time all rows are in sight again";
  });
}

TEST_F(ScreenReaders, TakeAChangeBackByItsSentence) {
  Three();
  Show([&](QDialog& window) {
    QTableView& list = Lista(window);
    Write(Trova<QLineEdit>(window, "TextScadenza"), "20/01/2007");
    for (const int row : {0, 1}) {
      Do(Cell(list, row, "Spunta della nuova data"), Toggle);
    }
    Do(Face(Trova<QWidget>(window, "FootChanges")), Toggle);
    auto& changes = Trova<QWidget>(window, "ChangesList");
    ASSERT_EQ(Face(changes).childCount(), 2);
    EXPECT_THAT(Name(Face(changes).child(1)), testing::HasSubstr("BIANCHI"));
    Do(*Face(changes).child(1), Press);
    EXPECT_EQ(Date(1), "30/04/2006");
    EXPECT_EQ(Date(0), "20/01/2007");
  });
}

TEST_F(ScreenReaders, ChooseABankFromTheListThatDropsDown) {
  Three();
  Show([&](QDialog& window) {
    QTableView& list = Lista(window);
    Do(Cell(list, 1, "NuovaBanca"), Press);
    auto& bank = Trova<QComboBox>(window, "cmbBanche2");
    QAbstractItemView& drop = *bank.view();
    if (!drop.isVisible()) {
      Do(Face(bank), QAccessibleActionInterface::showMenuAction());
    }
    ASSERT_TRUE(drop.isVisible());
    EXPECT_EQ(Face(drop).childCount(), 4);
    EXPECT_EQ(Name(&Face(drop)), "NuovaBanca, riga 2 di 3: BIANCHI, 2006 2");
    for (const char letter : {'a', 'm'}) {
      QWidget* const popup = QApplication::activePopupWidget();
      QTest::keyClick(popup->focusWidget() == nullptr ? popup : popup->focusWidget(), letter);
    }
    ASSERT_EQ(Face(drop).childCount(), 1) << "what was typed narrows it";
    EXPECT_EQ(Name(Face(drop).child(0)), "CASSA GAMMA");
    Do(*Face(drop).child(0), Press);
    EXPECT_FALSE(drop.isVisible());
    EXPECT_EQ(Name(&Face(bank)), "CASSA GAMMA");
    Do(Cell(list, 1, "NuovaBanca"), Press);
    EXPECT_EQ(Bank(1), "CASSA GAMMA");
    EXPECT_EQ(griglia.righe.Tag(1, Schermata::NuovaBanca), "B03");
    EXPECT_EQ(Bank(0), "BANCA ALFA");
  });
}

TEST_F(ScreenReaders, ChooseADayOfTheCalendar) {
  Three();
  Show([&](QDialog& window) {
    auto& field = Trova<QLineEdit>(window, "TextScadenza");
    field.setFocus();
    QTest::keyClick(&field, Qt::Key_F4);
    QWidget* const calendar = QApplication::activePopupWidget();
    ASSERT_NE(calendar, nullptr);
    auto& days = Trova<QTableView>(*calendar, "CalendarDays");
    EXPECT_EQ(Table(days).columnCount(), 7);
    EXPECT_EQ(Table(days).columnDescription(0), "lunedì");
    QAccessibleInterface* const day = Table(days).cellAt(1, 2);
    const std::string name = Name(day);
    EXPECT_THAT(name, testing::StartsWith("mercoledì "));
    const auto expected = days.model()->index(1, 2).data().toString();
    Do(*day, Press);
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
    EXPECT_EQ(field.text().left(2), expected.rightJustified(2, '0'));
  });
}

TEST_F(ScreenReaders, LeaveTheCallingProgramItsOwnFaces) {
  Three();
  QTableView theirs;
  auto own = std::make_unique<QLabel>(QStringLiteral("x"));
  Show([&](QDialog& window) {
    EXPECT_EQ(dynamic_cast<qt::AccessibleItems*>(&Face(theirs)), nullptr);
    EXPECT_EQ(Face(*own).role(), QAccessible::StaticText);
    EXPECT_NE(dynamic_cast<qt::AccessibleItems*>(&Face(Lista(window))), nullptr);
  });
  qt::HeadingQt later(QStringLiteral("n"), QStringLiteral("Conto"), true, nullptr);
  EXPECT_NE(Face(later).role(), QAccessible::ColumnHeader) << "with the last window ours are gone";
}

/// Bytes of this process that are in memory.
long Resident() {
  std::ifstream file("/proc/self/statm");
  long all = 0;
  long resident = 0;
  file >> all >> resident;
  return resident * ::sysconf(_SC_PAGESIZE);
}

TEST_F(ScreenReaders, MayAskTwentyThousandRowsOverAndOverAtSmallCost) {
  for (int row = 0; row < 20'000; ++row) {
    Add("CLIENTE " + std::to_string(row % 500), std::to_string(row));
  }
  Show([&](QDialog& window) {
    QTableView& list = Lista(window);
    QAccessibleTableInterface& table = Table(list);
    std::vector<QAccessible::Id> ids;
    const auto askAll = [&] {
      ids.clear();
      for (int row = 0; row < table.rowCount(); ++row) {
        for (int column = 0; column < table.columnCount(); ++column) {
          QAccessibleInterface* const cell = table.cellAt(row, column);
          ASSERT_TRUE(cell->isValid());
          ids.push_back(QAccessible::uniqueId(cell));
          ASSERT_GE(cell->tableCellInterface()->rowHeaderCells().size(), 2);
          static_cast<void>(cell->text(QAccessible::Name));
          static_cast<void>(cell->state());
        }
      }
    };
    const long before = Resident();
    for (int time = 0; time < 2; ++time) {
      askAll();
    }
    const long added = Resident() - before;
    const auto alive = std::count_if(ids.begin(), ids.end(), [](QAccessible::Id id) {
      QAccessibleInterface* const cell = QAccessible::accessibleInterface(id);
      return cell != nullptr;
    });
    EXPECT_EQ(ids.size(), 200'000U);
    EXPECT_LE(alive, static_cast<long>(qt::AccessibleItems::MostCells));
    EXPECT_GT(alive, 0);
    RecordProperty("kibibytes", static_cast<int>(added / 1024));
#ifndef LUMOSCAD_SANITIZZATO // which keeps what was freed
    EXPECT_LE(added, 20L * 1024 * 1024);
#endif
  });
}

} // namespace
} // namespace lumoscad::test
