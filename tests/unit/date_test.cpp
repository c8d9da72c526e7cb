#include "common/Utilities.hpp"
#include "platform/RuntimeError.hpp"
#include "support/TestBench.hpp"

#include <array>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

using namespace lumoscad;
using namespace lumoscad::Utilities;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class Date : public testing::Test {
 protected:
  /// `testo` is refused with exactly the message `messaggio`.
  void Rifiuta(const std::string& testo, const std::string& messaggio) {
    banco_.desktop.box.clear();
    EXPECT_EQ(ControllaData(testo), " ") << testo;
    EXPECT_THAT(banco_.desktop.box, ElementsAre(messaggio)) << testo;
  }
  /// `testo` is refused for its form; the message shows it as `mostrato`.
  void RifiutaForma(const std::string& testo, const std::string& mostrato) {
    Rifiuta(testo, "Data errata: " + mostrato + "\rScrivi la data nel formato: GGMMAA oppure GG/MM/AAAA");
  }
  void Accetta(const std::string& testo, const std::string& data) {
    banco_.desktop.box.clear();
    EXPECT_EQ(ControllaData(testo), data) << testo;
    EXPECT_THAT(banco_.desktop.box, IsEmpty()) << testo;
  }

  test::TestBench banco_;
};

struct Giorno {
  int giorno, mese, anno;
};

/// Calls `prova` with every day of 2000-2049.
template <typename Prova> void OgniGiorno(Prova prova) {
  constexpr std::array<int, 12> Giorni = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  for (int anno = 2000; anno <= 2049; ++anno) {
    for (int mese = 1; mese <= 12; ++mese) {
      const int ultimo = mese == 2 && anno % 4 == 0 ? 29 : Giorni.at(static_cast<std::size_t>(mese - 1));
      for (int giorno = 1; giorno <= ultimo; ++giorno) {
        prova(Giorno{giorno, mese, anno}, giorno == ultimo);
      }
    }
  }
}

std::string Cifre(int valore, int quante) {
  std::string testo = std::to_string(valore);
  while (static_cast<int>(testo.size()) < quante) {
    testo.insert(0, "0");
  }
  return testo;
}

std::string Estesa(Giorno g) {
  return Cifre(g.giorno, 2) + "/" + Cifre(g.mese, 2) + "/" + std::to_string(g.anno);
}

std::string Iso(Giorno g) {
  return std::to_string(g.anno) + "-" + Cifre(g.mese, 2) + "-" + Cifre(g.giorno, 2);
}

template <typename Azione> int NumeroErrore(Azione azione) {
  try {
    azione();
  } catch (const RuntimeError& errore) {
    return errore.Number();
  }
  return 0;
}

} // namespace

TEST_F(Date, OfSixOrEightDigitsReceivesItsSlashes) {
  Accetta("050306", "05/03/2006");
  Accetta("05032006", "05/03/2006");
}

TEST_F(Date, MayHaveOneDigitForDayAndMonth) {
  Accetta("5/3/06", "05/03/2006");
  Accetta("5/3/2006", "05/03/2006");
}

TEST_F(Date, IgnoresBlanksAtItsEnds) {
  Accetta("  050306 ", "05/03/2006");
  Accetta(" 5/3/06 ", "05/03/2006");
}

TEST_F(Date, OfAnEmptyTextIsRefusedInSilence) {
  Accetta("", " ");
}

TEST_F(Date, OfBlanksAloneIsWrong) {
  RifiutaForma("   ", "");
}

TEST_F(Date, WithoutSlashesNeedsSixOrEightCharacters) {
  RifiutaForma("5306", "5306");
  RifiutaForma("0503006", "0503006");
  RifiutaForma("ieri", "ieri");
}

TEST_F(Date, IsShownInTheMessageWithTheSlashesAdded) {
  RifiutaForma("abcdef", "ab/cd/ef");
  RifiutaForma("abcdefgh", "ab/cd/efgh");
}

TEST_F(Date, CountsCharactersAndNotBytes) {
  RifiutaForma("0è036", "0è036");
  RifiutaForma("0è0306", "0è/03/06");
  RifiutaForma("èèèèèèèè", "èè/èè/èèèè");
}

TEST_F(Date, OfATwoDigitYearLiesBetween1950And2049) {
  Accetta("010149", "01/01/2049");
  Accetta("010150", "01/01/1950");
  Accetta("311299", "31/12/1999");
  Accetta("010100", "01/01/2000");
}

