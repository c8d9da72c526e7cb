// What a list says of itself, and what is taken from it and brought into it.

#include "SchermataDiProva.hpp"
#include "screens/EsportaGriglia.hpp"
#include "screens/FormConsegna.hpp"
#include "screens/FormPresunti.hpp"
#include "support/Files.hpp"
#include "support/Paths.hpp"

#include <algorithm>
#include <fstream>

namespace lumoscad {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

/// Six instalments of three accounts, the banks "B06" and "B07", and one without a bank.
class ListReports : public test::GrigliaDiProva {
 protected:
  ListReports() {
    griglia.cmbBanche = griglia.cmbBanche2 = {{" ", "BANCA ALFA", "BANCA BETA"}, {"B06", "B07"}};
    Rata("ROSSI", "31/03/2026", "BANCA ALFA", "1.584,36");
    Rata("ROSSI", "30/04/2026", "BANCA ALFA", "0,10");
    Rata("BIANCHI", "31/03/2026", "", "0,20");
    Rata("VERDI", "31/12/2026", "BANCA ALFA", "-20,50");
    griglia.Resize();
    griglia.Prepara();
  }
  void Rata(const std::string& conto, const std::string& scadenza, const std::string& banca,
            const std::string& importo) {
    griglia.righe.ImpostaTesto(Aggiungi(conto, scadenza, banca), Schermata::Importo, importo);
  }
  [[nodiscard]] ListReport& Resoconto() { return *griglia.Report(); }
  void DaiData(std::size_t riga, std::string_view data) {
    ScriviData(riga, data);
    griglia.TextScad_KeyPress(13);
  }
  void DaiBanca(std::size_t riga, int indice) {
    Clic(riga, Schermata::NuovaBanca);
    griglia.cmbBanche2_Click(indice);
    griglia.Form_Click();
  }
  void ScegliTutte() { griglia.Gestures()->ScegliVisibili(); }
  [[nodiscard]] std::string Avviso() const { return griglia.Stato().notice; }
  /// "BANCA ALFA: 10,00 € 12,00 €", and a star where it changes.
  [[nodiscard]] std::vector<std::string> Barre(std::size_t gruppo) {
    std::vector<std::string> barre;
    const auto gruppi = Resoconto().Effetto();
    for (const EffectBar& barra : gruppi.at(gruppo).bars) {
      barre.push_back(barra.name + ": " + barra.before + " " + barra.after + (barra.changed ? " *" : ""));
    }
    return barre;
  }
};

using ListFoot = ListReports;
using ChangeSentences = ListReports;
using ChangeEffect = ListReports;
using RowsTakenAway = ListReports;
using PastedColumn = ListReports;

TEST_F(ListFoot, SaysThatNothingIsChanged) {
  EXPECT_THAT(Resoconto().Piede(), ElementsAre("Nessuna variazione"));
}

TEST_F(ListFoot, CountsAndAddsWhatIsSelectedTickedAndChanged) {
  ScegliTutte();
  EXPECT_THAT(Resoconto().Piede(), ElementsAre("4 scelte: 1.564,16 €", "Nessuna variazione"));
  griglia.TextScadenza_Change("20/01/2027");
  griglia.Seleziona(0);
  Clic(1, Schermata::Radio1);
  Clic(2, Schermata::Radio1);
  DaiData(3, "31/01/2027");
  EXPECT_THAT(Resoconto().Piede(), ElementsAre("2 spuntate: 0,30 €", "3 variate: -20,20 €"));
}

TEST_F(ListFoot, NeverAddsAcrossCurrencies) {
  FormConsegna consegna;
  Griglia& presunti = consegna.griglia();
  presunti.Tag = "CONSEGNA";
  presunti.righe.Aggiungi({"ROSSI", "AB1/26", "01/02/2026", "USD", "10,00", "9,00"});
  presunti.righe.Aggiungi({"ROSSI", "AB2/26", "01/02/2026", "EUR", "2,00", "2,00"});
  presunti.righe.Aggiungi({"ROSSI", "AB3/26", "01/02/2026", "USD", "0,50", "0,40"});
  consegna.ResizeConsegna();
  presunti.Prepara();
  presunti.Gestures()->ScegliVisibili();
  EXPECT_THAT(presunti.Report()->Piede(), ElementsAre("3 scelte: 2,00 EUR; 10,50 USD", "Nessuna variazione"));
}

TEST_F(ChangeSentences, TellTheOldValueAndTheNew) {
  DaiData(0, "20/01/2027");
  DaiBanca(0, 2);
  DaiBanca(2, 1);
  DaiBanca(3, 0);
  ASSERT_EQ(Resoconto().QuanteFrasi(), 3U);
  EXPECT_EQ(Resoconto().Frase(0), "ROSSI, 2006 1, rata 1, 1.584,36 €: scadenza dal 31/03/2026 al 20/01/2027; "
                                  "banca da BANCA ALFA a BANCA BETA");
  EXPECT_EQ(Resoconto().Frase(1), "BIANCHI, 2006 1, rata 1, 0,20 €: banca BANCA ALFA (prima nessuna)");
  EXPECT_EQ(Resoconto().Frase(2), "VERDI, 2006 1, rata 1, -20,50 €: banca tolta (era BANCA ALFA)");
  EXPECT_EQ(Resoconto().Frase(3), "");
}

TEST_F(ChangeSentences, AreTakenBackInOneStepAndOnlyThatOne) {
  DaiData(0, "20/01/2027");
  DaiBanca(0, 2);
  DaiBanca(2, 1);
  Resoconto().RiprendiFrasi({0});
  EXPECT_EQ(NuovaScadenza(0), "31/03/2026");
  EXPECT_EQ(griglia.righe.Testo(0, Schermata::NuovaBanca), "BANCA ALFA");
  EXPECT_EQ(griglia.righe.Tag(0, Schermata::NuovaBanca), "");
  EXPECT_FALSE(griglia.righe.Spuntata(0, 1));
  EXPECT_EQ(Resoconto().QuanteFrasi(), 1U);
  EXPECT_EQ(Avviso(), "1 rata: come prima");
  griglia.Annulla();
  EXPECT_EQ(Resoconto().QuanteFrasi(), 2U);
  EXPECT_EQ(NuovaScadenza(0), "20/01/2027");
  Resoconto().RiprendiFrasi({7});
  EXPECT_EQ(Resoconto().QuanteFrasi(), 2U);
}

TEST_F(ChangeSentences, TakeADocumentBackWhole) {
  FormPresunti schermataPresunti;
  Griglia& presunti = schermataPresunti.griglia();
  presunti.modo = presunti.Tag = "PRESUNTI";
  presunti.cmbBanche = presunti.cmbBanche2 = griglia.cmbBanche;
  for (int i = 0; i < 2; ++i) {
    const auto riga = presunti.righe.Aggiungi({"ROSSI", "AB1/26", "01/02/26", "USD", "10,00", "BANCA ALFA", "", ""});
    presunti.righe.ImpostaTag(riga, FormPresunti::Banca, "B06");
  }
  schermataPresunti.ResizePresunti();
  presunti.Prepara();
  presunti.Seleziona(0);
  presunti.cmbBanche_Click(2);
  EXPECT_EQ(presunti.Report()->QuanteFrasi(), 2U);
  presunti.Report()->RiprendiFrasi({0});
  EXPECT_EQ(presunti.Report()->QuanteFrasi(), 0U);
  EXPECT_EQ(presunti.righe.Testo(1, FormPresunti::NuovaBanca), "");
}

TEST_F(ChangeEffect, ShowsEachBankAndEachMonthBeforeAndAfter) {
  EXPECT_THAT(Barre(0), ElementsAre("BANCA ALFA: 1.563,96 € 1.563,96 €", "nessuna banca: 0,20 € 0,20 €"));
  EXPECT_THAT(Barre(1),
              ElementsAre("03/2026: 1.584,56 € 1.584,56 €", "04/2026: 0,10 € 0,10 €", "12/2026: -20,50 € -20,50 €"));
  DaiData(0, "20/01/2027");
  DaiBanca(0, 2);
  DaiBanca(3, 0);
  EXPECT_THAT(Barre(0), ElementsAre("BANCA ALFA: 1.563,96 € 0,10 € *", "BANCA BETA: 0,00 € 1.584,36 € *",
                                    "nessuna banca: 0,20 € -20,30 € *"));
  EXPECT_THAT(Barre(1), ElementsAre("03/2026: 1.584,56 € 0,20 € *", "04/2026: 0,10 € 0,10 €",
                                    "12/2026: -20,50 € -20,50 €", "01/2027: 0,00 € 1.584,36 € *"));
  griglia.Annulla();
  griglia.Annulla();
  griglia.Annulla();
  EXPECT_THAT(Barre(0), ElementsAre("BANCA ALFA: 1.563,96 € 1.563,96 €", "nessuna banca: 0,20 € 0,20 €"));
}

TEST_F(ChangeEffect, DrawsBarsInProportionToTheLargest) {
  const auto barre = Resoconto().Effetto().at(1).bars;
  EXPECT_EQ(barre[0].beforePart, 1000);
  EXPECT_EQ(barre[2].beforePart, 12);
  EXPECT_TRUE(barre[2].negativeBefore);
}

TEST_F(ChangeEffect, AddsUpToTheSameBeforeAndAfter) {
  DaiData(0, "20/01/2027");
  DaiBanca(1, 2);
  DaiBanca(2, 1);
  for (const EffectGroup& gruppo : Resoconto().Effetto()) {
    ImportoEsatto prima;
    ImportoEsatto dopo;
    for (const EffectBar& barra : gruppo.bars) {
      prima += ImportoEsatto::Leggi(barra.before.substr(0, barra.before.find(' '))).value_or(ImportoEsatto());
      dopo += ImportoEsatto::Leggi(barra.after.substr(0, barra.after.find(' '))).value_or(ImportoEsatto());
    }
    EXPECT_EQ(prima.Testo(), "1.564,16");
    EXPECT_EQ(dopo.Testo(), "1.564,16");
  }
}

TEST_F(ChangeEffect, ShowsTheRowsBehindABarAloneAndAllOfThemTheSecondTime) {
  const auto inVista = [this] {
    std::vector<std::size_t> righe;
    for (std::size_t posto = 0; posto < griglia.Visibili(); ++posto) {
      righe.push_back(griglia.RigaVisibile(posto));
    }
    return righe;
  };
  DaiBanca(0, 2);
  Resoconto().ScegliDietro(0, 1);
  EXPECT_THAT(inVista(), ElementsAre(0));
  EXPECT_EQ(griglia.Gestures()->Filtro().behind, "Per banca: BANCA BETA");
  EXPECT_EQ(griglia.Stato().notice, "Per banca: BANCA BETA: 1 rata, le altre non sono in vista");
  EXPECT_TRUE(Resoconto().Effetto()[0].bars[1].filters);
  Resoconto().ScegliDietro(1, 0);
  EXPECT_THAT(inVista(), testing::UnorderedElementsAre(0, 2));
  Resoconto().ScegliDietro(5, 0);
  Resoconto().ScegliDietro(0, 50);
  EXPECT_EQ(griglia.Visibili(), 2U);
  Resoconto().ScegliDietro(1, 0);
  EXPECT_EQ(griglia.Visibili(), griglia.righe.Quante());
  EXPECT_TRUE(griglia.Gestures()->Filtro().Empty());
  EXPECT_FALSE(Resoconto().Effetto()[1].bars[0].filters);
}

TEST_F(ChangeEffect, OfABarIsPartOfTheFilterAndGoesWithIt) {
  DaiBanca(0, 2);
  Resoconto().ScegliDietro(1, 0);
  ListFilter filtro = griglia.Gestures()->Filtro();
  filtro.changedOnly = true;
  griglia.Gestures()->Filtra(filtro);
  EXPECT_EQ(griglia.Visibili(), 1U) << "behind the bar, and changed";
  filtro.behind.clear();
  griglia.Gestures()->Filtra(filtro);
  EXPECT_EQ(griglia.Visibili(), 1U);
  griglia.Gestures()->Filtra({});
  EXPECT_EQ(griglia.Visibili(), griglia.righe.Quante());
  Resoconto().ScegliDietro(1, 0);
  griglia.Azzera();
  EXPECT_TRUE(griglia.Gestures()->Filtro().Empty());
}

TEST_F(ChangeEffect, KeepsARowBehindItsBarThatIsMovedIntoIt) {
  Resoconto().ScegliDietro(1, 0);
  const std::size_t prima = griglia.Visibili();
  griglia.Gestures()->Filtra({});
  const auto mese = std::string(griglia.righe.Testo(griglia.RigaVisibile(0), Schermata::Scadenza));
  DaiData(3, mese);
  Resoconto().ScegliDietro(1, 0);
  EXPECT_EQ(griglia.Visibili(), prima + 1);
  griglia.Seleziona(2);
  ASSERT_EQ(griglia.RigaSelezionata(), 3U);
  griglia.LVScadenze_MouseDown(Mezzo(Schermata::NuovaScadenza), 5);
  griglia.LVScadenze_Click(240);
  griglia.TextScad_Change("01/01/2030");
  griglia.TextScad_KeyPress(13);
  EXPECT_EQ(griglia.Visibili(), prima + 1) << "the person is still at it";
  griglia.Seleziona(0);
  EXPECT_EQ(griglia.Visibili(), prima) << "it has left the month, and the person has left it";
}

TEST_F(RowsTakenAway, AreTheListOrTheSelection) {
  EXPECT_THAT(EsportaGriglia(griglia).Righe(), SizeIs(4));
  griglia.Seleziona(1);
  griglia.Gestures()->Vai(2, {true, false});
  EXPECT_THAT(EsportaGriglia(griglia).Righe(), SizeIs(2));
}

TEST_F(RowsTakenAway, AreWrittenForAnItalianSpreadsheet) {
  DaiBanca(3, 0);
  griglia.Seleziona(2);
  griglia.Gestures()->Vai(3, {true, false});
  EXPECT_EQ(Resoconto().Csv(),
            "\xEF\xBB\xBF"
            "Conto;Partita;Scadenza;Scad. orig.;Banca;Importo;Spunta scadenza;Nuova Scad;Spunta banca;NuovaBanca\r\n"
            "ROSSI;2006 1;30/04/2026;31/01/2006;BANCA ALFA;0,10;;30/04/2026;;BANCA ALFA\r\n"
            "VERDI;2006 1;31/12/2026;31/01/2006;BANCA ALFA;-20,50;;31/12/2026;sì;ANNULLA\r\n");
}

TEST_F(RowsTakenAway, KeepSemicolonsQuotesAndLineEndsInTheirCell) {
  Rata("A;B \"C\"\r\nD", "31/03/2026", "", "1,00");
  EXPECT_THAT(Resoconto().Csv(), HasSubstr("\r\n\"A;B \"\"C\"\"\r\nD\";2006 1;"));
  EXPECT_THAT(Resoconto().Copia().text, HasSubstr("\nA;B \"C\"  D\t2006 1\t"));
}

TEST_F(RowsTakenAway, AreNoFormulas) {
  using std::string_view_literals::operator""sv;
  for (const std::string_view testo : {"=1+1"sv, "+1"sv, "-1"sv, "@A1"sv, "\t=1"sv, "\r=1"sv, "\n=1"sv, "\0=1"sv,
                                       "  =1"sv, "＝1"sv, "=\0"sv, "\0"sv}) {
    EXPECT_THAT(SenzaFormula(testo), StartsWith("'")) << testo;
    EXPECT_EQ(SenzaFormula(testo).find('\0'), std::string::npos) << testo;
  }
  for (const std::string_view testo : {""sv, " "sv, "ROSSI"sv, "1=1"sv, "31/03/2026"sv, "'=1"sv, "È"sv}) {
    EXPECT_EQ(SenzaFormula(testo), testo);
  }
  EXPECT_EQ(SenzaFormula("A\0B"sv), "AB");
}

TEST_F(RowsTakenAway, GuardTextsAndNeverAmounts) {
  Rata("=CMD|' /C calc'!A0", "31/03/2026", "@SUM(1)", "-1.000,00");
  griglia.righe.ImpostaTesto(4, Schermata::Partita, "-12/2026");
  const std::string csv = Resoconto().Csv();
  EXPECT_THAT(
      csv, HasSubstr("'=CMD|' /C calc'!A0;'-12/2026;31/03/2026;31/01/2006;'@SUM(1);-1.000,00;;31/03/2026;;'@SUM(1)"));
  EXPECT_THAT(Resoconto().Copia().html, HasSubstr("<td>'=CMD|' /C calc'!A0</td>"));
  EXPECT_THAT(Resoconto().Copia().html, HasSubstr("<td align=\"right\">-1.000,00</td>"));
}

/// What a text must not become, and what an amount must stay; scripts/spreadsheet.sh opens the file in a spreadsheet.
TEST_F(RowsTakenAway, AreWrittenAsAFileForASpreadsheet) {
  using std::string_literals::operator""s;
  for (const std::string& testo :
       {"=1+1"s, "+1"s, "-1"s, "@SUM(1)"s, "\t=1+1"s, "\r=1+1"s, "\n=1+1"s, "\0=1+1"s, "  =1+1"s, "＝1+1"s,
        "=CMD|' /C calc'!A0"s, "=HYPERLINK(\"http://x\";\"x\")"s, "A;B \"C\""s, "Città e È"s, "'detto"s}) {
    Rata(testo, "31/03/2026", "", "-1.000,05");
  }
  Rata("IMPORTO GRANDE", "29/02/2028", "", "12.345.678.901,23");
  const std::string csv = Resoconto().Csv();
  const auto file = test::OutputPath("foglio.csv");
  std::ofstream(file, std::ios::binary) << csv;
  EXPECT_EQ(test::FileText(file), csv);
  EXPECT_EQ(std::count(csv.begin(), csv.end(), ';'), 21 * 9 + 2) << "two texts hold one";
}

TEST_F(RowsTakenAway, AreATableWhoseTextsMeanNothingToAPage) {
  Rata("A<b>&\"", "31/03/2026", "", "1,00");
  EXPECT_THAT(Resoconto().Copia().html, HasSubstr("<td>A&lt;b&gt;&amp;&quot;</td>"));
  EXPECT_EQ(Avviso(), "Copiate 5 rate");
}

TEST_F(RowsTakenAway, ArePrintedWithTheirTotals) {
  DaiData(0, "20/01/2027");
  const PrintedTable tabella = Resoconto().Stampa();
  EXPECT_THAT(tabella.columns, SizeIs(10));
  EXPECT_THAT(tabella.rows, SizeIs(4));
  EXPECT_THAT(tabella.totals, ElementsAre("4 rate: 1.564,16 €", "1 variata: 1.584,36 €"));
}

TEST_F(PastedColumn, GivesOneDateToAllSelectedRows) {
  ScegliTutte();
  Resoconto().Incolla("20/01/2027\r\n", Schermata::NuovaScadenza);
  EXPECT_EQ(NuovaScadenza(0), "20/01/2027");
  EXPECT_EQ(NuovaScadenza(3), "20/01/2027");
  EXPECT_EQ(Avviso(), "4 rate: scadenza incollata");
  griglia.Annulla();
  EXPECT_EQ(Resoconto().QuanteFrasi(), 0U);
}

TEST_F(PastedColumn, GivesEachRowItsOwnFromTopToBottom) {
  ScegliTutte(); // BIANCHI, ROSSI, ROSSI, VERDI
  Resoconto().Incolla("200127\n+30\n\n31/12/2026", Schermata::NuovaScadenza);
  EXPECT_EQ(NuovaScadenza(2), "20/01/2027");
  EXPECT_EQ(NuovaScadenza(0), "30/04/2026") << "thirty days behind its own date";
  EXPECT_EQ(NuovaScadenza(1), "30/04/2026") << "nothing leaves it as it was";
  EXPECT_EQ(NuovaScadenza(3), "31/12/2026");
  EXPECT_EQ(Avviso(), "2 rate: scadenza incollata; 2 già così");
}

TEST_F(PastedColumn, IsRefusedWholeWithOneBox) {
  ScegliTutte();
  Resoconto().Incolla("20/01/2027\n31/13/2026\n99/99/9999\n01/01/2027", Schermata::NuovaScadenza);
  EXPECT_EQ(Resoconto().QuanteFrasi(), 0U);
  EXPECT_THAT(banco.desktop.box, SizeIs(1));
  EXPECT_EQ(Avviso(), "Non incollato: «31/13/2026» non è una data");
}

TEST_F(PastedColumn, GivesBanksByTheirCodes) {
  ScegliTutte();
  Resoconto().Incolla("B07\nB07\nB06\nB07", Schermata::NuovaBanca);
  EXPECT_EQ(griglia.righe.Tag(2, Schermata::NuovaBanca), "B07");
  EXPECT_EQ(griglia.righe.Testo(0, Schermata::NuovaBanca), "BANCA BETA");
  EXPECT_TRUE(griglia.righe.Spuntata(0, 1));
  EXPECT_EQ(Resoconto().QuanteFrasi(), 3U) << "one row has that bank already";
  griglia.Annulla();
  EXPECT_EQ(Resoconto().QuanteFrasi(), 0U);
  EXPECT_FALSE(griglia.righe.Spuntata(0, 1));
}

TEST_F(PastedColumn, IsRefusedWholeForABankThatIsNotThere) {
  ScegliTutte();
  Resoconto().Incolla("B07\nB07\nB99\nB07", Schermata::NuovaBanca);
  EXPECT_EQ(Resoconto().QuanteFrasi(), 0U);
  EXPECT_FALSE(griglia.righe.Spuntata(0, 1));
  EXPECT_EQ(Avviso(), "Non incollato: «B99» non è il codice di una banca");
}

TEST_F(PastedColumn, MustFitTheSelection) {
  ScegliTutte();
  Resoconto().Incolla("B07\nB07", Schermata::NuovaBanca);
  EXPECT_EQ(Avviso(), "Non incollato: 2 valori per 4 rate");
  Resoconto().Incolla("B07\tB06", Schermata::NuovaBanca);
  EXPECT_EQ(Avviso(), "Non incollato: si incolla una colonna sola");
  Resoconto().Incolla("", Schermata::NuovaBanca);
  EXPECT_EQ(Avviso(), "Niente da incollare");
  EXPECT_EQ(Resoconto().QuanteFrasi(), 0U);
}

TEST_F(PastedColumn, KnowsBanksFromDatesInAnyOtherColumn) {
  ScegliTutte();
  Resoconto().Incolla("B07", Schermata::Conto);
  EXPECT_EQ(griglia.righe.Tag(0, Schermata::NuovaBanca), "B07");
  Resoconto().Incolla("20/01/2027", Schermata::Conto);
  EXPECT_EQ(NuovaScadenza(0), "20/01/2027");
}

} // namespace
} // namespace lumoscad
