#include "FinestraFinta.hpp"

#include "platform/qt/IconeElenco.hpp"
#include "platform/qt/MisureColonne.hpp"
#include "platform/qt/ModelloElenco.hpp"

#include <QAbstractItemModelTester>
#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

#include <numeric>

namespace lumoscad::qt {
namespace {

using prova::FinestraFinta;

TEST(ListModel, ObeysTheModelContractThroughReloadsAndChanges) {
  FinestraFinta finta(50);
  ModelloElenco modello(finta);
  const QAbstractItemModelTester controllo(&modello, QAbstractItemModelTester::FailureReportingMode::Fatal);
  EXPECT_EQ(modello.rowCount(), 50);
  EXPECT_EQ(modello.columnCount(), 12);
  finta.righe = 7;
  modello.Ricarica();
  EXPECT_EQ(modello.rowCount(), 7);
  modello.Aggiorna(0, 500);
  finta.righe = 0;
  modello.Ricarica();
  EXPECT_EQ(modello.rowCount(), 0);
}

TEST(ListModel, ShowsTextsTicksAndAlignment) {
  FinestraFinta finta(5);
  finta.spunte.insert({2, FinestraFinta::ColonnaSpuntaData});
  const ModelloElenco modello(finta);
  EXPECT_EQ(modello.index(1, 0).data().toString(), "Oleificio Santa Chiara");
  EXPECT_EQ(modello.index(2, FinestraFinta::ColonnaSpuntaData).data(Qt::CheckStateRole).toInt(), Qt::Checked);
  EXPECT_EQ(modello.index(1, FinestraFinta::ColonnaSpuntaData).data(Qt::CheckStateRole).toInt(), Qt::Unchecked);
  EXPECT_TRUE(modello.index(0, 5).data(Qt::TextAlignmentRole).toInt() & Qt::AlignRight);
  EXPECT_FALSE(modello.index(0, 0).data(Qt::CheckStateRole).isValid());
}

TEST(ListModel, MarksOnlyTheCellsWhoseNewValueDiffersFromThePresentOne) {
  FinestraFinta finta(10);
  const ModelloElenco modello(finta);
  EXPECT_TRUE(modello.index(3, FinestraFinta::ColonnaData).data(ModelloElenco::RuoloVariata).toBool());
  EXPECT_FALSE(modello.index(2, FinestraFinta::ColonnaData).data(ModelloElenco::RuoloVariata).toBool());
  EXPECT_FALSE(modello.index(3, 2).data(ModelloElenco::RuoloVariata).toBool());
}

TEST(ListModel, TellsOfAnErrorWhileReadingInsteadOfThrowingIntoThePainter) {
  FinestraFinta finta(3);
  finta.whileReading = [] { throw std::runtime_error("lettura"); };
  ModelloElenco modello(finta);
  std::exception_ptr errore;
  modello.guasto = [&errore](std::exception_ptr e) { errore = std::move(e); };
  EXPECT_FALSE(modello.index(0, 0).data().isValid());
  EXPECT_THROW(std::rethrow_exception(errore), std::runtime_error);
}

TEST(ListModel, AnswersNothingForARowThatTheScreenNoLongerHas) {
  FinestraFinta finta(10);
  const ModelloElenco modello(finta);
  finta.righe = 4;
  EXPECT_FALSE(modello.index(8, 0).data().isValid());
  EXPECT_TRUE(modello.index(3, 0).data().isValid());
}

TEST(ColumnWidths, StretchesOnlyTextAndBankColumnsAndLosesNoPixel) {
  const FinestraFinta finta(1);
  const MisureColonne misure(finta.description.colonne);
  EXPECT_EQ(misure.Totale(), finta.Inizio(12) / TwipsPerPixelX);
  for (const int disponibili : {misure.Totale() + 1, misure.Totale() + 333, 2 * misure.Totale()}) {
    const std::vector<int> pixel = misure.Pixel(disponibili);
    EXPECT_EQ(std::accumulate(pixel.begin(), pixel.end(), 0), disponibili);
    EXPECT_EQ(pixel[5], 90);
    EXPECT_EQ(pixel[6], 25);
    EXPECT_EQ(pixel[8], 0);
  }
  const std::vector<int> stretta = misure.Pixel(100);
  EXPECT_EQ(std::accumulate(stretta.begin(), stretta.end(), 0), misure.Totale());
}

TEST(ColumnWidths, BringsAStretchedPositionBackInsideItsNominalColumn) {
  const FinestraFinta finta(1);
  const MisureColonne misure(finta.description.colonne);
  EXPECT_EQ(misure.Twips(1, 0, 160), 3000);
  EXPECT_EQ(misure.Twips(1, 80, 160), 3600);
  EXPECT_EQ(misure.Twips(1, 159, 160), 4192);
  EXPECT_EQ(misure.Twips(1, 500, 160), 4199);
  EXPECT_EQ(misure.Oltre(0), finta.Inizio(12));
  EXPECT_EQ(misure.Oltre(10), finta.Inizio(12) + 150);
}

TEST(ListIcons, EachOfTheSixPicturesHasItsKeyAndItsOwnDrawing) {
  const std::vector<std::pair<IconaElenco, std::string_view>> icone{
      {IconaElenco::ChkOn, "CHKON"},   {IconaElenco::ChkOff, "CHKOFF"}, {IconaElenco::OptOn, "OPTON"},
      {IconaElenco::OptOff, "OPTOFF"}, {IconaElenco::Sorted, "SORTED"}, {IconaElenco::Unsorted, "UNSORTED"}};
  std::vector<QImage> viste;
  for (const auto& [icona, chiave] : icone) {
    EXPECT_EQ(Chiave(icona), chiave);
    const QImage immagine = Icona(icona).pixmap(32, 32).toImage();
    EXPECT_EQ(immagine.width(), 32);
    for (const QImage& altra : viste) {
      EXPECT_NE(immagine, altra) << chiave;
    }
    viste.push_back(immagine);
  }
}

} // namespace
} // namespace lumoscad::qt
