#include "lumoscad/lumoscad.h"

#include <array>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

namespace {

/// Without a display an error goes to the error output instead of a box, which nobody would close.
class FacciaC : public testing::Test {
 protected:
  FacciaC() {
    for (const char* variabile : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
      unsetenv(variabile);
    }
    risultato.fill('?');
  }

  std::array<char, 8> risultato{};
};

} // namespace

TEST_F(FacciaC, GivesTheResultAndItsLength) {
  EXPECT_EQ(lumoscad_esegui("-T", risultato.data(), risultato.size()), 5U);
  EXPECT_STREQ(risultato.data(), "error");
}

TEST_F(FacciaC, AnUnknownTypeGivesAnEmptyResult) {
  EXPECT_EQ(lumoscad_esegui("-T FOO", risultato.data(), risultato.size()), 0U);
  EXPECT_STREQ(risultato.data(), "");
}

TEST_F(FacciaC, AShortBufferGetsWhatFitsAndTheWholeLength) {
  EXPECT_EQ(lumoscad_esegui("-T", risultato.data(), 3), 5U);
  EXPECT_STREQ(risultato.data(), "er");
  EXPECT_EQ(std::string(risultato.data() + 3, 5), "?????") << "nothing is written behind it";
}

TEST_F(FacciaC, WithoutABufferOnlyTheLengthIsTold) {
  EXPECT_EQ(lumoscad_esegui("-T", nullptr, 8), 5U);
  EXPECT_EQ(lumoscad_esegui("-T", risultato.data(), 0), 5U);
  EXPECT_EQ(risultato[0], '?');
}

TEST_F(FacciaC, ANullCommandIsAnEmptyLine) {
  EXPECT_EQ(lumoscad_esegui(nullptr, risultato.data(), risultato.size()), 0U);
  EXPECT_STREQ(risultato.data(), "");
}
