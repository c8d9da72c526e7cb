#include "handlers/Opzioni.hpp"

#include "common/Testo.hpp"
#include "platform/Errore.hpp"

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

void Conserva(const Opzione& opzione, const std::vector<std::string>& pezzi, std::size_t posto) {
  if (bool* const* const presente = std::get_if<bool*>(&opzione.destinazione)) {
    **presente = true;
  } else if (NumeroPartita* const* const partita = std::get_if<NumeroPartita*>(&opzione.destinazione)) {
    **partita = LeggiPartita(pezzi, posto);
  } else {
    const std::string& valore = Valore(pezzi, posto + 1);
    *std::get<std::string*>(opzione.destinazione) = opzione.forma == Forma::Maiuscola ? Maiuscolo(valore) : valore;
  }
}

} // namespace

void LeggiOpzioni(std::string_view comando, std::initializer_list<Opzione> opzioni) {
  const auto pezzi = Dividi(comando, ' ');
  for (std::size_t i = 0; i < pezzi.size(); ++i) {
    const std::string nome = Maiuscolo(pezzi[i]);
    for (const Opzione& opzione : opzioni) {
      if (nome == opzione.nome) {
        Conserva(opzione, pezzi, i);
      }
    }
  }
}

} // namespace lumoscad
