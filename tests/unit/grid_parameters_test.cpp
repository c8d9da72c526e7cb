#include "screens/Griglia.hpp"
#include "support/TestBench.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int TabKey = 9;
constexpr int Enter = 13;
enum Column { Name, Date, NewDate, Bank, NewBank, Tick1, Tick2 };

/// A grid with two rows of the same name, and one parameter after the other turned away from what it is at first.
class GridParameters : public testing::Test {
 protected:
  GridParameters() {
    using Genere = ListColumn::Kind;
    description.colonne = {{"Name", "", 1000, Genere::Text},
                           {"Date", "", 1000, Genere::Text},
                           {"NewDate", "", 1000, Genere::DateEditor, Date},
                           {"Bank", "", 1000, Genere::Text},
                           {"NewBank", "", 1000, Genere::BankEditor, Bank},
                           {"Tick1", "", 400, Genere::Tick},
                           {"Tick2", "", 400, Genere::Tick}};
    description.colonneConTag = {Bank, NewBank};
    description.colonneChiave = 1;
    description.colonnaSpunta1 = Tick1;
    description.colonnaSpunta2 = Tick2;
    description.data.colonna = NewDate;
    description.banca.colonna = NewBank;
    description.banca.spunta = 1;
  }

  void Make() {
    grid = std::make_unique<Griglia>(description);
    for (int row = 0; row < 2; ++row) {
      const auto number = grid->righe.Aggiungi({"AB1/06", "31/03/2006", "01/05/2006", "ALFA", "ALFA", "", ""});
      grid->righe.ImpostaTag(number, Bank, "A");
    }
    grid->cmbBanche = {{" ", "TOP"}, {"T"}};
    grid->cmbBanche2 = {{" ", "CELL"}, {"C"}};
    grid->Resize();
    grid->Seleziona(1);
  }
  void Click(int column) const {
    int x = 1;
    for (int before = 0; before < column; ++before) {
      x += description.colonne[static_cast<std::size_t>(before)].width;
    }
    grid->LVScadenze_MouseDown(x, 1);
    grid->LVScadenze_Click(0);
  }
  void Type(std::string_view text) const {
    Click(NewDate);
    grid->TextScad_Change(text);
  }
  void ChooseInCell(int entry) const {
    Click(NewBank);
    grid->cmbBanche2_Click(entry);
    grid->cmbBanche2_LostFocus();
  }
  [[nodiscard]] std::vector<std::string> Texts(int column) const {
    return {std::string(grid->righe.Testo(0, column)), std::string(grid->righe.Testo(1, column))};
  }
  [[nodiscard]] bool Ticked(std::size_t row, int tick) const { return grid->righe.Spuntata(row, tick); }

  test::TestBench bench;
  DescrizioneGriglia description;
  std::unique_ptr<Griglia> grid;
};

TEST_F(GridParameters, LetTabCloseTheDateEditorOrNot) {
  for (const bool closes : {true, false}) {
    description.data.tabChiude = closes;
    Make();
    Type("150606");
    grid->TextScad_KeyPress(TabKey);
    EXPECT_EQ(grid->Stato().data.visible, !closes);
    EXPECT_EQ(Texts(NewDate)[1], closes ? "15/06/2006" : "01/05/2006");
    grid->TextScad_KeyPress(Enter);
    EXPECT_FALSE(grid->Stato().data.visible);
  }
}

TEST_F(GridParameters, LetTheDateEditorCloseWithTheFocusOrNot) {
  description.righeSenzaScorrere = 1;
  for (const bool closes : {true, false}) {
    description.data.fuocoChiude = closes;
    Make();
    Type("150606");
    EXPECT_TRUE(grid->Stato().scrollBarsHidden);
    grid->TextScad_LostFocus();
    EXPECT_EQ(grid->Stato().data.visible, !closes);
    EXPECT_EQ(grid->Stato().scrollBarsHidden, !closes);
  }
}

TEST_F(GridParameters, SayWhatAnEmptyDateEditorLeaves) {
  Make();
  for (const char* nothing : {"", " "}) {
    Type(nothing);
    grid->TogliScadenza();
    EXPECT_EQ(Texts(NewDate)[1], "31/03/2006");
  }
  EXPECT_THAT(bench.desktop.box, IsEmpty());
  description.data.senza = SenzaData::Vuota;
  Make();
  Type("");
  grid->TogliScadenza();
  EXPECT_EQ(Texts(NewDate)[1], "");
  EXPECT_THAT(bench.desktop.box, IsEmpty());
  Type(" ");
  grid->TogliScadenza();
  EXPECT_EQ(Texts(NewDate)[1], " ");
  EXPECT_THAT(bench.desktop.box, testing::SizeIs(1)) << "a blank is checked as a date";
}

