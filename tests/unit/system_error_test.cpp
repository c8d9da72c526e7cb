#include "platform/base/SystemError.hpp"

#include <array>
#include <cerrno>
#include <gtest/gtest.h>

using namespace lumoscad::base;

TEST(SystemError, HasAnItalianNameForTheUsualFailures) {
  EXPECT_EQ(SystemErrorText(ENOENT), "file inesistente");
  EXPECT_EQ(SystemErrorText(EACCES), "permesso negato");
  EXPECT_EQ(SystemErrorText(ENOSPC), "spazio esaurito");
  EXPECT_EQ(SystemErrorText(E2BIG), "parametri troppo lunghi");
}

TEST(SystemError, GivesTheNumberOfAnyOther) {
  EXPECT_EQ(SystemErrorText(EDOM), "errore di sistema " + std::to_string(EDOM));
  EXPECT_EQ(SystemErrorText(0), "errore di sistema 0");
}

TEST(SystemError, GoesByOtherNamesAlone) {
  constexpr std::array Names{SystemErrorName{ENOENT, "percorso inesistente"}};
  EXPECT_EQ(SystemErrorText(ENOENT, Names), "percorso inesistente");
  EXPECT_EQ(SystemErrorText(EACCES, Names), "errore di sistema " + std::to_string(EACCES));
}
