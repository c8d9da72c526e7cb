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

TEST(SenzaDesktop, ACommandThatShowsNothingNeedsNone) {
  prova::Banco banco;
  servizi().desktop = []() -> Desktop& { throw ErroreRuntime(errori::Driver, "Nessuno schermo raggiungibile"); };
  EXPECT_EQ(LumoScadenze().EseguiLumoScad("-T ALTRO /A"), "");
}

} // namespace
} // namespace lumoscad
