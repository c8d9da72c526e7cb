#include "platform/base/CharacterConverter.hpp"

#include <gtest/gtest.h>

using namespace lumoscad::base;

TEST(CharacterConverter, ConvertsToUtf8) {
  const CharacterConverter converter("ISO-8859-1");
  ASSERT_TRUE(converter.Known());
  std::string text = "prima, ";
  EXPECT_EQ(converter.Convert("perch\xE9", text), Conversion::Whole);
  EXPECT_EQ(text, "prima, perché");
  EXPECT_EQ(converter.Convert("", text), Conversion::Whole);
  EXPECT_EQ(text, "prima, perché");
}

TEST(CharacterConverter, DoesNotKnowEveryName) {
  EXPECT_FALSE(CharacterConverter("nessuna-codifica").Known());
}

TEST(CharacterConverter, TellsBytesThatAreNoCharacterFromHalfACharacter) {
  const CharacterConverter converter("UTF-8");
  std::string text;
  EXPECT_EQ(converter.Convert("a\xFF"
                              "b",
                              text),
            Conversion::Invalid);
  EXPECT_EQ(text, "a");
  EXPECT_EQ(converter.Convert("b\xC3", text), Conversion::Incomplete);
  EXPECT_EQ(text, "ab");
}

TEST(CharacterConverter, ForgetsTheTextBefore) {
  const CharacterConverter converter("UTF-7");
  ASSERT_TRUE(converter.Known());
  std::string text;
  EXPECT_EQ(converter.Convert("+AOk", text), Conversion::Whole) << "what follows would still be Base64";
  EXPECT_EQ(converter.Convert("AOk", text), Conversion::Whole);
  EXPECT_EQ(text, "éAOk");
}

TEST(CharacterConverter, ConvertsMoreThanItsBufferHolds) {
  const CharacterConverter converter("ISO-8859-1");
  std::string text;
  EXPECT_EQ(converter.Convert(std::string(100000, '\xE8'), text), Conversion::Whole);
  ASSERT_EQ(text.size(), 200000U);
  for (std::size_t at = 0; at < text.size(); at += 2) {
    ASSERT_EQ(text.substr(at, 2), "è") << at;
  }
}
