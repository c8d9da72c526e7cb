#include "common/Utilities.hpp"
#include "platform/RuntimeError.hpp"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>

using namespace lumoscad;
using namespace lumoscad::Utilities;

namespace {

/// The amount as the check leaves it, or "rifiutato"; a refused amount must stay as typed.
std::string Controlla(const std::string& scritto, bool conDecimali = true, bool conSegno = false) {
  std::string importo = scritto;
  if (ControllaImporto(importo, conDecimali, conSegno)) {
    EXPECT_EQ(importo, scritto);
    return "rifiutato";
  }
  return importo;
}

std::string Separa(const std::string& importo) {
  std::string intero = "prima";
  std::string decimali = "prima";
  SeparaImporto(importo, intero, decimali);
  return intero + "|" + decimali;
}

bool NonENumero(const std::string& testo) {
  try {
    static_cast<void>(FormattaImporto(testo));
  } catch (const RuntimeError& errore) {
    return errore.Number() == 13;
  }
  return false;
}

} // namespace

TEST(SplitAmount, DividesAtTheCommaOrElseAtThePoint) {
  EXPECT_EQ(Separa("12,5"), "12|50");
  EXPECT_EQ(Separa("12.5"), "12|50");
  EXPECT_EQ(Separa("1.234,56"), "1.234|56");
  EXPECT_EQ(Separa("1,2,3"), "1|2,3");
}

TEST(SplitAmount, HasZeroDecimalsWithoutASeparator) {
  EXPECT_EQ(Separa("12"), "12|00");
  EXPECT_EQ(Separa(""), "|00");
}

TEST(SplitAmount, KeepsTwoOrMoreDecimalsAsTheyAre) {
  EXPECT_EQ(Separa("12,34"), "12|34");
  EXPECT_EQ(Separa("12,345"), "12|345");
  EXPECT_EQ(Separa("12,"), "12|");
  EXPECT_EQ(Separa(",5"), "|50");
}

TEST(CheckedAmount, IsRewrittenInTheItalianFormat) {
  EXPECT_EQ(Controlla("12"), "12,00");
  EXPECT_EQ(Controlla("12,5"), "12,50");
  EXPECT_EQ(Controlla("12.5"), "12,50");
  EXPECT_EQ(Controlla("1234567,89"), "1.234.567,89");
  EXPECT_EQ(Controlla("1.234,5"), "1.234,50");
  EXPECT_EQ(Controlla("0"), "0,00");
  EXPECT_EQ(Controlla(",5"), "0,50");
  EXPECT_EQ(Controlla("12,"), "12,00");
}

TEST(CheckedAmount, TakesALonePointForTheDecimalComma) {
  EXPECT_EQ(Controlla("1.234"), "1,23");
}

TEST(CheckedAmount, IsRoundedByADecimalTooMany) {
  EXPECT_EQ(Controlla("1,235"), "1,24");
  EXPECT_EQ(Controlla("9,995"), "10,00");
}

TEST(CheckedAmount, LosesBlanksAndControlCharacters) {
  EXPECT_EQ(Controlla(" 1 2\t,\r\n5 "), "12,50");
}

TEST(CheckedAmount, StaysEmptyWhereItIsBlank) {
  EXPECT_EQ(Controlla(""), "");
  EXPECT_EQ(Controlla("  \t"), "");
  EXPECT_EQ(Controlla("-", true, true), "");
}

TEST(CheckedAmount, IsRefusedWithAnyOtherCharacter) {
  EXPECT_EQ(Controlla("12a"), "rifiutato");
  EXPECT_EQ(Controlla("€12"), "rifiutato");
  EXPECT_EQ(Controlla("1e3"), "rifiutato");
}

TEST(CheckedAmount, ATextOfAllowedCharactersThatIsNoNumberStaysAsTypedAndIsNotRefused) {
  for (const char* scritto : {"1,2,3", ",", ".", ".,50", ".1,5", "1.2,3,", " , "}) {
    EXPECT_EQ(Controlla(scritto), scritto);
  }
  EXPECT_EQ(Controlla("-,", true, true), "-,");
}

TEST(CheckedAmount, APointBehindTheFirstDigitGroupsThousandsOnceTheDecimalsAreSplitOff) {
  EXPECT_EQ(Controlla("1.000.000"), "1,00");
  EXPECT_EQ(Controlla("1.2.3"), "1,23");
  EXPECT_EQ(Controlla("5,555.5"), "5,56");
  EXPECT_EQ(Controlla("1.000.000,5"), "1.000.000,50");
  EXPECT_EQ(Controlla("1,.5"), "1,50");
  EXPECT_EQ(Controlla("1..5"), "1,50");
  EXPECT_EQ(Controlla(".5"), "0,50");
}

