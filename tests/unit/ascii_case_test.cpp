#include "platform/base/AsciiCase.hpp"

#include <clocale>
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
  const std::string before = std::setlocale(LC_ALL, nullptr);
  // Where it is installed; elsewhere the expectations hold in the locale that is there.
  std::setlocale(LC_ALL, "tr_TR.UTF-8");
  EXPECT_TRUE(SameButForCase("UNICODE", "unicode"));
  EXPECT_EQ(LowerCase("I"), "i");
  EXPECT_EQ(UpperCase("i"), "I");
  std::setlocale(LC_ALL, before.c_str());
}
