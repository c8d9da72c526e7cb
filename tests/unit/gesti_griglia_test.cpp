// Many rows at once, without a window.

#include "SchermataDiProva.hpp"
#include "screens/FormConsegna.hpp"
#include "screens/FormPresunti.hpp"

namespace lumoscad {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

class GridSelection : public test::GrigliaDiProva {
 protected:
  [[nodiscard]] std::vector<std::size_t> Scelte() const { return griglia.Selezione().InVista(); }
  void Premi(std::size_t posto, int colonna, HeldKeys tasti = {}) {
    const auto x = Mezzo(colonna);
    const RowPress esito = griglia.Gestures()->Premi(posto, x, tasti);
    if (esito == RowPress::Plain) {
      griglia.Seleziona(static_cast<std::ptrdiff_t>(posto));
    }
    griglia.LVScadenze_MouseDown(x, 5);
    if (esito != RowPress::Done) {
      griglia.LVScadenze_Click(240);
    }
  }
  /// Selects the places from `primo` to `ultimo`; the last is the current one.
  void Scegli(std::size_t primo, std::size_t ultimo) {
    griglia.Seleziona(static_cast<std::ptrdiff_t>(primo));
    griglia.Gestures()->Vai(ultimo, {true, false});
  }
  [[nodiscard]] std::string NuovaBanca(std::size_t riga) const {
    return std::string(griglia.righe.Testo(riga, Schermata::NuovaBanca));
  }

  static constexpr HeldKeys Shift{true, false};
  static constexpr HeldKeys Ctrl{false, true};
};

class GridGestures : public GridSelection {
 protected:
  GridGestures() {
    griglia.cmbBanche = griglia.cmbBanche2 = {{" ", "BANCA ALFA", "BANCA BETA"}, {"B01", "B02"}};
    AggiungiMolte(10);
  }
};

TEST_F(GridSelection, IsTheCurrentRowUntilMoreAreAdded) {
  AggiungiMolte(5);
  EXPECT_THAT(Scelte(), ElementsAre(0));
  griglia.Seleziona(3);
  EXPECT_THAT(Scelte(), ElementsAre(3));
  griglia.Seleziona(-1);
  EXPECT_THAT(Scelte(), IsEmpty());
}

TEST_F(GridSelection, ExtendsFromTheAnchorUpAndDown) {
  AggiungiMolte(9);
  griglia.Seleziona(4);
  griglia.Gestures()->Vai(6, Shift);
  EXPECT_THAT(Scelte(), ElementsAre(4, 5, 6));
  griglia.Gestures()->Vai(2, Shift);
  EXPECT_THAT(Scelte(), ElementsAre(2, 3, 4));
  EXPECT_EQ(griglia.Stato().selected, 2);
}

TEST_F(GridSelection, StaysWithItsRowsWhenTheListIsSorted) {
  Aggiungi("B");
  Aggiungi("C");
  Aggiungi("A");
  griglia.Resize();
  Scegli(0, 1);
  EXPECT_THAT(Scelte(), ElementsAre(2, 0));
  griglia.TLwTestata_Click(1); // descending
  EXPECT_THAT(Scelte(), ElementsAre(0, 2));
  EXPECT_THAT(griglia.Gestures()->Scelte(), ElementsAre(Pair(1U, 2U)));
}

TEST_F(GridSelection, GivesStretchesOfPlaces) {
  AggiungiMolte(100);
  Scegli(3, 5);
  Premi(8, Schermata::Conto, Ctrl);
  EXPECT_THAT(griglia.Gestures()->Scelte(), ElementsAre(Pair(3U, 5U), Pair(8U, 8U)));
  griglia.Gestures()->ScegliVisibili();
  EXPECT_THAT(griglia.Gestures()->Scelte(), ElementsAre(Pair(0U, 99U)));
  EXPECT_EQ(griglia.Gestures()->QuanteScelte(), 100U);
}

TEST_F(GridSelection, CountsEachChangeOfItself) {
  AggiungiMolte(3);
  const auto prima = griglia.Stato().selection;
  griglia.Seleziona(0);
  EXPECT_EQ(griglia.Stato().selection, prima);
  griglia.Seleziona(1);
  EXPECT_GT(griglia.Stato().selection, prima);
}

TEST_F(GridGestures, TickEverySelectedRowThatIsNotTickedYet) {
  griglia.TextScadenza_Change("200127");
  Clic(2, Schermata::Radio1);
  Scegli(1, 4);
  Premi(3, Schermata::Radio1);
  for (const std::size_t riga : {1U, 2U, 3U, 4U}) {
    EXPECT_TRUE(griglia.righe.Spuntata(riga, 0));
    EXPECT_EQ(NuovaScadenza(riga), "20/01/2027");
  }
  EXPECT_FALSE(griglia.righe.Spuntata(5, 0));
  EXPECT_EQ(griglia.Stato().notice, "3 rate: scadenza 20/01/2027; 1 già così");
}

TEST_F(GridGestures, TickNothingWithoutADateAtTheTopAndSaySo) {
  Scegli(1, 4);
  Premi(3, Schermata::Radio1);
  EXPECT_FALSE(griglia.righe.Spuntata(3, 0));
  EXPECT_EQ(griglia.Stato().notice, "Nessuna spunta: scrivi prima la data in alto");
}

TEST_F(GridGestures, CheckTheDateAtTheTopOnceAndLeaveARefusedOneAsTyped) {
  griglia.TextScadenza_Change("310227");
  Scegli(1, 4);
  Premi(3, Schermata::Radio1);
  EXPECT_EQ(banco.desktop.box.size(), 1U);
  EXPECT_FALSE(griglia.righe.Spuntata(1, 0));
  EXPECT_EQ(griglia.Stato().dueDateText, "310227");
}

TEST_F(GridGestures, FillEverySelectedRowWithADate) {
  Scegli(1, 3);
  Premi(2, Schermata::NuovaScadenza);
  griglia.TextScad_Change("200127");
  griglia.TextScad_KeyPress(13);
  EXPECT_EQ(NuovaScadenza(1), "20/01/2027");
  EXPECT_EQ(NuovaScadenza(2), "20/01/2027");
  EXPECT_EQ(NuovaScadenza(3), "20/01/2027");
  EXPECT_EQ(NuovaScadenza(4), "31/03/2006");
  EXPECT_THAT(Scelte(), ElementsAre(1, 2, 3));
  EXPECT_EQ(griglia.Stato().notice, "3 rate: scadenza 20/01/2027");
}

TEST_F(GridGestures, CountAShortFormOfADateFromEachRowsOwn) {
  const auto altra = Aggiungi("CLIENTE 0999", "15/04/2006");
  griglia.Resize();
  Scegli(0, 1);
  Premi(0, Schermata::NuovaScadenza);
  griglia.TextScad_Change("+30");
  griglia.TextScad_KeyPress(13);
  EXPECT_EQ(NuovaScadenza(altra), "15/05/2006");
  EXPECT_EQ(NuovaScadenza(0), "30/04/2006");
  EXPECT_EQ(griglia.Stato().notice, "2 rate: scadenza +30");
}

TEST_F(GridGestures, GiveBackThePresentDateWithAnEmptyOne) {
  ScriviData(2, "200127");
  griglia.TextScad_KeyPress(13);
  Scegli(1, 3);
  Premi(3, Schermata::NuovaScadenza);
  griglia.TextScad_Change("");
  griglia.TextScad_KeyPress(13);
  EXPECT_EQ(NuovaScadenza(2), "31/03/2006");
  EXPECT_EQ(griglia.Stato().notice, "1 rata: scadenza come prima; 2 già così");
}

TEST_F(GridGestures, WriteNothingFromAnEditorThatWasOnlyOpenedAndLeft) {
  ScriviData(2, "200127");
  griglia.TextScad_KeyPress(13);
  Scegli(1, 3);
  Premi(2, Schermata::NuovaScadenza);
  griglia.Form_Click();
  EXPECT_EQ(NuovaScadenza(1), "31/03/2006");
}

TEST_F(GridGestures, WriteIntoTheRowsThatWereSelectedWhenTheEditorOpened) {
  Scegli(1, 3);
  Premi(2, Schermata::NuovaScadenza);
  griglia.TextScad_Change("200127");
  Premi(7, Schermata::Conto); // selects row 7 before the editor closes
  EXPECT_EQ(NuovaScadenza(1), "20/01/2027");
  EXPECT_EQ(NuovaScadenza(7), "31/03/2006");
}

TEST_F(GridGestures, FillEverySelectedRowWithABankAndTickIt) {
  Scegli(1, 3);
  Premi(2, Schermata::NuovaBanca);
  griglia.cmbBanche2_Click(2);
  griglia.cmbBanche2_LostFocus();
  for (const std::size_t riga : {1U, 2U, 3U}) {
    EXPECT_EQ(NuovaBanca(riga), "BANCA BETA");
    EXPECT_EQ(griglia.righe.Tag(riga, Schermata::NuovaBanca), "B02");
    EXPECT_TRUE(griglia.righe.Spuntata(riga, 1));
  }
  EXPECT_EQ(griglia.Stato().notice, "3 rate: banca BANCA BETA");
  EXPECT_THAT(griglia.ElencoVariate(), ElementsAre(1, 2, 3));
}

TEST_F(GridGestures, AbandonedEditorOfManyRowsLeavesNoneBehind) {
  Scegli(1, 3);
  Premi(2, Schermata::NuovaScadenza);
  griglia.TextScad_Change("200127");
  griglia.AbbandonaEditor();
  ScriviData(5, "200127");
  griglia.TextScad_KeyPress(13);
  EXPECT_EQ(NuovaScadenza(1), "31/03/2006");
  EXPECT_EQ(NuovaScadenza(5), "20/01/2027");
}

/// The presumed documents, two rows each, in their screen.
class GridGroups : public testing::Test {
 protected:
  using Schermata = FormPresunti;

