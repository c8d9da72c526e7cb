// Steps back and forth, and rows that are not in sight.

#include "SchermataDiProva.hpp"
#include "screens/FormPresunti.hpp"

namespace lumoscad {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

class GridSteps : public test::GrigliaDiProva {
 protected:
  GridSteps() { griglia.cmbBanche = griglia.cmbBanche2 = {{" ", "BANCA ALFA", "BANCA BETA"}, {"B01", "B02"}}; }

  ListGestures& gesti() { return *griglia.Gestures(); }
  void Scegli(std::size_t primo, std::size_t ultimo) {
    griglia.Seleziona(static_cast<std::ptrdiff_t>(primo));
    gesti().Vai(ultimo, {true, false});
  }
  /// Types into the editor of the rows that are selected and presses Enter.
  void DaiData(std::string_view testo) {
    griglia.LVScadenze_MouseDown(Mezzo(Schermata::NuovaScadenza), 5);
    griglia.LVScadenze_Click(240);
    griglia.TextScad_Change(testo);
    griglia.TextScad_KeyPress(13);
  }
  [[nodiscard]] std::vector<std::string> Nuove() const {
    std::vector<std::string> nuove;
    for (std::size_t riga = 0; riga < griglia.righe.Quante(); ++riga) {
      nuove.push_back(NuovaScadenza(riga));
    }
    return nuove;
  }
  [[nodiscard]] std::vector<std::string> InVista() const {
    std::vector<std::string> conti;
    for (std::size_t posto = 0; posto < griglia.Visibili(); ++posto) {
      conti.emplace_back(griglia.CellText(posto, Schermata::Conto));
    }
    return conti;
  }
};

class GridFilter : public GridSteps {
 protected:
  GridFilter() {
    Aggiungi("ALBA");
    Aggiungi("BRUNI");
    Aggiungi("ALBERTI");
    Aggiungi("CORTI");
    griglia.Resize();
  }
};

TEST_F(GridSteps, OfManyRowsGoBackAtOnceAndForthAgain) {
  AggiungiMolte(4);
  const auto prima = Nuove();
  Scegli(0, 2);
  DaiData("200127");
  EXPECT_EQ(gesti().DaAnnullare(), "scadenza di 3 rate");
  gesti().Annulla();
  EXPECT_EQ(Nuove(), prima);
  EXPECT_EQ(griglia.Stato().notice, "Annullato: scadenza di 3 rate");
  EXPECT_EQ(gesti().DaAnnullare(), "");
  gesti().Rifai();
  EXPECT_THAT(Nuove(), ElementsAre("20/01/2027", "20/01/2027", "20/01/2027", "31/03/2006"));
  EXPECT_EQ(gesti().DaRifare(), "");
}

TEST_F(GridSteps, OfATickBringTheDateAtTheTopBackAsItWasTyped) {
  AggiungiMolte(2);
  griglia.TextScadenza_Change("2");
  griglia.TextScadenza_Change("20012027");
  Clic(0, Schermata::Radio1);
  EXPECT_EQ(griglia.Stato().dueDateText, "20/01/2027");
  gesti().Annulla();
  EXPECT_FALSE(griglia.righe.Spuntata(0, 0));
  EXPECT_EQ(NuovaScadenza(0), "31/03/2006");
  EXPECT_EQ(griglia.Stato().dueDateText, "20012027");
  EXPECT_EQ(gesti().DaAnnullare(), "data in alto");
  gesti().Annulla();
  EXPECT_EQ(griglia.Stato().dueDateText, "");
  gesti().Rifai();
  gesti().Rifai();
  EXPECT_EQ(griglia.Stato().dueDateText, "20/01/2027");
  EXPECT_TRUE(griglia.righe.Spuntata(0, 0));
}

TEST_F(GridSteps, OfABankBringCodeTextAndTickBack) {
  AggiungiMolte(2);
  Clic(1, Schermata::NuovaBanca);
  griglia.cmbBanche2_Click(1);
  griglia.cmbBanche2_LostFocus();
  EXPECT_TRUE(griglia.BancaVariata(1));
  gesti().Annulla();
  EXPECT_EQ(griglia.righe.Tag(1, Schermata::NuovaBanca), "");
  EXPECT_EQ(griglia.righe.Testo(1, Schermata::NuovaBanca), "");
  EXPECT_FALSE(griglia.righe.Spuntata(1, 1));
  EXPECT_THAT(griglia.ElencoVariate(), IsEmpty());
}

TEST_F(GridSteps, OfAChoiceAtTheTopBringTheTicksAndTheChoiceBack) {
  AggiungiMolte(3);
  Clic(0, Schermata::Radio2);
  Clic(2, Schermata::Radio2);
  griglia.cmbBanche_Click(2);
  EXPECT_FALSE(griglia.righe.Spuntata(0, 1));
  EXPECT_EQ(gesti().DaAnnullare(), "banca in alto");
  gesti().Annulla();
  EXPECT_TRUE(griglia.righe.Spuntata(0, 1));
  EXPECT_TRUE(griglia.righe.Spuntata(2, 1));
  EXPECT_EQ(griglia.Stato().bankIndex, 0);
}

TEST_F(GridSteps, GoThroughSorting) {
  Aggiungi("B");
  Aggiungi("A");
  griglia.Resize();
  griglia.Seleziona(0); // "A", row 1
  DaiData("200127");
  griglia.TLwTestata_Click(1);
  gesti().Annulla();
  EXPECT_THAT(Nuove(), ElementsAre("31/03/2006", "31/03/2006"));
  EXPECT_THAT(InOrdine(), ElementsAre("B", "A"));
}

TEST_F(GridSteps, AreNoneWhereAGestureChangedNothing) {
  AggiungiMolte(2);
  DaiData("");
  EXPECT_EQ(gesti().DaAnnullare(), "");
  gesti().Annulla();
  EXPECT_EQ(griglia.Stato().notice, "Niente da annullare");
  gesti().Rifai();
  EXPECT_EQ(griglia.Stato().notice, "Niente da ripetere");
}

TEST_F(GridSteps, ThatWereTakenBackAreGoneAfterANewOne) {
  AggiungiMolte(2);
  DaiData("200127");
  gesti().Annulla();
  DaiData("210127");
  EXPECT_EQ(gesti().DaRifare(), "");
  gesti().Annulla();
  EXPECT_EQ(NuovaScadenza(0), "31/03/2006");
}

TEST_F(GridSteps, AbandonAnOpenEditorBeforeAnythingIsTakenBack) {
  AggiungiMolte(2);
  DaiData("200127");
  ScriviData(1, "2");
  gesti().Annulla();
  EXPECT_FALSE(griglia.Stato().data.visible);
  EXPECT_EQ(NuovaScadenza(0), "20/01/2027");
}

TEST_F(GridSteps, OfAMassChangeHoldAtMostFortyBytesARow) {
  constexpr int Quante = 100000;
  AggiungiMolte(Quante);
  gesti().ScegliVisibili();
  griglia.LVScadenze_MouseDown(Mezzo(Schermata::NuovaBanca), 5);
  griglia.LVScadenze_Click(240);
  griglia.cmbBanche2_Click(2);
  griglia.cmbBanche2_LostFocus();
  EXPECT_EQ(griglia.ElencoVariate().size(), static_cast<std::size_t>(Quante));
  EXPECT_LE(griglia.Passi().Memoria(), std::size_t{40} * Quante);
  gesti().Annulla();
  EXPECT_THAT(griglia.ElencoVariate(), IsEmpty());
}

TEST_F(GridFilter, ShowsTheRowsThatHaveWhatIsTypedInTheListsOrder) {
  gesti().Filtra({"alb"});
  EXPECT_THAT(InVista(), ElementsAre("ALBA", "ALBERTI"));
  gesti().Filtra({"albe"});
  EXPECT_THAT(InVista(), ElementsAre("ALBERTI"));
  gesti().Filtra({});
  EXPECT_THAT(InVista(), ElementsAre("ALBA", "ALBERTI", "BRUNI", "CORTI"));
}

TEST_F(GridFilter, KeepsTheCurrentRowOrGoesToTheNextOneInSight) {
  griglia.Seleziona(1); // ALBERTI
  gesti().Filtra({"-alba"});
  EXPECT_EQ(griglia.CellText(static_cast<std::size_t>(griglia.Stato().selected), Schermata::Conto), "ALBERTI");
  gesti().Filtra({"corti"});
  EXPECT_EQ(griglia.Stato().selected, 0);
  EXPECT_THAT(gesti().Scelte(), ElementsAre(Pair(0U, 0U)));
  gesti().Filtra({"zzz"});
  EXPECT_EQ(griglia.Stato().selected, -1);
  gesti().Filtra({});
  EXPECT_EQ(griglia.CellText(static_cast<std::size_t>(griglia.Stato().selected), Schermata::Conto), "CORTI");
}

TEST_F(GridFilter, LetsNoGestureSpreadToRowsThatAreNotInSight) {
  gesti().ScegliVisibili();
  gesti().Filtra({"alb"});
  DaiData("200127");
  EXPECT_THAT(Nuove(), ElementsAre("20/01/2027", "31/03/2006", "20/01/2027", "31/03/2006"));
  EXPECT_EQ(griglia.Stato().notice, "2 rate: scadenza 20/01/2027");
  gesti().Filtra({});
  EXPECT_EQ(gesti().QuanteScelte(), 4U) << "a filter drops no selection";
}

TEST_F(GridFilter, KeepsAnEditedRowUntilAnotherIsSelected) {
  gesti().Filtra({"31/03/2006 -2027"});
  EXPECT_EQ(griglia.Visibili(), 4U);
  griglia.Seleziona(1);
  DaiData("200127");
  EXPECT_EQ(griglia.Visibili(), 4U);
  griglia.Seleziona(2);
  EXPECT_THAT(InVista(), ElementsAre("ALBA", "BRUNI", "CORTI"));
  EXPECT_EQ(griglia.CellText(static_cast<std::size_t>(griglia.Stato().selected), Schermata::Conto), "BRUNI");
}

TEST_F(GridFilter, DropsNoChangeAndCountsThoseThatAreNotInSight) {
  griglia.Seleziona(0);
  DaiData("200127");
  gesti().Filtra({"corti"});
  EXPECT_EQ(gesti().QuanteVariate(), 1U);
  EXPECT_EQ(gesti().VariateNonInVista(), 1U);
  gesti().Annulla();
  EXPECT_EQ(griglia.Stato().notice, "Annullato: scadenza di 1 rata; 1 non in vista");
  EXPECT_EQ(NuovaScadenza(0), "31/03/2006");
  gesti().Rifai();
  griglia.PictureOk_Click();
  EXPECT_EQ(griglia.RigheConfermate().size(), 4U) << "what is hidden is sent too";
}

TEST_F(GridFilter, SaysHowManyTicksWereTakenAwayOutOfSight) {
  Clic(1, Schermata::Radio2);
  Clic(3, Schermata::Radio2);
  gesti().Filtra({"corti"});
  griglia.cmbBanche_Click(1);
  EXPECT_FALSE(griglia.righe.Spuntata(1, 1));
  EXPECT_EQ(griglia.Stato().notice, "2 rate: banca in alto; 1 non in vista");
}

TEST_F(GridFilter, ShowsTheChangedOrTheTickedRowsAlone) {
  griglia.Seleziona(2);
  DaiData("200127");
  Clic(3, Schermata::Radio2);
  gesti().Filtra({"", true, false});
  EXPECT_THAT(InVista(), ElementsAre("BRUNI"));
  gesti().Filtra({"", false, true});
  EXPECT_THAT(InVista(), ElementsAre("CORTI"));
  gesti().Filtra({"", true, true});
  EXPECT_THAT(InVista(), IsEmpty());
}

TEST_F(GridFilter, WritesAnOpenEditorBeforeItHidesItsRow) {
  ScriviData(1, "200127");
  gesti().Filtra({"alb"});
  EXPECT_EQ(NuovaScadenza(1), "20/01/2027");
  EXPECT_FALSE(griglia.Stato().data.visible);
}

TEST_F(GridFilter, MarksWhatItFound) {
  gesti().Filtra({"lb"});
  EXPECT_THAT(gesti().Trovati(0, Schermata::Conto), ElementsAre(Pair(1U, 3U)));
  EXPECT_THAT(gesti().Trovati(0, Schermata::Partita), IsEmpty());
}

TEST_F(GridFilter, JumpsToTheNextRowThatBeginsWithTheLettersTyped) {
  griglia.Seleziona(0);
  gesti().Salta("a", true);
  EXPECT_EQ(griglia.Stato().selected, 1);
  gesti().Salta("al", false);
  EXPECT_EQ(griglia.Stato().selected, 1);
  gesti().Salta("c", true);
  EXPECT_EQ(griglia.Stato().selected, 3);
  gesti().Salta("b", true);
  EXPECT_EQ(griglia.Stato().selected, 2) << "from the first again";
  gesti().Salta("z", true);
  EXPECT_EQ(griglia.Stato().selected, 2);
}

TEST_F(GridFilter, SelectsWhatIsLikeTheCurrentRow) {
  griglia.righe.ImpostaTag(1, Schermata::Conto, "C0");
  griglia.righe.ImpostaTag(3, Schermata::Conto, "C0");
  griglia.righe.ImpostaTesto(3, Schermata::Partita, "2006 9");
  griglia.Seleziona(0); // row 0
  gesti().ScegliSimili(Likeness::Account);
  EXPECT_THAT(griglia.Selezione().InVista(), ElementsAre(0, 1, 3));
  gesti().ScegliSimili(Likeness::Item);
  EXPECT_THAT(griglia.Selezione().InVista(), ElementsAre(0, 1));
  gesti().InvertiScelta();
  EXPECT_THAT(griglia.Selezione().InVista(), ElementsAre(2, 3));
}

TEST_F(GridSteps, SelectWhatIsOverdueAndWhatFallsInOneMonth) {
  Aggiungi("A", "04/03/2006");
  Aggiungi("B", "05/03/2006");
  Aggiungi("C", "31/03/2006");
  Aggiungi("D", "01/04/2006");
  Aggiungi("E", "");
  griglia.Resize();
  gesti().ScegliScadute(); // today is 5 March 2006
  EXPECT_THAT(griglia.Selezione().InVista(), ElementsAre(0));
  griglia.Seleziona(2);
  gesti().ScegliSimili(Likeness::Month);
  EXPECT_THAT(griglia.Selezione().InVista(), ElementsAre(0, 1, 2));
}

TEST_F(GridSteps, SelectTheRowsOfOneBankByItsCode) {
  Aggiungi("A", "31/03/2006", "BANCA");
  Aggiungi("B");
  Aggiungi("C", "31/03/2006", "BANCA");
  griglia.Resize();
  griglia.Seleziona(2);
  gesti().ScegliSimili(Likeness::Bank);
  EXPECT_THAT(griglia.Selezione().InVista(), ElementsAre(0, 2));
}

TEST(GridGroupsOutOfSight, GetTheBankOfTheirDocumentAndAreCounted) {
  const test::TestBench banco;
  FormPresunti schermata;
  Griglia& griglia = schermata.griglia();
  griglia.modo = griglia.Tag = "PRESUNTI";
  griglia.cmbBanche = griglia.cmbBanche2 = {{" ", "BANCA ALFA"}, {"B01"}};
  for (const char* documento : {"AB1/06", "AB2/06"}) {
    for (const char* divisa : {"EUR", "USD"}) {
      griglia.righe.Aggiungi({"ROSSI", documento, "31/03/06", divisa, "100,00", "", "", "", "2006/03/31"});
    }
  }
  griglia.Resize();
  griglia.Gestures()->Filtra({"eur"});
  griglia.Gestures()->ScegliVisibili();
  griglia.cmbBanche_Click(1);
  for (std::size_t riga = 0; riga < 4; ++riga) {
    EXPECT_EQ(griglia.righe.Testo(riga, FormPresunti::NuovaBanca), "BANCA ALFA");
  }
  EXPECT_EQ(griglia.Stato().notice, "4 righe: banca BANCA ALFA; 2 non in vista");
}

} // namespace
} // namespace lumoscad
