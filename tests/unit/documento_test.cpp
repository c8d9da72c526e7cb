#include "screens/DocumentiPresunti.hpp"

#include "common/Testo.hpp"
#include "platform/RuntimeError.hpp"

#include <gtest/gtest.h>

using namespace lumoscad;

namespace {

std::string Parti(std::string_view documento) {
  VariazioneConsegna v;
  LeggiDocumento(documento, v);
  return v.Serie + "|" + v.Numero + "|" + v.Anno;
}

} // namespace

TEST(DocumentNumber, EndsInTheTwoDigitsOfTheYear) {
  EXPECT_EQ(TestoDocumento("AB", "12306"), "AB123/06");
  EXPECT_EQ(TestoDocumento("A ", "12306"), "A 123/06");
}

TEST(DocumentNumber, OfTwoCharactersOrFewerIsAllYear) {
  EXPECT_EQ(TestoDocumento("AB", "06"), "AB/06");
  EXPECT_EQ(TestoDocumento("AB", "6"), "AB/6");
  EXPECT_EQ(TestoDocumento("AB", ""), "AB/");
}

TEST(DocumentNumber, IsReadBackAsSeriesNumberAndYear) {
  EXPECT_EQ(Parti("AB123/06"), "AB|123|06");
  EXPECT_EQ(Parti("AB/06"), "AB||06");
}

TEST(DocumentNumber, HasItsFirstTwoCharactersWithoutBlanksForSeries) {
  EXPECT_EQ(Parti("A 123/06"), "A|123|06");
  EXPECT_EQ(Parti("A123/06"), "A1|23|06");
  EXPECT_EQ(Parti("Àé123/06"), "Àé|123|06");
}

TEST(DocumentNumber, OfAnEmptyTextHasNoParts) {
  EXPECT_EQ(Parti(""), "||");
}

TEST(DocumentNumber, HasAMovementThatIsReadFromItsTag) {
  VariazioneConsegna v;
  LeggiMovimento("", v);
  EXPECT_EQ(v.idMovimentoKey, 0);
  LeggiMovimento("ALTRO_7", v);
  EXPECT_EQ(v.idMovimentoKey, 0);
  LeggiMovimento("MOVIMENTO_401", v);
  EXPECT_EQ(v.idMovimentoKey, 401);
}

TEST(Text, IsCutByCharactersAndNotByBytes) {
  EXPECT_EQ(Primi("àbc", 2), "àb");
  EXPECT_EQ(Primi("à", 2), "à");
  EXPECT_EQ(Primi("", 2), "");
  EXPECT_EQ(Primi("abc", 0), "");
  EXPECT_EQ(Ultimi("abà", 2), "bà");
  EXPECT_EQ(Ultimi("à", 2), "à");
  EXPECT_EQ(Ultimi("", 2), "");
  EXPECT_EQ(Ultimi("abc", 0), "");
}
