// The list window as it looks on every kind of desktop. With LUMOSCAD_ASPETTI in the environment each is saved in that
// folder, for somebody to look at; the names say what is different.

#include "FinestraFinta.hpp"
#include "Palettes.hpp"
#include "platform/qt/ListView.hpp"
#include "platform/qt/Look.hpp"

#include <QImage>
#include <QLabel>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>

namespace lumoscad::test {
namespace {

/// One way in which the window can look.
struct Aspect {
  const char* name;
  int palette = 0; ///< of the desktop's
  int textPixels = 12;
  QSize size{1180, 640};
  std::size_t rows = 60;
  bool longNames = false;
};

const std::vector<Aspect> Aspects{{"chiaro"},
                                  {"scuro", 1},
                                  {"contrasto", 2},
                                  {"contrasto-su-bianco", 3},
                                  {"testo-doppio", 0, 24, {1256, 744}},
                                  {"testo-doppio-scuro", 1, 24, {1256, 744}},
                                  {"schermo-piccolo", 0, 12, {616, 344}},
                                  {"nomi-lunghi", 0, 12, {1180, 640}, 60, true},
                                  {"senza-righe", 0, 12, {1180, 640}, 0},
                                  {"centomila-righe", 0, 12, {1180, 640}, 100000}};

void GiveLongNames(FinestraFinta& fake) {
  for (std::size_t row = 0; row < fake.righe; row += 2) {
    fake.texts[{row, 0}] = "Società Cooperativa Agricola dei Produttori Riuniti della Valle del Chiampo a r.l.";
    fake.texts[{row, 4}] = "Banca Popolare della Valle del Chiampo e dei Comuni Uniti";
    fake.texts[{row, FinestraFinta::ColonnaBanca}] = "Cassa di Risparmio della Lunigiana e della Garfagnana";
  }
  fake.distinzioni = {{2, "rata 1"}, {3, "rata 2"}};
}

/// Rows of every kind: ticked, changed, and the current one.
void Use(QDialog& window, FinestraFinta& fake) {
  QTableView& list = Lista(window);
  fake.spunte = {{1, FinestraFinta::ColonnaSpuntaData},
                 {3, FinestraFinta::ColonnaSpuntaData},
                 {6, FinestraFinta::ColonnaSpuntaBanca}};
  if (fake.righe > 6) {
    Clicca(list, 4, FinestraFinta::ColonnaSpuntaBanca);
  }
  QCoreApplication::processEvents();
}

class Looks : public testing::TestWithParam<Aspect> {};

TEST_P(Looks, ShowEveryTextOfTheWindowWholeAndTheAccountBesideItsTicks) {
  const Aspect& aspect = GetParam();
  const DesktopLook look(DesktopPalettes().at(static_cast<std::size_t>(aspect.palette)).palette);
  DesktopLook::SetTextSize(aspect.textPixels);
  FinestraFinta fake(aspect.rows);
  if (aspect.longNames) {
    GiveLongNames(fake);
  }
  Esegui(fake, [&](QDialog& window) {
    window.resize(aspect.size);
    QCoreApplication::processEvents();
    auto& list = static_cast<qt::ListView&>(Lista(window));
    list.ShowTicks();
    Use(window, fake);
    for (const auto* label : window.findChildren<QLabel*>()) {
      if (label->isVisible()) {
        EXPECT_GE(label->width(), label->sizeHint().width()) << label->objectName().toStdString();
        EXPECT_GE(label->height(), label->sizeHint().height()) << label->objectName().toStdString();
      }
    }
    for (const auto* button : window.findChildren<QPushButton*>()) {
      EXPECT_GE(button->width(), button->sizeHint().width()) << button->objectName().toStdString();
    }
    if (aspect.rows > 0) {
      const auto shown = [&](int column) {
        return list.viewport()->rect().contains(list.visualRect(list.model()->index(4, column)));
      };
      EXPECT_TRUE(shown(0) && shown(FinestraFinta::ColonnaSpuntaData) && shown(FinestraFinta::ColonnaSpuntaBanca));
    }
    if (const QString folder = qEnvironmentVariable("LUMOSCAD_ASPETTI"); !folder.isEmpty()) {
      const QString file = folder + QLatin1Char('/') + QLatin1String(aspect.name) + QStringLiteral(".png");
      const QImage picture = window.grab().toImage().convertToFormat(QImage::Format_RGB888);
      EXPECT_TRUE(picture.save(file, "PNG", 0)) << "as small as it can be without a loss";
    }
  });
}

INSTANTIATE_TEST_SUITE_P(Aspects, Looks, testing::ValuesIn(Aspects), [](const testing::TestParamInfo<Aspect>& aspect) {
  std::string name = aspect.param.name;
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
});

} // namespace
} // namespace lumoscad::test
