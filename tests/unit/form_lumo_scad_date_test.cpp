#include "ScadenzarioDiProva.hpp"

namespace lumoscad {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr int Tab = 9;
constexpr int Invio = 13;

class ItemDateEditor : public test::ScadenzarioDiProva {};
class ItemTicks : public test::ScadenzarioDiProva {};
class TopDate : public test::ScadenzarioDiProva {};
class SelectAll : public test::ScadenzarioDiProva {};

TEST_F(ItemDateEditor, OpensOverTheNewDateOfTheClickedRow) {
  form.griglia().righe.ImpostaTesto(1, FormLumoScad::NuovaScadenza, "05/05/2006");
  Clic(1);
  const CellEditor& editor = form.griglia().Stato().data;
  EXPECT_TRUE(editor.visible);
  EXPECT_EQ(editor.text, "05/05/2006");
  EXPECT_EQ(editor.top, 30 + 30 + 240);
  EXPECT_EQ(editor.left, 30 + 30 + 420 + 1800 + 1800 + 1950 + 60);
  EXPECT_EQ(editor.width, 1950 - 60);
}

TEST_F(ItemDateEditor, OpensOverTheNewDateWhateverColumnIsClicked) {
  for (const int x : {10, 430, 2300, 4100, 6000, 99999}) {
    form.griglia().LVScadenze_MouseDown(x, 5);
    Clic(1);
    EXPECT_TRUE(form.griglia().Stato().data.visible) << x;
    EXPECT_EQ(form.griglia().Stato().data.left, 30 + 30 + 420 + 1800 + 1800 + 1950 + 60) << x;
    form.TogliTextScad();
  }
}

TEST_F(ItemDateEditor, LiesOverTheClickedRowAlsoWhereAnotherHasTheSameDueDate) {
  form.griglia().righe.ImpostaTesto(2, FormLumoScad::Scadenza, "31/03/2006");
  Clic(2);
  EXPECT_EQ(form.griglia().Stato().data.place, 2);
}

TEST_F(ItemDateEditor, WritesTheNormalisedDateOnEnter) {
  ScriviData(1, "150606");
  form.griglia().TextScad_KeyPress(Invio);
  EXPECT_FALSE(form.griglia().Stato().data.visible);
  EXPECT_THAT(NuoveScadenze(), ElementsAre("", "15/06/2006", ""));
  EXPECT_THAT(Spunte(), ElementsAre(false, false, false));
}

TEST_F(ItemDateEditor, StaysOpenOnEveryOtherKeyTabIncluded) {
  ScriviData(1, "150606");
  for (const int tasto : {Tab, 8, 10, 27, 32, 48}) {
    form.griglia().TextScad_KeyPress(tasto);
    EXPECT_TRUE(form.griglia().Stato().data.visible) << tasto;
  }
  EXPECT_THAT(NuoveScadenze(), ElementsAre("", "", ""));
}

TEST_F(ItemDateEditor, WritesWhenItLosesTheFocus) {
  ScriviData(2, "15/06/06");
  form.griglia().TextScad_LostFocus();
  EXPECT_FALSE(form.griglia().Stato().data.visible);
  EXPECT_THAT(NuoveScadenze(), ElementsAre("", "", "15/06/2006"));
}

TEST_F(ItemDateEditor, UncoversTheScrollBarsWhenItLosesTheFocus) {
  while (form.griglia().righe.Quante() < 13) {
    form.Aggiungi("30/06/2006", "", "1,00");
  }
  Clic(0);
  form.griglia().TextScad_LostFocus();
  EXPECT_FALSE(form.griglia().Stato().scrollBarsHidden);
}

TEST_F(ItemDateEditor, EmptiesTheNewDateWhenEmptied) {
  form.griglia().righe.ImpostaTesto(0, FormLumoScad::NuovaScadenza, "05/05/2006");
  ScriviData(0, "");
  form.griglia().TextScad_KeyPress(Invio);
  EXPECT_THAT(NuoveScadenze(), ElementsAre("", "", ""));
  EXPECT_THAT(banco.desktop.box, IsEmpty());
}

TEST_F(ItemDateEditor, ChecksABlankAsADate) {
  form.griglia().righe.ImpostaTesto(0, FormLumoScad::NuovaScadenza, "05/05/2006");
  ScriviData(0, " ");
  form.griglia().TextScad_KeyPress(Invio);
  EXPECT_THAT(NuoveScadenze(), ElementsAre(" ", "", ""));
  EXPECT_THAT(banco.desktop.box, ElementsAre(HasSubstr("Data errata: ")));
}

TEST_F(ItemDateEditor, LeavesABlankAfterARefusedDate) {
  ScriviData(0, "31/13/06");
  form.griglia().TextScad_KeyPress(Invio);
  EXPECT_THAT(NuoveScadenze(), ElementsAre(" ", "", ""));
  EXPECT_THAT(banco.desktop.box, ElementsAre(HasSubstr("Mese errato: 31/13/06")));
  EXPECT_FALSE(form.griglia().Stato().data.visible);
}

TEST_F(ItemDateEditor, WritesIntoTheFirstRowWithTheSameDueDate) {
  form.griglia().righe.ImpostaTesto(2, FormLumoScad::Scadenza, "31/03/2006");
  ScriviData(2, "150606");
  form.griglia().TextScad_KeyPress(Invio);
  EXPECT_THAT(NuoveScadenze(), ElementsAre("15/06/2006", "", ""));
}

TEST_F(ItemDateEditor, WritesNowhereWhenNoRowHasTheTextAnyMore) {
  ScriviData(2, "150606");
  form.griglia().righe.ImpostaTesto(2, FormLumoScad::Scadenza, "altra");
  form.griglia().TextScad_KeyPress(Invio);
  EXPECT_THAT(NuoveScadenze(), ElementsAre("", "", ""));
  EXPECT_FALSE(form.griglia().Stato().data.visible);
}

TEST_F(ItemDateEditor, WritesOneRowWhenAnotherIsClicked) {
  ScriviData(0, "150606");
  Clic(1);
  EXPECT_TRUE(form.griglia().Stato().data.visible);
  EXPECT_EQ(form.griglia().Stato().data.text, "");
  EXPECT_THAT(NuoveScadenze(), ElementsAre("15/06/2006", "", ""));
}

TEST_F(ItemDateEditor, WritesOnceHoweverOftenItIsClosed) {
  ScriviData(0, "150606");
  form.TogliTextScad();
  form.griglia().TextScad_Change("160606");
  form.TogliTextScad();
  form.griglia().TextScad_LostFocus();
  form.griglia().TextScad_KeyPress(Invio);
  EXPECT_THAT(NuoveScadenze(), ElementsAre("15/06/2006", "", ""));
}

TEST_F(ItemDateEditor, WritesNothingWhenAbandoned) {
  ScriviData(0, "150606");
  form.griglia().AbbandonaEditor();
  form.griglia().TextScad_LostFocus();
  EXPECT_THAT(NuoveScadenze(), ElementsAre("", "", ""));
}

TEST_F(ItemDateEditor, DoesNotOpenWithoutASelectedRow) {
  form.griglia().Seleziona(-1);
  form.griglia().LVScadenze_Click(0);
  EXPECT_FALSE(form.griglia().Stato().data.visible);
  form.griglia().Seleziona(3);
  form.griglia().LVScadenze_Click(0);
  EXPECT_FALSE(form.griglia().Stato().data.visible);
}

TEST_F(ItemDateEditor, CoversTheScrollBarsOnlyWhenTheRowsExceedTheList) {
  while (form.griglia().righe.Quante() < 12) {
    form.Aggiungi("30/06/2006", "", "1,00");
  }
  Clic(0);
  EXPECT_FALSE(form.griglia().Stato().scrollBarsHidden);
  form.Aggiungi("31/07/2006", "", "1,00");
  Clic(0);
  EXPECT_TRUE(form.griglia().Stato().scrollBarsHidden);
  form.griglia().TextScad_KeyPress(Invio);
  EXPECT_FALSE(form.griglia().Stato().scrollBarsHidden);
}

TEST_F(ItemTicks, CopyTheTopDateNormalised) {
  form.griglia().TextScadenza_Change("010706");
  form.griglia().SpuntaCasella(1, true);
  EXPECT_THAT(Spunte(), ElementsAre(false, true, false));
  EXPECT_THAT(NuoveScadenze(), ElementsAre("", "01/07/2006", ""));
  EXPECT_EQ(form.griglia().Stato().dueDateText, "010706") << "the field itself is normalised when it is left";
}

TEST_F(ItemTicks, LeaveTheNewDateEmptyWithoutATopDate) {
  for (const char* vuoto : {"", " ", "   "}) {
    form.griglia().TextScadenza_Change(vuoto);
    form.griglia().righe.ImpostaTesto(0, FormLumoScad::NuovaScadenza, "05/05/2006");
    form.griglia().SpuntaCasella(0, true);
    EXPECT_THAT(Spunte(), ElementsAre(true, false, false));
    EXPECT_THAT(NuoveScadenze(), ElementsAre("", "", ""));
  }
  EXPECT_THAT(banco.desktop.box, IsEmpty());
}

TEST_F(ItemTicks, TakenAwayEmptyTheNewDate) {
  form.griglia().TextScadenza_Change("010706");
  form.griglia().SpuntaCasella(1, true);
  form.griglia().SpuntaCasella(1, false);
  EXPECT_THAT(Spunte(), ElementsAre(false, false, false));
  EXPECT_THAT(NuoveScadenze(), ElementsAre("", "", ""));
}

TEST_F(ItemTicks, TakenAwayEmptyADateTypedIntoTheRow) {
  ScriviData(1, "150606");
  form.TogliTextScad();
  form.griglia().SpuntaCasella(1, false);
  EXPECT_THAT(NuoveScadenze(), ElementsAre("", "", ""));
}

TEST_F(ItemTicks, WithARefusedTopDateLeaveABlank) {
  form.griglia().TextScadenza_Change("31/13/06");
  form.griglia().SpuntaCasella(0, true);
  EXPECT_THAT(Spunte(), ElementsAre(true, false, false));
  EXPECT_THAT(NuoveScadenze(), ElementsAre(" ", "", ""));
  EXPECT_THAT(banco.desktop.box, ElementsAre(HasSubstr("Mese errato: 31/13/06")));
}

TEST_F(ItemTicks, DoNotOpenTheEditorByTheirOwnClickButTheNextClickDoes) {
  form.griglia().Seleziona(1);
  form.griglia().LVScadenze_ItemCheck(1);
  EXPECT_THAT(Spunte(), ElementsAre(false, true, false));
  form.griglia().LVScadenze_Click(240);
  EXPECT_FALSE(form.griglia().Stato().data.visible);
  form.griglia().LVScadenze_Click(240);
  EXPECT_TRUE(form.griglia().Stato().data.visible);
}

TEST_F(ItemTicks, SkipTheirClickAlsoWhereNoRowIsSelectedAndNoneAfterIt) {
  form.griglia().LVScadenze_ItemCheck(1);
  form.griglia().Seleziona(-1);
  form.griglia().LVScadenze_Click(240);
  Clic(1);
  EXPECT_TRUE(form.griglia().Stato().data.visible);
}

TEST_F(ItemTicks, OfAnEarlierShowingDoNotMakeTheFirstClickCountForNothing) {
  Mostra([](SingleItemWindow& finestra) { finestra.Elenco().LVScadenze_ItemCheck(1); });
  Mostra([](SingleItemWindow& finestra) {
    finestra.Elenco().LVScadenze_Click(0);
    EXPECT_TRUE(finestra.Elenco().Stato().data.visible);
  });
}

TEST_F(ItemTicks, OfAnEmptiedScreenDoNotMakeTheFirstClickCountForNothing) {
  form.griglia().LVScadenze_ItemCheck(1);
  form.Svuota();
  form.Aggiungi("30/06/2006", "", "1,00");
  Clic(0);
  EXPECT_TRUE(form.griglia().Stato().data.visible);
}

TEST_F(ItemTicks, DoNotMoveTheSelection) {
  form.griglia().Seleziona(2);
  form.griglia().LVScadenze_ItemCheck(0);
  EXPECT_EQ(form.griglia().Stato().selected, 2);
}

TEST_F(ItemTicks, OfTheWindowTurnWithEveryClick) {
  Mostra([&](SingleItemWindow& finestra) {
    finestra.Elenco().TextScadenza_Change("010706");
    finestra.Elenco().LVScadenze_ItemCheck(2);
    EXPECT_THAT(NuoveScadenze(), ElementsAre("", "", "01/07/2006"));
    finestra.Elenco().LVScadenze_ItemCheck(2);
    EXPECT_THAT(NuoveScadenze(), ElementsAre("", "", ""));
  });
}

TEST_F(TopDate, TypedIntoUnticksEveryRowAndLeavesTheNewDates) {
  form.griglia().TextScadenza_Change("010706");
  form.griglia().SpuntaCasella(0, true);
  form.griglia().SpuntaCasella(2, true);
  form.griglia().TextScadenza_Change("0107");
  EXPECT_THAT(Spunte(), ElementsAre(false, false, false));
  EXPECT_THAT(NuoveScadenze(), ElementsAre("01/07/2006", "", "01/07/2006"));
}

TEST_F(TopDate, IsNormalisedWhenItIsLeft) {
  ScriviInAlto("010706");
  EXPECT_EQ(form.griglia().Stato().dueDateText, "01/07/2006");
  EXPECT_THAT(banco.desktop.box, IsEmpty());
}

TEST_F(TopDate, LeftWithAnotherTextUnticksEveryRow) {
  form.griglia().TextScadenza_Change("010706");
  form.griglia().SpuntaCasella(0, true);
  form.griglia().TextScadenza_LostFocus();
  EXPECT_THAT(Spunte(), ElementsAre(false, false, false));
}

TEST_F(TopDate, LeftAsItWasKeepsTheTicks) {
  ScriviInAlto("010706");
  form.griglia().SpuntaCasella(0, true);
  form.griglia().TextScadenza_LostFocus();
  EXPECT_THAT(Spunte(), ElementsAre(true, false, false));
}

TEST_F(TopDate, HoldsOneBlankOnceItIsLeftEmpty) {
  ScriviInAlto("");
  EXPECT_EQ(form.griglia().Stato().dueDateText, " ");
  EXPECT_THAT(banco.desktop.box, IsEmpty());
}

TEST_F(TopDate, HoldsOneBlankAfterARefusedDate) {
  ScriviInAlto("31/13/06");
  EXPECT_EQ(form.griglia().Stato().dueDateText, " ");
  EXPECT_THAT(banco.desktop.box, ElementsAre(HasSubstr("Mese errato: 31/13/06")));
}

TEST_F(SelectAll, AsksForADateWhenTheTopFieldHoldsExactlyOneBlank) {
  form.griglia().TextScadenza_Change(" ");
  form.griglia().righe.ImpostaTesto(0, FormLumoScad::NuovaScadenza, "05/05/2006");
  form.PicSelezionaTutto_Click();
  EXPECT_THAT(banco.desktop.box, ElementsAre("Inserisci una scadenza"));
  EXPECT_THAT(banco.desktop.titles, ElementsAre("LumoScad"));
  EXPECT_THAT(Spunte(), ElementsAre(false, false, false));
  EXPECT_THAT(NuoveScadenze(), ElementsAre("05/05/2006", "", ""));
  EXPECT_FALSE(form.SelezionaTutto());
  EXPECT_EQ(form.Stato().selectEverything, "Seleziona tutto");
}

TEST_F(SelectAll, AsksForADateAlsoWhenItWouldUntick) {
  ScriviInAlto("010706");
  form.PicSelezionaTutto_Click();
  form.griglia().TextScadenza_Change(" ");
  form.PicSelezionaTutto_Click();
  EXPECT_THAT(banco.desktop.box, ElementsAre("Inserisci una scadenza"));
  EXPECT_TRUE(form.SelezionaTutto());
  EXPECT_THAT(NuoveScadenze(), ElementsAre("01/07/2006", "01/07/2006", "01/07/2006"));
}

TEST_F(SelectAll, GivesEveryRowTheTopDate) {
  ScriviInAlto("010706");
  form.PicSelezionaTutto_Click();
  EXPECT_THAT(Spunte(), ElementsAre(true, true, true));
  EXPECT_THAT(NuoveScadenze(), ElementsAre("01/07/2006", "01/07/2006", "01/07/2006"));
  EXPECT_TRUE(form.SelezionaTutto());
  EXPECT_EQ(form.Stato().selectEverything, "Seleziona tutto");
}

TEST_F(SelectAll, TicksWithAnEmptyDateWhileTheTopFieldIsEmptyOrHoldsTwoBlanks) {
  for (const char* vuoto : {"", "  "}) {
    form.griglia().TextScadenza_Change(vuoto);
    form.griglia().righe.ImpostaTesto(1, FormLumoScad::NuovaScadenza, "05/05/2006");
    form.PicSelezionaTutto_Click();
    EXPECT_THAT(Spunte(), ElementsAre(true, true, true));
    EXPECT_THAT(NuoveScadenze(), ElementsAre("", "", ""));
    form.PicSelezionaTutto_Click();
  }
  EXPECT_THAT(banco.desktop.box, IsEmpty());
}

TEST_F(SelectAll, ASecondTimeUnticksEveryRowAndEmptiesTheNewDates) {
  ScriviInAlto("010706");
  form.PicSelezionaTutto_Click();
  ScriviData(1, "150606");
  form.TogliTextScad();
  form.PicSelezionaTutto_Click();
  EXPECT_THAT(Spunte(), ElementsAre(false, false, false));
  EXPECT_THAT(NuoveScadenze(), ElementsAre("", "", ""));
  EXPECT_FALSE(form.SelezionaTutto());
  EXPECT_EQ(form.Stato().selectEverything, "Deseleziona tutto");
}

TEST_F(SelectAll, AThirdTimeTicksAgain) {
  ScriviInAlto("010706");
  for (int volta = 0; volta < 3; ++volta) {
    form.PicSelezionaTutto_Click();
  }
  EXPECT_THAT(Spunte(), ElementsAre(true, true, true));
  EXPECT_EQ(form.Stato().selectEverything, "Seleziona tutto");
}

TEST_F(SelectAll, RemembersItsStateWhenTheTopDateUntickedTheRows) {
  ScriviInAlto("010706");
  form.PicSelezionaTutto_Click();
  ScriviInAlto("020706");
  EXPECT_TRUE(form.SelezionaTutto());
  form.PicSelezionaTutto_Click();
  EXPECT_THAT(Spunte(), ElementsAre(false, false, false));
  EXPECT_THAT(NuoveScadenze(), ElementsAre("", "", ""));
}

TEST_F(SelectAll, DoesNotMakeTheNextClickOnARowCountForNothing) {
  ScriviInAlto("010706");
  form.PicSelezionaTutto_Click();
  Clic(0);
  EXPECT_TRUE(form.griglia().Stato().data.visible);
}

} // namespace
} // namespace lumoscad
