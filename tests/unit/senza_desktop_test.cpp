#include "lumoscad/LumoScadenze.hpp"
#include "platform/Errore.hpp"
#include "support/Prova.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace lumoscad {
namespace {

TEST(SenzaDesktop, AnErrorGoesToTheStandardErrorAndTheResultIsError) {
  prova::Banco banco;
  servizi().desktop = []() -> Desktop& { throw ErroreRuntime(errori::Driver, "Nessuno schermo raggiungibile"); };
  testing::internal::CaptureStderr();
  EXPECT_EQ(LumoScadenze().EseguiLumoScad("-T"), "error");
  const std::string scritto = testing::internal::GetCapturedStderr();
  EXPECT_THAT(scritto, testing::HasSubstr("LumoScad: 9 Indice non incluso nell'intervallo"));
  EXPECT_THAT(scritto, testing::HasSubstr("Nessuno schermo raggiungibile"));
}

TEST(SenzaDesktop, WhatOthersHaveWrittenGivesTheTerminalNoOrders) {
  prova::Banco banco;
  servizi().desktop = []() -> Desktop& {
    throw ErroreRuntime(errori::Driver, "Schermo\x1B[2J\xC2\x9B"
                                        "2J negato");
  };
  testing::internal::CaptureStderr();
  EXPECT_EQ(LumoScadenze().EseguiLumoScad("-T"), "error");
  EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::EndsWith("LumoScad: Schermo [2J 2J negato\n"));
}

TEST(SenzaDesktop, ACommandThatShowsNothingNeedsNone) {
  prova::Banco banco;
  servizi().desktop = []() -> Desktop& { throw ErroreRuntime(errori::Driver, "Nessuno schermo raggiungibile"); };
  EXPECT_EQ(LumoScadenze().EseguiLumoScad("-T ALTRO /A"), "");
}

} // namespace
} // namespace lumoscad
