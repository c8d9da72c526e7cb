#include "screens/DataScritta.hpp"

#include "SchermataDiProva.hpp"
#include "common/Utilities.hpp"
#include "screens/FormConsegna.hpp"
#include "screens/FormLumoScad.hpp"

namespace lumoscad {
namespace {

using dataScritta::Espandi;
using dataScritta::Passo;
using dataScritta::Sposta;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr DateTime Oggi{2006, 3, 5, 14, 7, 9};
constexpr int CodiceInvio = 13;

TEST(ShortFormOfADate, EndOfMonthIsOfTheRowsPresentDate) {
  EXPECT_EQ(Espandi("fm", "15/02/2007", Oggi), "28/02/2007");
  EXPECT_EQ(Espandi("fm", "15/02/2024", Oggi), "29/02/2024");
  EXPECT_EQ(Espandi("fm", "30/11/2006", Oggi), "30/11/2006");
  EXPECT_EQ(Espandi("fm", "01/12/2006", Oggi), "31/12/2006");
}

TEST(ShortFormOfADate, DaysAreCountedFromTheRowsPresentDate) {
  EXPECT_EQ(Espandi("+30", "31/03/2006", Oggi), "30/04/2006");
  EXPECT_EQ(Espandi("+1", "28/02/2006", Oggi), "01/03/2006");
  EXPECT_EQ(Espandi("+1", "28/02/2024", Oggi), "29/02/2024");
  EXPECT_EQ(Espandi("+0", "31/03/2006", Oggi), "31/03/2006");
  EXPECT_EQ(Espandi("+007", "31/12/2006", Oggi), "07/01/2007");
  EXPECT_EQ(Espandi("+999", "01/01/2026", Oggi), "26/09/2028");
}

TEST(ShortFormOfADate, CountsFromTodayWhereThereIsNoPresentDate) {
  EXPECT_EQ(Espandi("+30", "", Oggi), "04/04/2006");
  EXPECT_EQ(Espandi("fm", "", Oggi), "31/03/2006");
  EXPECT_EQ(Espandi("fm", " ", Oggi), "31/03/2006");
}

TEST(ShortFormOfADate, ReadsAPresentDateWithTwoDigitsOfItsYear) {
  EXPECT_EQ(Espandi("+1", "31/12/06", Oggi), "01/01/2007");
}

TEST(ShortFormOfADate, EveryOtherTextStaysAsItIsTyped) {
  for (const char* testo :
       {"",    " ",  "FM",  "Fm",  "fm ", " fm", "fmm",    "f",        "+",          "+1234",      "+ 3", " +3",
        "+3 ", "-3", "+-3", "+3g", "++3", "3",   "150127", "15/01/27", "15/01/2027", "31/02/2027", "+è"}) {
    EXPECT_EQ(Espandi(testo, "31/03/2006", Oggi), testo);
  }
}

TEST(ShortFormOfADate, StaysAsItIsTypedWhereItsDateCannotBe) {
  EXPECT_EQ(Espandi("+1", "31/12/9999", Oggi), "+1");
  EXPECT_EQ(Espandi("+30", "presto", Oggi), "+30") << "never silently from another day";
}

TEST(ShortFormOfADate, IsADateThatTheCheckTakes) {
  const test::TestBench banco;
  for (const char* presente : {"15/02/2000", "15/02/2004", "15/02/2028", "15/02/2100", "31/12/1999", "28/02/2000"}) {
    for (const char* testo : {"fm", "+1", "+30"}) {
      const std::string controllata = Utilities::ControllaData(Espandi(testo, presente, Oggi));
      EXPECT_TRUE(LeggiGiorno(controllata)) << presente << " " << testo;
    }
  }
  EXPECT_EQ(Utilities::ControllaData(Espandi("fm", "15/02/2000", Oggi)), "29/02/2000");
  EXPECT_THAT(banco.desktop.box, IsEmpty());
}

TEST(SteppedDate, GoesFromWhatIsWrittenWhereThatIsADate) {
  const test::TestBench banco;
  EXPECT_EQ(Sposta("31/12/2006", "15/06/2006", Oggi, Passo::Giorno, 1), "01/01/2007");
  EXPECT_EQ(Sposta("311206", "15/06/2006", Oggi, Passo::Giorno, -1), "30/12/2006");
  EXPECT_EQ(Sposta("31/01/2006", "", Oggi, Passo::Mese, 1), "28/02/2006");
  EXPECT_EQ(Sposta("28/02/2006", "", Oggi, Passo::Mese, 1), "31/03/2006");
  EXPECT_EQ(Sposta("29/02/2000", "", Oggi, Passo::Giorno, 1), "01/03/2000");
  EXPECT_EQ(Sposta("+30", "31/03/2006", Oggi, Passo::Giorno, 1), "01/05/2006");
  EXPECT_THAT(banco.desktop.box, IsEmpty());
}

TEST(SteppedDate, GoesFromThePresentDateOrElseFromToday) {
  const test::TestBench banco;
  for (const char* testo : {"", " ", "1", "31/02/2006", "presto"}) {
    EXPECT_EQ(Sposta(testo, "15/06/2006", Oggi, Passo::Giorno, 1), "16/06/2006") << testo;
    EXPECT_EQ(Sposta(testo, "", Oggi, Passo::Mese, -1), "05/02/2006") << testo;
  }
  EXPECT_THAT(banco.desktop.box, IsEmpty()) << "a key asks nothing";
}

TEST(SteppedDate, StopsAtTheEndsOfTheCalendar) {
  EXPECT_EQ(Sposta("31/12/9999", "", Oggi, Passo::Giorno, 1), "31/12/9999");
  EXPECT_EQ(Sposta("15/12/9999", "", Oggi, Passo::Mese, 1), "15/12/9999");
}

class ShortFormInAField : public test::GrigliaDiProva {};

TEST_F(ShortFormInAField, OfARowCountsFromItsPresentDateNotFromTheNewOne) {
  AggiungiMolte(2);
  griglia.righe.ImpostaTesto(1, Schermata::NuovaScadenza, "15/09/2006");
  ScriviData(1, "+30");
  griglia.TextScad_KeyPress(CodiceInvio);
  EXPECT_EQ(NuovaScadenza(1), "30/04/2006");
  ScriviData(1, "fm");
  Clic(0, Schermata::Conto);
  EXPECT_EQ(NuovaScadenza(1), "31/03/2006");
  EXPECT_THAT(banco.desktop.box, IsEmpty());
}

TEST_F(ShortFormInAField, IsWrittenByConfirming) {
  AggiungiMolte(1);
  ScriviData(0, "+1");
  griglia.PictureOk_Click();
  EXPECT_EQ(NuovaScadenza(0), "01/04/2006");
}

TEST_F(ShortFormInAField, ThatIsAlmostOneGoesToTheCheckAsTyped) {
  AggiungiMolte(1);
  ScriviData(0, "FM");
  griglia.TextScad_KeyPress(CodiceInvio);
  EXPECT_EQ(NuovaScadenza(0), " ");
  EXPECT_THAT(banco.desktop.box, ElementsAre("Data errata: FM\rScrivi la data nel formato: GGMMAA oppure GG/MM/AAAA"));
}

TEST_F(ShortFormInAField, AtTheTopCountsFromTodayForEveryRowThatIsTicked) {
  AggiungiMolte(2);
  griglia.TextScadenza_Change("+30");
  Clic(0, Schermata::Radio1);
  EXPECT_EQ(griglia.Stato().dueDateText, "04/04/2006");
  Clic(1, Schermata::Radio1);
  EXPECT_EQ(NuovaScadenza(0), "04/04/2006");
  EXPECT_EQ(NuovaScadenza(1), "04/04/2006");
}

TEST(ShortFormInTheDeliveries, CountsFromThePlannedDate) {
  test::TestBench banco;
  FormConsegna form;
  Griglia& griglia = form.griglia();
  griglia.righe.Aggiungi({"ROSSI", "AB1/06", "10/03/2006", "EUR", "1,00", "1,00", "", "", "2006/03/10"});
  griglia.righe.Aggiungi({"ROSSI", "AB2/06", "", "EUR", "1,00", "1,00", "", "", ""});
  griglia.Tag = "CONSEGNA";
  griglia.Resize();
  for (std::ptrdiff_t posto : {0, 1}) {
    griglia.Seleziona(posto);
    griglia.InserisciScadenza(0, 0, 0);
    griglia.TextScad_Change("+7");
    griglia.TextScad_KeyPress(CodiceInvio);
  }
  EXPECT_EQ(griglia.righe.Testo(0, FormConsegna::NuovaConsegna), "17/03/2006");
  EXPECT_EQ(griglia.righe.Testo(1, FormConsegna::NuovaConsegna), "12/03/2006") << "without a planned date from today";
}

TEST(ShortFormInTheItem, IsWrittenOutWhereverItsDateIsTaken) {
  test::TestBench banco;
  FormLumoScad form([] { return std::string(); }, [] { return std::string(); });
  Griglia& griglia = form.griglia();
  form.Aggiungi("31/03/2006", "31/03/2006", "1.250,00");
  form.Aggiungi("30/04/2006", "30/04/2006", "1.250,00");
  form.ResizeScad();
  griglia.Seleziona(1);
  griglia.InserisciScadenza(0, 0, 0);
  griglia.TextScad_Change("+1");
  griglia.TextScad_LostFocus();
  EXPECT_EQ(griglia.righe.Testo(1, FormLumoScad::NuovaScadenza), "01/05/2006");
  griglia.TextScadenza_Change("fm");
  griglia.SpuntaCasella(0, true);
  EXPECT_EQ(griglia.righe.Testo(0, FormLumoScad::NuovaScadenza), "31/03/2006");
  EXPECT_EQ(griglia.Stato().dueDateText, "fm") << "a tick leaves the field as it is";
  griglia.TextScadenza_LostFocus();
  EXPECT_EQ(griglia.Stato().dueDateText, "31/03/2006");
  EXPECT_THAT(banco.desktop.box, IsEmpty());
}

} // namespace
} // namespace lumoscad
