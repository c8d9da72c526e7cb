// How the windows look on a light and on a dark desktop, on one of high contrast, with large text, and inside a program
// with a look of its own.

#include "FinestraFinta.hpp"
#include "Palettes.hpp"
#include "platform/qt/Contrast.hpp"
#include "platform/qt/Look.hpp"
#include "platform/qt/QtDesktop.hpp"

#include <QAbstractItemView>
#include <QComboBox>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

namespace lumoscad::test {
namespace {

using qt::look::Colours;
using qt::look::Contrast;

/// What stands on what.
struct Pair {
  const char* name;
  QColor Colours::*mark;
  std::vector<QColor Colours::*> grounds;
};

const std::vector<QColor Colours::*> Rows{&Colours::paper, &Colours::alternateRow, &Colours::selection,
                                          &Colours::selectionWithoutFocus};

std::vector<QColor Colours::*> RowsAnd(const std::vector<QColor Colours::*>& more) {
  std::vector<QColor Colours::*> all = Rows;
  all.insert(all.end(), more.begin(), more.end());
  return all;
}

const std::vector<Pair>& TextsOnTheirGrounds() {
  static const std::vector<Pair> pairs{
      {"text of rows", &Colours::ink, RowsAnd({&Colours::changedBackground, &Colours::found})},
      {"text of changed cells", &Colours::changedInk, RowsAnd({&Colours::changedBackground, &Colours::found})},
      {"labels and headings",
       &Colours::windowInk,
       {&Colours::background, &Colours::headingBackground, &Colours::hoveredHeading}},
      {"placeholder and foot", &Colours::faintInk, {&Colours::background, &Colours::paper}},
      {"what is chosen", &Colours::fillInk, {&Colours::fill, &Colours::fillHover, &Colours::fillDown}},
      {"buttons", &Colours::buttonInk, {&Colours::button, &Colours::hoveredButton, &Colours::pressedButton}}};
  return pairs;
}

/// The least contrast of a pair.
double Least(const Colours& colours, const Pair& pair) {
  double least = 21;
  for (const auto ground : pair.grounds) {
    least = std::min(least, Contrast(colours.*pair.mark, colours.*ground));
  }
  return least;
}

TEST(Contrasts, AreThoseOfTheDefinition) {
  EXPECT_NEAR(Contrast(Qt::black, Qt::white), 21, 0.001);
  EXPECT_NEAR(Contrast("#777777", Qt::white), 4.48, 0.01);
  EXPECT_NEAR(Contrast(Qt::white, "#767676"), 4.54, 0.01);
  EXPECT_NEAR(Contrast("#ff0000", "#00ff00"), 2.91, 0.01);
  EXPECT_NEAR(Contrast("#123456", "#123456"), 1, 0.001);
}

TEST(Contrasts, OfEveryTextAreFourAndAHalfOnEveryDesktop) {
  for (const auto& [name, palette] : DesktopPalettes()) {
    const Colours colours(palette);
    for (const Pair& pair : TextsOnTheirGrounds()) {
      EXPECT_GE(Least(colours, pair), 4.5) << name << ": " << pair.name;
    }
  }
}

TEST(Contrasts, OfBordersTicksAndFocusAreThreeOnEveryDesktop) {
  const auto grounds = RowsAnd(
      {&Colours::changedBackground, &Colours::background, &Colours::headingBackground, &Colours::hoveredHeading});
  const std::vector<Pair> pairs{{"borders and boxes", &Colours::border, grounds},
                                {"the focus and ticks", &Colours::accent, grounds},
                                {"a tick's sign", &Colours::accentInk, {&Colours::accent}},
                                {"a button's border", &Colours::border, {&Colours::button}},
                                {"the line below the fields", &Colours::darkLine, {&Colours::background}}};
  for (const auto& [name, palette] : DesktopPalettes()) {
    const Colours colours(palette);
    for (const Pair& pair : pairs) {
      EXPECT_GE(Least(colours, pair), 3) << name << ": " << pair.name;
    }
  }
}

TEST(Contrasts, OfEveryTextHoldInAProgramOfAnyColours) {
  std::mt19937 chance(20270115);
  for (int i = 0; i < 300; ++i) {
    const Colours colours(RandomPalette(chance));
    for (const Pair& pair : TextsOnTheirGrounds()) {
      // The foot stands on two grounds that such a program may have chosen far from each other.
      if (pair.mark != &Colours::faintInk) {
        ASSERT_GE(Least(colours, pair), 4.5) << i << ": " << pair.name;
      }
    }
  }
}

TEST(Contrasts, KeepTheStatesOfARowApart) {
  for (const auto& [name, palette] : DesktopPalettes()) {
    const Colours colours(palette);
    for (const auto ground : {&Colours::selection, &Colours::selectionWithoutFocus, &Colours::changedBackground}) {
      EXPECT_GE(Contrast(colours.*ground, colours.paper), 1.1) << name;
    }
  }
}

/// The colour at a point of a widget, as its window shows it.
QColor At(QWidget& window, const QWidget& widget, const QPoint& point) {
  return window.grab().toImage().pixelColor(widget.mapTo(&window, point));
}

TEST(Windows, ShowFieldsBoxesAndFocusWithThreeToOneOnEveryDesktop) {
  for (const auto& [name, palette] : DesktopPalettes()) {
    const DesktopLook look(palette);
    FinestraFinta finta(30);
    finta.spunte = {{1, FinestraFinta::ColonnaSpuntaData}};
    Esegui(finta, [&, name = name](QDialog& window) {
      QTableView& list = Lista(window);
      for (const char* field : {"TextScadenza", "cmbBanche", "PictureAnnulla"}) {
        const auto& widget = Trova<QWidget>(window, field);
        const int middle = widget.height() / 2;
        const QColor border = At(window, widget, {0, middle});
        EXPECT_GE(Contrast(border, At(window, widget, {-3, middle})), 3) << name << ": outside of " << field;
        EXPECT_GE(Contrast(border, At(window, widget, {4, middle})), 3) << name << ": inside of " << field;
      }
      const auto cell = [&](int row, int column) { return list.visualRect(list.model()->index(row, column)); };
      const QRect ticked = cell(1, FinestraFinta::ColonnaSpuntaData);
      const QRect empty = cell(2, FinestraFinta::ColonnaSpuntaData);
      const QPoint edge(-4, -4); // within the box, beside its sign
      const QColor full = At(window, *list.viewport(), ticked.center() + edge);
      const QColor free = At(window, *list.viewport(), empty.center() + edge);
      EXPECT_GE(Contrast(full, free), 3) << name << ": a tick";
      const QRect current = cell(0, FinestraFinta::ColonnaSpuntaData);
      EXPECT_GE(Contrast(At(window, *list.viewport(), current.topLeft() + QPoint(1, 5)),
                         At(window, *list.viewport(), current.topLeft() + QPoint(4, 5))),
                3)
          << name << ": the current cell";
      EXPECT_GE(Contrast(At(window, *list.viewport(), {1, cell(0, 0).top() + 5}),
                         At(window, *list.viewport(), {1, cell(1, 0).top() + 5})),
                3)
          << name << ": a selected row is marked by more than its ground";
    });
  }
}

TEST(Windows, TakeNoColourFromAStyleSheet) {
  FinestraFinta finta(3);
  Esegui(finta, [](QDialog& window) {
    EXPECT_EQ(window.styleSheet(), "");
    for (const QWidget* widget : window.findChildren<QWidget*>()) {
      EXPECT_EQ(widget->styleSheet(), "") << widget->objectName().toStdString();
    }
  });
}

TEST(Windows, FollowTheDesktopsColoursWhileTheyAreOpen) {
  const DesktopLook look(DesktopPalettes()[0].palette);
  FinestraFinta finta(30);
  Esegui(finta, [&](QDialog& window) {
    const auto& label = Trova<QLabel>(window, "lblScadenza");
    const auto& list = Lista(window);
    for (const auto& [name, palette] : DesktopPalettes()) {
      QApplication::setPalette(palette);
      QCoreApplication::processEvents();
      const Colours colours(palette);
      EXPECT_EQ(At(window, window, {2, 2}), colours.background) << name;
      EXPECT_EQ(At(window, *list.viewport(), list.visualRect(list.model()->index(2, 5)).topLeft() + QPoint(1, 1)),
                colours.paper)
          << name;
      EXPECT_EQ(label.palette().color(label.foregroundRole()), colours.windowInk) << name;
      EXPECT_EQ(Trova<QComboBox>(window, "cmbBanche").view()->palette().color(QPalette::Base), colours.paper) << name;
    }
  });
}

TEST(Windows, AreAsLargeAsEverAtTheUsualTextSize) {
  const DesktopLook look;
  DesktopLook::SetTextSize(12);
  EXPECT_EQ(qt::look::RowHeight(), 24);
  EXPECT_EQ(qt::look::HeadingHeight(), 36);
  EXPECT_EQ(qt::look::TwipsX(1), TwipsPerPixelX);
  EXPECT_EQ(qt::look::TwipsY(1), TwipsPerPixelY);
  FinestraFinta finta(30);
  Esegui(finta, [&](QDialog& window) {
    EXPECT_EQ(Trova<QWidget>(window, "TextScadenza").size(), QSize(132, 28));
    EXPECT_EQ(Trova<QWidget>(window, "cmbBanche").size(), QSize(320, 28));
    EXPECT_EQ(Trova<QWidget>(window, "PictureOk").size(), QSize(120, 34));
    EXPECT_EQ(Trova<QWidget>(window, "PictureAnnulla").size(), QSize(120, 34));
    EXPECT_EQ(Lista(window).rowHeight(0), 24);
    EXPECT_EQ(Lista(window).sizeHint().height(), 480);
  });
}

TEST(Windows, FollowTheDesktopsTextSizeWhileTheyAreOpen) {
  const DesktopLook look;
  FinestraFinta finta(30);
  Esegui(finta, [&](QDialog& window) {
    QTableView& list = Lista(window);
    for (const int pixels : {24, 15, 12, 18}) {
      DesktopLook::SetTextSize(pixels);
      QCoreApplication::processEvents();
      EXPECT_EQ(list.font().pixelSize(), pixels);
      EXPECT_EQ(list.font().family(), "Verdana");
      EXPECT_EQ(Trova<QWidget>(window, "TLwTestata_1").font().pixelSize(), pixels);
      EXPECT_EQ(Trova<QComboBox>(window, "cmbBanche").view()->font().pixelSize(), pixels);
      EXPECT_EQ(Trova<QLabel>(window, "lblScadenza").font().pixelSize(), pixels);
      EXPECT_EQ(list.rowHeight(0), 2 * pixels);
      EXPECT_EQ(qt::look::TwipsY(list.rowHeight(0)), 240);
      EXPECT_EQ(qt::look::TwipsY(list.sizeHint().height()), 4800) << "twenty rows";
      for (const auto* label : window.findChildren<QLabel*>()) {
        EXPECT_GE(label->width(), label->sizeHint().width()) << pixels << label->objectName().toStdString();
      }
      for (const auto* button : window.findChildren<QPushButton*>()) {
        EXPECT_GE(button->width(), button->sizeHint().width()) << pixels;
        EXPECT_GE(button->height(), button->sizeHint().height()) << pixels;
      }
    }
  });
}

TEST(Windows, TellTheScreenTheSamePlacesAtEveryTextSize) {
  for (const int pixels : {12, 15, 24}) {
    const DesktopLook look;
    DesktopLook::SetTextSize(pixels);
    FinestraFinta finta(30);
    Esegui(finta, [&](QDialog& window) {
      QTableView& list = Lista(window);
      finta.gesti.clear();
      Clicca(list, 4, FinestraFinta::ColonnaSpuntaData);
      EXPECT_EQ(finta.gesti.back(), "clic 960") << pixels;
      EXPECT_GE(finta.ultimaX, finta.Inizio(FinestraFinta::ColonnaSpuntaData)) << pixels;
      EXPECT_LT(finta.ultimaX, finta.Inizio(FinestraFinta::ColonnaSpuntaData + 1)) << pixels;
      Clicca(list, 4, FinestraFinta::ColonnaData);
      const QRect cell = list.visualRect(list.model()->index(4, FinestraFinta::ColonnaData));
      const auto& editor = Trova<QWidget>(window, "FrameScad");
      EXPECT_EQ(editor.size(), cell.size() - QSize(60 * pixels / 180, 0)) << pixels;
    });
  }
}

TEST(Windows, OfMessagesAndWaitsGrowWithTheText) {
  const auto desktop = qt::CreateDesktop();
  const auto heights = [&] {
    std::pair<QSize, QSize> sizes;
    QTimer::singleShot(20, qApp, [&] {
      auto* box = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      ASSERT_NE(box, nullptr);
      sizes.first = box->size();
      box->accept();
    });
    desktop->ShowBox("Buongiorno", "LumoScad");
    desktop->ShowWait("Attendere", 1, [&] { sizes.second = QApplication::activeModalWidget()->size(); });
    return sizes;
  };
  const auto usual = heights();
  const DesktopLook look;
  DesktopLook::SetTextSize(24);
  const auto large = heights();
  EXPECT_GT(large.first.width(), usual.first.width() * 3 / 2);
  EXPECT_GT(large.first.height(), usual.first.height());
  EXPECT_GT(large.second.width(), usual.second.width() * 3 / 2);
  EXPECT_GT(large.second.height(), usual.second.height());
}

/// How many in a hundred pixels of two pictures differ by more than a shade.
double Percent(const QImage& one, const QImage& other) {
  EXPECT_EQ(one.size(), other.size());
  int different = 0;
  for (int y = 0; y < one.height(); ++y) {
    for (int x = 0; x < one.width(); ++x) {
      const QColor a = one.pixelColor(x, y);
      const QColor b = other.pixelColor(x, y);
      const int distance =
          std::abs(a.red() - b.red()) + std::abs(a.green() - b.green()) + std::abs(a.blue() - b.blue());
      different += distance > 24 ? 1 : 0;
    }
  }
  return 100.0 * different / (one.width() * one.height());
}

/// The window as it is, and with an editor open; saved in LUMOSCAD_PICTURES where that is set.
std::vector<QImage> Pictures(const QString& name) {
  std::vector<QImage> pictures;
  FinestraFinta finta(30);
  Esegui(finta, [&](QDialog& window) {
    window.resize(1100, 640);
    QCoreApplication::processEvents();
    pictures.push_back(window.grab().toImage());
    Clicca(Lista(window), 3, FinestraFinta::ColonnaBanca);
    QCoreApplication::processEvents();
    pictures.push_back(window.grab().toImage());
    if (qEnvironmentVariableIsSet("LUMOSCAD_PICTURES")) {
      pictures.back().save(qEnvironmentVariable("LUMOSCAD_PICTURES") + QStringLiteral("/%1.png").arg(name));
    }
  });
  return pictures;
}

TEST(Windows, LookTheSameUnderAStyleSheetOfTheCallingProgram) {
  const auto own = Pictures(QStringLiteral("own"));
  const DesktopLook look;
  for (const char* sheet :
       {"* { color: white; background: white; font: 30pt; padding: 9px; border: 5px solid red; margin: 3px }",
        "QLabel { color: yellow } QTableView { color: yellow; background: yellow } QPushButton { color: white;"
        " background: white } QLineEdit, QComboBox { color: white; border: none } QDialog { background: black }"}) {
    qApp->setStyleSheet(QString::fromLatin1(sheet));
    const auto under = Pictures(QStringLiteral("under"));
    ASSERT_EQ(own.size(), under.size());
    for (std::size_t i = 0; i < own.size(); ++i) {
      EXPECT_LT(Percent(own[i], under[i]), 1) << sheet;
    }
  }
}

TEST(Windows, StayLegibleInAProgramOfAnyColours) {
  std::mt19937 chance(7);
  for (int i = 0; i < 5; ++i) {
    const DesktopLook look(RandomPalette(chance));
    FinestraFinta finta(3);
    Esegui(finta, [&](QDialog& window) {
      for (const char* label : {"lblScadenza", "lblBanche"}) {
        const auto& widget = Trova<QLabel>(window, label);
        EXPECT_GE(Contrast(widget.palette().color(QPalette::WindowText), At(window, widget, {0, 0})), 4.5) << i;
      }
      const auto& field = Trova<QLineEdit>(window, "TextScadenza");
      EXPECT_GE(Contrast(field.palette().color(QPalette::Text), At(window, field, {8, 4})), 4.5) << i;
    });
  }
}

} // namespace
} // namespace lumoscad::test
