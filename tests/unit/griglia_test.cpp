#include "SchermataDiProva.hpp"

namespace lumoscad {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int TestataConto = 1;
constexpr int TestataPartita = 2;
constexpr int TestataScadOrig = 3;
constexpr int TestataImporto = 4;
constexpr int TestataScadenza = 5;
constexpr int TestataBanca = 6;

class GridLayout : public test::GrigliaDiProva {};
class GridSort : public test::GrigliaDiProva {};
class GridClick : public test::GrigliaDiProva {};
class GridWindow : public test::GrigliaDiProva {};

TEST_F(GridLayout, MakesTheListAsWideAsItsColumnsAndFifty) {
  AggiungiMolte(1);
  EXPECT_EQ(griglia.Stato().listWidth, 17340 + 50);
  EXPECT_EQ(griglia.Stato().pictureWidth, 17340 + 100);
}

TEST_F(GridLayout, MakesTheListAsHighAsItsRowsBelowTwenty) {
  AggiungiMolte(19);
  EXPECT_EQ(griglia.Stato().listHeight, 19 * 240);
}

TEST_F(GridLayout, NeverMakesTheListHigherThanTwentyRows) {
  AggiungiMolte(20);
  EXPECT_EQ(griglia.Stato().listHeight, 4800);
  AggiungiMolte(1);
  EXPECT_EQ(griglia.Stato().listHeight, 4800);
}

TEST_F(GridLayout, MakesAnEmptyListFlat) {
  griglia.Resize();
  EXPECT_EQ(griglia.Stato().listHeight, 0);
  EXPECT_EQ(griglia.Stato().selected, -1);
}

TEST_F(GridLayout, PlacesEachHeadingBehindTheOneBefore) {
  AggiungiMolte(1);
  std::vector<std::string> testi;
  int fine = 0;
  banco.desktop.scripts.emplace_back([&](ListWindow& finestra) {
    for (const ListHeading& testata : finestra.Description().headings) {
      testi.push_back(testata.text);
      EXPECT_EQ(testata.left, fine);
      EXPECT_EQ(testata.width, finestra.Description().columns[static_cast<std::size_t>(testata.first)].width);
      fine = testata.left + testata.width;
    }
  });
  griglia.Mostra();
  EXPECT_THAT(testi, ElementsAre("Conto", "Partita", "Scadenza", "Scad Orig.", "Banca", "Importo"));
  EXPECT_EQ(fine, 12300);
}

TEST_F(GridLayout, FindsTheColumnUnderAPosition) {
  EXPECT_EQ(griglia.TrovaCoordinate(0), Schermata::Conto);
  EXPECT_EQ(griglia.TrovaCoordinate(3449), Schermata::Conto);
  EXPECT_EQ(griglia.TrovaCoordinate(3450), Schermata::Partita);
  EXPECT_EQ(griglia.TrovaCoordinate(12300), Schermata::Radio1);
  EXPECT_EQ(griglia.TrovaCoordinate(12720), Schermata::NuovaScadenza);
}

TEST_F(GridLayout, NeverFindsAHiddenColumn) {
  EXPECT_EQ(griglia.TrovaCoordinate(14219), Schermata::NuovaScadenza);
  EXPECT_EQ(griglia.TrovaCoordinate(14220), Schermata::Radio2);
  EXPECT_EQ(griglia.TrovaCoordinate(17339), Schermata::NuovaBanca);
}

TEST_F(GridLayout, FindsOnePastTheLastColumnRightOfThemAll) {
  EXPECT_EQ(griglia.TrovaCoordinate(17340), Schermata::Colonne);
  EXPECT_EQ(griglia.TrovaCoordinate(99999), Schermata::Colonne);
}

TEST_F(GridLayout, JoinsTheFirstFiveTextsToTheRowKey) {
  const auto riga = Aggiungi("ROSSI", "31/03/2006", "BANCA ALFA");
  EXPECT_EQ(griglia.ChiaveRiga(riga), "ROSSI2006 131/03/200631/01/2006BANCA ALFA");
}

TEST_F(GridLayout, FindsABankByItsExactText) {
  const std::vector<std::string> voci = {" ", "BANCA ALFA", "BANCA BETA", "BANCA ALFA"};
  EXPECT_EQ(Griglia::TrovaRigaBanca(voci, "BANCA BETA"), 2);
  EXPECT_EQ(Griglia::TrovaRigaBanca(voci, "BANCA ALFA"), 1);
}

TEST_F(GridLayout, FindsTheBlankEntryForATextThatMatchesNone) {
  const std::vector<std::string> voci = {" ", "BANCA ALFA"};
  EXPECT_EQ(Griglia::TrovaRigaBanca(voci, "banca alfa"), 0);
  EXPECT_EQ(Griglia::TrovaRigaBanca(voci, "BANCA ALFA "), 0);
  EXPECT_EQ(Griglia::TrovaRigaBanca(voci, ""), 0);
}

TEST_F(GridSort, StartsByTheFirstColumnAscending) {
  Aggiungi("VERDI");
  Aggiungi("BIANCHI");
  griglia.Resize();
  EXPECT_THAT(InOrdine(), ElementsAre("BIANCHI", "VERDI"));
  EXPECT_EQ(griglia.Stato().sortedHeading, TestataConto);
  EXPECT_TRUE(griglia.Stato().ascending);
}

TEST_F(GridSort, ByDueDateFollowsTime) {
  Aggiungi("A", "02/04/2006");
  Aggiungi("B", "31/03/2006");
  Aggiungi("C", "15/12/2005");
  griglia.Resize();
  griglia.TLwTestata_Click(TestataScadenza);
  EXPECT_THAT(InOrdine(Schermata::Scadenza), ElementsAre("15/12/2005", "31/03/2006", "02/04/2006"));
  EXPECT_EQ(griglia.Stato().sortedHeading, TestataScadenza);
}

TEST_F(GridSort, ByBankFollowsTheNewBank) {
  const auto alfa = Aggiungi("A", "31/03/2006", "ALFA");
  Aggiungi("B", "31/03/2006", "BETA");
  griglia.Resize();
  griglia.righe.ImpostaTesto(alfa, Schermata::NuovaBanca, "ZETA");
  griglia.TLwTestata_Click(TestataBanca);
  EXPECT_THAT(InOrdine(), ElementsAre("B", "A"));
}

TEST_F(GridSort, OfTheSameHeadingTwiceReverses) {
  Aggiungi("A");
  Aggiungi("B");
  griglia.Resize();
  griglia.TLwTestata_Click(TestataScadenza);
  griglia.TLwTestata_Click(TestataScadenza);
  EXPECT_FALSE(griglia.Stato().ascending);
  griglia.TLwTestata_Click(TestataScadenza);
  EXPECT_TRUE(griglia.Stato().ascending);
}

TEST_F(GridSort, OfTheFirstHeadingReversesAtOnceBecauseTheListStartsSortedByIt) {
  Aggiungi("A");
  Aggiungi("B");
  griglia.Resize();
  griglia.TLwTestata_Click(TestataConto);
  EXPECT_THAT(InOrdine(), ElementsAre("B", "A"));
  EXPECT_FALSE(griglia.Stato().ascending);
}

TEST_F(GridSort, OfAnotherHeadingStartsAscendingAgain) {
  Aggiungi("A");
  griglia.Resize();
  griglia.TLwTestata_Click(TestataConto);
  griglia.TLwTestata_Click(TestataPartita);
  EXPECT_TRUE(griglia.Stato().ascending);
  EXPECT_EQ(griglia.Stato().sortedHeading, TestataPartita);
}

TEST_F(GridSort, IgnoresTheHeadingsThatDoNotSort) {
  Aggiungi("A");
  Aggiungi("B");
  griglia.Resize();
  griglia.TLwTestata_Click(TestataConto);
  const auto prima = griglia.Stato().order;
  for (const int testata : {TestataScadOrig, TestataImporto, 0, 7}) {
    griglia.TLwTestata_Click(testata);
    EXPECT_EQ(griglia.Stato().order, prima);
    EXPECT_EQ(griglia.Stato().sortedHeading, TestataConto);
    EXPECT_THAT(InOrdine(), ElementsAre("B", "A"));
  }
}

TEST_F(GridSort, KeepsTheSelectedRowSelected) {
  const auto riga = Aggiungi("A");
  Aggiungi("B");
  griglia.Resize();
  griglia.Seleziona(0);
  griglia.TLwTestata_Click(TestataConto);
  EXPECT_EQ(griglia.Stato().selected, 1);
  EXPECT_EQ(griglia.RigaSelezionata(), riga);
}

TEST_F(GridClick, WithoutASelectedRowDoesNothing) {
  AggiungiMolte(2);
  griglia.Seleziona(-1);
  const auto prima = griglia.Stato().content;
  for (const int colonna : {Schermata::Radio2, Schermata::NuovaScadenza, Schermata::NuovaBanca}) {
    griglia.LVScadenze_MouseDown(Mezzo(colonna), 5);
    griglia.LVScadenze_Click(0);
  }
  EXPECT_FALSE(griglia.Stato().data.visible);
  EXPECT_FALSE(griglia.Stato().bank.visible);
  EXPECT_EQ(griglia.Stato().content, prima);
}

TEST_F(GridClick, SelectsNothingForAPlaceOutsideTheList) {
  AggiungiMolte(2);
  griglia.Seleziona(2);
  EXPECT_EQ(griglia.RigaSelezionata(), std::nullopt);
}

TEST_F(GridClick, ThatComesWithACheckIsSkippedOnce) {
  AggiungiMolte(2);
  griglia.LVScadenze_ItemCheck(1);
  EXPECT_EQ(griglia.Stato().selected, 1);
  griglia.LVScadenze_MouseDown(Mezzo(Schermata::NuovaScadenza), 5);
  griglia.LVScadenze_Click(240);
  EXPECT_FALSE(griglia.Stato().data.visible);
  griglia.LVScadenze_Click(240);
  EXPECT_TRUE(griglia.Stato().data.visible);
}

TEST_F(GridClick, OnAPlainColumnClosesBothEditorsAndUncoversTheScrollBars) {
  AggiungiMolte(21);
  for (const int colonna : {Schermata::Conto, Schermata::Importo}) {
    Clic(0, Schermata::NuovaScadenza);
    Clic(0, colonna);
    EXPECT_FALSE(griglia.Stato().data.visible);
    EXPECT_FALSE(griglia.Stato().scrollBarsHidden);
    Clic(0, Schermata::NuovaBanca);
    Clic(0, colonna);
    EXPECT_FALSE(griglia.Stato().bank.visible);
    EXPECT_FALSE(griglia.Stato().scrollBarsHidden);
  }
}

TEST_F(GridClick, RightOfTheLastColumnClosesTheEditors) {
  AggiungiMolte(21);
  ScriviData(0, "010406");
  griglia.LVScadenze_MouseDown(20000, 5);
  griglia.LVScadenze_Click(0);
  EXPECT_FALSE(griglia.Stato().data.visible);
  EXPECT_FALSE(griglia.Stato().scrollBarsHidden);
  EXPECT_EQ(NuovaScadenza(0), "01/04/2006");
}

TEST_F(GridClick, ElsewhereOnTheWindowCommitsWhatWasTyped) {
  AggiungiMolte(21);
  ScriviData(0, "010406");
  griglia.Form_Click();
  EXPECT_FALSE(griglia.Stato().data.visible);
  EXPECT_FALSE(griglia.Stato().scrollBarsHidden);
  EXPECT_EQ(NuovaScadenza(0), "01/04/2006");
}

TEST_F(GridLayout, WithoutSomeColumnsIsNarrowerAndFindsTheOthersWhereTheyAre) {
  AggiungiMolte(1);
  schermata.ResizeScadBanchePresunti();
  EXPECT_EQ(griglia.Stato().listWidth, 17340 - 420 - 1500 + 50);
  EXPECT_EQ(griglia.Stato().pictureWidth, 17340 - 420 - 1500 + 100);
  EXPECT_EQ(griglia.TrovaCoordinate(12300), Schermata::Radio2);
  schermata.ResizeScadBanche();
  EXPECT_EQ(griglia.Stato().listWidth, 17340 + 50);
  EXPECT_EQ(griglia.TrovaCoordinate(12300), Schermata::Radio1);
}

TEST_F(GridWindow, TellsTheWindowToOpenADropDownWhileItShows) {
  std::vector<std::string> detti;
  banco.desktop.scripts.emplace_back([&](ListWindow& finestra) {
    finestra.SetDropDown([&](std::string_view combo, bool aperta) {
      detti.push_back(std::string(combo) + (aperta ? " true" : " false"));
    });
    griglia.ShowComboDropdown("cmbBanche2", true);
    griglia.ShowComboDropdown("cmbBanche2", false);
    finestra.Form_QueryUnload();
  });
  AggiungiMolte(1);
  griglia.Mostra();
  griglia.ShowComboDropdown("cmbBanche2", true);
  EXPECT_THAT(detti, ElementsAre("cmbBanche2 true", "cmbBanche2 false"));
}

TEST_F(GridWindow, KnowsItsMode) {
  EXPECT_EQ(schermata.griglia().modo, "DEBITI/CREDITI");
}

TEST_F(GridWindow, InThePresumedModeAChoiceAtTheTopIsGivenToTheSelectedRowAtOnceWithoutATick) {
  schermata.griglia().modo = "PRESUNTI";
  const auto prima = Aggiungi("ROSSI", "31/03/2006", "BANCA ALFA");
  const auto seconda = Aggiungi("VERDI", "31/03/2006", "BANCA ALFA");
  griglia.Resize();
  griglia.Seleziona(1);
  griglia.cmbBanche_Click(0);
  EXPECT_EQ(griglia.righe.Tag(seconda, Schermata::NuovaBanca), "#null#");
  EXPECT_EQ(griglia.righe.Testo(seconda, Schermata::NuovaBanca), "ANNULLA");
  EXPECT_FALSE(griglia.righe.Spuntata(seconda, 1));
  EXPECT_EQ(griglia.righe.Tag(prima, Schermata::NuovaBanca), "");
}

TEST_F(GridWindow, IsClosedWithItsReasonByTheCloseBox) {
  AggiungiMolte(1);
  griglia.Form_QueryUnload();
  EXPECT_EQ(griglia.MotivoChiusura(), "closed");
  EXPECT_TRUE(griglia.Stato().unloaded);
}

TEST_F(GridWindow, IsClosedWithItsReasonByAnnulla) {
  AggiungiMolte(1);
  griglia.PictureAnnulla_Click();
  EXPECT_EQ(griglia.MotivoChiusura(), "closed");
  EXPECT_TRUE(griglia.Stato().unloaded);
}

TEST_F(GridWindow, IsUnloadedByConfermaWithoutAReason) {
  AggiungiMolte(1);
  griglia.PictureOk_Click();
  EXPECT_EQ(griglia.MotivoChiusura(), "");
  EXPECT_TRUE(griglia.Stato().unloaded);
}

TEST_F(GridWindow, CommitsTheOpenEditorOnConferma) {
  AggiungiMolte(21);
  ScriviData(3, "010406");
  griglia.PictureOk_Click();
  EXPECT_FALSE(griglia.Stato().data.visible);
  EXPECT_FALSE(griglia.Stato().scrollBarsHidden);
  EXPECT_EQ(NuovaScadenza(3), "01/04/2006");
}

TEST_F(GridWindow, ClosesTheBankEditorOnConferma) {
  griglia.cmbBanche2.voci = {" "};
  const auto riga = Aggiungi("ROSSI", "31/03/2006", "BANCA ALFA");
  griglia.Resize();
  Clic(riga, Schermata::NuovaBanca);
  griglia.PictureOk_Click();
  EXPECT_FALSE(griglia.Stato().bank.visible);
  EXPECT_EQ(griglia.righe.Testo(riga, Schermata::NuovaBanca), "ANNULLA");
}

TEST_F(GridWindow, StartsEveryShowingAfresh) {
  AggiungiMolte(21);
  griglia.TextScadenza_Change("010406");
  Clic(2, Schermata::NuovaScadenza);
  griglia.TLwTestata_Click(TestataBanca);
  griglia.Form_QueryUnload();
  griglia.Azzera();
  EXPECT_EQ(griglia.righe.Quante(), 0U);
  EXPECT_EQ(griglia.MotivoChiusura(), "");
  EXPECT_EQ(griglia.Stato().dueDateText, "");
  EXPECT_EQ(griglia.Stato().bankIndex, 0);
  EXPECT_FALSE(griglia.Stato().data.visible);
  EXPECT_FALSE(griglia.Stato().scrollBarsHidden);
  EXPECT_FALSE(griglia.Stato().unloaded);
  EXPECT_THAT(InOrdine(), IsEmpty());
}

TEST_F(GridWindow, TakesNoCheckOfAnEarlierShowingForOneOfItsOwn) {
  AggiungiMolte(1);
  griglia.LVScadenze_ItemCheck(0);
  griglia.Azzera();
  AggiungiMolte(1);
  Clic(0, Schermata::NuovaScadenza);
  EXPECT_TRUE(griglia.Stato().data.visible);
}

TEST_F(GridWindow, DescribesItsColumnsAndHeadings) {
  using Genere = ListColumn::Kind;
  AggiungiMolte(1);
  banco.desktop.scripts.emplace_back([](ListWindow& finestra) {
    EXPECT_EQ(finestra.Description().name, "frmLumoScadenzeBanche");
    EXPECT_EQ(finestra.Description().listName, "LVScadenzeBanche");
    EXPECT_EQ(finestra.Description().fontName, "Verdana");
    EXPECT_EQ(finestra.Description().rowsWithoutScrolling, 20);
    std::vector<std::string> colonne;
    std::vector<Genere> generi;
    for (const ListColumn& colonna : finestra.Description().columns) {
      colonne.push_back(colonna.key + "|" + colonna.headingText);
      generi.push_back(colonna.kind);
    }
    EXPECT_THAT(colonne, ElementsAre("KConto|Conto", "KPartita|Partita", "KScadenza|Scadenza",
                                     "KScadenzaOrig|Scad. orig.", "KBanca|Banca", "KImporto|Importo", "KRadio1|",
                                     "KNuovaScadenza|Nuova Scad", "KNumeroRata1|NumeroRata", "KRadio2|",
                                     "KNuovaBanca|NuovaBanca", "KScadenzaOrdinaData|ScadenzaOrdinaData"));
    EXPECT_THAT(generi, ElementsAre(Genere::Text, Genere::Text, Genere::Text, Genere::Text, Genere::Text,
                                    Genere::Amount, Genere::Tick, Genere::DateEditor, Genere::Text, Genere::Tick,
                                    Genere::BankEditor, Genere::Text));
    EXPECT_EQ(finestra.Description().columns[Schermata::NuovaScadenza].present, Schermata::Scadenza);
    EXPECT_EQ(finestra.Description().columns[Schermata::NuovaBanca].present, Schermata::Banca);
    std::vector<int> indici;
    std::vector<bool> ordinano;
    for (const ListHeading& testata : finestra.Description().headings) {
      indici.push_back(testata.index);
      ordinano.push_back(testata.sorts);
    }
    EXPECT_THAT(indici, ElementsAre(TestataConto, TestataPartita, TestataScadenza, TestataScadOrig, TestataBanca,
                                    TestataImporto));
    EXPECT_THAT(ordinano, ElementsAre(true, true, true, false, true, false));
  });
  griglia.Mostra();
}

TEST_F(GridWindow, AsksOnceMoreForTheRowsWheneverTheirOrderChanged) {
  AggiungiMolte(2);
  const auto prima = griglia.Stato().order;
  griglia.TLwTestata_Click(TestataPartita);
  EXPECT_GT(griglia.Stato().order, prima);
}

} // namespace
} // namespace lumoscad
