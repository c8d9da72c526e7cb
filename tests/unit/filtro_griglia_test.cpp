#include "screens/FiltroGriglia.hpp"
#include "screens/GiornoDiCella.hpp"
#include "support/TestBench.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

enum ColonnaFiltrata { FConto, FPartita, FScadenza, FBanca, FImporto, FNuovaBanca, FNascosta };

FiltroGriglia::Colonne ColonneFiltrate() {
  FiltroGriglia::Colonne colonne;
  colonne.testi = {FConto, FPartita, FScadenza, FBanca, FImporto, FNuovaBanca};
  colonne.conto = FConto;
  colonne.partita = FPartita;
  colonne.banca = FBanca;
  colonne.nuovaBanca = FNuovaBanca;
  colonne.importi = {FImporto};
  colonne.date = {FScadenza};
  return colonne;
}

class RowFilter : public testing::Test {
 protected:
  RowFilter() : righe_(7, {}) {
    Aggiungi("SOCIETÀ Rossi S.r.l.", "2006 12", "31/03/2026", "Banca di Roma", "1.584,36", "Banca di Roma");
    Aggiungi("Bianchi Rosso", "2006 1584", "31/12/2026", "", "1.000,00", "Credito Emiliano");
    Aggiungi("Verdi", "2007 7", "01/01/2027", "Banca Popolare", "-20,50", "Banca Popolare");
  }
  void Aggiungi(std::string_view conto, std::string_view partita, std::string_view scadenza, std::string_view banca,
                std::string_view importo, std::string_view nuova) {
    righe_.Aggiungi({conto, partita, scadenza, banca, importo, nuova, "nascosta"});
  }
  [[nodiscard]] std::vector<std::size_t> Passano(std::string_view testo) const {
    const FiltroGriglia filtro(testo, ColonneFiltrate());
    std::vector<std::size_t> passano;
    for (std::size_t riga = 0; riga < righe_.Quante(); ++riga) {
      if (filtro.Passa(righe_, riga)) {
        passano.push_back(riga);
      }
    }
    return passano;
  }
  [[nodiscard]] static bool Restringe(std::string_view dopo, std::string_view prima) {
    return FiltroGriglia(dopo, ColonneFiltrate()).Restringe(FiltroGriglia(prima, ColonneFiltrate()));
  }
  [[nodiscard]] static std::vector<std::string> Segnati(std::string_view filtro, std::string_view testo, int colonna) {
    std::vector<std::string> segnati;
    for (const auto& [inizio, fine] : FiltroGriglia(filtro, ColonneFiltrate()).Trovati(testo, colonna)) {
      segnati.emplace_back(testo.substr(inizio, fine - inizio));
    }
    return segnati;
  }

  test::TestBench banco_; // the clock
  RigheGriglia righe_;
};

TEST_F(RowFilter, LetsEverythingPassWhereNothingIsAsked) {
  for (const char* testo : {"", "   ", "-", "banca:", "-conto:", ">", "<=", "=", "\"\"", " - > "}) {
    EXPECT_THAT(Passano(testo), ElementsAre(0, 1, 2)) << testo;
    EXPECT_TRUE(FiltroGriglia(testo, ColonneFiltrate()).Vuoto()) << testo;
  }
}

TEST_F(RowFilter, FindsWordsInAnyOrderWithoutCaseAndAccents) {
  EXPECT_THAT(Passano("rossi SOCIETA"), ElementsAre(0));
  EXPECT_THAT(Passano("ross"), ElementsAre(0, 1));
  EXPECT_THAT(Passano("rosso cre"), ElementsAre(1));
  EXPECT_THAT(Passano("rossi verdi"), IsEmpty());
  EXPECT_THAT(Passano("società"), ElementsAre(0));
}

TEST_F(RowFilter, LooksInTheVisibleColumnsAlone) {
  EXPECT_THAT(Passano("nascosta"), IsEmpty());
}

