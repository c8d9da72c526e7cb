#include "common/RigaComando.hpp"
#include "handlers/Opzioni.hpp"
#include "platform/RuntimeError.hpp"

#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

using namespace lumoscad;

namespace {

struct Lette {
  std::string azienda = "prima";
  std::string numero = "prima";
  std::string tipo = "prima";
  NumeroPartita partita{"prima", "prima"};
  bool dimostrazione = false;
};

Lette Leggi(const std::string& comando) {
  Lette lette;
  LeggiOpzioni(comando, {{"-D", &lette.azienda},
                         {"-N", &lette.numero},
                         {"-T", &lette.tipo, Forma::Maiuscola},
                         {"-P", &lette.partita},
                         {"-DEMO", &lette.dimostrazione}});
  return lette;
}

int ErroreDiOpzione(const std::string& comando) {
  try {
    static_cast<void>(Leggi(comando));
  } catch (const RuntimeError& errore) {
    return errore.Number();
  }
  return 0;
}

} // namespace

TEST(CommandLine, IsWalkedTokenByTokenWithTheEmptyOnesAndTheValues) {
  const RigaComando riga("-d  Ab /a");
  std::vector<std::pair<std::string, std::size_t>> visti;
  riga.Percorri([&](const std::string& nome, std::size_t posto) { visti.emplace_back(nome, posto); });
  EXPECT_EQ(visti, (std::vector<std::pair<std::string, std::size_t>>{{"-D", 0}, {"", 1}, {"AB", 2}, {"/A", 3}}));
}

TEST(CommandLine, GivesATokenAsWrittenAndNoneBehindTheLast) {
  const RigaComando riga("-d Ab");
  ASSERT_NE(riga.Pezzo(1), nullptr);
  EXPECT_EQ(*riga.Pezzo(1), "Ab");
  EXPECT_EQ(riga.Pezzo(2), nullptr);
  EXPECT_EQ(riga.Valore(1, "il valore"), "Ab");
  try {
    static_cast<void>(riga.Valore(2, "il valore di -d"));
    FAIL() << "nothing was raised";
  } catch (const RuntimeError& errore) {
    EXPECT_EQ(errore.Number(), 9);
    EXPECT_EQ(errore.Description(), "Indice non incluso nell'intervallo: manca il valore di -d");
  }
}

TEST(CommandLine, ThatIsEmptyHoldsOneEmptyToken) {
  const RigaComando riga("");
  ASSERT_NE(riga.Pezzo(0), nullptr);
  EXPECT_EQ(*riga.Pezzo(0), "");
  EXPECT_EQ(riga.Pezzo(1), nullptr);
}

TEST(Options, HaveNamesInAnyCaseAndValuesAsWritten) {
  EXPECT_EQ(Leggi("-d abC").azienda, "abC");
}

TEST(Options, KeepTheValueOfBeforeWhereTheyAreMissing) {
  const Lette lette = Leggi("-T BANCA /CREDITI");
  EXPECT_EQ(lette.azienda, "prima");
  EXPECT_EQ(lette.partita.compatta, "prima");
}

TEST(Options, CountTheLastTime) {
  EXPECT_EQ(Leggi("-D 1 -X -D 2").azienda, "2");
}

TEST(Options, HaveAnEmptyValueBeforeTwoBlanks) {
  EXPECT_EQ(Leggi("-D  5").azienda, "");
}

TEST(Options, ActAsOptionsAlsoWhereTheyAreTheValueOfAnother) {
  const Lette lette = Leggi("-D -N 7");
  EXPECT_EQ(lette.azienda, "-N");
  EXPECT_EQ(lette.numero, "7");
}

TEST(Options, IgnoreATokenThatOnlyBeginsAlike) {
  EXPECT_EQ(Leggi("-DB2SOURCE x -DATA y").azienda, "prima");
}

TEST(Options, AreAnIndexErrorWithoutAValue) {
  EXPECT_EQ(ErroreDiOpzione("-T BANCA -D"), 9);
  EXPECT_EQ(ErroreDiOpzione("-D "), 0);
}

TEST(ItemOption, JoinsTheTwoTokens) {
  const Lette lette = Leggi("-P 2006 15 -D 1");
  EXPECT_EQ(lette.partita.compatta, "200615");
  EXPECT_EQ(lette.partita.spaziata, "2006 15");
}

TEST(ItemOption, KeepsEveryBlankInItsSpacedForm) {
  const Lette lette = Leggi("-P 2006    15");
  EXPECT_EQ(lette.partita.compatta, "200615");
  EXPECT_EQ(lette.partita.spaziata, "2006    15");
}

TEST(ItemOption, MayHaveAnEmptyFirstToken) {
  const Lette lette = Leggi("-P  15 16");
  EXPECT_EQ(lette.partita.compatta, "15");
  EXPECT_EQ(lette.partita.spaziata, " 15");
}

TEST(ItemOption, MayHaveAnOptionForItsSecondToken) {
  const Lette lette = Leggi("-P 2006 -D 1");
  EXPECT_EQ(lette.partita.spaziata, "2006 -D");
  EXPECT_EQ(lette.azienda, "1");
}

TEST(ItemOption, OfFewerThanTwoTokensIsAnIndexError) {
  EXPECT_EQ(ErroreDiOpzione("-P"), 9);
  EXPECT_EQ(ErroreDiOpzione("-P 2006"), 9);
  EXPECT_EQ(ErroreDiOpzione("-P 2006  "), 9);
}

TEST(PlainOption, CountsAsAWholeTokenOnly) {
  EXPECT_TRUE(Leggi("-T EXTRA -demo").dimostrazione);
  EXPECT_FALSE(Leggi("-T EXTRA -DEMOS").dimostrazione);
  EXPECT_FALSE(Leggi("").dimostrazione);
}

TEST(UpperCaseOption, KeepsItsValueInUpperCase) {
  EXPECT_EQ(Leggi("-t extra").tipo, "EXTRA");
}

TEST(Options, WhatTheWalkHadStoredStaysStoredWhereALaterTokenFails) {
  Lette lette;
  EXPECT_THROW(LeggiOpzioni("-D abC -T banca -DEMO -N", {{"-D", &lette.azienda},
                                                         {"-T", &lette.tipo, Forma::Maiuscola},
                                                         {"-DEMO", &lette.dimostrazione},
                                                         {"-N", &lette.numero}}),
               RuntimeError);
  EXPECT_EQ(lette.azienda, "abC");
  EXPECT_EQ(lette.tipo, "BANCA");
  EXPECT_TRUE(lette.dimostrazione);
  EXPECT_EQ(lette.numero, "prima");
}
