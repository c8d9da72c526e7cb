#pragma once

#include "lumoscad/lumoscad.h"
#include "support/Files.hpp"

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>

namespace lumoscad::test {

/// Without a display an error goes to the error output instead of a box, which nobody would close.
class CFace : public ::testing::Test {
 protected:
  CFace() {
    for (const char* variabile : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
      unsetenv(variabile);
    }
    // Read once a process.
    setenv("NEXARO_CARTELLA_LOCALE", Locale().Path().c_str(), 1);
    for (const auto& voce : std::filesystem::directory_iterator(Locale().Path())) {
      std::filesystem::remove_all(voce.path());
    }
    risultato.fill('?');
    letto.fill('?');
  }

  static const TemporaryFolder& Locale() {
    static const TemporaryFolder Unica;
    return Unica;
  }
  /// The host of every test in this process: its place is read once, too.
  static const TemporaryFolder& Radice() {
    static const TemporaryFolder Unica;
    return Unica;
  }
  static void UsaCartella() {
    setenv("NEXARO_TRASPORTO", "cartella", 1);
    setenv("NEXARO_RADICE", Radice().Path().c_str(), 1);
    std::filesystem::create_directories(Radice() / "tmp");
  }
  /// Leaves the note of a command, in this phase.
  static void Lascia(const std::string& nome, const std::string& fase) {
    Scrivi(nome + ".nota",
           "lumoscad-nota 1\ninizio=2026-03-05 14:07:09\npostazione=T01\ncomando=SOSPESO /A\nazienda=01\n"
           "host=10.0.0.1\norigine=CONTAB\ngenere=azione\nelemento=01\nelemento=SOSPESOCREA\n"
           "elemento=C1\nelemento=AB 1\nfine\n");
    Scrivi(nome + ".fase",
           "lumoscad-fase 1\nfase=" + fase + "\nmomento=2026-03-05 14:07:10\nrisposta=conto bloccato\nfine\n");
  }
  static void Scrivi(const std::string& nome, const std::string& contenuto) {
    std::ofstream(Locale() / nome) << contenuto;
  }

  std::array<char, 8> risultato{};
  std::array<char, 2048> letto{};
  int stato = -1;
};

} // namespace lumoscad::test
