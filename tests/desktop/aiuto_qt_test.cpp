// The help behind F1: what it shows of a window, finds and leaves to be printed.

#include "FinestraFinta.hpp"
#include "TuttiITasti.hpp"
#include "platform/qt/HelpQt.hpp"
#include "support/Paths.hpp"

#include <QAccessible>
#include <QApplication>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <gmock/gmock.h>

namespace lumoscad::test {
namespace {

std::vector<GestureEntry> AllGestures() {
  const auto table = GestureTable();
  return {table.begin(), table.end()};
}

/// Shows the help of all gestures and runs `look` in it.
void InHelp(const std::function<void(QDialog&)>& look) {
  bool seen = false;
  qt::HelpQt help(AllGestures(), nullptr);
  QTimer::singleShot(0, &help, [&] {
    EXPECT_TRUE(QTest::qWaitForWindowActive(&help));
    look(help);
    seen = true;
    help.close();
  });
  help.exec();
  EXPECT_TRUE(seen);
}

std::vector<std::string> KeysShown(QDialog& help) {
  auto& table = Trova<QTableWidget>(help, "HelpTable");
  std::vector<std::string> shown;
  for (int row = 0; row < table.rowCount(); ++row) {
    if (!table.isRowHidden(row)) {
      shown.push_back(table.item(row, 0)->text().toStdString());
    }
  }
  return shown;
}

TEST(HelpWindow, FindsWordsInAnyOrderWithoutAccentsAndCase) {
  InHelp([](QDialog& help) {
    EXPECT_EQ(KeysShown(help).size(), GestureTable().size());
    EXPECT_EQ(Trova<QLabel>(help, "HelpCount").text().toStdString(), std::to_string(GestureTable().size()) + " gesti");
    TypeText("GIU PAG mese prima");
    EXPECT_THAT(KeysShown(help), testing::Contains("Pag giù"));
    EXPECT_LT(KeysShown(help).size(), 4U);
    Trova<QLineEdit>(help, "HelpSearch").clear();
    EXPECT_EQ(KeysShown(help).size(), GestureTable().size());
    TypeText("qzx");
    EXPECT_THAT(KeysShown(help), testing::IsEmpty());
  });
}

TEST(HelpWindow, ShowsEveryTextWholeAtTwiceTheSizeToo) {
  for (const int pixels : {12, 24}) {
    const QFont before = QApplication::font();
    QFont font = before;
    font.setPixelSize(pixels);
    QApplication::setFont(font);
    InHelp([pixels](QDialog& help) {
      help.resize(pixels == 12 ? 776 : 1256, 700);
      QCoreApplication::processEvents();
      auto& table = Trova<QTableWidget>(help, "HelpTable");
      for (int row = 0; row < table.rowCount(); ++row) {
        for (int column = 0; column < table.columnCount(); ++column) {
          const QRect cell = table.visualItemRect(table.item(row, column)).adjusted(3, 0, -3, 0);
          const QRect text = table.fontMetrics().boundingRect(QRect(0, 0, cell.width(), 10000), Qt::TextWordWrap,
                                                              table.item(row, column)->text());
          EXPECT_LE(text.height(), cell.height()) << table.item(row, column)->text().toStdString();
          EXPECT_LE(text.width(), cell.width()) << table.item(row, column)->text().toStdString();
        }
      }
    });
    QApplication::setFont(before);
  }
}

TEST(HelpWindow, IsNamedForAssistiveToolsWithItsCells) {
  InHelp([](QDialog& help) {
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&Trova<QLineEdit>(help, "HelpSearch"))->text(QAccessible::Name),
              "Cerca fra i gesti");
    QAccessibleInterface* table = QAccessible::queryAccessibleInterface(&Trova<QTableWidget>(help, "HelpTable"));
    EXPECT_EQ(table->text(QAccessible::Name), "Tasti e gesti");
    ASSERT_NE(table->tableInterface(), nullptr);
    EXPECT_EQ(table->tableInterface()->columnDescription(2), "Che cosa fa");
    EXPECT_EQ(table->tableInterface()->cellAt(0, 0)->text(QAccessible::Name), "F1");
  });
}

TEST(HelpWindow, LeavesWhatItShowsAsAPdf) {
  const QTemporaryDir folder(QString::fromStdString((BuildFolder() / "aiuto-XXXXXX").string()));
  const QString path = folder.filePath("gesti.pdf");
  InHelp([&path](QDialog& help) {
    QTimer::singleShot(0, qApp, [&path] {
      auto* asks = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
      ASSERT_NE(asks, nullptr);
      asks->findChild<QLineEdit*>()->setText(path);
      QTest::keyClick(asks->findChild<QLineEdit*>(), Qt::Key_Return);
    });
    PressKey("Ctrl+P");
    EXPECT_EQ(Trova<QLabel>(help, "HelpCount").text(), "Salvato: " + path);
  });
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  EXPECT_TRUE(file.read(5) == "%PDF-");
  EXPECT_GT(file.size(), 10000);
}

} // namespace
} // namespace lumoscad::test
