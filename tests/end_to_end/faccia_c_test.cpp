#include "lumoscad/Host.hpp"
#include "lumoscad/lumoscad.h"
#include "support/Files.hpp"

#include <array>
#include <cstdlib>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

/// Without a display an error goes to the error output instead of a box, which nobody would close.
class CFace : public testing::Test {
 protected:
  CFace() {
    for (const char* variabile : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
      unsetenv(variabile);
    }
    risultato.fill('?');
  }

  std::array<char, 8> risultato{};
};

} // namespace

TEST_F(CFace, GivesTheResultAndItsLength) {
  EXPECT_EQ(lumoscad_esegui("-T", risultato.data(), risultato.size()), 5U);
  EXPECT_STREQ(risultato.data(), "error");
}

TEST_F(CFace, AnUnknownTypeGivesAnEmptyResult) {
  EXPECT_EQ(lumoscad_esegui("-T FOO", risultato.data(), risultato.size()), 0U);
  EXPECT_STREQ(risultato.data(), "");
}

TEST_F(CFace, AShortBufferGetsWhatFitsAndTheWholeLength) {
  EXPECT_EQ(lumoscad_esegui("-T", risultato.data(), 3), 5U);
  EXPECT_STREQ(risultato.data(), "er");
  EXPECT_EQ(std::string(risultato.data() + 3, 5), "?????") << "nothing is written behind it";
}

TEST_F(CFace, WithoutABufferOnlyTheLengthIsTold) {
  EXPECT_EQ(lumoscad_esegui("-T", nullptr, 8), 5U);
  EXPECT_EQ(lumoscad_esegui("-T", risultato.data(), 0), 5U);
  EXPECT_EQ(risultato[0], '?');
}

TEST_F(CFace, WithoutADisplayTheErrorOutputTellsEachReasonOnce) {
  const auto volte = [](std::string_view comando, std::string_view testo, std::size_t lunghezza = 5) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(lumoscad_esegui(std::string(comando).c_str(), nullptr, 0), lunghezza);
    const std::string scritto = testing::internal::GetCapturedStderr();
    int quante = 0;
    for (auto dove = scritto.find(testo); dove != std::string::npos; dove = scritto.find(testo, dove + 1)) {
      ++quante;
    }
    return quante;
  };
  EXPECT_EQ(volte("-T", "manca il valore di -T"), 1);
  EXPECT_EQ(volte("-T", "nessuno schermo raggiungibile"), 1) << "why it stands there and not in a box";
  EXPECT_EQ(volte("-T SOSPESO /A -DEMO", "nessuno schermo raggiungibile", 0), 1);
  EXPECT_EQ(volte("-T SOSPESO /A -DEMO", "La partita è stata sospesa", 0), 1);
  EXPECT_EQ(volte("-T SOSPESO /A -C 1 -P 2 3", "nessuno schermo raggiungibile"), 1) << "no wait window, no request";
}

TEST_F(CFace, ANullCommandIsAnEmptyLine) {
  EXPECT_EQ(lumoscad_esegui(nullptr, risultato.data(), risultato.size()), 0U);
  EXPECT_STREQ(risultato.data(), "");
}

TEST_F(CFace, TheTestOfAHostAndACommandDoNotRunAtOnce) {
  setenv("NEXARO_TRASPORTO", "cartella", 1);
  const lumoscad::test::TemporaryFolder radice;
  setenv("NEXARO_RADICE", radice.Path().c_str(), 1);
  testing::internal::CaptureStderr();
  std::vector<std::string> interne;
  std::size_t daUnTimer = 0;
  std::size_t daUnThread = 0;
  const auto esegui = [](std::size_t& lunghezza) { lunghezza = lumoscad_esegui("-T FOO", nullptr, 0); };
  static_cast<void>(lumoscad::ProvaHost("10.0.0.1", "", [&](const lumoscad::PassoProva&) {
    if (!interne.empty()) {
      return;
    }
    EXPECT_FALSE(lumoscad::ProvaHost("10.0.0.2", "", [&](const lumoscad::PassoProva& interno) {
      EXPECT_FALSE(interno.riuscito);
      interne.push_back(interno.dettaglio);
    }));
    esegui(daUnTimer);
    std::thread([&] { esegui(daUnThread); }).join();
  }));
  const std::string scritto = testing::internal::GetCapturedStderr();
  ASSERT_EQ(interne.size(), 1U);
  EXPECT_EQ(interne[0], "Comando rifiutato: ne è già in corso un altro, che va prima portato a termine.");
  EXPECT_EQ(daUnTimer, 5U);
  EXPECT_EQ(daUnThread, 5U);
  EXPECT_EQ(lumoscad_esegui("-T FOO", nullptr, 0), 0U) << "the turn is free again";
}

TEST_F(CFace, OutcomesThatCannotBeShownEndTheTestOfAHostAndNotTheProgram) {
  setenv("NEXARO_TRASPORTO", "cartella", 1);
  const lumoscad::test::TemporaryFolder radice;
  setenv("NEXARO_RADICE", radice.Path().c_str(), 1);
  EXPECT_FALSE(
      lumoscad::ProvaHost("10.0.0.1", "", [](const lumoscad::PassoProva&) { throw std::runtime_error("no screen"); }));
}
