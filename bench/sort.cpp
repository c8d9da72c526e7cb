#include "GridRows.hpp"
#include "Measures.hpp"

#include <malloc.h>
#include <string>

namespace lumoscad::bench {
namespace {

constexpr int Runs = 7;
constexpr int Item = 1;

/// The columns that the headings sort by.
struct Order {
  const char* name;
  int column;
};
constexpr Order Orders[] = {{"Conto", 0}, {"Partita", Item}, {"Scadenza", 11}, {"Banca", 10}};

std::size_t Used() {
  const auto memory = mallinfo2();
  return memory.uordblks + memory.hblkhd;
}

/// Medians of both sides, measured in turns so that a busy moment of the machine meets both.
struct Times {
  double grid = 0;
  double library = 0;
};

Times Extent(RigheGriglia& rows, int column) {
  std::vector<std::string> texts;
  for (std::size_t line = 0; line < rows.Quante(); ++line) {
    texts.emplace_back(rows.Testo(line, column));
  }
  std::vector<double> grid;
  std::vector<double> library;
  for (int prova = 0; prova < Runs; ++prova) {
    rows.Ordina(Item, prova % 2 == 0);
    auto begin = Clock::now();
    rows.Ordina(column, true);
    grid.push_back(Milliseconds(begin));
    auto copy = texts;
    begin = Clock::now();
    std::stable_sort(copy.begin(), copy.end());
    library.push_back(Milliseconds(begin));
  }
  return {Median(grid), Median(library)};
}

} // namespace

Rows OrderAndMemory(Sizes sizes) {
  Rows table;
  const bool few = sizes == Sizes::Smallest;
  for (const std::size_t howMany : few ? std::vector<std::size_t>{1000} : std::vector<std::size_t>{100000, 1000000}) {
    const std::string size = Grouped(howMany) + " rows";
    const std::size_t before = Used();
    RigheGriglia rows(GridColumns, ColumnsWithTag());
    FillGrid(rows, howMany);
    table.push_back({"memory of the grid", size, static_cast<double>(Used() - before) / static_cast<double>(howMany), 0,
                     "texts included", "B a row"});
    for (const Order& order : Orders) {
      const Times times = Extent(rows, order.column);
      table.push_back({std::string("sort by ") + order.name, size, times.grid / times.library, 0,
                       Sides("grid", times.grid, "std::stable_sort", times.library)});
    }
  }
  return table;
}

} // namespace lumoscad::bench
