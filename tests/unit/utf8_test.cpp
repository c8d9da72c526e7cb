#include "platform/base/Utf8.hpp"

#include <gtest/gtest.h>
#include <string>

using namespace lumoscad::base;

namespace {

void ExpectCharacter(std::string_view text, char32_t code, std::size_t length) {
  const auto character = FirstCharacter(text);
  EXPECT_EQ(character.code, code) << text;
  EXPECT_EQ(character.length, length) << text;
}

bool IsNone(std::string_view text) {
  return FirstCharacter(text).length == 0;
}

} // namespace

TEST(Utf8, ReadsACharacterOfEachLength) {
  ExpectCharacter(std::string_view("\0", 1), 0, 1);
  ExpectCharacter("\x7F", 0x7F, 1);
  ExpectCharacter("\xC2\x80", 0x80, 2);
  ExpectCharacter("èa", 0xE8, 2);
  ExpectCharacter("\xDF\xBF", 0x7FF, 2);
  ExpectCharacter("\xE0\xA0\x80", 0x800, 3);
  ExpectCharacter("€uro", 0x20AC, 3);
  ExpectCharacter("\xED\x9F\xBF", 0xD7FF, 3);
  ExpectCharacter("\xEE\x80\x80", 0xE000, 3);
  ExpectCharacter("\xEF\xBF\xBF", 0xFFFF, 3);
  ExpectCharacter("\xF0\x90\x80\x80", 0x10000, 4);
  ExpectCharacter("\xF4\x8F\xBF\xBF", 0x10FFFF, 4);
}

TEST(Utf8, KnowsLongerFormsThanNeedBeForNoCharacter) {
  EXPECT_TRUE(IsNone("\xC0\x80"));
  EXPECT_TRUE(IsNone("\xC1\xBF"));
  EXPECT_TRUE(IsNone("\xE0\x9F\xBF"));
  EXPECT_TRUE(IsNone("\xF0\x8F\xBF\xBF"));
}

TEST(Utf8, KnowsSurrogatesAndWhatLiesBeyondForNoCharacter) {
  EXPECT_TRUE(IsNone("\xED\xA0\x80"));
  EXPECT_TRUE(IsNone("\xED\xBF\xBF"));
  EXPECT_TRUE(IsNone("\xF4\x90\x80\x80"));
  EXPECT_TRUE(IsNone("\xF5\x80\x80\x80"));
  EXPECT_TRUE(IsNone("\xFF"));
}

TEST(Utf8, KnowsAPieceOfACharacterForNone) {
  EXPECT_TRUE(IsNone("\xA8"));
  EXPECT_TRUE(IsNone("\xC3"));
  EXPECT_TRUE(IsNone("\xC3z"));
  EXPECT_TRUE(IsNone("\xE2\x82"));
  EXPECT_TRUE(IsNone("\xE2\x82z"));
  EXPECT_TRUE(IsNone("\xF0\x90\x80"));
}

TEST(Utf8, TellsWhereACharacterBegins) {
  std::string begins;
  for (const char byte : std::string("aè€\xF0\x9F\x98\x80z")) {
    begins += BeginsCharacter(byte) ? 'B' : '-';
  }
  EXPECT_EQ(begins, "BB-B--B---B");
}