TEST(CheckedAmount, MayHaveASignOnlyWhereAskedForAndLosesIt) {
  EXPECT_EQ(Controlla("-5", true, true), "5,00");
  EXPECT_EQ(Controlla("+5", true, true), "5,00");
  EXPECT_EQ(Controlla("-5", true, false), "rifiutato");
  EXPECT_EQ(Controlla("--5", true, true), "rifiutato");
  EXPECT_EQ(Controlla("5-", true, true), "rifiutato");
}

TEST(CheckedAmount, WithoutDecimalsIsOfDigitsAlone) {
  EXPECT_EQ(Controlla("1234", false), "1.234,00");
  EXPECT_EQ(Controlla("12,5", false), "rifiutato");
  EXPECT_EQ(Controlla("12.5", false), "rifiutato");
  EXPECT_EQ(Controlla("-7", false, true), "7,00");
}

TEST(FormattedAmount, HasItsThousandsApart) {
  EXPECT_EQ(FormattaImporto("0"), "0,00");
  EXPECT_EQ(FormattaImporto("500"), "500,00");
  EXPECT_EQ(FormattaImporto("100.1"), "100,10");
  EXPECT_EQ(FormattaImporto("1000"), "1.000,00");
  EXPECT_EQ(FormattaImporto("-1234.5"), "-1.234,50");
  EXPECT_EQ(FormattaImporto("999999999999999.99"), "999.999.999.999.999,99");
}

TEST(FormattedAmount, IsRoundedAtTheHalfAwayFromZero) {
  EXPECT_EQ(FormattaImporto("0.005"), "0,01");
  EXPECT_EQ(FormattaImporto("-0.005"), "-0,01");
  EXPECT_EQ(FormattaImporto("0.015"), "0,02");
  EXPECT_EQ(FormattaImporto("1.005"), "1,01");
  EXPECT_EQ(FormattaImporto("2.675"), "2,68");
  EXPECT_EQ(FormattaImporto("0.0049999"), "0,00");
  EXPECT_EQ(FormattaImporto("99.995"), "100,00");
  EXPECT_EQ(FormattaImporto("999.995"), "1.000,00");
}

TEST(FormattedAmount, DoesNotDependOnHowItsNumberIsWritten) {
  for (const std::string numero : {"0", "00", "7", "007.1", "12.", "999", "1000", "123456.7", "0.05", "100200.30",
                                   "999999999999999999.99", "1000000000000000000.25"}) {
    const std::string mostrato = FormattaImporto(numero);
    EXPECT_EQ(FormattaImporto("+" + numero), mostrato) << numero;
    EXPECT_EQ(FormattaImporto(numero + "e0"), mostrato) << numero;
    EXPECT_EQ(FormattaImporto(" " + numero + " "), mostrato) << numero;
    EXPECT_EQ(FormattaImporto(" -" + numero), FormattaImporto("-" + numero)) << numero;
  }
}

TEST(FormattedAmount, NeverHasASignAtZero) {
  EXPECT_EQ(FormattaImporto("-0.00"), "0,00");
  EXPECT_EQ(FormattaImporto("-000"), "0,00");
  EXPECT_EQ(FormattaImporto("-0"), "0,00");
  EXPECT_EQ(FormattaImporto("-0.004"), "0,00");
}

TEST(FormattedAmount, IsReadFromExponentsToo) {
  EXPECT_EQ(FormattaImporto("1e3"), "1.000,00");
  EXPECT_EQ(FormattaImporto("1.5E+2"), "150,00");
  EXPECT_EQ(FormattaImporto("5e-3"), "0,01");
  EXPECT_EQ(FormattaImporto("5e-4"), "0,00");
}

TEST(FormattedAmount, TakesAnExponentOfFourHundredAndNoneBeyond) {
  std::string uno = FormattaImporto("1e400");
  EXPECT_EQ(uno.substr(0, 6), "10.000");
  EXPECT_EQ(std::count(uno.begin(), uno.end(), '0'), 402);
  EXPECT_EQ(FormattaImporto("-1e-400"), "0,00");
  for (const char* testo : {"1e401", "1e-401", "0e401", "0e-401"}) {
    EXPECT_TRUE(NonENumero(testo)) << testo;
  }
}

TEST(FormattedAmount, OfWhatIsNoNumberIsATypeError) {
  for (const char* testo : {"", " ", "-", ".", "1,5", "1.2.3", "abc", "1 5", "1e", "1e999999", "0x10"}) {
    EXPECT_TRUE(NonENumero(testo)) << testo;
  }
}

TEST(FormattedAmount, IsExactToTheCent) {
  for (int centesimi = 0; centesimi < 100000; ++centesimi) {
    std::string decimali = std::to_string(centesimi % 100);
    decimali.insert(0, decimali.size() == 1 ? "0" : "");
    const std::string intero = std::to_string(centesimi / 100);
    ASSERT_EQ(FormattaImporto(intero + "." + decimali), intero + "," + decimali);
    ASSERT_EQ(Controlla(intero + "," + decimali), intero + "," + decimali);
  }
}