TEST_F(Date, KeepsAYearOfFourDigitsAsWritten) {
  Accetta("31/12/2050", "31/12/2050");
  Accetta("01/01/1949", "01/01/1949");
}

TEST_F(Date, WithoutAYearTakesThePresentOne) {
  Accetta("5/3", "05/03/2006");
  Rifiuta("5/13", "Mese errato: 5/13");
  RifiutaForma("29/02", "29/02");
}

TEST_F(Date, OfTheThirteenthMonthHasAMessageOfItsOwn) {
  Rifiuta("31/13/06", "Mese errato: 31/13/06");
  Rifiuta("311306", "Mese errato: 31/13/06");
  Rifiuta("05/13/2006", "Mese errato: 05/13/2006");
}

TEST_F(Date, OfTheTwentyNinthOfFebruaryNeedsALeapYear) {
  Accetta("29/02/00", "29/02/2000");
  Accetta("290204", "29/02/2004");
  Rifiuta("29/02/06", "Data errata: 29/02/06\rL'anno non è bisestile ");
  Rifiuta("30/02/05", "Data errata: 30/02/05\rL'anno non è bisestile ");
}

TEST_F(Date, MovesAYearOfFourDigitsBeforeTheLeapYearIsTried) {
  Rifiuta("29/02/2000", "Data errata: 29/02/2000\rL'anno non è bisestile ");
  Accetta("29/02/2004", "29/02/2004");
  Accetta("28/02/2000", "28/02/2000");
}

TEST_F(Date, ThatDoesNotExistIsNeverReadWithItsFieldsSwapped) {
  for (const char* testo : {"31/04/06", "32/01/06", "30/02/04", "2006/03/05", "29/02/2100"}) {
    RifiutaForma(testo, testo);
  }
}

TEST_F(Date, IsNoneWhereItIsNoNumber) {
  for (const char* testo : {"a/3/06", "5/marzo/06", "5//06", "5/3/", "/", "5/3/06/1", "-5/3/06", "5/3/006", "0/1/06"}) {
    RifiutaForma(testo, testo);
  }
}

TEST_F(Date, HasMessagesUnderTheProductsTitle) {
  RifiutaForma("ieri", "ieri");
  EXPECT_THAT(banco_.desktop.titles, ElementsAre("LumoScad"));
}

TEST_F(Date, OfEveryDayWrittenInSixDigitsComesBackInFull) {
  OgniGiorno([&](Giorno g, bool) {
    ASSERT_EQ(ControllaData(Cifre(g.giorno, 2) + Cifre(g.mese, 2) + Cifre(g.anno - 2000, 2)), Estesa(g));
  });
  EXPECT_THAT(banco_.desktop.box, IsEmpty());
}

TEST(DatesForTheHost, PadDayAndMonthAndPutTwentyBeforeTheYear) {
  EXPECT_EQ(DataPerHost("5/3/06"), "20060305");
  EXPECT_EQ(DataPerHost("05/03/2006"), "20060305");
  EXPECT_EQ(DataPerHost("31/12/99"), "20991231");
}

TEST(DatesForTheHost, AreEightZerosWhereEmpty) {
  EXPECT_EQ(DataPerHost(""), "00000000");
}

TEST(DatesForTheHost, KeepAYearOfAnotherLengthAsWritten) {
  EXPECT_EQ(DataPerHost("5/3/6"), "60305");
  EXPECT_EQ(DataPerHost("5/3/006"), "0060305");
}

TEST(DatesForTheHost, OfFewerThanThreePartsAreAnIndexError) {
  EXPECT_EQ(NumeroErrore([] { static_cast<void>(DataPerHost("5/3")); }), 9);
  EXPECT_EQ(NumeroErrore([] { static_cast<void>(DataPerHost(" ")); }), 9);
}

TEST(IsoDates, FromCompactOnesNeedEightCharacters) {
  EXPECT_EQ(DataIsoDaCompatta("20060305"), "2006-03-05");
  EXPECT_EQ(DataIsoDaCompatta("2006030"), "");
  EXPECT_EQ(DataIsoDaCompatta("200603051"), "");
  EXPECT_EQ(DataIsoDaCompatta(""), "");
}

