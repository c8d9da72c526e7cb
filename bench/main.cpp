#include "Measures.hpp"

#include <cstdio>
#include <exception>
#include <span>
#include <string_view>

namespace {

bool Order() {
  lumoscad::bench::OrderAndMemory();
  return true;
}

struct Extent {
  std::string_view name;
  bool (*run)(); ///< false when a target was missed
};

constexpr Extent Measures[] = {
    {"ordine", Order}, {"scadenze", lumoscad::bench::Load}, {"presunti", lumoscad::bench::LoadPresumed}};

} // namespace

/// Runs all measures, or the one that the argument names.
int main(int number, char** arguments) {
  const std::span<char* const> texts(arguments, static_cast<std::size_t>(number));
  const std::string_view choice = texts.size() > 1 ? texts[1] : "";
  try {
    bool successes = true;
    bool found = false;
    for (const Extent& extent : Measures) {
      if (choice.empty() || choice == extent.name) {
        found = true;
        successes = extent.run() && successes;
      }
    }
    if (!found) {
      std::fputs("Uso: bench_carico [ordine | scadenze | presunti]\n", stderr);
      return 2;
    }
    return successes ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 2;
  }
}
