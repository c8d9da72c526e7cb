#include "platform/base/AsciiCase.hpp"
#include "support/ProcessLocale.hpp"

#include <gtest/gtest.h>

using namespace lumoscad::base;

TEST(AsciiCase, ChangesAsciiLettersAlone) {
  EXPECT_EQ(LowerCase("@AMZ[`amz{ 09 È"), "@amz[`amz{ 09 È");
  EXPECT_EQ(UpperCase("@AMZ[`amz{ 09 è"), "@AMZ[`AMZ{ 09 è");
  EXPECT_EQ(LowerCase(std::string_view("A\0B", 3)), std::string("a\0b", 3));
  EXPECT_EQ(UpperCase(""), "");
}

TEST(AsciiCase, ComparesTextsOfTheSameLengthOnly) {
  EXPECT_TRUE(SameButForCase("", ""));
  EXPECT_TRUE(SameButForCase("utf-8", "UTF-8"));
  EXPECT_FALSE(SameButForCase("utf-8", "UTF-88"));
  EXPECT_FALSE(SameButForCase("utf-88", "UTF-8"));
  EXPECT_FALSE(SameButForCase("@", "`")) << "only the bit of a letter's case differs";
  EXPECT_FALSE(SameButForCase("è", "È"));
}

TEST(AsciiCase, DoesNotAskTheLocale) {
  // In which both bytes are the letter "e" with an accent.
  const lumoscad::test::ProcessLocale locale(LC_ALL, "it_IT.ISO-8859-1");
  EXPECT_FALSE(SameButForCase("\xE8", "\xC8"));
  EXPECT_EQ(LowerCase("\xC8"), "\xC8");
  EXPECT_EQ(UpperCase("\xE8"), "\xE8");
}
