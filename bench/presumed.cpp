#include "Bare.hpp"
#include "Stopwatch.hpp"
#include "common/Stato.hpp"
#include "screens/FormPresunti.hpp"
#include "support/LargeDatabase.hpp"
#include "support/Paths.hpp"

#include <cstdio>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>

namespace lumoscad::bench {
namespace {

constexpr long Rows = 20000;
constexpr int Runs = 9;
constexpr double Target = 1.3;

/// The statements of the screen: the list, then the look-up of a document's movement.
struct Statements {
  std::string list;
  std::string movement;
  std::size_t lookUps = 0; ///< how often the look-up was sent

  void Sent(std::string_view text) {
    if (text.starts_with("SELECT MOVIMENTOKEY ")) {
      movement = text;
      ++lookUps;
    } else {
      list = text;
    }
  }
};

/// A plain program with a prepared statement for the list and another, kept, for the look-ups: it reads the whole list,
/// then looks every document up once.
struct BareReading {
  std::size_t rows = 0;
  std::size_t documenti = 0;

  double Extent(const BareConnection& connection, const Statements& statements) {
    static constexpr std::size_t Series = 1; // columns of the list
    static constexpr std::size_t Number = 2;
    const auto begin = Clock::now();
    BareCommand list(connection, statements.list);
    std::vector<std::pair<std::string, std::string>> got;
    rows =
        list.Run({"1"}, [&](std::size_t line) { got.emplace_back(list.Text(line, Series), list.Text(line, Number)); });
    BareCommand movement(connection, statements.movement, 1);
    std::set<std::pair<std::string, std::string>> wanted;
    for (const auto& [series, number] : got) {
      if (wanted.emplace(series, number).second && movement.Run({"1", "N", series, number}) != 1) {
        throw std::runtime_error("the movement of a document was not found");
      }
    }
    documenti = wanted.size();
    return Milliseconds(begin);
  }
};

} // namespace

bool LoadPresumed() {
  if (!test::PostgresServer::Available()) {
    std::puts("Carico dei presunti: PostgreSQL o il suo driver ODBC non è installato, misura saltata");
    return true;
  }
  const test::LargeDatabase base(test::BuildFolder() / "bench/postgres", 1, Rows);
  const StatoSostituito status;
  lumoscad::stato().ComandoCorrente = base.command();
  StopwatchDesktop desktop;
  Statements statements;
  procedureLumoDB2::FiltroPresunti filter;
  filter.parTipoMovimenti = "V";
  const auto screen = [&] {
    statements.lookUps = 0;
    return LoadScreen(
        desktop, [&](std::string_view text) { statements.Sent(text); },
        [&] {
          FormPresunti presumed;
          VariazioniConsegna changes;
          presumed.elaboraPresunti("01", filter, changes);
        });
  };
  screen();
  const BareConnection connection(base.ConnectionText());
  BareReading reading;
  const auto bare = [&] { return reading.Extent(connection, statements); };
  bare();
  if (desktop.rows < static_cast<std::size_t>(Rows) || reading.rows < desktop.rows ||
      reading.documenti != statements.lookUps) {
    throw std::runtime_error("the two sides did not read the same documents");
  }
  const Times outcome = Compare(Runs, screen, bare);
  std::printf("Carico di %zu righe di %zu documenti presunti: schermata %.0f ms  programma nudo %.0f ms  rapporto %.2f "
              "(obiettivo %.1f)\n",
              desktop.rows, reading.documenti, outcome.screen, outcome.bare, outcome.Report(), Target);
  return outcome.Report() <= Target;
}

} // namespace lumoscad::bench