TEST(IsoDates, FromTextsNeedTenCharactersInThreeParts) {
  EXPECT_EQ(DataIsoDaTesto("05/03/2006"), "2006-03-05");
  EXPECT_EQ(DataIsoDaTesto("5/3/2006"), "");
  EXPECT_EQ(DataIsoDaTesto("05-03-2006"), "");
  EXPECT_EQ(DataIsoDaTesto("05/03/20/6"), "");
  EXPECT_EQ(DataIsoDaTesto(""), "");
}

TEST(IsoDates, OfEveryDayReachHostAndDatabaseAlike) {
  OgniGiorno([](Giorno g, bool) {
    const std::string iso = Iso(g);
    const std::string estesa = Estesa(g);
    ASSERT_EQ(FormattaData(iso), estesa);
    ASSERT_EQ(DataIsoDaTesto(estesa), iso);
    ASSERT_EQ(DataIsoDaCompatta(DataPerHost(estesa)), iso);
    const std::string breve = std::to_string(g.giorno) + "/" + std::to_string(g.mese) + "/" + Cifre(g.anno - 2000, 2);
    ASSERT_EQ(DataIsoDaCompatta(DataPerHost(breve)), iso);
  });
}

TEST(EndOfAMonth, IsItsLastDay) {
  EXPECT_EQ(FineMese("02", "2004"), "2004-02-29");
  EXPECT_EQ(FineMese("02", "2005"), "2005-02-28");
  EXPECT_EQ(FineMese("02", "2000"), "2000-02-29");
  EXPECT_EQ(FineMese("02", "2100"), "2100-02-28");
  EXPECT_EQ(FineMese("10", "2006"), "2006-10-31");
}

TEST(EndOfAMonth, IsTheThirtyFirstWhereTheMonthIsUnexpected) {
  EXPECT_EQ(FineMese("13", "2006"), "2006-13-31");
  EXPECT_EQ(FineMese("4", "2006"), "2006-4-31");
  EXPECT_EQ(FineMese("", ""), "--31");
}

TEST(EndOfAMonth, AgreesWithTheCalendar) {
  OgniGiorno([](Giorno g, bool ultimo) {
    if (ultimo) {
      ASSERT_EQ(FineMese(Cifre(g.mese, 2), std::to_string(g.anno)), Iso(g));
    }
  });
}

TEST(DatesOfTheDatabase, HaveThreeForms) {
  EXPECT_EQ(FormattaData("2006-03-05"), "05/03/2006");
  EXPECT_EQ(FormattaDataBreve("2006-03-05"), "05/03/06");
  EXPECT_EQ(FormattaDataOrdine("2006-03-05"), "2006/03/05");
}

TEST(DatesOfTheDatabase, DoNotShowTheTimeBehindThem) {
  EXPECT_EQ(FormattaData("2006-03-05 14:07:09"), "05/03/2006");
  EXPECT_EQ(FormattaData("2006-03-05T14:07:09"), "05/03/2006");
}

TEST(DatesOfTheDatabase, OfADayThatDoesNotExistAreRefused) {
  for (const char* nessuna : {"2007-02-00", "2007-00-10", "2007-02-29", "2007-13-01", "2006-04-31", "0000-00-00",
                              "0000-01-01", "10000-01-01", "infinity", "0044-03-15 BC", "2006-03-05 14:07:00 BC"}) {
    EXPECT_FALSE(DataDellaBaseDati(nessuna)) << nessuna;
    for (const auto formatta : {FormattaData, FormattaDataBreve, FormattaDataOrdine}) {
      EXPECT_THROW(static_cast<void>(formatta(nessuna)), RuntimeError) << nessuna;
    }
  }
  for (const char* data : {"0001-01-01", "2000-02-29", "9999-12-31", "2006-03-05 14:07:00.5", "2006-03-05T14:07:00Z"}) {
    EXPECT_TRUE(DataDellaBaseDati(data)) << data;
  }
}

TEST(DatesOfTheDatabase, StayEmptyWhereTheyAreMissing) {
  EXPECT_EQ(FormattaData(""), "");
  EXPECT_EQ(FormattaDataBreve(""), "");
  EXPECT_EQ(FormattaDataOrdine(""), "");
}

TEST(DatesOfTheDatabase, OfAnyOtherTextAreATypeError) {
  for (const char* testo : {"05/03/2006", "2006-3-5", "2006-03-0x", "2006-03-051"}) {
    EXPECT_EQ(NumeroErrore([&] { static_cast<void>(FormattaData(testo)); }), 13) << testo;
  }
}
