#include "handlers/Opzioni.hpp"
#include "platform/Errore.hpp"

#include <gtest/gtest.h>
#include <string>

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

int NumeroErrore(const std::string& comando) {
  try {
    static_cast<void>(Leggi(comando));
  } catch (const ErroreRuntime& errore) {
    return errore.Numero();
  }
  return 0;
}

} // namespace

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
  EXPECT_EQ(NumeroErrore("-T BANCA -D"), 9);
  EXPECT_EQ(NumeroErrore("-D "), 0);
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
  EXPECT_EQ(NumeroErrore("-P"), 9);
  EXPECT_EQ(NumeroErrore("-P 2006"), 9);
  EXPECT_EQ(NumeroErrore("-P 2006  "), 9);
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
               ErroreRuntime);
  EXPECT_EQ(lette.azienda, "abC");
  EXPECT_EQ(lette.tipo, "BANCA");
  EXPECT_TRUE(lette.dimostrazione);
  EXPECT_EQ(lette.numero, "prima");
}