TEST_F(RowFilter, FindsAnAmountByItsDigits) {
  EXPECT_THAT(Passano("1584"), ElementsAre(0, 1)) << "the amount, and the item";
  EXPECT_THAT(Passano("158436"), ElementsAre(0));
  EXPECT_THAT(Passano("1584,3"), ElementsAre(0));
  EXPECT_THAT(Passano("1.584"), ElementsAre(0));
  EXPECT_THAT(Passano("84,36"), ElementsAre(0));
  EXPECT_THAT(Passano("4,3,6"), IsEmpty());
}

TEST_F(RowFilter, ComparesAmounts) {
  EXPECT_THAT(Passano(">1000"), ElementsAre(0));
  EXPECT_THAT(Passano(">=1.000"), ElementsAre(0, 1));
  EXPECT_THAT(Passano("<1000,00"), ElementsAre(2));
  EXPECT_THAT(Passano("<=-20,5"), ElementsAre(2));
  EXPECT_THAT(Passano("<0"), ElementsAre(2));
  EXPECT_THAT(Passano("=1584.36"), ElementsAre(0));
  EXPECT_THAT(Passano(">-21 <1001"), ElementsAre(1, 2));
}

TEST_F(RowFilter, ComparesDates) {
  EXPECT_THAT(Passano("<31/12/2026"), ElementsAre(0));
  EXPECT_THAT(Passano("<=31/12/26"), ElementsAre(0, 1));
  EXPECT_THAT(Passano(">31/12/2026"), ElementsAre(2));
  EXPECT_THAT(Passano("=1/1/2027"), ElementsAre(2));
}

TEST_F(RowFilter, TakesADateWithoutYearForOneOfThisYear) {
  ActiveServices().localTime = [] { return DateTime{2026, 5, 6, 7, 8, 9}; };
  EXPECT_THAT(Passano("<31/12"), ElementsAre(0));
  ActiveServices().localTime = [] { return DateTime{2027, 5, 6, 7, 8, 9}; };
  EXPECT_THAT(Passano("<31/12"), ElementsAre(0, 1, 2));
}

TEST_F(RowFilter, TakesAComparisonThatItCannotReadForAWord) {
  for (const char* testo : {">abc", "<31/", "<31/13", "<30/02/2026", ">1,234", "<1/1/20261", ">1a"}) {
    EXPECT_THAT(Passano(testo), IsEmpty()) << testo;
  }
}

TEST_F(RowFilter, LooksInTheColumnThatIsNamed) {
  EXPECT_THAT(Passano("conto:rosso"), ElementsAre(1));
  EXPECT_THAT(Passano("partita:1584"), ElementsAre(1));
  EXPECT_THAT(Passano("Ordine:12"), ElementsAre(0));
  EXPECT_THAT(Passano("BANCA:emiliano"), ElementsAre(1)) << "the new bank too";
  EXPECT_THAT(Passano("banca:roma"), ElementsAre(0));
  EXPECT_THAT(Passano("banca:rossi"), IsEmpty());
}

TEST_F(RowFilter, FindsNothingInAColumnThatTheScreenHasNot) {
  auto senza = ColonneFiltrate();
  senza.banca = senza.nuovaBanca = -1;
  EXPECT_FALSE(FiltroGriglia("banca:roma", senza).Passa(righe_, 0));
  EXPECT_TRUE(FiltroGriglia("-banca:roma", senza).Passa(righe_, 0));
}

TEST_F(RowFilter, LeavesOutWhatAMinusStandsBefore) {
  EXPECT_THAT(Passano("-rossi"), ElementsAre(1, 2));
  EXPECT_THAT(Passano("-banca:popolare -rossi"), ElementsAre(1));
  EXPECT_THAT(Passano("->1000"), ElementsAre(1, 2));
  EXPECT_THAT(Passano("-1584"), ElementsAre(2));
}

