#include "screens/ImportoEsatto.hpp"

#include <gtest/gtest.h>

#include <string>

namespace lumoscad {
namespace {

ImportoEsatto Importo(std::string_view testo) {
  const auto letto = ImportoEsatto::Leggi(testo);
  EXPECT_TRUE(letto.has_value()) << testo;
  return letto.value_or(ImportoEsatto());
}

TEST(ExactAmount, IsReadAndWrittenAsTheListsShowIt) {
  for (const char* testo :
       {"0,00", "0,01", "-0,01", "1,00", "-1,00", "999,99", "1.000,00", "-1.584,36", "9.999.999.999.999.999,99",
        "10.000.000.000.000.000,00", "-10.000.000.000.000.000,01", "9.999.999.999.999.999.999.999.999.999,99"}) {
    EXPECT_EQ(Importo(testo).Testo(), testo);
  }
  EXPECT_EQ(Importo("1584,36"), Importo("1.584,36"));
  EXPECT_EQ(Importo("12"), Importo("12,00"));
  EXPECT_EQ(Importo("-0,00").Testo(), "0,00");
  EXPECT_TRUE(Importo("-0,00").Zero());
}

TEST(ExactAmount, IsNotReadFromAnythingElse) {
  for (const char* testo : {"", " ", "-", ",", ",50", "1,5", "1,505", "1,5a", "1 000,00", "+1,00", ".1", "1,00 ", "a",
                            "1,-1", "10.000.000.000.000.000.000.000.000.000,00"}) {
    EXPECT_FALSE(ImportoEsatto::Leggi(testo).has_value()) << testo;
  }
}

TEST(ExactAmount, AddsWhatAFloatingNumberWouldNot) {
  ImportoEsatto somma;
  for (int i = 0; i < 1'000'000; ++i) {
    somma += Importo("0,10");
  }
  EXPECT_EQ(somma.Testo(), "100.000,00");
  somma = Importo("90.071.992.547.409,93");
  somma += Importo("0,01");
  EXPECT_EQ(somma.Testo(), "90.071.992.547.409,94");
}

TEST(ExactAmount, AddsAMillionOfTheLargest) {
  ImportoEsatto somma;
  for (int i = 0; i < 1'000'000; ++i) {
    somma += Importo("-9.999.999.999.999.999.999.999.999.999,99");
  }
  EXPECT_EQ(somma.Testo(), "-9.999.999.999.999.999.999.999.999.999.990.000,00");
}

TEST(ExactAmount, SubtractsAcrossZero) {
  ImportoEsatto resto = Importo("10,00");
  resto -= Importo("10,01");
  EXPECT_EQ(resto.Testo(), "-0,01");
  resto -= Importo("-0,01");
  EXPECT_TRUE(resto.Zero());
  EXPECT_EQ((-Importo("1.584,36")).Testo(), "-1.584,36");
}

TEST(ExactAmount, OrdersBySize) {
  EXPECT_LT(Importo("-2,00"), Importo("-1,99"));
  EXPECT_LT(Importo("-0,01"), Importo("0,00"));
  EXPECT_LT(Importo("999,99"), Importo("1.000,00"));
  EXPECT_LT(Importo("9.999.999.999.999.999,99"), Importo("10.000.000.000.000.000,00"));
}

TEST(ExactAmount, TellsItsPartOfATotalInThousandths) {
  EXPECT_EQ(Importo("1,00").Millesimi(Importo("3,00")), 333);
  EXPECT_EQ(Importo("-3,00").Millesimi(Importo("3,00")), 1000);
  EXPECT_EQ(Importo("0,00").Millesimi(Importo("3,00")), 0);
  EXPECT_EQ(Importo("5,00").Millesimi(ImportoEsatto()), 0);
  EXPECT_EQ(Importo("5.000.000.000.000.000.000,00").Millesimi(Importo("-10.000.000.000.000.000.000,00")), 500);
}

} // namespace
} // namespace lumoscad
