// Programs in other languages that call the component from more than one thread.

#include "Dimostrazione.hpp"
#include "Figlio.hpp"
#include "Schermo.hpp"
#include "support/Paths.hpp"

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace lumoscad::test {
namespace {

namespace fs = std::filesystem;

const std::string Rifiutato = "LumoScad: Comando rifiutato: ";

/// A calling program, fed line by line.
class Chiamante {
 public:
  Chiamante(const std::string& lingua, const fs::path& cartella, std::vector<std::string> ambiente)
      : cartella_(cartella) {
    ::mkfifo((cartella / "comandi").c_str(), 0600);
    auto argomenti = std::vector<std::string>{test::ProgramPath("lumoscad_chiamante_c").string()};
    if (lingua == "Python") {
      argomenti = {"python3", test::SourcePath("tests/end_to_end/chiamante.py").string(),
                   test::LibraryPath("lumoscad").string()};
      // The interpreter knows nothing of a sanitizer in the library, and does not give back its own memory.
      // NOLINTNEXTLINE(readability-redundant-string-init): it is empty only where there is no sanitizer
      if (const std::string_view sanitizer(LUMOSCAD_SANITIZER); !sanitizer.empty()) {
        ambiente.push_back("LD_PRELOAD=" + std::string(sanitizer));
        ambiente.emplace_back("ASAN_OPTIONS=detect_leaks=0:strict_string_checks=0");
      }
    }
    programma_ = std::make_unique<Figlio>(argomenti, ambiente, cartella / "comandi", cartella / "risultati",
                                          cartella / "errori");
    comandi_ = ::open((cartella / "comandi").c_str(), O_WRONLY | O_CLOEXEC);
  }
  Chiamante(const Chiamante&) = delete;
  Chiamante& operator=(const Chiamante&) = delete;
  ~Chiamante() { ::close(comandi_); }

  void Da(const std::string& riga) const {
    EXPECT_EQ(::write(comandi_, (riga + "\n").data(), riga.size() + 1), static_cast<ssize_t>(riga.size() + 1));
  }
  /// Everything answered once there are `quanti` answers; what there is after a while where they do not come.
  [[nodiscard]] std::string Risultati(long quanti) const {
    std::string risultati;
    Finche(
        [&] {
          risultati = FileText(cartella_ / "risultati");
          return std::count(risultati.begin(), risultati.end(), '\n') >= quanti;
        },
        std::chrono::seconds(60));
    return risultati;
  }
  [[nodiscard]] std::string Errori() const { return FileText(cartella_ / "errori"); }
  [[nodiscard]] long Rifiuti() const {
    const auto errori = Errori();
    long volte = 0;
    for (auto dove = errori.find(Rifiutato); dove != std::string::npos; dove = errori.find(Rifiutato, dove + 1)) {
      ++volte;
    }
    return volte;
  }
  [[nodiscard]] Figlio& Programma() const { return *programma_; }

 private:
  fs::path cartella_;
  std::unique_ptr<Figlio> programma_;
  int comandi_ = -1;
};

class Callers : public testing::TestWithParam<const char*> {
 protected:
  [[nodiscard]] std::unique_ptr<Chiamante> Avvia(std::vector<std::string> ambiente = {
                                                     "QT_QPA_PLATFORM=offscreen"}) const {
    return std::make_unique<Chiamante>(GetParam(), cartella.Path(), std::move(ambiente));
  }

  test::TemporaryFolder cartella;
};

TEST_P(Callers, TheFirstThreadHasTheWindowsForGood) {
  const auto chiamante = Avvia();
  chiamante->Da("M -T FOO");
  EXPECT_EQ(chiamante->Risultati(1), "M \"\"\n");
  chiamante->Da("S -T FOO");
  chiamante->Da("N -T BANCA /CREDITI -D 99 -H 10.9.9.9");
  chiamante->Da("S -T");
  EXPECT_EQ(chiamante->Risultati(4), "M \"\"\nS \"error\"\nN \"error\"\nS \"error\"\n");
  EXPECT_EQ(chiamante->Rifiuti(), 3);
  chiamante->Da("M -T FOO");
  EXPECT_EQ(chiamante->Risultati(5), "M \"\"\nS \"error\"\nN \"error\"\nS \"error\"\nM \"\"\n");
  EXPECT_EQ(chiamante->Rifiuti(), 3) << chiamante->Errori();
}

TEST_P(Callers, TheFirstThreadNeedNotBeTheMainOne) {
  const auto chiamante = Avvia();
  chiamante->Da("S -T FOO");
  chiamante->Da("S -T BANCA");
  EXPECT_EQ(chiamante->Risultati(2), "S \"\"\nS \"\"\n");
  chiamante->Da("M -T FOO");
  EXPECT_EQ(chiamante->Risultati(3), "S \"\"\nS \"\"\nM \"error\"\n");
  EXPECT_EQ(chiamante->Rifiuti(), 1) << chiamante->Errori();
}

TEST_P(Callers, AThreadThatHasEndedKeepsTheWindowsAndNoneInheritsThem) {
  const auto chiamante = Avvia();
  chiamante->Da("N -T FOO");
  chiamante->Da("N -T FOO"); // the system gives this thread the identifier of the one before
  EXPECT_EQ(chiamante->Risultati(2), "N \"\"\nN \"error\"\n");
  EXPECT_EQ(chiamante->Rifiuti(), 1) << chiamante->Errori();
}

TEST_P(Callers, ASecondThreadsCallIsRefusedAtOnceWhileABoxIsOpenAndTheBoxStays) {
  const Schermo schermo(cartella.Path());
  const auto chiamante = Avvia(schermo.Ambiente());
  chiamante->Da("M -T");
  ASSERT_FALSE(schermo.AspettaFinestra("LumoScad", chiamante->Programma()).empty()) << chiamante->Errori();
  chiamante->Da("S -T FOO");
  chiamante->Da("N -T BANCA /DEBITI -D 99 -H 10.9.9.9");
  EXPECT_EQ(chiamante->Risultati(2), "S \"error\"\nN \"error\"\n");
  EXPECT_EQ(chiamante->Rifiuti(), 2) << chiamante->Errori();
  ASSERT_TRUE(schermo.Tasti({"Return"}));
  EXPECT_EQ(chiamante->Risultati(3), "S \"error\"\nN \"error\"\nM \"error\"\n");
  EXPECT_TRUE(schermo.Sparita("LumoScad"));
}

INSTANTIATE_TEST_SUITE_P(Languages, Callers, testing::Values("C", "Python"),
                         [](const auto& caso) { return std::string(caso.param); });

} // namespace
} // namespace lumoscad::test
