#include "handlers/Opzioni.hpp"

#include "common/RigaComando.hpp"
#include "common/Testo.hpp"

#include <cstddef>

namespace lumoscad {
namespace {

const std::string& Valore(const RigaComando& riga, std::size_t posto) {
  return riga.Valore(posto, "il valore di un'opzione");
}

NumeroPartita LeggiPartita(const RigaComando& riga, std::size_t posto) {
  const std::string& primo = Valore(riga, posto + 1);
  std::string spazi = " ";
  std::size_t posto2 = posto + 2;
  while (Valore(riga, posto2).empty()) {
    spazi += ' ';
    ++posto2;
  }
  const std::string& secondo = Valore(riga, posto2);
  return {primo + secondo, primo + spazi + secondo};
}

void Conserva(const Opzione& opzione, const RigaComando& riga, std::size_t posto) {
  if (bool* const* const presente = std::get_if<bool*>(&opzione.destinazione)) {
    **presente = true;
  } else if (NumeroPartita* const* const partita = std::get_if<NumeroPartita*>(&opzione.destinazione)) {
    **partita = LeggiPartita(riga, posto);
  } else {
    const std::string& valore = Valore(riga, posto + 1);
    *std::get<std::string*>(opzione.destinazione) = opzione.forma == Forma::Maiuscola ? Maiuscolo(valore) : valore;
  }
}

} // namespace

void LeggiOpzioni(std::string_view comando, std::initializer_list<Opzione> opzioni) {
  const RigaComando riga(comando);
  riga.Percorri([&](const std::string& nome, std::size_t posto) {
    for (const Opzione& opzione : opzioni) {
      if (nome == opzione.nome) {
        Conserva(opzione, riga, posto);
      }
    }
  });
}

} // namespace lumoscad
