#include "SchermataDiProva.hpp"
#include "screens/CalendarioScadenze.hpp"
#include "screens/FormConsegna.hpp"
#include "screens/RicercaBanche.hpp"

namespace lumoscad {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class DueCalendar : public test::GrigliaDiProva {
 protected:
  std::size_t Rata(const std::string& scadenza, const std::string& importo, const std::string& nuova) {
    const std::size_t riga = Aggiungi("ROSSI", scadenza);
    griglia.righe.ImpostaTesto(riga, Schermata::Importo, importo);
    griglia.righe.ImpostaTesto(riga, Schermata::NuovaScadenza, nuova);
    return riga;
  }
  /// What the calendar tells of a day.
  CalendarDay Giorno(CalendarDate data) { return griglia.Fields()->Giorni(data, 1).at(0); }
};

TEST_F(DueCalendar, CountsAndSumsExactlyWhatFallsDueOnADay) {
  Rata("31/03/2006", "0,10", "31/03/2006");
  Rata("31/03/2006", "12.399,70", "31/03/2006");
  Rata("31/03/2006", "0,20", "31/03/2006");
  Rata("01/04/2006", "-5,00", "01/04/2006");
  EXPECT_EQ(Giorno({2006, 3, 31}).dueText, "3 rate, 12.400,00");
  EXPECT_EQ(Giorno({2006, 3, 31}).due, 3U);
  EXPECT_EQ(Giorno({2006, 4, 1}).dueText, "1 rata, -5,00");
  EXPECT_THAT(Giorno({2006, 4, 2}).dueText, IsEmpty());
  EXPECT_THAT(Giorno({2006, 3, 31}).presentText, IsEmpty());
}

TEST_F(DueCalendar, TellsWhatItWouldBeWithoutTheChanges) {
  Rata("31/03/2006", "100,00", "30/04/2006");
  Rata("31/03/2006", "50,00", "31/03/2006");
  EXPECT_EQ(Giorno({2006, 3, 31}).dueText, "1 rata, 50,00");
  EXPECT_EQ(Giorno({2006, 3, 31}).presentText, "2 rate, 150,00");
  EXPECT_EQ(Giorno({2006, 4, 30}).dueText, "1 rata, 100,00");
  EXPECT_EQ(Giorno({2006, 4, 30}).presentText, "nessuna rata");
  griglia.righe.ImpostaTesto(1, Schermata::NuovaScadenza, "30/04/2006");
  griglia.DeselezionaTutto("RADIO1"); // the grid counts another change
  EXPECT_EQ(Giorno({2006, 3, 31}).dueText, "nessuna rata");
  EXPECT_EQ(Giorno({2006, 4, 30}).dueText, "2 rate, 150,00");
}

TEST_F(DueCalendar, TakesARefusedDateForNoChange) {
  Rata("31/03/2006", "100,00", " ");
  EXPECT_EQ(Giorno({2006, 3, 31}).dueText, "1 rata, 100,00");
  EXPECT_THAT(Giorno({2006, 3, 31}).presentText, IsEmpty());
}

TEST_F(DueCalendar, GivesNoTotalWhereAnAmountCannotBeRead) {
  Rata("31/03/2006", "100,00", "31/03/2006");
  Rata("31/03/2006", "", "31/03/2006");
  EXPECT_EQ(Giorno({2006, 3, 31}).dueText, "2 rate");
}

TEST_F(DueCalendar, CountsARowWithoutADateOnNoDayUntilItGetsOne) {
  Rata("", "100,00", "");
  EXPECT_THAT(Giorno({1970, 1, 1}).dueText, IsEmpty());
  griglia.righe.ImpostaTesto(0, Schermata::NuovaScadenza, "31/03/2006");
  griglia.DeselezionaTutto("RADIO1");
  EXPECT_EQ(Giorno({2006, 3, 31}).dueText, "1 rata, 100,00");
}

TEST_F(DueCalendar, KnowsTodayWeekendsAndHolidays) {
  const auto giorni = griglia.Fields()->Giorni({2006, 3, 4}, 3);
  ASSERT_EQ(giorni.size(), 3U);
  EXPECT_TRUE(giorni[0].weekend);
  EXPECT_FALSE(giorni[0].today);
  EXPECT_TRUE(giorni[1].today);
  EXPECT_FALSE(giorni[2].weekend);
  EXPECT_EQ(giorni[2].date, (CalendarDate{2006, 3, 6}));
  EXPECT_EQ(Giorno({2006, 4, 17}).holiday, "Lunedì dell'Angelo");
  EXPECT_THAT(Giorno({2006, 4, 18}).holiday, IsEmpty());
}

TEST(DueCalendarOfTheDeliveries, KeepsCurrenciesApart) {
  const test::TestBench banco;
  FormConsegna form;
  Griglia& griglia = form.griglia();
  griglia.righe.Aggiungi({"ROSSI", "AB1/06", "10/03/2006", "EUR", "100,00", "100,00", "", "", ""});
  griglia.righe.Aggiungi({"ROSSI", "AB1/06", "10/03/2006", "USD", "30,00", "25,00", "", "", ""});
  griglia.righe.Aggiungi({"ROSSI", "AB2/06", "10/03/2006", "EUR", "0,50", "0,50", "", "", ""});
  EXPECT_EQ(griglia.Fields()->Giorni({2006, 3, 10}, 1).at(0).dueText, "3 righe, 100,50 EUR, 30,00 USD");
}

class FieldKeys : public test::GrigliaDiProva {};

TEST_F(FieldKeys, MoveTheDateInTheOpenEditorAsIfItWereTyped) {
  AggiungiMolte(2);
  Clic(1, Schermata::NuovaScadenza);
  griglia.Fields()->SpostaGiorni(DateField::Cell, 1);
  EXPECT_EQ(griglia.Stato().data.text, "01/04/2006");
  griglia.Fields()->SpostaMesi(DateField::Cell, -1);
  EXPECT_EQ(griglia.Stato().data.text, "01/03/2006");
  EXPECT_TRUE(griglia.Stato().data.visible);
  EXPECT_EQ(NuovaScadenza(1), "31/03/2006") << "nothing is written before the editor closes";
  griglia.TextScad_KeyPress(13);
  EXPECT_EQ(NuovaScadenza(1), "01/03/2006");
}

TEST_F(FieldKeys, DoNothingInAnEditorThatIsNotOpen) {
  AggiungiMolte(1);
  griglia.Fields()->SpostaGiorni(DateField::Cell, 1);
  griglia.Fields()->ScegliGiorno(DateField::Cell, {2006, 5, 1});
  EXPECT_THAT(griglia.Stato().data.text, IsEmpty());
  EXPECT_EQ(NuovaScadenza(0), "31/03/2006");
}

TEST_F(FieldKeys, MoveTheTopDateFromToday) {
  AggiungiMolte(1);
  EXPECT_EQ(griglia.Fields()->GiornoDelCampo(DateField::Top), (CalendarDate{2006, 3, 5}));
  griglia.Fields()->SpostaGiorni(DateField::Top, -1);
  EXPECT_EQ(griglia.Stato().dueDateText, "04/03/2006");
  griglia.Fields()->SpostaMesi(DateField::Top, 1);
  EXPECT_EQ(griglia.Stato().dueDateText, "04/04/2006");
}

TEST_F(FieldKeys, ADayOfTheCalendarIsWrittenIntoItsField) {
  AggiungiMolte(1);
  Clic(0, Schermata::NuovaScadenza);
  griglia.TextScad_Change("fm");
  EXPECT_EQ(griglia.Fields()->GiornoDelCampo(DateField::Cell), (CalendarDate{2006, 3, 31}));
  griglia.Fields()->ScegliGiorno(DateField::Cell, {2006, 5, 2});
  griglia.Fields()->ScegliGiorno(DateField::Top, {2000, 2, 29});
  EXPECT_EQ(griglia.Stato().data.text, "02/05/2006");
  griglia.PictureOk_Click();
  EXPECT_EQ(NuovaScadenza(0), "02/05/2006");
  Clic(0, Schermata::Radio1);
  EXPECT_EQ(griglia.Stato().dueDateText, "29/02/2000");
  EXPECT_THAT(banco.desktop.box, IsEmpty()) << "the date check takes what the calendar writes";
}

TEST_F(FieldKeys, LeavingTheTopFieldWritesAShortFormOutAndNothingElse) {
  AggiungiMolte(1);
  for (const auto& [scritto, rimasto] :
       {std::pair("+30", "04/04/2006"), std::pair("fm", "31/03/2006"), std::pair("FM", "FM"), std::pair("99", "99"),
        std::pair("010406", "010406"), std::pair("", "")}) {
    griglia.TextScadenza_Change(scritto);
    griglia.Fields()->EspandiTextScadenza();
    EXPECT_EQ(griglia.Stato().dueDateText, rimasto);
  }
  EXPECT_THAT(banco.desktop.box, IsEmpty()) << "the field is checked by the tick, as ever";
}

class BankTyping : public testing::Test {
 protected:
  [[nodiscard]] std::vector<int> Con(std::string_view testo) const { return CercaBanche(banche, testo).entries; }
  [[nodiscard]] int Proposta(std::string_view testo) const { return CercaBanche(banche, testo).best; }

