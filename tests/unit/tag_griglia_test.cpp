#include "screens/FormConsegna.hpp"
#include "screens/FormPresunti.hpp"
#include "support/TestBench.hpp"

#include <gmock/gmock.h>

namespace lumoscad {
namespace {

/// A list of presumed documents with one row that was put in by hand: its `Tag` is empty, as while it is loading.
template <class Form> class ListaNonCaricata {
 public:
  explicit ListaNonCaricata(int nuova) : nuova_(nuova) {
    griglia.cmbBanche.voci = griglia.cmbBanche2.voci = {" ", "BANCA ALFA"};
    griglia.righe.Aggiungi({"ROSSI", "AB123/06", "10/03/06", "EUR", "100,00"});
    griglia.Resize();
  }
  /// Plays every step that edits a row: the editors, the tick, the fields at the top.
  void Gioca() {
    griglia.TextScadenza_Change("010406");
    griglia.cmbBanche_Click(0);
    griglia.CambiaCheck("RADIO1");
    griglia.InserisciScadenza(0, 0, 100);
    griglia.TextScad_Change("020406");
    griglia.TogliScadenza();
    griglia.InserisciBanca(0, 0, 100);
    griglia.TogliBanca();
  }
  /// The row's new value and its tick.
  [[nodiscard]] std::string Nuova() const {
    return std::string(griglia.righe.Testo(0, nuova_)) + (griglia.righe.Spuntata(0, 0) ? "|x" : "|");
  }

  test::TestBench banco;
  Form form;
  Griglia& griglia = form.griglia();

 private:
  int nuova_;
};

TEST(ListTag, EmptyLetsNoStepOfThePresumedDocumentsEdit) {
  ListaNonCaricata<FormPresunti> lista(FormPresunti::NuovaBanca);
  lista.griglia.modo = "PRESUNTI";
  lista.Gioca();
  EXPECT_EQ(lista.Nuova(), "|");
  EXPECT_FALSE(lista.griglia.Stato().bank.visible);
  lista.griglia.Tag = "CONSEGNA";
  lista.Gioca();
  EXPECT_EQ(lista.Nuova(), "|");
  lista.griglia.Tag = "PRESUNTI";
  lista.griglia.CambiaCheck("RADIO1");
  EXPECT_EQ(lista.Nuova(), "ANNULLA|x");
}

TEST(ListTag, EmptyLetsNoStepOfTheDeliveriesEdit) {
  ListaNonCaricata<FormConsegna> lista(FormConsegna::NuovaConsegna);
  lista.Gioca();
  EXPECT_EQ(lista.Nuova(), "|");
  EXPECT_FALSE(lista.griglia.Stato().data.visible);
  lista.griglia.Tag = "CONSEGNA";
  lista.griglia.CambiaCheck("RADIO1");
  EXPECT_EQ(lista.Nuova(), "01/04/2006|x");
}

TEST(ListTag, EmptiedLeavesAnEditorAndTheTicksAlone) {
  ListaNonCaricata<FormConsegna> lista(FormConsegna::NuovaConsegna);
  lista.griglia.Tag = "CONSEGNA";
  lista.griglia.TextScadenza_Change("010406");
  lista.griglia.CambiaCheck("RADIO1");
  lista.griglia.InserisciScadenza(0, 0, 100);
  lista.griglia.TextScad_Change("020406");
  lista.griglia.Tag.clear();
  lista.griglia.TogliScadenza();
  lista.griglia.TextScadenza_Click();
  EXPECT_EQ(lista.Nuova(), "01/04/2006|x");
}

TEST(ListTag, GoesWithTheRowsOfAnEarlierShowing) {
  ListaNonCaricata<FormConsegna> lista(FormConsegna::NuovaConsegna);
  lista.griglia.Tag = "CONSEGNA";
  lista.griglia.Azzera();
  EXPECT_EQ(lista.griglia.Tag, "");
}

TEST(ListTag, OfAnotherModeKeepsTheBanksOfTheDocumentsAlone) {
  ListaNonCaricata<FormPresunti> lista(FormPresunti::NuovaBanca);
  lista.griglia.Tag = "PRESUNTI";
  lista.griglia.modo = "CONSEGNA";
  lista.griglia.cmbBanche_Click(0);
  EXPECT_EQ(lista.Nuova(), "|");
  lista.griglia.modo = "PRESUNTI";
  lista.griglia.cmbBanche_Click(0);
  EXPECT_EQ(lista.Nuova(), "ANNULLA|");
}

} // namespace
} // namespace lumoscad
