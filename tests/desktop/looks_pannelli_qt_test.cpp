// What opens beside a list as it looks on every kind of desktop: the filter, the panel of the effect, the changes, the
// calendar and the help. With LUMOSCAD_ASPETTI in the environment each is saved in that folder, for somebody to look
// at.

#include "Palettes.hpp"
#include "TastiDellElenco.hpp"
#include "platform/qt/Contrast.hpp"
#include "platform/qt/Look.hpp"

#include <QApplication>
#include <QImage>
#include <QLabel>
#include <QListView>
#include <QListWidget>
#include <QScrollBar>
#include <QStyleOptionSlider>
#include <QTest>

#include <algorithm>

namespace lumoscad::test {
namespace {

struct PanelAspect {
  const char* name;
  int palette = 0; ///< of the desktop's
  int textPixels = 12;
  QSize size{1256, 700};
};

const std::vector<PanelAspect> PanelAspects{
    {"chiaro"}, {"scuro", 1}, {"contrasto", 2}, {"testo-doppio", 0, 24, {1256, 744}}};

void Save(const QImage& picture, const std::string& name) {
  if (const QString folder = qEnvironmentVariable("LUMOSCAD_ASPETTI"); !folder.isEmpty()) {
    const QString file = folder + QLatin1Char('/') + QString::fromStdString(name) + QStringLiteral(".png");
    EXPECT_TRUE(picture.convertToFormat(QImage::Format_RGB888).save(file, "PNG", 0));
  }
}

QRect PlaceIn(const QWidget& window, const QWidget& part) {
  return {part.mapTo(&window, QPoint(0, 0)), part.size()};
}

/// The least that a scroll bar's handle differs from what is beside it.
double HandleContrast(QScrollBar& bar) {
  QStyleOptionSlider option;
  option.initFrom(&bar);
  option.orientation = bar.orientation();
  option.minimum = bar.minimum();
  option.maximum = bar.maximum();
  option.sliderPosition = option.sliderValue = bar.value();
  option.pageStep = bar.pageStep();
  option.subControls = QStyle::SC_All;
  const QRect handle = bar.style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, &bar);
  const QImage picture = bar.grab().toImage();
  const QPoint groove(handle.center().x(), std::min(handle.bottom() + 12, picture.height() - 30));
  return qt::look::Contrast(picture.pixelColor(handle.center()), picture.pixelColor(groove));
}

class PanelLooks : public KeysOfTheList, public testing::WithParamInterface<PanelAspect> {};

TEST_P(PanelLooks, LeaveEachPartItsPlaceAndItsTexts) {
  const PanelAspect& aspect = GetParam();
  const DesktopLook look(DesktopPalettes().at(static_cast<std::size_t>(aspect.palette)).palette);
  DesktopLook::SetTextSize(aspect.textPixels);
  Show([&](QDialog& window) {
    CreditsForKeys::Change(window, 3);
    CreditsForKeys::Change(window, 7);
    PressKey("F6");
    window.resize(aspect.size);
    auto& panel = Trova<QListWidget>(window, "EffectPanel");
    panel.setCurrentRow(1);
    PressKey("Return");
    PressKey("F7");
    PressKey("Ctrl+F");
    TypeText("100");
    Lista(window).setFocus();
    QCoreApplication::processEvents();
    const QRect list = PlaceIn(window, Lista(window));
    const QRect filter = PlaceIn(window, Trova<QWidget>(window, "FilterBar"));
    const QRect changes = PlaceIn(window, Trova<QWidget>(window, "ChangesList"));
    EXPECT_LE(filter.bottom(), list.top());
    EXPECT_LE(list.right(), PlaceIn(window, panel).left());
    EXPECT_GE(changes.top(), list.bottom());
    EXPECT_GE(list.height(), 2 * qt::look::RowHeight());
    EXPECT_TRUE(window.rect().contains(changes));
    for (const char* name : {"FilterBehind", "FilterCount", "ChangedOnly", "TickedOnly", "PictureOk"}) {
      const auto& part = Trova<QWidget>(window, name);
      EXPECT_GE(part.width(), part.sizeHint().width()) << name;
      EXPECT_TRUE(window.rect().contains(PlaceIn(window, part))) << name;
    }
    Save(window.grab().toImage(), std::string("pannello-") + aspect.name);
    PressKey("Ctrl+F");
    PressKey("Esc");
    QCoreApplication::processEvents();
    EXPECT_GE(HandleContrast(*Lista(window).verticalScrollBar()), 3);
  });
}

TEST_P(PanelLooks, ShowCalendarAndHelp) {
  const PanelAspect& aspect = GetParam();
  const DesktopLook look(DesktopPalettes().at(static_cast<std::size_t>(aspect.palette)).palette);
  DesktopLook::SetTextSize(aspect.textPixels);
  Show([&](QDialog& window) {
    Trova<QWidget>(window, "TextScadenza").setFocus();
    TypeText("06/01/2027");
    PressKey("F4");
    QWidget* const calendar = QApplication::activePopupWidget();
    ASSERT_NE(calendar, nullptr);
    QCoreApplication::processEvents();
    for (const char* name : {"CalendarMonth", "CalendarDayName"}) {
      const auto& label = Trova<QLabel>(*calendar, name);
      EXPECT_LE(label.fontMetrics().horizontalAdvance(label.text()), label.width()) << label.text().toStdString();
    }
    Save(calendar->grab().toImage(), std::string("calendario-") + aspect.name);
    calendar->close();
    InModalWindow("HelpWindow", [&](QDialog& help) {
      help.resize(std::min(help.width(), aspect.size.width()), help.height());
      QCoreApplication::processEvents();
      Save(help.grab().toImage(), std::string("tasti-") + aspect.name);
    });
    Lista(window).setFocus();
    PressKey("F1");
  });
}

INSTANTIATE_TEST_SUITE_P(Aspects, PanelLooks, testing::ValuesIn(PanelAspects),
                         [](const testing::TestParamInfo<PanelAspect>& aspect) {
                           std::string name = aspect.param.name;
                           std::replace(name.begin(), name.end(), '-', '_');
                           return name;
                         });

} // namespace
} // namespace lumoscad::test
