#include "handlers/Opzioni.hpp"

#include "common/Testo.hpp"
#include "platform/Errore.hpp"

#include <algorithm>
#include <vector>

namespace lumoscad {
namespace {

const std::string& Valore(const std::vector<std::string>& pezzi, std::size_t posto) {
  if (posto >= pezzi.size()) {
    throw ErroreRuntime(errori::IndiceNonValido, "Indice non incluso nell'intervallo: manca il valore di un'opzione");
  }
  return pezzi[posto];
}

NumeroPartita LeggiPartita(const std::vector<std::string>& pezzi, std::size_t posto) {
  const std::string& primo = Valore(pezzi, posto + 1);
  std::string spazi = " ";
  std::size_t secondo = posto + 2;
  while (Valore(pezzi, secondo).empty()) {
    spazi += ' ';
    ++secondo;
  }
  return {primo + pezzi[secondo], primo + spazi + pezzi[secondo]};
}

} // namespace

void LeggiOpzioni(std::string_view comando, std::initializer_list<std::pair<std::string_view, std::string*>> opzioni,
                  NumeroPartita* partita) {
  const auto pezzi = Dividi(comando, ' ');
  for (std::size_t i = 0; i < pezzi.size(); ++i) {
    const std::string nome = Maiuscolo(pezzi[i]);
    for (const auto& [opzione, valore] : opzioni) {
      if (nome == opzione) {
        *valore = Valore(pezzi, i + 1);
      }
    }
    if (partita != nullptr && nome == "-P") {
      *partita = LeggiPartita(pezzi, i);
    }
  }
}

bool HaOpzione(std::string_view comando, std::string_view opzione) {
  const auto pezzi = Dividi(comando, ' ');
  return std::any_of(pezzi.begin(), pezzi.end(), [&](const std::string& p) { return Maiuscolo(p) == opzione; });
}

} // namespace lumoscad
