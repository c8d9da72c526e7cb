#include "Misure.hpp"

#include <cstdio>
#include <exception>

int main() {
  try {
    lumoscad::bench::OrdineEMemoria();
    return lumoscad::bench::Carico() ? 0 : 1;
  } catch (const std::exception& errore) {
    std::fprintf(stderr, "%s\n", errore.what());
    return 2;
  }
}
