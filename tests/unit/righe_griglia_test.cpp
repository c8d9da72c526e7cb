#include "platform/base/FoldedText.hpp"
#include "screens/RigheGriglia.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace lumoscad {
namespace {

using testing::ElementsAre;

std::vector<std::string> InOrdine(const RigheGriglia& righe, int colonna) {
  std::vector<std::string> testi;
  for (std::size_t posto = 0; posto < righe.Quante(); ++posto) {
    testi.emplace_back(righe.Testo(righe.RigaAlPosto(posto), colonna));
  }
  return testi;
}

/// Rows of a sort text and of a mark that tells the rows of equal texts apart.
RigheGriglia Elenco(const std::vector<std::string>& testi) {
  RigheGriglia righe(2, {});
  for (std::size_t i = 0; i < testi.size(); ++i) {
    righe.Aggiungi({testi[i], std::to_string(i)});
  }
  return righe;
}

TEST(DistinctTexts, KeepEachTextOnceUnderOneNumber) {
  TestiUnici testi;
  const auto rossi = testi.Numero("ROSSI");
  const auto verdi = testi.Numero("VERDI");
  EXPECT_NE(rossi, verdi);
  EXPECT_EQ(testi.Numero(std::string("ROS") + "SI"), rossi);
  EXPECT_EQ(testi.Quanti(), 2U);
  EXPECT_EQ(testi.Testo(verdi), "VERDI");
}

TEST(DistinctTexts, TellTextsApartThatDifferInCaseOrBlanks) {
  TestiUnici testi;
  EXPECT_NE(testi.Numero("rossi"), testi.Numero("ROSSI"));
  EXPECT_NE(testi.Numero(""), testi.Numero(" "));
  EXPECT_NE(testi.Numero("A"), testi.Numero("A "));
}

TEST(DistinctTexts, TakeTextsLongerThanAnyBlock) {
  TestiUnici testi;
  const std::string lungo(200'000, 'x');
  const auto numero = testi.Numero(lungo);
  const auto dopo = testi.Numero("breve");
  EXPECT_EQ(testi.Testo(numero), lungo);
  EXPECT_EQ(testi.Testo(dopo), "breve");
}

TEST(DistinctTexts, AreReadBackWhateverTheirLength) {
  TestiUnici testi;
  std::vector<std::string> scritti;
  for (const std::size_t lunghezza : {0U, 1U, 3U, 4U, 253U, 254U, 255U, 256U, 65'535U, 262'138U, 262'139U, 262'140U}) {
    scritti.emplace_back(lunghezza, static_cast<char>('a' + scritti.size()));
  }
  std::vector<std::uint32_t> numeri;
  numeri.reserve(scritti.size());
  for (const std::string& testo : scritti) {
    numeri.push_back(testi.Numero(testo));
  }
  for (std::size_t i = 0; i < scritti.size(); ++i) {
    EXPECT_EQ(testi.Testo(numeri[i]), scritti[i]);
    EXPECT_EQ(testi.Numero(scritti[i]), numeri[i]);
  }
}

TEST(DistinctTexts, AreKeptTwiceWhereNobodyLooksForThem) {
  TestiUnici testi;
  const auto cercato = testi.Numero("ROSSI");
  const auto nuovo = testi.Nuovo("ROSSI");
  EXPECT_NE(nuovo, cercato);
  EXPECT_EQ(testi.Testo(nuovo), "ROSSI");
  EXPECT_EQ(testi.Numero("ROSSI"), cercato);
}

TEST(DistinctTexts, StayReadableWhileThousandsAreAdded) {
  TestiUnici testi;
  const std::string_view primo = testi.Testo(testi.Numero("il primo"));
  std::vector<std::uint32_t> numeri(50'000);
  for (std::size_t i = 0; i < numeri.size(); ++i) {
    numeri[i] = testi.Numero("testo " + std::to_string(i));
  }
  EXPECT_EQ(primo, "il primo");
  for (const int i : {0, 777, 49'999}) {
    EXPECT_EQ(testi.Testo(numeri[static_cast<std::size_t>(i)]), "testo " + std::to_string(i));
    EXPECT_EQ(testi.Numero("testo " + std::to_string(i)), numeri[static_cast<std::size_t>(i)]);
  }
  EXPECT_EQ(testi.Quanti(), 50'001U);
}

TEST(DistinctTexts, StartAnewWhenEmptied) {
  TestiUnici testi;
  static_cast<void>(testi.Numero("ROSSI"));
  testi.Svuota();
  EXPECT_EQ(testi.Quanti(), 0U);
  EXPECT_EQ(testi.Testo(testi.Numero("VERDI")), "VERDI");
}

TEST(GridRows, StartWithoutTagsAndTicks) {
  RigheGriglia righe(3, {0, 2});
  const auto riga = righe.Aggiungi({"ROSSI", "12", "BANCA"});
  EXPECT_EQ(righe.Quante(), 1U);
  EXPECT_EQ(righe.Testo(riga, 1), "12");
  EXPECT_EQ(righe.Tag(riga, 0), "");
  EXPECT_EQ(righe.Tag(riga, 2), "");
  EXPECT_FALSE(righe.Spuntata(riga, 0));
  EXPECT_FALSE(righe.Spuntata(riga, 1));
}

TEST(GridRows, GiveCellsWithoutATextTheEmptyText) {
  RigheGriglia righe(3, {});
  const auto riga = righe.Aggiungi({"ROSSI"});
  EXPECT_EQ(righe.Testo(riga, 1), "");
  EXPECT_EQ(righe.Testo(riga, 2), "");
}

TEST(GridRows, ChangeOneCellOfARowAndNoOther) {
  RigheGriglia righe(2, {0, 1});
  const auto prima = righe.Aggiungi({"ROSSI", "BANCA"});
  const auto seconda = righe.Aggiungi({"ROSSI", "BANCA"});
  righe.ImpostaTesto(seconda, 1, "ALTRA");
  righe.ImpostaTag(seconda, 1, "B07");
  EXPECT_EQ(righe.Testo(prima, 1), "BANCA");
  EXPECT_EQ(righe.Testo(seconda, 0), "ROSSI");
  EXPECT_EQ(righe.Testo(seconda, 1), "ALTRA");
  EXPECT_EQ(righe.Tag(prima, 1), "");
  EXPECT_EQ(righe.Tag(seconda, 0), "");
  EXPECT_EQ(righe.Tag(seconda, 1), "B07");
}

TEST(GridRows, KeepTheTwoTicksOfARowApart) {
  RigheGriglia righe(1, {});
  const auto prima = righe.Aggiungi({"A"});
  const auto seconda = righe.Aggiungi({"B"});
  righe.ImpostaSpunta(prima, 0, true);
  righe.ImpostaSpunta(seconda, 1, true);
  EXPECT_TRUE(righe.Spuntata(prima, 0));
  EXPECT_FALSE(righe.Spuntata(prima, 1));
  EXPECT_FALSE(righe.Spuntata(seconda, 0));
  EXPECT_TRUE(righe.Spuntata(seconda, 1));
  righe.ImpostaSpunta(seconda, 0, true);
  righe.ImpostaSpunta(seconda, 1, false);
  EXPECT_TRUE(righe.Spuntata(seconda, 0));
  EXPECT_FALSE(righe.Spuntata(seconda, 1));
}

TEST(GridRows, ShowInTheOrderInWhichTheyCameUntilSorted) {
  EXPECT_THAT(InOrdine(Elenco({"C", "A", "B"}), 0), ElementsAre("C", "A", "B"));
}

TEST(GridRows, SortAscendingByText) {
  RigheGriglia righe = Elenco({"C", "A", "", "B", " "});
  righe.Ordina(0, true);
  EXPECT_THAT(InOrdine(righe, 0), ElementsAre("", " ", "A", "B", "C"));
}

TEST(GridRows, SortDescendingByText) {
  RigheGriglia righe = Elenco({"C", "A", "", "B"});
  righe.Ordina(0, false);
  EXPECT_THAT(InOrdine(righe, 0), ElementsAre("C", "B", "A", ""));
}

TEST(GridRows, SortNumbersAsTheTextsTheyAre) {
  RigheGriglia righe = Elenco({"10", "9", "1"});
  righe.Ordina(0, true);
  EXPECT_THAT(InOrdine(righe, 0), ElementsAre("1", "10", "9"));
}

TEST(GridRows, SortWithoutRegardToCase) {
  RigheGriglia righe = Elenco({"verdi", "ROSSI", "Verdi", "bianchi", "VERDE"});
  righe.Ordina(0, true);
  EXPECT_THAT(InOrdine(righe, 0), ElementsAre("bianchi", "ROSSI", "VERDE", "verdi", "Verdi"));
}

TEST(GridRows, SortTextsThatShareALongBeginning) {
  RigheGriglia righe = Elenco({"Officine Meccaniche B", "Officine Meccaniche", "OFFICINE meccaniche a", "Officine"});
  righe.Ordina(0, true);
  EXPECT_THAT(InOrdine(righe, 1), ElementsAre("3", "1", "2", "0"));
}

TEST(GridRows, KeepRowsOfEqualTextsInTheirOrderInBothDirections) {
  RigheGriglia righe = Elenco({"B", "A", "È", "A", "B", "È"});
  righe.Ordina(0, true);
  EXPECT_THAT(InOrdine(righe, 1), ElementsAre("1", "3", "0", "4", "2", "5"));
  righe.Ordina(0, false);
  EXPECT_THAT(InOrdine(righe, 1), ElementsAre("2", "5", "0", "4", "1", "3"));
}

TEST(GridRows, SortLettersWithAccentsAmongTheirOwn) {
  RigheGriglia righe = Elenco({"Zeta", "Èrica", "Fabbri", "Alfa", "Erba", "Ünal", "Ugo", "Đurić", "Dante", "Vito"});
  righe.Ordina(0, true);
  EXPECT_THAT(InOrdine(righe, 0),
              ElementsAre("Alfa", "Dante", "Đurić", "Erba", "Èrica", "Fabbri", "Ugo", "Ünal", "Vito", "Zeta"));
}

TEST(GridRows, SortByAccentsAndCaseWhatIsEqualWithoutThem) {
  RigheGriglia righe = Elenco({"PERÒ", "Però", "però", "Pero", "pero", "PERO A", "però a"});
  righe.Ordina(0, true);
  EXPECT_THAT(InOrdine(righe, 0), ElementsAre("pero", "Pero", "però", "Però", "PERÒ", "PERO A", "però a"));
  righe.Ordina(0, false);
  EXPECT_THAT(InOrdine(righe, 0), ElementsAre("però a", "PERO A", "PERÒ", "Però", "però", "Pero", "pero"));
}

TEST(GridRows, SortLongTextsByWhatComesBehindTheirAccents) {
  const std::string inizio = "Società Cooperativa Edilizia ";
  RigheGriglia righe = Elenco(
      {inizio + "Z", "SOCIETA COOPERATIVA EDILIZIA B", inizio + "A", inizio + "b", "Societa Cooperativa Edilizia a"});
  righe.Ordina(0, true);
  EXPECT_THAT(InOrdine(righe, 1), ElementsAre("4", "2", "1", "3", "0"));
}

TEST(GridRows, SortSomeOtherAlphabetBehindTheLatinOne) {
  RigheGriglia righe = Elenco({"Яблоко", "Zeta", "абв", "Ż", "Ωmega", "日本", "z"});
  righe.Ordina(0, true);
  EXPECT_THAT(InOrdine(righe, 0), ElementsAre("z", "Ż", "Zeta", "Ωmega", "абв", "Яблоко", "日本"));
}

TEST(GridRows, SortAnyTextsAsTheirFoldedFormsDo) {
  const std::vector<std::string> pezzi = {"a", "A", "à", "È", "e", "ß", "s", " ", "-", "’", "0", "z", "Z"};
  std::vector<std::string> testi;
  std::uint32_t seme = 4711;
  for (int i = 0; i < 3000; ++i) {
    std::string testo;
    for (std::uint32_t quanti = (seme >> 8U) % 24; quanti > 0; --quanti) {
      seme = seme * 1664525U + 1013904223U;
      testo += pezzi[(seme >> 16U) % pezzi.size()];
    }
    seme = seme * 1664525U + 1013904223U;
    testi.push_back(testo);
  }
  RigheGriglia righe = Elenco(testi);
  righe.Ordina(0, true);
  std::stable_sort(testi.begin(), testi.end(), [](const std::string& a, const std::string& b) {
    const std::string prima = base::Folded(a);
    const std::string seconda = base::Folded(b);
    return prima != seconda ? prima < seconda : base::BeforeByAccentsAndCase(a, b);
  });
  EXPECT_EQ(InOrdine(righe, 0), testi);
}

TEST(GridRows, KeepTheirNumbersTextsAndTicksWhenSorted) {
  RigheGriglia righe = Elenco({"C", "A", "B"});
  righe.ImpostaSpunta(0, 0, true);
  righe.Ordina(0, true);
  EXPECT_EQ(righe.Testo(0, 0), "C");
  EXPECT_TRUE(righe.Spuntata(0, 0));
  EXPECT_EQ(righe.PostoDellaRiga(0), 2U);
  EXPECT_EQ(righe.RigaAlPosto(2), 0U);
}

TEST(GridRows, SortNothingWithoutComplaint) {
  RigheGriglia righe(2, {});
  righe.Ordina(0, true);
  EXPECT_EQ(righe.Quante(), 0U);
}

TEST(GridRows, SortAHundredThousandRows) {
  constexpr std::uint32_t Quante = 100'000;
  RigheGriglia righe(2, {});
  std::vector<std::string> attesi;
  std::uint32_t seme = 12345;
  for (std::uint32_t i = 0; i < Quante; ++i) {
    seme = seme * 1664525U + 1013904223U;
    attesi.push_back("Cliente " + std::to_string(seme >> 12U));
    righe.Aggiungi({attesi.back(), std::to_string(i)});
  }
  righe.Ordina(0, true);
  std::stable_sort(attesi.begin(), attesi.end());
  EXPECT_EQ(InOrdine(righe, 0), attesi);
  bool coerenti = true;
  for (std::size_t posto = 0; posto < Quante; ++posto) {
    coerenti = coerenti && righe.PostoDellaRiga(righe.RigaAlPosto(posto)) == posto;
  }
  EXPECT_TRUE(coerenti);
}

TEST(GridRows, SortAColumnOfTextsOfItsOwnInWhichSomeComeAgain) {
  constexpr std::uint32_t Quante = 60'000;
  constexpr std::uint32_t Diversi = 20'000;
  RigheGriglia righe(2, {0});
  righe.Prepara(Quante);
  struct Attesa {
    std::string numero;
    std::string testo;
    std::string riga;
  };
  std::vector<Attesa> attesi;
  for (std::uint32_t i = 0; i < Quante; ++i) {
    // Without a repetition among the first twenty thousand: what comes again later is not looked for any more.
    const std::string numero = std::to_string(i * 7919U % Diversi);
    const std::string testo = (i % 3 == 1 ? "PARTITA numero " : "Partita NUMERO ") + numero;
    const auto riga = righe.Aggiungi({testo, std::to_string(i)});
    righe.ImpostaTag(riga, 0, testo);
    attesi.push_back({numero, testo, std::to_string(i)});
  }
  righe.Ordina(0, true);
  std::stable_sort(attesi.begin(), attesi.end(), [](const auto& a, const auto& b) {
    return a.numero != b.numero ? a.numero < b.numero : a.testo > b.testo; // small letters come first
  });
  bool uguali = true;
  for (std::size_t posto = 0; posto < Quante; ++posto) {
    const std::size_t riga = righe.RigaAlPosto(posto);
    uguali = uguali && righe.Testo(riga, 0) == attesi[posto].testo && righe.Testo(riga, 1) == attesi[posto].riga &&
             righe.Tag(riga, 0) == attesi[posto].testo;
  }
  EXPECT_TRUE(uguali);
}

TEST(GridRows, ForgetEverythingWhenEmptied) {
  RigheGriglia righe(2, {0});
  righe.ImpostaSpunta(righe.Aggiungi({"A", "B"}), 0, true);
  righe.Svuota();
  EXPECT_EQ(righe.Quante(), 0U);
  const auto riga = righe.Aggiungi({"C", "D"});
  EXPECT_EQ(riga, 0U);
  EXPECT_EQ(righe.Testo(riga, 0), "C");
  EXPECT_FALSE(righe.Spuntata(riga, 0));
}

} // namespace
} // namespace lumoscad
