// Whole processes: from the command to the window, and a command without a screen.

#include "Dimostrazione.hpp"
#include "Measures.hpp"
#include "Program.hpp"
#include "Schermo.hpp"
#include "Stopwatch.hpp"
#include "support/LargeDatabase.hpp"
#include "support/Paths.hpp"

#include <filesystem>

namespace lumoscad::bench {
namespace {

constexpr int Runs = 41;
constexpr int FewRuns = 2;
constexpr long Instalments = 400;

int RunsOf(Sizes sizes) {
  return sizes == Sizes::All ? Runs : FewRuns;
}

/// Milliseconds from a program's start to its window.
double UntilShown(const std::string& program, const std::vector<std::string>& words,
                  const std::vector<std::string>& settings) {
  const Ended ended = Run(program, words, settings);
  return NumberBefore(ended.output, "ms shown") - ended.begin;
}

Row ToWindow(const test::Dimostrazione& demonstration, const test::LargeDatabase& base, Sizes sizes) {
  std::vector<std::string> settings = demonstration.Ambiente();
  const auto folder = Folder(sizes, "schermo");
  std::filesystem::remove_all(folder);
  std::filesystem::create_directories(folder);
  const test::Schermo screen(folder);
  for (const std::string& setting : screen.Ambiente()) {
    settings.push_back(setting);
  }
  auto command = Words("finestra -T BANCA /CREDITI -H locale -D 01 " + base.Options());
  const Times outcome = Compare(
      RunsOf(sizes), [&] { return UntilShown("bench_programma", command, settings); },
      [&] { return UntilShown("bench_finestra_vuota", {}, settings); });
  return {"command to window, against an empty Qt window", Grouped(Instalments) + " rows", outcome.Report(), 1.4,
          Sides("component", outcome.screen, "empty window", outcome.bare)};
}

Row WithoutScreen(const test::Dimostrazione& demonstration, Sizes sizes) {
  const std::vector<std::string> settings = demonstration.Ambiente();
  const auto command = Words("-T TEST -H locale -D 01 -DB2SOURCE " + demonstration.Sorgente() + " -DB2SCHEMA main");
  const Times outcome = Compare(
      RunsOf(sizes), [&] { return Run("lumoscad", command, settings).milliseconds; },
      [&] { return Run("bench_vuoto", {}, settings).milliseconds; });
  return {"command without a screen, against an empty Qt-linked program", "", outcome.Report(), 1.15,
          Sides("component", outcome.screen, "empty program", outcome.bare)};
}

} // namespace

Rows Start(Sizes sizes) {
  const test::Dimostrazione demonstration;
  Rows rows;
  if (test::PostgresServer::Available()) {
    const test::LargeDatabase base(Folder(sizes, "postgres"), Instalments);
    rows.push_back(ToWindow(demonstration, base, sizes));
  }
  rows.push_back(WithoutScreen(demonstration, sizes));
  return rows;
}

} // namespace lumoscad::bench
