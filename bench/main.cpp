#include "Measures.hpp"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace {

using lumoscad::bench::Row;
using lumoscad::bench::Rows;
using lumoscad::bench::Sizes;

struct Measure {
  std::string_view name;
  Rows (*run)(Sizes);
};

constexpr Measure Measures[] = {
    {"ordine", lumoscad::bench::OrderAndMemory},     {"filtro", lumoscad::bench::FilterByKey},
    {"gesti", lumoscad::bench::GesturesOfALongList}, {"scadenze", lumoscad::bench::Load},
    {"presunti", lumoscad::bench::LoadPresumed},     {"conferma", lumoscad::bench::Confirm},
    {"richiesta", lumoscad::bench::RequestFile},     {"avvio", lumoscad::bench::Start},
    {"ssh", lumoscad::bench::ConfirmRemotely}};

struct Choices {
  Sizes sizes = Sizes::All;
  bool forPrograms = false;
  std::vector<std::string_view> names; ///< of the measures; all where there is none
};

void PrintText(const Row& row, std::FILE* where) {
  std::fprintf(where, "%s%s%s: %.2f%s%s", row.what.c_str(), row.size.empty() ? "" : ", ", row.size.c_str(), row.figure,
               row.unit.empty() ? "" : " ", row.unit.c_str());
  if (row.target > 0) {
    std::fprintf(where, ", obiettivo %.2f%s", row.target, row.Missed() ? " MANCATO" : "");
  }
  std::fprintf(where, " (%s)\n", row.detail.c_str());
}

void Print(const Row& row, bool forPrograms) {
  PrintText(row, forPrograms ? stderr : stdout);
  if (forPrograms) {
    std::printf("riga\t%s\t%s\t%.3f\t%s\t%.3f\t%s\n", row.what.c_str(), row.size.c_str(), row.figure, row.unit.c_str(),
                row.target, row.detail.c_str());
  }
  std::fflush(stdout);
}

/// Runs what was chosen; false when a row missed its target.
bool Run(const Choices& choices) {
  bool successes = true;
  for (const Measure& measure : Measures) {
    if (!choices.names.empty() && std::ranges::find(choices.names, measure.name) == choices.names.end()) {
      continue;
    }
    for (const Row& row : measure.run(choices.sizes)) {
      Print(row, choices.forPrograms);
      successes = successes && !row.Missed();
    }
  }
  return successes;
}

int Usage() {
  std::fputs("Uso: bench_carico [--veloce] [--righe]", stderr);
  for (const Measure& measure : Measures) {
    std::fprintf(stderr, " [%s]", std::string(measure.name).c_str());
  }
  std::fputs("\n", stderr);
  return 2;
}

} // namespace

/// Runs all measures, or those that the arguments name; answers 1 when a target was missed. With `--veloce` the
/// smallest sizes alone, whose times mean nothing; with `--righe` a line of fields a row, for bench.sh, and
/// the text on the standard error.
int main(int number, char** arguments) {
  const std::span<char* const> texts(arguments, static_cast<std::size_t>(number));
  Choices choices;
  for (const std::string_view text : texts.subspan(1)) {
    if (text == "--veloce") {
      choices.sizes = Sizes::Smallest;
    } else if (text == "--righe") {
      choices.forPrograms = true;
    } else if (std::ranges::find(Measures, text, &Measure::name) != std::end(Measures)) {
      choices.names.push_back(text);
    } else {
      return Usage();
    }
  }
  try {
    return Run(choices) || choices.sizes == Sizes::Smallest ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 2;
  }
}
