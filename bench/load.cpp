#include "Bare.hpp"
#include "Stopwatch.hpp"
#include "common/Stato.hpp"
#include "screens/frmLumoScadenzeBanche.hpp"
#include "support/LargeDatabase.hpp"
#include "support/Paths.hpp"

#include <cstdio>
#include <stdexcept>

namespace lumoscad::bench {
namespace {

/// How many instalments, and how often each side reads them.
struct Extent {
  std::size_t rows;
  int runs;
  double target;
};
constexpr Extent Extents[] = {{1000, 101, 1.30}, {10000, 25, 1.08}, {100000, 9, 1.08}, {1000000, 3, 1.08}};
constexpr int FewRuns = 3;

Row LoadOf(const Extent& extent, int runs) {
  const test::LargeDatabase base(test::BuildFolder() / "bench/postgres", static_cast<long>(extent.rows));
  const StatoSostituito status;
  lumoscad::stato().ComandoCorrente = base.command();
  StopwatchDesktop desktop;
  std::string statement; // the list's, which is the last one sent
  const auto screen = [&] {
    return LoadScreen(
        desktop, [&](std::string_view text) { statement = text; },
        [] {
          frmLumoScadenzeBanche banks;
          VariazioniCanalizzazione changes;
          banks.VisualizzaScadenzeBanche("01", {}, changes);
        });
  };
  screen();
  const BareConnection connection(base.ConnectionText());
  std::size_t fetched = 0;
  const auto bare = [&] {
    const auto begin = Clock::now();
    fetched = BareCommand(connection, statement).Run({"1"});
    return Milliseconds(begin);
  };
  bare();
  if (desktop.rows != extent.rows || fetched != extent.rows) {
    throw std::runtime_error("the two sides did not read " + std::to_string(extent.rows) + " rows");
  }
  const Times outcome = Compare(runs, screen, bare);
  return {"load, without the window", Grouped(extent.rows) + " rows", outcome.Report(), extent.target,
          Sides("screen", outcome.screen, "bare", outcome.bare)};
}

} // namespace

Rows Load(Sizes sizes) {
  if (!test::PostgresServer::Available()) {
    std::fputs("Carico: PostgreSQL o il suo driver ODBC non è installato, misura saltata\n", stderr);
    return {};
  }
  if (sizes == Sizes::Smallest) {
    return {LoadOf(Extents[0], FewRuns)};
  }
  Rows rows;
  for (const Extent& extent : Extents) {
    rows.push_back(LoadOf(extent, extent.runs));
  }
  return rows;
}

} // namespace lumoscad::bench