TEST_F(RowFilter, HoldsTogetherWhatQuotesAreAround) {
  EXPECT_THAT(Passano("\"banca di\""), ElementsAre(0));
  EXPECT_THAT(Passano("\"di banca\""), IsEmpty());
  EXPECT_THAT(Passano("banca:\"di roma\""), ElementsAre(0));
  EXPECT_THAT(Passano("-\"banca di\""), ElementsAre(1, 2));
  EXPECT_THAT(Passano("\"-20,50\""), ElementsAre(2)) << "a minus that is looked for";
  EXPECT_THAT(Passano("\"banca d"), ElementsAre(0)) << "while it is typed";
}

TEST_F(RowFilter, FollowsACellThatChanged) {
  const FiltroGriglia filtro("emiliano", ColonneFiltrate());
  EXPECT_FALSE(filtro.Passa(righe_, 0));
  righe_.ImpostaTesto(0, FNuovaBanca, "Credito Emiliano");
  EXPECT_TRUE(filtro.Passa(righe_, 0));
  righe_.ImpostaTesto(0, FNuovaBanca, "");
  EXPECT_FALSE(filtro.Passa(righe_, 0));
}

TEST_F(RowFilter, TellsAnAmountFromATextThatIsTheSame) {
  Aggiungi("1.000,00", "1", "", "", "2,00", "");
  EXPECT_THAT(Passano("1000"), ElementsAre(1)) << "by its digits an amount alone is found";
  EXPECT_THAT(Passano("1.000"), ElementsAre(1, 3));
}

TEST_F(RowFilter, KnowsWhenAFurtherLetterNarrowsIt) {
  EXPECT_TRUE(Restringe("ros", "ro"));
  EXPECT_TRUE(Restringe("ros", ""));
  EXPECT_TRUE(Restringe("ros ban", "ros"));
  EXPECT_TRUE(Restringe("158", "15"));
  EXPECT_TRUE(Restringe("1.584", "1.5"));
  EXPECT_TRUE(Restringe("1584,3", "1584"));
  EXPECT_TRUE(Restringe(">10", ">1"));
  EXPECT_TRUE(Restringe(">10", ">=10"));
  EXPECT_TRUE(Restringe("<9", "<10"));
  EXPECT_TRUE(Restringe("banca:ro", "banca:r"));
  EXPECT_TRUE(Restringe("banca:ro", "ro"));
  EXPECT_TRUE(Restringe("-ro", "-ros"));
  EXPECT_TRUE(Restringe("<1/1/2026", "<=1/1/2026"));
}

TEST_F(RowFilter, DoesNotTakeAWiderOneForANarrower) {
  EXPECT_FALSE(Restringe("ro", "ros"));
  EXPECT_FALSE(Restringe("-ros", "-ro"));
  EXPECT_FALSE(Restringe("ros", "ros ban"));
  EXPECT_FALSE(Restringe("<10", "<9"));
  EXPECT_FALSE(Restringe("<31/1/2026", "<31"));
  EXPECT_FALSE(Restringe(">=10", ">10"));
  EXPECT_FALSE(Restringe("ro", "banca:ro"));
  EXPECT_FALSE(Restringe("1.", "."));
  EXPECT_FALSE(Restringe("", "ro"));
}