TEST_F(GridParameters, SayWhatATickTakenAwayLeaves) {
  for (const SenzaData without : {SenzaData::Presente, SenzaData::Vuota}) {
    description.data.senza = without;
    Make();
    grid->TextScadenza_Change("150606");
    Click(Tick1);
    EXPECT_EQ(Texts(NewDate)[1], "15/06/2006");
    Click(Tick1);
    EXPECT_EQ(Texts(NewDate)[1], without == SenzaData::Presente ? "31/03/2006" : "");
  }
}

TEST_F(GridParameters, LetARowBeTickedWithoutADateOrNot) {
  for (const bool only : {true, false}) {
    description.data.soloConData = only;
    Make();
    Click(Tick1);
    EXPECT_EQ(Ticked(1, 0), !only);
    EXPECT_EQ(Texts(NewDate)[1], only ? "01/05/2006" : "");
  }
}

TEST_F(GridParameters, LetTheDateEditorOpenOnItsColumnOrOnAny) {
  for (const bool anywhere : {false, true}) {
    description.data.ovunque = anywhere;
    description.data.scarto = anywhere ? 60 : 0;
    Make();
    for (const int column : {Name, Bank, Tick1, Tick2}) {
      Click(column);
      EXPECT_EQ(grid->Stato().data.visible, anywhere) << column;
      EXPECT_FALSE(Ticked(1, 0));
      grid->AbbandonaEditor();
    }
    Click(NewDate);
    EXPECT_EQ(grid->Stato().data.left, 30 + 30 + 2000 + (anywhere ? 60 : 0));
    EXPECT_EQ(grid->Stato().data.width, 1000 - 60);
  }
}

TEST_F(GridParameters, LetAnEditorWriteIntoItsOwnRowOrIntoTheFirstWithItsKey) {
  for (const bool first : {false, true}) {
    description.primaConChiave = first;
    Make();
    Type("150606");
    EXPECT_EQ(grid->Stato().data.place, 1);
    grid->TogliScadenza();
    if (first) {
      EXPECT_THAT(Texts(NewDate), ElementsAre("15/06/2006", "01/05/2006"));
    } else {
      EXPECT_THAT(Texts(NewDate), ElementsAre("01/05/2006", "15/06/2006"));
    }
  }
}

TEST_F(GridParameters, MakeACheckSelectItsRowOrTurnItsBox) {
  Make();
  grid->LVScadenze_ItemCheck(0);
  EXPECT_EQ(grid->Stato().selected, 0);
  EXPECT_FALSE(Ticked(0, 0));
  description.caselle = true;
  Make();
  grid->TextScadenza_Change("150606");
  grid->LVScadenze_ItemCheck(0);
  EXPECT_EQ(grid->Stato().selected, 1);
  EXPECT_TRUE(Ticked(0, 0));
  EXPECT_THAT(Texts(NewDate), ElementsAre("15/06/2006", "01/05/2006"));
  EXPECT_EQ(grid->Stato().dueDateText, "150606");
  grid->LVScadenze_ItemCheck(0);
  EXPECT_FALSE(Ticked(0, 0));
  EXPECT_THAT(Texts(NewDate), ElementsAre("", "01/05/2006"));
}

TEST_F(GridParameters, MakeTheTopDateTakeTheBoxesAwayWhenWrittenAndBeCheckedWhenLeft) {
  for (const bool boxes : {false, true}) {
    description.caselle = boxes;
    Make();
    grid->righe.ImpostaSpunta(0, 0, true);
    grid->TextScadenza_Change("150606");
    EXPECT_EQ(Ticked(0, 0), !boxes);
    grid->TextScadenza_LostFocus();
    EXPECT_EQ(grid->Stato().dueDateText, boxes ? "15/06/2006" : "150606");
  }
}

TEST_F(GridParameters, SayHowManyRowsShowWithoutAScrollBar) {
  for (const int rows : {1, 2}) {
    description.righeSenzaScorrere = rows;
    Make();
    EXPECT_EQ(grid->Stato().listHeight, rows * 240);
    Click(NewDate);
    EXPECT_EQ(grid->Stato().scrollBarsHidden, rows == 1);
    grid->AbbandonaEditor();
    Click(NewBank);
    EXPECT_EQ(grid->Stato().scrollBarsHidden, rows == 1);
  }
}

