#include "FinestraFinta.hpp"

#include "platform/qt/ColumnWidths.hpp"
#include "platform/qt/ListIcons.hpp"
#include "platform/qt/ListModel.hpp"

#include <QAbstractItemModelTester>
#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

#include <numeric>

namespace lumoscad::qt {
namespace {

using test::FinestraFinta;

TEST(ListModel, ObeysTheModelContractThroughReloadsAndChanges) {
  FinestraFinta finta(50);
  ListModel modello(finta);
  const QAbstractItemModelTester controllo(&modello, QAbstractItemModelTester::FailureReportingMode::Fatal);
  EXPECT_EQ(modello.rowCount(), 50);
  EXPECT_EQ(modello.columnCount(), 12);
  finta.righe = 7;
  modello.Reload();
  EXPECT_EQ(modello.rowCount(), 7);
  modello.Refresh(0, 500);
  finta.righe = 0;
  modello.Reload();
  EXPECT_EQ(modello.rowCount(), 0);
}

TEST(ListModel, ShowsTextsTicksAndAlignment) {
  FinestraFinta finta(5);
  finta.spunte.insert({2, FinestraFinta::ColonnaSpuntaData});
  const ListModel modello(finta);
  EXPECT_EQ(modello.index(1, 0).data().toString(), "Oleificio Santa Chiara");
  EXPECT_EQ(modello.index(2, FinestraFinta::ColonnaSpuntaData).data(Qt::CheckStateRole).toInt(), Qt::Checked);
  EXPECT_EQ(modello.index(1, FinestraFinta::ColonnaSpuntaData).data(Qt::CheckStateRole).toInt(), Qt::Unchecked);
  EXPECT_TRUE(modello.index(0, 5).data(Qt::TextAlignmentRole).toInt() & Qt::AlignRight);
  EXPECT_FALSE(modello.index(0, 0).data(Qt::CheckStateRole).isValid());
}

TEST(ListModel, MarksOnlyTheCellsWhoseNewValueDiffersFromThePresentOne) {
  FinestraFinta finta(10);
  const ListModel modello(finta);
  EXPECT_TRUE(modello.index(3, FinestraFinta::ColonnaData).data(ListModel::ChangedRole).toBool());
  EXPECT_FALSE(modello.index(2, FinestraFinta::ColonnaData).data(ListModel::ChangedRole).toBool());
  EXPECT_FALSE(modello.index(3, 2).data(ListModel::ChangedRole).toBool());
}

TEST(ListModel, TellsOfAnErrorWhileReadingInsteadOfThrowingIntoThePainter) {
  FinestraFinta finta(3);
  finta.whileReading = [] { throw std::runtime_error("lettura"); };
  ListModel modello(finta);
  std::exception_ptr errore;
  modello.fault = [&errore](std::exception_ptr e) { errore = std::move(e); };
  EXPECT_FALSE(modello.index(0, 0).data().isValid());
  EXPECT_THROW(std::rethrow_exception(errore), std::runtime_error);
  errore = nullptr;
  EXPECT_EQ(modello.CellText(0, 0), "");
  EXPECT_THROW(std::rethrow_exception(errore), std::runtime_error);
  errore = nullptr;
  EXPECT_FALSE(modello.CellChanged(0, FinestraFinta::ColonnaData));
  EXPECT_THROW(std::rethrow_exception(errore), std::runtime_error);
}

TEST(ListModel, AnswersNothingForARowThatTheScreenNoLongerHas) {
  FinestraFinta finta(10);
  const ListModel modello(finta);
  finta.righe = 4;
  EXPECT_FALSE(modello.index(8, 0).data().isValid());
  EXPECT_TRUE(modello.index(3, 0).data().isValid());
  EXPECT_EQ(modello.CellText(8, 0), "");
  EXPECT_NE(modello.CellText(3, 0), "");
  EXPECT_FALSE(modello.CellTicked(8, FinestraFinta::ColonnaSpuntaData).has_value());
  EXPECT_EQ(modello.CellTicked(3, FinestraFinta::ColonnaSpuntaData), false);
}

TEST(ColumnWidths, StretchesOnlyTextAndBankColumnsAndLosesNoPixel) {
  const FinestraFinta finta(1);
  const ColumnWidths misure(finta.description.columns);
  EXPECT_EQ(misure.Total(), finta.Inizio(12) / TwipsPerPixelX);
  for (const int disponibili : {misure.Total() + 1, misure.Total() + 333, 2 * misure.Total()}) {
    const std::vector<int> pixel = misure.Pixel(disponibili);
    EXPECT_EQ(std::accumulate(pixel.begin(), pixel.end(), 0), disponibili);
    EXPECT_EQ(pixel[5], 90);
    EXPECT_EQ(pixel[6], 25);
    EXPECT_EQ(pixel[8], 0);
  }
  const std::vector<int> stretta = misure.Pixel(100);
  EXPECT_EQ(std::accumulate(stretta.begin(), stretta.end(), 0), misure.Total());
}

TEST(ColumnWidths, BringsAStretchedPositionBackInsideItsNominalColumn) {
  const FinestraFinta finta(1);
  const ColumnWidths misure(finta.description.columns);
  EXPECT_EQ(misure.Twips(1, 0, 160), 3000);
  EXPECT_EQ(misure.Twips(1, 80, 160), 3600);
  EXPECT_EQ(misure.Twips(1, 159, 160), 4192);
  EXPECT_EQ(misure.Twips(1, 500, 160), 4199);
  EXPECT_EQ(misure.Beyond(0), finta.Inizio(12));
  EXPECT_EQ(misure.Beyond(10), finta.Inizio(12) + 150);
}

TEST(ListIcons, EachOfTheSixPicturesHasItsKeyAndItsOwnDrawing) {
  const std::vector<std::pair<ListIcon, std::string_view>> icone{
      {ListIcon::ChkOn, "CHKON"},   {ListIcon::ChkOff, "CHKOFF"}, {ListIcon::OptOn, "OPTON"},
      {ListIcon::OptOff, "OPTOFF"}, {ListIcon::Sorted, "SORTED"}, {ListIcon::Unsorted, "UNSORTED"}};
  std::vector<QImage> viste;
  for (const auto& [icona, chiave] : icone) {
    EXPECT_EQ(Key(icona), chiave);
    const QImage immagine = Icon(icona).pixmap(32, 32).toImage();
    EXPECT_EQ(immagine.width(), 32);
    for (const QImage& altra : viste) {
      EXPECT_NE(immagine, altra) << chiave;
    }
    viste.push_back(immagine);
  }
}

} // namespace
} // namespace lumoscad::qt
