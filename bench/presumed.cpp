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

constexpr std::size_t AllRows = 20000;
constexpr std::size_t FewRows = 500;
constexpr int Runs = 9;
constexpr int FewRuns = 3;
constexpr double Target = 1.05;

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
    BareCommand movement(connection, statements.movement, {}, 1);
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

Rows LoadPresumed(Sizes sizes) {
  if (!test::PostgresServer::Available()) {
    std::fputs("Carico dei presunti: PostgreSQL o il suo driver ODBC non è installato, misura saltata\n", stderr);
    return {};
  }
  const std::size_t wanted = sizes == Sizes::All ? AllRows : FewRows;
  const test::LargeDatabase base(Folder(sizes, "postgres"), 1, static_cast<long>(wanted));
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
  if (desktop.rows < wanted || reading.rows < desktop.rows || reading.documenti != statements.lookUps) {
    throw std::runtime_error("the two sides did not read the same documents");
  }
  const Times outcome = Compare(sizes == Sizes::All ? Runs : FewRuns, screen, bare);
  return {{"presumed documents, look-ups included", Grouped(wanted) + " rows", outcome.Report(), Target,
           Sides("screen", outcome.screen, "bare", outcome.bare)}};
}

} // namespace lumoscad::bench
