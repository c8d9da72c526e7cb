#include "Measures.hpp"
#include "screens/RigheGriglia.hpp"

#include <cstdint>
#include <malloc.h>
#include <string>

namespace lumoscad::bench {
namespace {

constexpr int Runs = 7;
constexpr int Item = 1;
const std::vector<int> WithTag = {0, 1, 4, 7, 10};

/// The columns that the headings sort by.
struct Order {
  const char* name;
  int column;
};
constexpr Order Orders[] = {{"Conto", 0}, {"Partita", Item}, {"Scadenza", 11}, {"Banca", 10}};

struct Texts {
  std::string account, code, item, key, dueDate, original, bank, importo, instalment, order;
};

std::string Two(std::size_t number) {
  return (number < 10 ? "0" : "") + std::to_string(number);
}

/// Row `i` of an accounting as the screen shows it: few accounts and banks, an item of two or three instalments,
/// an amount of its own. The items come scattered, as a query that groups may give them.
Texts Line(std::size_t i) {
  const std::uint64_t random = (i + 1) * 0x9E3779B97F4A7C15U >> 20U;
  const std::string giorno = Two(random % 28 + 1);
  const std::string mese = Two(random / 28 % 12 + 1);
  const std::string anno = std::to_string(2005 + random / 336 % 3);
  Texts t;
  t.account = "Cliente numero " + std::to_string(random % 5000) + " S.r.l.";
  t.code = std::to_string(20100000 + random % 5000);
  t.key = std::to_string(random % (i / 2 + 1000));
  t.item = anno + "/" + t.key;
  t.dueDate = giorno + "/" + mese + "/" + anno;
  t.original = random % 12 == 0 ? "" : t.dueDate;
  t.bank = random % 3 == 0 ? "" : "Banca di credito numero " + std::to_string(random % 40);
  t.importo = std::to_string(random % 9800) + "," + Two(random % 97);
  t.instalment = std::to_string(random % 4 + 1);
  t.order = anno + "/" + mese + "/" + giorno;
  return t;
}

void Fill(RigheGriglia& rows, std::size_t howMany) {
  for (std::size_t i = 0; i < howMany; ++i) {
    const Texts t = Line(i);
    const std::size_t line = rows.Aggiungi({t.account, t.item, t.dueDate, t.original, t.bank, t.importo, "", t.dueDate,
                                            t.instalment, "", t.bank, t.order});
    rows.ImpostaTag(line, 0, t.code);
    rows.ImpostaTag(line, 1, t.key);
    rows.ImpostaTag(line, 4, t.bank);
  }
}

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
    RigheGriglia rows(12, WithTag);
    Fill(rows, howMany);
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