TEST_F(RowFilter, NeverNarrowsToARowThatTheWiderHadLeftOut) {
  std::mt19937 caso(20261122); // NOLINT(cert-msc51-cpp): the same texts each time
  constexpr std::array<std::string_view, 14> Pezzi = {"1",  "5", "8", ".", ",", "-",      " ",
                                                      "ro", "s", ">", "<", "=", "banca:", "/"};
  std::vector<FiltroGriglia> filtri;
  std::vector<std::vector<bool>> passano;
  for (int i = 0; i < 300; ++i) {
    std::string testo;
    for (std::size_t pezzi = caso() % 6; pezzi > 0; --pezzi) {
      testo += Pezzi[caso() % Pezzi.size()];
    }
    filtri.emplace_back(testo, ColonneFiltrate());
    passano.emplace_back();
    for (std::size_t riga = 0; riga < righe_.Quante(); ++riga) {
      passano.back().push_back(filtri.back().Passa(righe_, riga));
    }
  }
  int restringono = 0;
  for (std::size_t a = 0; a < filtri.size(); ++a) {
    for (std::size_t b = 0; b < filtri.size(); ++b) {
      if (filtri[a].Restringe(filtri[b])) {
        ++restringono;
        for (std::size_t riga = 0; riga < righe_.Quante(); ++riga) {
          EXPECT_LE(passano[a][riga], passano[b][riga]);
        }
      }
    }
  }
  EXPECT_GT(restringono, 1000);
}

TEST_F(RowFilter, MarksWhatItFound) {
  EXPECT_THAT(Segnati("societa ross", "SOCIETÀ Rossi rosso", FConto), ElementsAre("SOCIETÀ", "Ross", "ross"));
  EXPECT_THAT(Segnati("1584", "1.584,36", FImporto), ElementsAre("1.584"));
  EXPECT_THAT(Segnati("436", "1.584,36", FImporto), ElementsAre("4,36"));
  EXPECT_THAT(Segnati("84,3", "1.584,36", FImporto), ElementsAre("84,3"));
  EXPECT_THAT(Segnati("1584", "1.584,36", FConto), IsEmpty());
  EXPECT_THAT(Segnati(">1000", "1.584,36", FImporto), ElementsAre("1.584,36"));
  EXPECT_THAT(Segnati(">1000", "584,36", FImporto), IsEmpty());
  EXPECT_THAT(Segnati("<1/1/2027", "31/12/2026", FScadenza), ElementsAre("31/12/2026"));
  EXPECT_THAT(Segnati("banca:roma", "Banca di Roma", FBanca), ElementsAre("Roma"));
  EXPECT_THAT(Segnati("banca:roma", "Roma", FConto), IsEmpty());
  EXPECT_THAT(Segnati("-roma", "Roma", FConto), IsEmpty());
  EXPECT_THAT(Segnati("roma", "nascosta roma", FNascosta), IsEmpty());
}

TEST_F(RowFilter, MarksTouchingFindsAsOneAndACharacterWhole) {
  EXPECT_THAT(Segnati("ro os", "Rossi", FConto), ElementsAre("Ros"));
  EXPECT_THAT(Segnati("aa", "aaaa", FConto), ElementsAre("aaaa"));
  EXPECT_THAT(Segnati("stras", "Straße", FConto), ElementsAre("Straß"));
}

TEST(DayOfACell, IsReadInBothOfItsForms) {
  EXPECT_EQ(GiornoDiCella("31/12/2026"), 20261231);
  EXPECT_EQ(GiornoDiCella("01/02/26"), 20260201);
  EXPECT_EQ(GiornoDiCella("01/02/50"), 19500201);
  EXPECT_EQ(GiornoDiCella("29/02/2024"), 20240229);
  for (const char* testo : {"", " ", "29/02/2023", "00/01/2026", "1/2/2026", "2026/12/31", "31/12", "aa/bb/cccc"}) {
    EXPECT_EQ(GiornoDiCella(testo), std::nullopt) << testo;
  }
}

TEST(DayAsWritten, MayHaveNoYear) {
  EXPECT_EQ(GiornoScritto("31/12", 2026), 20261231);
  EXPECT_EQ(GiornoScritto("1/2/26", 2020), 20260201);
  EXPECT_EQ(GiornoScritto("29/2", 2024), 20240229);
  for (const char* testo :
       {"", "31", "31/", "/12", "31/12/", "31/12/2", "31/12/202", "31/12/2026/", "29/2/23", "001/1"}) {
    EXPECT_EQ(GiornoScritto(testo, 2024), std::nullopt) << testo;
  }
}

} // namespace
} // namespace lumoscad
