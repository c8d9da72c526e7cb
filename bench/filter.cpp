#include "GridRows.hpp"
#include "Measures.hpp"
#include "platform/Services.hpp"
#include "screens/FiltroGriglia.hpp"

#include <algorithm>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::bench {
namespace {

constexpr double LongestKey = 50; ///< milliseconds, of 100,000 rows

FiltroGriglia::Colonne Columns() {
  FiltroGriglia::Colonne columns;
  columns.testi = {0, 1, 2, 3, 4, 5, 7, 10};
  columns.conto = 0;
  columns.partita = 1;
  columns.banca = 4;
  columns.nuovaBanca = 10;
  columns.importi = {5};
  columns.date = {2, 3, 7};
  return columns;
}

/// What a person types, letter by letter: each looks at the last hits where they hold all of its own, else at all rows.
std::vector<double> Type(const RigheGriglia& rows, std::string_view typed) {
  std::vector<std::size_t> everything(rows.Quante());
  for (std::size_t line = 0; line < everything.size(); ++line) {
    everything[line] = line;
  }
  std::vector<double> keys;
  FiltroGriglia before("", Columns());
  std::vector<std::size_t> hits = everything;
  for (std::size_t letters = 1; letters <= typed.size(); ++letters) {
    const auto begin = Clock::now();
    FiltroGriglia filter(typed.substr(0, letters), Columns());
    const std::vector<std::size_t>& among = filter.Restringe(before) ? hits : everything;
    std::vector<std::size_t> found;
    std::ranges::copy_if(among, std::back_inserter(found), [&](std::size_t line) { return filter.Passa(rows, line); });
    keys.push_back(Milliseconds(begin));
    hits = std::move(found);
    before = std::move(filter);
  }
  return keys;
}

} // namespace

Rows FilterByKey(Sizes sizes) {
  Services services = ActiveServices();
  services.localTime = [] { return DateTime{2006, 6, 15}; }; // for a date that has no year yet
  const ReplacedServices replaced(services);
  Rows table;
  const bool few = sizes == Sizes::Smallest;
  for (const std::size_t howMany : few ? std::vector<std::size_t>{1000} : std::vector<std::size_t>{100000, 1000000}) {
    RigheGriglia rows(GridColumns, ColumnsWithTag());
    FillGrid(rows, howMany);
    for (const char* typed : {"numero 12 s.r.l.", "credito 1584 -banca:7", "<31/12/2006 >1000", "zzz"}) {
      const std::vector<double> keys = Type(rows, typed);
      const double worst = *std::ranges::max_element(keys);
      char detail[64];
      std::snprintf(detail, sizeof detail, "%zu keys, median %.2f ms", keys.size(), Median(keys));
      table.push_back({"filter, the longest key of \"" + std::string(typed) + "\"", Grouped(howMany) + " rows", worst,
                       howMany == 100000 ? LongestKey : 0, detail, "ms"});
    }
  }
  return table;
}

} // namespace lumoscad::bench
