#include "Bersagli.hpp"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

// A program without a target would run for hours and find nothing.
static_assert(std::any_of(lumoscad::fuzz::Bersagli.begin(), lumoscad::fuzz::Bersagli.end(),
                          [](const auto& bersaglio) { return bersaglio.nome == LUMOSCAD_BERSAGLIO; }));

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* dati, std::size_t dimensione) {
  using namespace lumoscad::fuzz;
  for (const Bersaglio& bersaglio : Bersagli) {
    if (bersaglio.nome != LUMOSCAD_BERSAGLIO) {
      continue;
    }
    try {
      bersaglio.prova({dati, dimensione});
    } catch (const std::exception& smentita) {
      std::fprintf(stderr, "%s: %s\n", LUMOSCAD_BERSAGLIO, smentita.what());
      std::abort();
    }
  }
  return 0;
}
