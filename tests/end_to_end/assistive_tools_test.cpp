// A whole command carried out through the bus of the assistive tools, in the real program on a display.

#include "Dimostrazione.hpp"
#include "Figlio.hpp"
#include "Schermo.hpp"
#include "support/Paths.hpp"

#include <gmock/gmock.h>

#include <cstdlib>

namespace lumoscad::test {
namespace {

using testing::IsEmpty;
namespace fs = std::filesystem;

/// The command lines of the programs that have this folder in their environment.
Righe ProgramsOf(const fs::path& folder) {
  Righe programs;
  std::error_code gone;
  for (const auto& process : fs::directory_iterator("/proc", gone)) {
    if (FileText(process.path() / "environ").find(folder.string()) != std::string::npos) {
      programs.push_back(FileText(process.path() / "cmdline"));
    }
  }
  return programs;
}

class AssistiveTools : public testing::Test {
 protected:
  AssistiveTools() : demo(Trasporto::Cartella), screen(demo.Base()) {}

  /// Plays the client in a session bus of its own, whose files stay in the demonstration's folder.
  [[nodiscard]] std::unique_ptr<Figlio> Client() {
    Scrivi(demo.Base() / "comando",
           "-T BANCA /CREDITI -D 01 -H " + demo.Indirizzo() + " -C 20100023 -DB2SOURCE CONTABILITA -DB2SCHEMA main\n");
    auto environment = screen.Ambiente();
    const std::string base = demo.Base().string();
    const char* checks = std::getenv("ASAN_OPTIONS");
    for (const std::string& entry :
         {"QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1" + std::string(), "GSETTINGS_BACKEND=memory" + std::string(),
          "HOME=" + base, "XDG_CONFIG_HOME=" + base, "XDG_CACHE_HOME=" + base, "XDG_DATA_HOME=" + base,
          "PYTHONDONTWRITEBYTECODE=1" + std::string(),
          // The keyboard library copies names out of replies that end without a null.
          "ASAN_OPTIONS=" + std::string(checks == nullptr ? "" : checks) + ":strict_string_checks=0"}) {
      environment.push_back(entry);
    }
    return std::make_unique<Figlio>(
        std::vector<std::string>{"dbus-run-session", "--", "/usr/bin/python3",
                                 test::SourcePath("tests/end_to_end/assistive_client.py").string(), base,
                                 test::ProgramPath("lumoscad").string()},
        environment, "/dev/null", demo.Base() / "client", demo.Base() / "client.log");
  }

  Dimostrazione demo;
  Schermo screen;
};

TEST_F(AssistiveTools, CarryOutAWholeCommandByActionsAlone) {
  const auto before = demo.Stato();
  const auto expected = demo.StatoDopo(R"(
    UPDATE EVENTOCONTABILE SET DATASCADENZA='2026-04-15' WHERE EVENTOCONTABILEKEY=111;
    UPDATE EVENTOCONTABILE SET BANCAPRESENTAZIONE_KEY=1 WHERE EVENTOCONTABILEKEY=291;
    UPDATE EVENTOCONTABILE SET DATASCADENZA='2026-05-20', BANCAPRESENTAZIONE_KEY=1 WHERE EVENTOCONTABILEKEY=137)");
  fs::rename(demo.VB0001(), demo.VB0001().string() + ".vero");
  ScriviProgramma(demo.VB0001(), R"(cd "$NEXARO_RADICE" || exit 1
cp tmp/*.dos registro/richiesta
exec programmi/VB0001.vero "$@")");
  {
    const auto client = Client();
    ASSERT_EQ(client->Attendi(std::chrono::minutes(10)), 0)
        << FileText(demo.Base() / "client.log") << FileText(demo.Base() / "errori");
  }
  EXPECT_EQ(FileText(demo.Base() / "risultato"), "");
  EXPECT_EQ(FileText(demo.Base() / "errori"), "");
  EXPECT_EQ(FileText(demo.Host() / "registro/richiesta"),
            "20100023,2025/46,,,,20251219,20251219,20260415,60100002,,2\r\n"
            "20100023,2026/119,,,,20260201,20260201,,60100005,60100001,1\r\n"
            "20100023,2025/57,,,,20260210,20260225,20260520,60100005,60100001,2\r\n");
  EXPECT_THAT(FileText(demo.Registro()), testing::StartsWith("ACCETTATA\tVariate 3 scadenze\t"));
  EXPECT_THAT(Contenuto(demo.Tmp()), IsEmpty());
  EXPECT_THAT(Differenze(expected, demo.Stato()), IsEmpty());
  EXPECT_EQ(Differenze(before, demo.Stato()).size(), 6U);
  // The buses end with the session; the display and its window manager are still there.
  EXPECT_TRUE(Finche([&] {
    const Righe programs = ProgramsOf(demo.Base() / "esecuzione");
    return std::none_of(programs.begin(), programs.end(), [](const std::string& program) {
      return program.find("dbus") != std::string::npos || program.find("at-spi") != std::string::npos;
    });
  })) << testing::PrintToString(ProgramsOf(demo.Base() / "esecuzione"));
}

} // namespace
} // namespace lumoscad::test
