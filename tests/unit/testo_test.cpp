#include "common/Testo.hpp"
#include "platform/RuntimeError.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string_view>

using namespace lumoscad;
using testing::ElementsAre;

namespace {

bool NonIntero(std::string_view testo) {
  try {
    static_cast<void>(Intero(testo));
  } catch (const RuntimeError& errore) {
    return errore.Number() == 13;
  }
  return false;
}

} // namespace

TEST(GreaterThanABlank, NeedsAVisibleCharacter) {
  EXPECT_TRUE(MaggioreDiSpazio("a"));
  EXPECT_TRUE(MaggioreDiSpazio("  a"));
  EXPECT_TRUE(MaggioreDiSpazio("è"));
  EXPECT_FALSE(MaggioreDiSpazio(""));
  EXPECT_FALSE(MaggioreDiSpazio(" "));
  EXPECT_FALSE(MaggioreDiSpazio("   "));
  EXPECT_FALSE(MaggioreDiSpazio("\r\n\t "));
}

TEST(WithoutValue, IsTheEmptyTextOrItsSign) {
  EXPECT_TRUE(SenzaValore(""));
  EXPECT_TRUE(SenzaValore("#null#"));
  EXPECT_FALSE(SenzaValore(" "));
  EXPECT_FALSE(SenzaValore("#NULL#"));
}

TEST(Trimmed, KeepsTheBlanksInside) {
  EXPECT_EQ(SenzaSpaziAiLati("  a b "), "a b");
  EXPECT_EQ(SenzaSpaziAiLati("   "), "");
  EXPECT_EQ(SenzaSpaziAiLati(""), "");
  EXPECT_EQ(SenzaSpaziAiLati("\ta\t"), "\ta\t");
}

TEST(UpperCase, ChangesPlainLetters) {
  EXPECT_EQ(Maiuscolo("-db2Source/è1"), "-DB2SOURCE/è1");
}

TEST(Split, GivesAnEmptyPieceBetweenTwoSeparators) {
  EXPECT_THAT(Dividi("a  b", ' '), ElementsAre("a", "", "b"));
  EXPECT_THAT(Dividi(" a ", ' '), ElementsAre("", "a", ""));
  EXPECT_THAT(Dividi("", ','), ElementsAre(""));
  EXPECT_THAT(Dividi("12,14", ','), ElementsAre("12", "14"));
}

TEST(WholeNumber, ReadsWholeNumbersAlone) {
  EXPECT_EQ(Intero("12"), 12);
  EXPECT_EQ(Intero("-12"), -12);
  EXPECT_EQ(Intero("+12"), 12);
  EXPECT_EQ(Intero("007"), 7);
  for (const std::string_view testo : {"", " ", "1.5", "12a", " 12", "+", "-", "+-5", "99999999999"}) {
    EXPECT_TRUE(NonIntero(testo)) << testo;
  }
}

TEST(ZeroPadded, PadsAsMuchAsNeeded) {
  EXPECT_EQ(ConZeri(5, 2), "05");
  EXPECT_EQ(ConZeri(2006, 2), "2006");
  EXPECT_EQ(ConZeri(0, 4), "0000");
}

TEST(Enumeration, SaysHowManyAreNotShownOnlyWhereThereAreSome) {
  const auto lettera = [](std::size_t posto) { return std::string(1, static_cast<char>('a' + posto)); };
  EXPECT_EQ(Elenca(0, 2, lettera), "");
  EXPECT_EQ(Elenca(1, 2, lettera), "a");
  EXPECT_EQ(Elenca(2, 2, lettera), "a; b");
  EXPECT_EQ(Elenca(3, 2, lettera), "a; b; e altre 1");
}

TEST(Enumeration, KeepsThePlaceOfAnEmptyText) {
  EXPECT_EQ(Elenca(3, 3, [](std::size_t posto) { return std::string(posto == 1 ? "b" : ""); }), "; b; ");
}

TEST(Enumeration, AsksForTheTextsThatItShowsAlone) {
  std::size_t chiesti = 0;
  const std::string elenco = Elenca(10000, 2, [&](std::size_t) { return std::to_string(++chiesti); });
  EXPECT_EQ(elenco, "1; 2; e altre 9998");
  EXPECT_EQ(chiesti, 2U);
}