TEST_F(GridParameters, GiveABankToOneRowOrToItsGroup) {
  for (const int group : {-1, static_cast<int>(Name)}) {
    description.banca.gruppo = group;
    Make();
    ChooseInCell(1);
    EXPECT_THAT(Texts(NewBank), ElementsAre(group < 0 ? "ALFA" : "CELL", "CELL"));
    EXPECT_EQ(grid->righe.Tag(1, NewBank), "C");
    EXPECT_FALSE(Ticked(0, 1));
    EXPECT_TRUE(Ticked(1, 1));
  }
}

TEST_F(GridParameters, RemoveABankWhereOneIsPresentOrTheGroupHasAName) {
  Make();
  grid->righe.ImpostaTag(1, Bank, "");
  ChooseInCell(0);
  EXPECT_EQ(grid->righe.Tag(1, NewBank), "") << "no bank to remove";
  description.banca.gruppo = Name;
  Make();
  grid->righe.ImpostaTag(1, Bank, "");
  ChooseInCell(0);
  EXPECT_EQ(grid->righe.Tag(1, NewBank), "#null#");
  Make();
  grid->righe.ImpostaTesto(1, Name, "");
  ChooseInCell(0);
  EXPECT_EQ(grid->righe.Tag(1, NewBank), "");
}

TEST_F(GridParameters, ShowThePresentBankAgainOrNothingWhenTheNewOneIsTakenBack) {
  for (const bool again : {true, false}) {
    description.banca.ripristina = again;
    Make();
    ChooseInCell(1);
    Click(Tick2);
    EXPECT_EQ(Texts(NewBank)[1], again ? "ALFA" : "");
    EXPECT_FALSE(Ticked(1, 1));
  }
}

TEST_F(GridParameters, LookTheCellsChoiceUpInItsOwnListOrInTheTopOne) {
  for (const bool top : {false, true}) {
    description.banca.codiciInAlto = top;
    Make();
    ChooseInCell(1);
    EXPECT_EQ(grid->righe.Tag(1, NewBank), top ? "T" : "C");
    EXPECT_EQ(Texts(NewBank)[1], top ? "TOP" : "CELL");
  }
}

TEST_F(GridParameters, GiveBanksInEveryModeOrInOne) {
  Make();
  grid->modo = "OTHER";
  grid->cmbBanche_Click(1);
  EXPECT_EQ(grid->righe.Tag(1, NewBank), "T");
  description.banca.modoAssegna = "ONE";
  Make();
  grid->modo = "OTHER";
  grid->cmbBanche_Click(1);
  EXPECT_EQ(grid->righe.Tag(1, NewBank), "");
  grid->modo = "ONE";
  grid->cmbBanche_Click(1);
  EXPECT_EQ(grid->righe.Tag(1, NewBank), "T");
}

TEST_F(GridParameters, MakeAChoiceAtTheTopWaitForTicksInOneModeAlone) {
  description.banca.modoSpunte = "ONE";
  Make();
  grid->righe.ImpostaSpunta(0, 1, true);
  grid->modo = "ONE";
  grid->cmbBanche_Click(1);
  EXPECT_FALSE(Ticked(0, 1));
  EXPECT_EQ(grid->righe.Tag(1, NewBank), "");
  grid->modo = "OTHER";
  grid->cmbBanche_Click(1);
  EXPECT_EQ(grid->righe.Tag(1, NewBank), "T");
}

TEST_F(GridParameters, LeaveTheRowsUnconfirmedUntilConferma) {
  Make();
  EXPECT_THAT(grid->RigheConfermate(), IsEmpty());
  grid->PictureOk_Click();
  EXPECT_THAT(grid->RigheConfermate(), ElementsAre(0U, 1U));
  grid->Tag = "LOADING";
  EXPECT_THAT(grid->RigheConfermate(), IsEmpty());
  grid->Tag.clear();
  grid->Form_QueryUnload();
  EXPECT_THAT(grid->RigheConfermate(), IsEmpty());
  grid->PictureOk_Click();
  grid->Prepara();
  EXPECT_THAT(grid->RigheConfermate(), IsEmpty());
}

} // namespace
} // namespace lumoscad
