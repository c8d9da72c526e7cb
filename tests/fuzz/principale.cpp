#include "Bersagli.hpp"

#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* dati, std::size_t dimensione) {
  using namespace lumoscad::fuzz;
  for (const Bersaglio& bersaglio : bersagli) {
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
