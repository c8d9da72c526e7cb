#include "SchermataDiProva.hpp"

namespace lumoscad {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int Tab = 9;
constexpr int Invio = 13;
constexpr int PrimaTestata = 1;

class DateEditor : public test::GrigliaDiProva {};
class BankEditor : public test::GrigliaDiProva {};
class Ticks : public test::GrigliaDiProva {};

TEST_F(DateEditor, OpensOverTheCellWithTheNewDate) {
  const auto riga = Aggiungi("ROSSI");
  griglia.Resize();
  griglia.righe.ImpostaTesto(riga, Schermata::NuovaScadenza, "01/04/2006");
  Clic(riga, Schermata::NuovaScadenza);
  const CellEditor& editor = griglia.Stato().data;
  EXPECT_TRUE(editor.visible);
  EXPECT_EQ(editor.text, "01/04/2006");
  EXPECT_EQ(editor.top, 30 + 30 + 240);
  EXPECT_EQ(editor.left, 30 + 30 + 12720);
  EXPECT_EQ(editor.width, 1500 - 60);
}

TEST_F(DateEditor, WritesTheNormalisedDateOnEnterIntoThatRowOnly) {
  AggiungiMolte(3);
  ScriviData(1, "010406");
  griglia.TextScad_KeyPress(Invio);
  EXPECT_FALSE(griglia.Stato().data.visible);
  EXPECT_THAT(InOrdine(Schermata::NuovaScadenza), ElementsAre("31/03/2006", "01/04/2006", "31/03/2006"));
  EXPECT_THAT(InOrdine(Schermata::Scadenza), ElementsAre("31/03/2006", "31/03/2006", "31/03/2006"));
}

TEST_F(DateEditor, WritesOnTab) {
  AggiungiMolte(1);
  ScriviData(0, " 01042006 ");
  griglia.TextScad_KeyPress(Tab);
  EXPECT_FALSE(griglia.Stato().data.visible);
  EXPECT_EQ(NuovaScadenza(0), "01/04/2006");
}

TEST_F(DateEditor, StaysOpenOnEveryOtherKey) {
  AggiungiMolte(1);
  ScriviData(0, "0104");
  for (const int tasto : {48, 8, 10, 27, 32}) {
    griglia.TextScad_KeyPress(tasto);
    EXPECT_TRUE(griglia.Stato().data.visible);
  }
  EXPECT_EQ(NuovaScadenza(0), "31/03/2006");
}

TEST_F(DateEditor, FindsItsRowAgainAfterTheListWasSorted) {
  AggiungiMolte(3);
  ScriviData(0, "010406");
  griglia.TLwTestata_Click(PrimaTestata);
  griglia.TextScad_KeyPress(Invio);
  EXPECT_THAT(InOrdine(), ElementsAre("CLIENTE 1002", "CLIENTE 1001", "CLIENTE 1000"));
  EXPECT_THAT(InOrdine(Schermata::NuovaScadenza), ElementsAre("31/03/2006", "31/03/2006", "01/04/2006"));
}

TEST_F(DateEditor, StaysWithItsRowWhileAnotherIsSelectedAndTheListIsSorted) {
  AggiungiMolte(3);
  ScriviData(0, "010406");
  EXPECT_EQ(griglia.Stato().data.place, 0);
  Clic(2, Schermata::Radio2);
  EXPECT_EQ(griglia.Stato().data.place, 0);
  griglia.TLwTestata_Click(PrimaTestata);
  EXPECT_EQ(griglia.Stato().data.place, 2);
  EXPECT_EQ(griglia.Stato().selected, 0);
  griglia.PictureOk_Click();
  EXPECT_EQ(NuovaScadenza(0), "01/04/2006");
}

TEST_F(DateEditor, LiesOverNoRowOnceItsOwnIsGone) {
  const auto riga = Aggiungi("ROSSI");
  griglia.Resize();
  ScriviData(riga, "010406");
  griglia.righe.ImpostaTesto(riga, Schermata::Partita, "altra");
  griglia.TLwTestata_Click(PrimaTestata);
  EXPECT_EQ(griglia.Stato().data.place, -1);
}

TEST_F(DateEditor, WritesIntoItsOwnRowWhenAnotherHasTheSameKey) {
  const auto prima = Aggiungi("ROSSI");
  const auto seconda = Aggiungi("ROSSI");
  griglia.Resize();
  ASSERT_EQ(griglia.ChiaveRiga(prima), griglia.ChiaveRiga(seconda));
  ScriviData(seconda, "010406");
  griglia.TextScad_KeyPress(Invio);
  EXPECT_EQ(NuovaScadenza(prima), "31/03/2006");
  EXPECT_EQ(NuovaScadenza(seconda), "01/04/2006");
}

TEST_F(DateEditor, WritesIntoTheFirstRowWithTheKeyWhenItsOwnLostIt) {
  const auto prima = Aggiungi("ROSSI");
  const auto seconda = Aggiungi("ROSSI");
  griglia.Resize();
  ScriviData(seconda, "010406");
  griglia.righe.ImpostaTesto(seconda, Schermata::Partita, "altra");
  griglia.TextScad_KeyPress(Invio);
  EXPECT_EQ(NuovaScadenza(prima), "01/04/2006");
  EXPECT_EQ(NuovaScadenza(seconda), "31/03/2006");
}

TEST_F(DateEditor, WritesNowhereWhenNoRowHasTheKey) {
  const auto riga = Aggiungi("ROSSI");
  griglia.Resize();
  ScriviData(riga, "010406");
  griglia.righe.ImpostaTesto(riga, Schermata::Partita, "altra");
  griglia.TextScad_KeyPress(Invio);
  EXPECT_EQ(NuovaScadenza(riga), "31/03/2006");
  EXPECT_FALSE(griglia.Stato().data.visible);
}

TEST_F(DateEditor, RestoresThePresentDateWhenEmptied) {
  AggiungiMolte(1);
  for (const char* vuoto : {"", " ", "   "}) {
    griglia.righe.ImpostaTesto(0, Schermata::NuovaScadenza, "01/04/2006");
    ScriviData(0, vuoto);
    griglia.TextScad_KeyPress(Tab);
    EXPECT_EQ(NuovaScadenza(0), "31/03/2006");
  }
  EXPECT_THAT(banco.desktop.box, IsEmpty());
}

TEST_F(DateEditor, LeavesTheCellBlankAfterARefusedDate) {
  AggiungiMolte(1);
  ScriviData(0, "31/13/06");
  griglia.TextScad_KeyPress(Invio);
  EXPECT_EQ(NuovaScadenza(0), " ");
  ASSERT_EQ(banco.desktop.box.size(), 1U);
  EXPECT_THAT(banco.desktop.box[0], testing::HasSubstr("Mese errato: 31/13/06"));
}

TEST_F(DateEditor, DoesNotTickTheRow) {
  AggiungiMolte(1);
  ScriviData(0, "010406");
  griglia.TextScad_KeyPress(Invio);
  EXPECT_FALSE(griglia.righe.Spuntata(0, 0));
}

TEST_F(DateEditor, CommitsOneRowWhenAnotherIsOpened) {
  AggiungiMolte(2);
  ScriviData(0, "010406");
  Clic(1, Schermata::NuovaScadenza);
  EXPECT_TRUE(griglia.Stato().data.visible);
  EXPECT_EQ(griglia.Stato().data.text, "31/03/2006");
  EXPECT_EQ(NuovaScadenza(0), "01/04/2006");
}

TEST_F(DateEditor, WritesNothingWhenAbandoned) {
  AggiungiMolte(21);
  ScriviData(0, "010406");
  griglia.AbbandonaEditor();
  EXPECT_FALSE(griglia.Stato().data.visible);
  EXPECT_FALSE(griglia.Stato().scrollBarsHidden);
  EXPECT_EQ(NuovaScadenza(0), "31/03/2006");
}

TEST_F(DateEditor, ClosesTwiceWithoutHarm) {
  AggiungiMolte(1);
  ScriviData(0, "010406");
  griglia.TogliScadenza();
  griglia.TextScad_Change("020406");
  griglia.TogliScadenza();
  EXPECT_EQ(NuovaScadenza(0), "01/04/2006");
}

TEST_F(DateEditor, CoversTheScrollBarsOnlyAboveTwentyRows) {
  AggiungiMolte(20);
  Clic(0, Schermata::NuovaScadenza);
  EXPECT_FALSE(griglia.Stato().scrollBarsHidden);
  griglia.TextScad_KeyPress(Invio);
  Aggiungi("ROSSI");
  Clic(0, Schermata::NuovaScadenza);
  EXPECT_TRUE(griglia.Stato().scrollBarsHidden);
}

TEST_F(DateEditor, UncoversTheScrollBarsWhenClosedByKey) {
  AggiungiMolte(21);
  for (const int tasto : {Tab, Invio}) {
    Clic(0, Schermata::NuovaScadenza);
    ASSERT_TRUE(griglia.Stato().scrollBarsHidden);
    griglia.TextScad_KeyPress(tasto);
    EXPECT_FALSE(griglia.Stato().scrollBarsHidden);
  }
}

TEST_F(BankEditor, OpensOverTheCellOnTheEntryOfTheNewBank) {
  griglia.cmbBanche2.voci = {" ", "BANCA ALFA", "BANCA BETA"};
  const auto riga = Aggiungi("ROSSI", "31/03/2006", "BANCA BETA");
  griglia.Resize();
  Clic(riga, Schermata::NuovaBanca);
  const CellEditor& editor = griglia.Stato().bank;
  EXPECT_TRUE(editor.visible);
  EXPECT_EQ(editor.index, 2);
  EXPECT_EQ(editor.top, 30 + 30 + 240);
  EXPECT_EQ(editor.left, 30 + 30 + 14640);
  EXPECT_EQ(editor.width, 2700 - 60);
}

TEST_F(BankEditor, OpensOnTheBlankEntryForABankThatIsNotOffered) {
  griglia.cmbBanche2.voci = {" ", "BANCA ALFA"};
  const auto riga = Aggiungi("ROSSI", "31/03/2006", "BANCA CHIUSA");
  griglia.Resize();
  Clic(riga, Schermata::NuovaBanca);
  EXPECT_EQ(griglia.Stato().bank.index, 0);
}

TEST_F(BankEditor, TakesThePlaceOfTheDateEditorAndCommitsIt) {
  griglia.cmbBanche2.voci = {" "};
  AggiungiMolte(1);
  ScriviData(0, "010406");
  Clic(0, Schermata::NuovaBanca);
  EXPECT_FALSE(griglia.Stato().data.visible);
  EXPECT_TRUE(griglia.Stato().bank.visible);
  EXPECT_EQ(NuovaScadenza(0), "01/04/2006");
}

TEST_F(BankEditor, GivesWayToTheDateEditor) {
  griglia.cmbBanche2.voci = {" "};
  AggiungiMolte(1);
  Clic(0, Schermata::NuovaBanca);
  Clic(0, Schermata::NuovaScadenza);
  EXPECT_TRUE(griglia.Stato().data.visible);
  EXPECT_FALSE(griglia.Stato().bank.visible);
}

TEST_F(BankEditor, CommitsOneRowWhenAnotherIsOpened) {
  griglia.cmbBanche2.voci = {" "};
  const auto prima = Aggiungi("ROSSI", "31/03/2006", "BANCA ALFA");
  const auto seconda = Aggiungi("VERDI", "31/03/2006", "BANCA ALFA");
  griglia.Resize();
  Clic(prima, Schermata::NuovaBanca);
  Clic(seconda, Schermata::NuovaBanca);
  EXPECT_TRUE(griglia.Stato().bank.visible);
  EXPECT_TRUE(griglia.righe.Spuntata(prima, 1));
  EXPECT_EQ(griglia.righe.Testo(prima, Schermata::NuovaBanca), "ANNULLA");
  EXPECT_FALSE(griglia.righe.Spuntata(seconda, 1));
  EXPECT_EQ(griglia.righe.Testo(seconda, Schermata::NuovaBanca), "BANCA ALFA");
}

TEST_F(BankEditor, TicksItsRowWhenItLosesTheFocus) {
  griglia.cmbBanche2.voci = {" "};
  AggiungiMolte(22);
  Clic(4, Schermata::NuovaBanca);
  EXPECT_TRUE(griglia.Stato().scrollBarsHidden);
  griglia.cmbBanche2_LostFocus();
  EXPECT_FALSE(griglia.Stato().bank.visible);
  EXPECT_FALSE(griglia.Stato().scrollBarsHidden);
  EXPECT_TRUE(griglia.righe.Spuntata(4, 1));
  EXPECT_FALSE(griglia.righe.Spuntata(4, 0));
  EXPECT_FALSE(griglia.righe.Spuntata(3, 1));
}

TEST_F(BankEditor, CoversTheScrollBarsOnlyAboveTwentyRows) {
  griglia.cmbBanche2.voci = {" "};
  AggiungiMolte(20);
  Clic(0, Schermata::NuovaBanca);
  EXPECT_FALSE(griglia.Stato().scrollBarsHidden);
  griglia.cmbBanche2_LostFocus();
  Aggiungi("ROSSI");
  Clic(0, Schermata::NuovaBanca);
  EXPECT_TRUE(griglia.Stato().scrollBarsHidden);
}

TEST_F(BankEditor, ThatIsAlreadyGoneDoesNotUncoverTheScrollBarsOfTheDateEditor) {
  griglia.cmbBanche2.voci = {" "};
  AggiungiMolte(21);
  Clic(0, Schermata::NuovaBanca);
  Clic(0, Schermata::NuovaScadenza);
  griglia.cmbBanche2_LostFocus();
  EXPECT_TRUE(griglia.Stato().data.visible);
  EXPECT_TRUE(griglia.Stato().scrollBarsHidden);
}

TEST_F(BankEditor, FindsItsRowAgainAfterTheListWasSorted) {
  griglia.cmbBanche2.voci = {" "};
  AggiungiMolte(3);
  Clic(0, Schermata::NuovaBanca);
  griglia.TLwTestata_Click(PrimaTestata);
  EXPECT_EQ(griglia.Stato().bank.place, 2);
  griglia.cmbBanche2_LostFocus();
  EXPECT_TRUE(griglia.righe.Spuntata(0, 1));
  EXPECT_FALSE(griglia.righe.Spuntata(2, 1));
}

TEST_F(BankEditor, WithAnEmptyTextChangesNothing) {
  griglia.cmbBanche2.voci = {""};
  AggiungiMolte(1);
  Clic(0, Schermata::NuovaBanca);
  griglia.cmbBanche2_LostFocus();
  EXPECT_FALSE(griglia.righe.Spuntata(0, 1));
}

TEST_F(BankEditor, WritesNothingWhenAbandoned) {
  griglia.cmbBanche2.voci = {" "};
  const auto riga = Aggiungi("ROSSI", "31/03/2006", "BANCA ALFA");
  griglia.Resize();
  Clic(riga, Schermata::NuovaBanca);
  griglia.AbbandonaEditor();
  EXPECT_FALSE(griglia.Stato().bank.visible);
  EXPECT_FALSE(griglia.righe.Spuntata(riga, 1));
  EXPECT_EQ(griglia.righe.Testo(riga, Schermata::NuovaBanca), "BANCA ALFA");
}

TEST_F(Ticks, OfTheDateCopyTheTopDateNormalised) {
  AggiungiMolte(2);
  griglia.TextScadenza_Change("010406");
  Clic(0, Schermata::Radio1);
  EXPECT_TRUE(griglia.righe.Spuntata(0, 0));
  EXPECT_EQ(NuovaScadenza(0), "01/04/2006");
  EXPECT_EQ(griglia.Stato().dueDateText, "01/04/2006");
  EXPECT_FALSE(griglia.righe.Spuntata(1, 0));
  EXPECT_EQ(NuovaScadenza(1), "31/03/2006");
}

TEST_F(Ticks, OfTheDateChangeNothingWithAnEmptyTopField) {
  AggiungiMolte(1);
  for (const char* vuoto : {"", " ", "   "}) {
    griglia.TextScadenza_Change(vuoto);
    Clic(0, Schermata::Radio1);
    EXPECT_FALSE(griglia.righe.Spuntata(0, 0));
    EXPECT_EQ(NuovaScadenza(0), "31/03/2006");
    EXPECT_EQ(griglia.Stato().dueDateText, vuoto);
  }
  EXPECT_THAT(banco.desktop.box, IsEmpty());
}

TEST_F(Ticks, OfTheDateAreNeverSetByARefusedTopDate) {
  AggiungiMolte(1);
  griglia.TextScadenza_Change("31/13/06");
  Clic(0, Schermata::Radio1);
  EXPECT_EQ(banco.desktop.box.size(), 1U);
  EXPECT_FALSE(griglia.righe.Spuntata(0, 0));
  EXPECT_EQ(NuovaScadenza(0), "31/03/2006");
}

TEST_F(Ticks, OfTheDateClickedTwiceLeaveTheRowUntouched) {
  AggiungiMolte(1);
  griglia.TextScadenza_Change("010406");
  Clic(0, Schermata::Radio1);
  Clic(0, Schermata::Radio1);
  EXPECT_FALSE(griglia.righe.Spuntata(0, 0));
  EXPECT_EQ(NuovaScadenza(0), "31/03/2006");
}

TEST_F(Ticks, OfTheBankClickedTwiceLeaveTheRowUntouched) {
  const auto riga = Aggiungi("ROSSI", "31/03/2006", "BANCA ALFA");
  griglia.Resize();
  Clic(riga, Schermata::Radio2);
  EXPECT_TRUE(griglia.righe.Spuntata(riga, 1));
  EXPECT_EQ(griglia.righe.Testo(riga, Schermata::NuovaBanca), "ANNULLA");
  EXPECT_EQ(griglia.righe.Tag(riga, Schermata::NuovaBanca), "#null#");
  Clic(riga, Schermata::Radio2);
  EXPECT_FALSE(griglia.righe.Spuntata(riga, 1));
  EXPECT_EQ(griglia.righe.Testo(riga, Schermata::NuovaBanca), "BANCA ALFA");
  EXPECT_EQ(griglia.righe.Tag(riga, Schermata::NuovaBanca), "");
}

TEST_F(Ticks, ActOnTheSelectedRowAlone) {
  AggiungiMolte(2);
  Clic(1, Schermata::Radio2);
  EXPECT_FALSE(griglia.righe.Spuntata(0, 1));
  EXPECT_TRUE(griglia.righe.Spuntata(1, 1));
}

TEST_F(Ticks, OfOneKindAreClearedOnEveryRow) {
  AggiungiMolte(3);
  for (std::size_t riga = 0; riga < 3; ++riga) {
    griglia.righe.ImpostaSpunta(riga, 0, true);
    griglia.righe.ImpostaSpunta(riga, 1, true);
  }
  griglia.DeselezionaTutto("RADIO1");
  for (std::size_t riga = 0; riga < 3; ++riga) {
    EXPECT_FALSE(griglia.righe.Spuntata(riga, 0));
    EXPECT_TRUE(griglia.righe.Spuntata(riga, 1));
  }
}

TEST_F(Ticks, OfTheDateAreClearedByAClickInTheTopDateWhichLeavesTheNewDates) {
  AggiungiMolte(2);
  griglia.TextScadenza_Change("010406");
  Clic(0, Schermata::Radio1);
  Clic(1, Schermata::Radio2);
  ScriviData(1, "020406");
  griglia.TextScadenza_Click();
  EXPECT_FALSE(griglia.Stato().data.visible);
  EXPECT_FALSE(griglia.righe.Spuntata(0, 0));
  EXPECT_TRUE(griglia.righe.Spuntata(1, 1));
  EXPECT_EQ(NuovaScadenza(0), "01/04/2006");
  EXPECT_EQ(NuovaScadenza(1), "02/04/2006");
}

TEST_F(Ticks, OfTheBankAreClearedByAChoiceInTheTopBankWhichCommitsTheEditors) {
  AggiungiMolte(2);
  griglia.TextScadenza_Change("010406");
  Clic(0, Schermata::Radio1);
  Clic(1, Schermata::Radio2);
  ScriviData(1, "020406");
  griglia.cmbBanche_Click(1);
  EXPECT_EQ(griglia.Stato().bankIndex, 1);
  EXPECT_FALSE(griglia.Stato().data.visible);
  EXPECT_EQ(NuovaScadenza(1), "02/04/2006");
  EXPECT_TRUE(griglia.righe.Spuntata(0, 0));
  EXPECT_FALSE(griglia.righe.Spuntata(1, 1));
}

} // namespace
} // namespace lumoscad
