#include "common/Messaggi.hpp"
#include "support/TestBench.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace lumoscad;
using testing::ElementsAre;

TEST(Message, WithoutADetailShowsTheTextAlone) {
  test::TestBench banco;
  MostraMessaggio("A", "");
  EXPECT_THAT(banco.desktop.box, ElementsAre("A"));
}

TEST(Message, TakesABlankDetailForNone) {
  test::TestBench banco;
  MostraMessaggio("A", "   ");
  EXPECT_THAT(banco.desktop.box, ElementsAre("A"));
}

TEST(Message, HasItsDetailOnTheLineAbove) {
  test::TestBench banco;
  MostraMessaggio("A", "B");
  EXPECT_THAT(banco.desktop.box, ElementsAre("B\r\nA"));
}

TEST(Message, KeepsTheBlanksOfItsDetail) {
  test::TestBench banco;
  MostraMessaggio("A", " B ");
  EXPECT_THAT(banco.desktop.box, ElementsAre(" B \r\nA"));
}

TEST(Message, CarriesTheProductsName) {
  test::TestBench banco;
  MostraMessaggio("A", "");
  EXPECT_THAT(banco.desktop.titles, ElementsAre("LumoScad"));
}

TEST(Message, OfThirtyTwoKibIsShownWhole) {
  test::TestBench banco;
  const std::string testo(32U << 10U, 'x');
  MostraMessaggio(testo, "");
  EXPECT_THAT(banco.desktop.box, ElementsAre(testo));
}

TEST(Message, OfALongerTextShowsThirtyTwoKibAndHowMuchIsMissing) {
  test::TestBench banco;
  const std::string testo(1U << 20U, 'x');
  MostraMessaggio(testo, "");
  EXPECT_THAT(banco.desktop.box,
              ElementsAre(testo.substr(0, 32U << 10U) + "\r\n[... mancano altri 1.015.808 caratteri]"));
}

TEST(Message, IsNeverCutInsideACharacterAndCountsCharacters) {
  test::TestBench banco;
  std::string testo = "x";
  for (int i = 0; i < 20'000; ++i) {
    testo += "è";
  }
  MostraMessaggio(testo, "");
  EXPECT_THAT(banco.desktop.box,
              ElementsAre(testo.substr(0, (32U << 10U) - 1) + "\r\n[... mancano altri 3.617 caratteri]"));
}

TEST(Message, ShowsItsClosingSentenceWholeUnderACutTextToo) {
  test::TestBench banco;
  const std::string testo(1U << 20U, 'x');
  MostraMessaggio(testo, "", "Da allineare: conto 1.");
  EXPECT_THAT(banco.desktop.box, ElementsAre(testo.substr(0, (32U << 10U) - 24) +
                                             "\r\n[... mancano altri 1.015.832 caratteri]\r\nDa allineare: conto 1."));
}

TEST(Message, HasItsClosingSentenceOnTheLineBelow) {
  test::TestBench banco;
  MostraMessaggio("A", "B", "C");
  EXPECT_THAT(banco.desktop.box, ElementsAre("B\r\nA\r\nC"));
}

TEST(Message, TellsOneCharacterTooManyInTheSingular) {
  test::TestBench banco;
  MostraMessaggio(std::string((32U << 10U) + 1, 'x'), "");
  EXPECT_THAT(banco.desktop.box, ElementsAre(testing::EndsWith("x\r\n[... manca un altro carattere]")));
}

TEST(Message, OfATextThatIsNotUtf8IsCutWithoutTheStartOfACharacterToo) {
  test::TestBench banco;
  MostraMessaggio(std::string(100'000, '\x80'), "");
  ASSERT_EQ(banco.desktop.box.size(), 1U);
  EXPECT_LT(banco.desktop.box[0].size(), 33'000U);
}