  BancheCombo banche{{" ", "CASSA DI RISPARMIO DELLA LUNIGIANA", "Banca del Garda", "Credito Tirreno", "BANCA LÀTERA"},
                     {"1820.01", "B02", "1820.03", "LUN9"}};
};

TEST_F(BankTyping, FindsAnyPartOfAName) {
  EXPECT_THAT(Con("garda"), ElementsAre(2));
  EXPECT_THAT(Con("ris"), ElementsAre(1));
  EXPECT_THAT(Con("BANCA"), ElementsAre(2, 4));
  EXPECT_THAT(Con("latera"), ElementsAre(4));
  EXPECT_THAT(Con("zzz"), IsEmpty());
}

TEST_F(BankTyping, FindsAnyPartOfACode) {
  EXPECT_THAT(Con("1820"), ElementsAre(1, 3));
  EXPECT_THAT(Con("b02"), ElementsAre(2));
  EXPECT_THAT(Con("lun"), ElementsAre(1, 4));
}

TEST_F(BankTyping, TakesWordsInAnyOrder) {
  EXPECT_THAT(Con("garda banca"), ElementsAre(2));
  EXPECT_THAT(Con("tirreno 03"), ElementsAre(3));
  EXPECT_THAT(Con(" garda "), ElementsAre(2));
}

TEST_F(BankTyping, ProposesTheFirstThatBeginsWithTheText) {
  EXPECT_EQ(Proposta("c"), 1);
  EXPECT_EQ(Proposta("cr"), 3);
  EXPECT_EQ(Proposta("lun"), 4) << "by its code";
  EXPECT_EQ(Proposta("irr"), 3);
  EXPECT_EQ(Proposta("zzz"), -1);
}

TEST_F(BankTyping, OfNothingMeansEveryEntryAndProposesNone) {
  EXPECT_THAT(Con(""), ElementsAre(0, 1, 2, 3, 4));
  EXPECT_THAT(Con(" "), ElementsAre(0, 1, 2, 3, 4));
  EXPECT_EQ(Proposta(""), -1);
}

TEST_F(BankTyping, IsNotLedAstrayByAListWithFewerCodesThanEntries) {
  banche.codici.resize(1);
  EXPECT_THAT(Con("1820"), ElementsAre(1));
  EXPECT_THAT(Con("lun"), ElementsAre(1));
}

} // namespace
} // namespace lumoscad
