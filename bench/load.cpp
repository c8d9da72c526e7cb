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

constexpr long Instalments = 100000;
constexpr int Runs = 9;
constexpr double Target = 1.5;

} // namespace

bool Load() {
  if (!test::PostgresServer::Available()) {
    std::puts("Carico: PostgreSQL o il suo driver ODBC non è installato, misura saltata");
    return true;
  }
  const test::LargeDatabase base(test::BuildFolder() / "bench/postgres", Instalments);
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
  if (desktop.rows != static_cast<std::size_t>(Instalments) || fetched != static_cast<std::size_t>(Instalments)) {
    throw std::runtime_error("the two sides did not read " + std::to_string(Instalments) + " rows");
  }
  const Times outcome = Compare(Runs, screen, bare);
  std::printf("Carico di %ld scadenze: schermata %.0f ms  lettura nuda %.0f ms  rapporto %.2f (obiettivo %.1f)\n",
              Instalments, outcome.screen, outcome.bare, outcome.Report(), Target);
  return outcome.Report() <= Target;
}

} // namespace lumoscad::bench
