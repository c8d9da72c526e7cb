#include "Misure.hpp"

#include <cstdio>
#include <exception>
#include <span>
#include <string_view>

namespace {

bool Ordine() {
  lumoscad::bench::OrdineEMemoria();
  return true;
}

struct Misura {
  std::string_view nome;
  bool (*esegui)(); ///< false when a target was missed
};

constexpr Misura Misure[] = {
    {"ordine", Ordine}, {"scadenze", lumoscad::bench::Carico}, {"presunti", lumoscad::bench::CaricoPresunti}};

} // namespace

/// Runs all measures, or the one that the argument names.
int main(int numero, char** argomenti) {
  const std::span<char* const> testi(argomenti, static_cast<std::size_t>(numero));
  const std::string_view scelta = testi.size() > 1 ? testi[1] : "";
  try {
    bool riuscite = true;
    bool trovata = false;
    for (const Misura& misura : Misure) {
      if (scelta.empty() || scelta == misura.nome) {
        trovata = true;
        riuscite = misura.esegui() && riuscite;
      }
    }
    if (!trovata) {
      std::fputs("Uso: bench_carico [ordine | scadenze | presunti]\n", stderr);
      return 2;
    }
    return riuscite ? 0 : 1;
  } catch (const std::exception& errore) {
    std::fprintf(stderr, "%s\n", errore.what());
    return 2;
  }
}
