#include "common/Giorni.hpp"

#include <gtest/gtest.h>

namespace lumoscad {
namespace {

std::string DopoIMesi(std::string_view data, int mesi) {
  return ScriviGiorno(DopoMesi(LeggiGiorno(data).value(), mesi));
}

TEST(DayOfTheCalendar, IsReadFromTheLayoutOfTheScreensAlone) {
  for (const char* data : {"01/01/0001", "29/02/2000", "28/02/1900", "31/12/9999", "05/03/2006"}) {
    ASSERT_TRUE(LeggiGiorno(data)) << data;
    EXPECT_EQ(ScriviGiorno(*LeggiGiorno(data)), data);
  }
  for (const char* testo : {"", " ", "5/3/2006", "05/03/06", "29/02/1900", "31/04/2006", "00/01/2006", "01/00/2006",
                            "01/13/2006", "01/01/0000", "01-01-2006", "+1/01/2006", "01/01/200x", "01/01/20066"}) {
    EXPECT_FALSE(LeggiGiorno(testo)) << testo;
  }
}

TEST(DayOfTheCalendar, IsTheOneOfALocalTime) {
  EXPECT_EQ(ScriviGiorno(GiornoDelMomento({2024, 2, 29, 23, 59, 59})), "29/02/2024");
}

TEST(MonthsLater, KeepTheNumberOfTheDayAsFarAsTheMonthHasIt) {
  EXPECT_EQ(DopoIMesi("15/01/2006", 1), "15/02/2006");
  EXPECT_EQ(DopoIMesi("15/01/2006", -1), "15/12/2005");
  EXPECT_EQ(DopoIMesi("30/01/2006", 1), "28/02/2006");
  EXPECT_EQ(DopoIMesi("29/01/2024", 1), "29/02/2024");
  EXPECT_EQ(DopoIMesi("30/03/2024", -13), "28/02/2023");
  EXPECT_EQ(DopoIMesi("15/01/2006", 240), "15/01/2026");
}

TEST(MonthsLater, KeepTheEndOfTheMonth) {
  EXPECT_EQ(DopoIMesi("31/01/2006", 1), "28/02/2006");
  EXPECT_EQ(DopoIMesi("28/02/2006", 1), "31/03/2006");
  EXPECT_EQ(DopoIMesi("28/02/2024", 1), "28/03/2024") << "not the last day of that February";
  EXPECT_EQ(DopoIMesi("30/04/2006", 1), "31/05/2006");
  EXPECT_EQ(DopoIMesi("31/03/2006", -1), "28/02/2006");
  EXPECT_EQ(DopoIMesi("31/12/2006", 1), "31/01/2007");
  for (int mesi = -40; mesi <= 40; ++mesi) {
    const Giorno giorno = DopoMesi(LeggiGiorno("31/10/2026").value(), mesi);
    EXPECT_EQ(giorno, UltimoDelMese(giorno)) << mesi;
  }
}

TEST(DayOfTheCalendar, EndsWithTheYearsThatDatesAreWrittenIn) {
  EXPECT_TRUE(Scrivibile(LeggiGiorno("31/12/9999").value()));
  EXPECT_FALSE(Scrivibile(LeggiGiorno("31/12/9999").value() + std::chrono::days(1)));
  EXPECT_FALSE(Scrivibile(LeggiGiorno("01/01/0001").value() - std::chrono::days(1)));
}

} // namespace
} // namespace lumoscad