  GridGroups() {
    griglia.modo = "PRESUNTI";
    griglia.Tag = "PRESUNTI";
    griglia.cmbBanche = griglia.cmbBanche2 = {{" ", "BANCA ALFA", "BANCA BETA"}, {"B01", "B02"}};
    for (const char* documento : {"AB1/06", "AB2/06", "AB3/06"}) {
      for (const char* divisa : {"EUR", "USD"}) {
        griglia.righe.Aggiungi({"ROSSI", documento, "31/03/06", divisa, "100,00", "", "", "", "2006/03/31"});
      }
    }
    griglia.Resize();
  }

  test::TestBench banco;
  FormPresunti schermata;
  Griglia& griglia = schermata.griglia();
};

TEST_F(GridGroups, OfTheSelectedDocumentsKeepOneBankEach) {
  griglia.Seleziona(1);
  griglia.Gestures()->Vai(2, {true, false});
  griglia.cmbBanche_Click(2);
  std::vector<std::string> banche;
  for (std::size_t riga = 0; riga < 6; ++riga) {
    banche.emplace_back(griglia.righe.Testo(riga, Schermata::NuovaBanca));
  }
  EXPECT_THAT(banche, ElementsAre("BANCA BETA", "BANCA BETA", "BANCA BETA", "BANCA BETA", "", ""));
  EXPECT_EQ(griglia.Stato().notice, "4 righe: banca BANCA BETA");
}

} // namespace
} // namespace lumoscad
