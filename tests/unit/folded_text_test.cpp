#include "platform/base/FoldedText.hpp"
#include "support/ProcessLocale.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <vector>

using namespace lumoscad::base;
using testing::ElementsAre;

TEST(FoldedText, HasSmallLettersWithoutAccents) {
  EXPECT_EQ(Folded("SOCIETÀ per azioni"), "societa per azioni");
  EXPECT_EQ(Folded("àèéìòùÀÈÉÌÒÙ"), "aeeiouaeeiou");
  EXPECT_EQ(Folded("Müller & Søn, Łódź, Çelik, Ñandú, Șofer, Đorđe, Ženko"), "muller & son, lodz, celik, nandu, sofer, "
                                                                             "dorde, zenko");
  EXPECT_EQ(Folded("Nguyễn Ẩn"), "nguyen an");
  EXPECT_EQ(Folded("0123 @[`{~"), "0123 @[`{~");
  EXPECT_EQ(Folded(""), "");
}

TEST(FoldedText, TakesALigatureForItsLetters) {
  EXPECT_EQ(Folded("Straße ŒUVRE Ærø ẞ"), "strasse oeuvre aero ss");
}

TEST(FoldedText, KnowsAnAccentThatIsWrittenBehindItsLetter) {
  EXPECT_EQ(Folded("citta\xCC\x80"), "citta");
  EXPECT_EQ(Folded("E\xCC\x80"), Folded("È"));
}

TEST(FoldedText, HasOneApostropheOneHyphenAndOneBlank) {
  EXPECT_EQ(Folded("D’Angelo ‘A’ “x”"), "d'angelo 'a' \"x\"");
  EXPECT_EQ(Folded("a–b—c‑d"), "a-b-c-d");
  EXPECT_EQ(Folded("1\xC2\xA0"
                   "000\xE2\x80\xAF"
                   "€"),
            "1 000 €");
}

TEST(FoldedText, IgnoresTheCaseOfGreekAndCyrillicLetters) {
  EXPECT_EQ(Folded("ΑΩ ЖЯ Ё"), "αω жя ё");
  EXPECT_EQ(Folded("日本 €"), "日本 €");
}

TEST(FoldedText, KeepsBytesThatAreNoCharacter) {
  EXPECT_EQ(Folded("A\xFFZ\xC3"), "a\xFFz\xC3");
  EXPECT_EQ(Folded(std::string_view("A\0B", 3)), std::string("a\0b", 3));
}

TEST(FoldedText, IsNeverLongerThanTheText) {
  for (char32_t code = 1; code < 0x3000; ++code) {
    std::string text;
    if (code < 0x80) {
      text = {static_cast<char>(code)};
    } else if (code < 0x800) {
      text = {static_cast<char>(0xC0U | code >> 6U), static_cast<char>(0x80U | (code & 0x3FU))};
    } else {
      text = {static_cast<char>(0xE0U | code >> 12U), static_cast<char>(0x80U | (code >> 6U & 0x3FU)),
              static_cast<char>(0x80U | (code & 0x3FU))};
    }
    const std::string folded = Folded(text);
    EXPECT_LE(folded.size(), text.size()) << static_cast<unsigned>(code);
    EXPECT_EQ(Folded(folded), folded) << static_cast<unsigned>(code);
  }
}

TEST(FoldedText, DoesNotAskTheLocale) {
  const lumoscad::test::ProcessLocale locale(LC_ALL, "it_IT.ISO-8859-1");
  EXPECT_EQ(Folded("\xC8"), "\xC8");
  EXPECT_EQ(Folded("È"), "e");
}

TEST(FoldedText, TellsWhereItsLettersComeFrom) {
  const FoldedPlaces places = FoldedWithPlaces("Aßè\xCC\x80z");
  EXPECT_EQ(places.folded, "assez");
  EXPECT_THAT(places.begins, ElementsAre(0U, 1U, 1U, 3U, 7U, 8U));
}

TEST(TextsThatFoldAlike, ComeInTheOrderOfAccentsAndThenOfCase) {
  const std::vector<std::string> expected = {"pero", "pERO", "Pero", "PERO", "però", "Però", "peró", "pero\xCC\x80"};
  for (std::size_t a = 0; a < 7; ++a) {
    for (std::size_t b = 0; b < 7; ++b) {
      EXPECT_EQ(BeforeByAccentsAndCase(expected[a], expected[b]), a < b) << expected[a] << " " << expected[b];
    }
  }
  EXPECT_TRUE(BeforeByAccentsAndCase(expected[0], expected[7]));
  EXPECT_FALSE(BeforeByAccentsAndCase(expected[7], expected[0]));
}
