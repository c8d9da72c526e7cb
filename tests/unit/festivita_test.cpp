#include "common/Festivita.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>

namespace lumoscad {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

std::string_view NelGiorno(std::string_view data) {
  return Festivita(LeggiGiorno(data).value());
}

/// Easter by the tables of golden numbers and epacts, as the calendar's reform of 1582 laid them down.
Giorno PasquaPerEpatta(int anno) {
  const int aureo = anno % 19 + 1;
  const int secolo = anno / 100 + 1;
  const int saltati = 3 * secolo / 4 - 12;
  const int lunare = (8 * secolo + 5) / 25 - 5;
  const int domenicale = 5 * anno / 4 - saltati - 10;
  int epatta = (11 * aureo + 20 + lunare - saltati) % 30;
  if ((epatta == 25 && aureo > 11) || epatta == 24) {
    ++epatta;
  }
  int marzo = 44 - epatta;
  marzo += marzo < 21 ? 30 : 0;
  marzo += 7 - (domenicale + marzo) % 7;
  return Giorno(std::chrono::year(anno) / std::chrono::March / 1) + std::chrono::days(marzo - 1);
}

TEST(Easter, FallsOnTheDaysThatItIsKnownToHaveFallenOn) {
  for (const char* data : {"15/04/1900", "23/03/1913", "25/04/1943", "18/04/1954", "19/04/1981", "23/04/2000",
                           "31/03/2002", "23/03/2008", "24/04/2011", "27/03/2016", "21/04/2019", "12/04/2020",
                           "31/03/2024", "20/04/2025", "05/04/2026", "28/03/2027", "25/04/2038", "28/03/2100"}) {
    const Giorno giorno = LeggiGiorno(data).value();
    EXPECT_EQ(ScriviGiorno(Pasqua(std::stoi(std::string(data).substr(6)))), data);
    EXPECT_EQ(std::chrono::weekday(giorno), std::chrono::Sunday) << data;
  }
}

TEST(Easter, IsThatOfTheTablesInEveryYearOfThreeCenturies) {
  for (int anno = 1900; anno <= 2199; ++anno) {
    EXPECT_EQ(ScriviGiorno(Pasqua(anno)), ScriviGiorno(PasquaPerEpatta(anno)));
  }
}

std::map<std::string, std::string> Dell(int anno) {
  std::map<std::string, std::string> festivita;
  const Giorno primo = std::chrono::year(anno) / std::chrono::January / 1;
  for (Giorno giorno = primo; giorno < Giorno(std::chrono::year(anno + 1) / std::chrono::January / 1);
       giorno += std::chrono::days(1)) {
    if (const auto nome = Festivita(giorno); !nome.empty()) {
      const std::string data = ScriviGiorno(giorno);
      festivita.emplace(data.substr(3, 2) + "-" + data.substr(0, 2), nome);
    }
  }
  return festivita;
}

TEST(Holidays, AreThirteenInAYearAndEachHasItsName) {
  EXPECT_THAT(Dell(2027),
              ElementsAre(Pair("01-01", "Capodanno"), Pair("01-06", "Epifania"), Pair("03-28", "Pasqua"),
                          Pair("03-29", "Lunedì dell'Angelo"), Pair("04-25", "Anniversario della Liberazione"),
                          Pair("05-01", "Festa del Lavoro"), Pair("06-02", "Festa della Repubblica"),
                          Pair("08-15", "Assunzione di Maria"), Pair("10-04", "San Francesco d'Assisi"),
                          Pair("11-01", "Ognissanti"), Pair("12-08", "Immacolata Concezione"), Pair("12-25", "Natale"),
                          Pair("12-26", "Santo Stefano")));
}

TEST(Holidays, HaveSaintFrancisFrom2026On) {
  EXPECT_THAT(NelGiorno("04/10/2025"), IsEmpty());
  EXPECT_EQ(NelGiorno("04/10/2026"), "San Francesco d'Assisi");
  EXPECT_EQ(Dell(2025).size(), 12U);
  EXPECT_EQ(Dell(2026).size(), 13U);
}

TEST(Holidays, ThatFallTogetherAreNamedTogether) {
  EXPECT_EQ(NelGiorno("25/04/2038"), "Pasqua e Anniversario della Liberazione");
  EXPECT_EQ(NelGiorno("25/04/2011"), "Lunedì dell'Angelo e Anniversario della Liberazione");
  EXPECT_EQ(NelGiorno("24/04/2011"), "Pasqua");
}

TEST(Holidays, AreNotThePlainDaysBesideThem) {
  for (const char* data : {"02/01/2027", "30/03/2027", "27/03/2027", "24/12/2026", "31/12/2026", "04/11/2026"}) {
    EXPECT_THAT(NelGiorno(data), IsEmpty()) << data;
  }
}

TEST(Weekends, AreSaturdayAndSunday) {
  EXPECT_TRUE(FineSettimana(LeggiGiorno("21/11/2026").value()));
  EXPECT_TRUE(FineSettimana(LeggiGiorno("22/11/2026").value()));
  EXPECT_FALSE(FineSettimana(LeggiGiorno("20/11/2026").value()));
  EXPECT_FALSE(FineSettimana(LeggiGiorno("23/11/2026").value()));
}

} // namespace
} // namespace lumoscad
