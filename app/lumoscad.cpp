#include "lumoscad/LumoScadenze.hpp"

#include <cstdio>
#include <iostream>
#include <iterator>
#include <span>
#include <string>
#include <string_view>

namespace {

constexpr int StatoErrore = 1;
constexpr int StatoUsoErrato = 2;
constexpr int StatoChiuso = 3;

constexpr const char* uso =
    "Uso: lumoscad COMANDO...\n"
    "     lumoscad -\n"
    "     lumoscad --aiuto | --versione\n"
    "\n"
    "Gli argomenti, uniti da uno spazio, sono la riga di comando; con - la riga è letta\n"
    "dall'ingresso standard, così che una parola d'ordine non compaia fra i processi.\n"
    "Il risultato va sull'uscita standard.\n"
    "\n"
    "Stato d'uscita: 0 riuscito, 1 errore, 2 uso errato, 3 finestra chiusa senza variazioni.\n"
    "\n"
    "Esempio: lumoscad -T BANCA /CREDITI -D 01 -H 10.0.0.1 -SC SCADUTO -DB2SOURCE CONTABILITA\n";

int Stato(std::string_view risultato) {
  if (risultato.empty()) {
    return 0;
  }
  return risultato == "closed" ? StatoChiuso : StatoErrore;
}

std::string LeggiIngresso() {
  std::string comando(std::istreambuf_iterator<char>(std::cin), {});
  if (comando.ends_with('\n')) {
    comando.pop_back();
    if (comando.ends_with('\r')) {
      comando.pop_back();
    }
  }
  return comando;
}

std::string Unisci(std::span<char* const> argomenti) {
  std::string comando;
  for (std::size_t indice = 0; indice < argomenti.size(); ++indice) {
    comando += indice == 0 ? "" : " ";
    comando += argomenti[indice];
  }
  return comando;
}

/// The status says that the answer was lost when it could not be written.
int Scrivi(std::string_view testo, int stato) {
  std::cout << testo << std::flush;
  return std::cout.good() ? stato : StatoErrore;
}

int Esegui(std::string_view comando) {
  lumoscad::LumoScadenze lumoScadenze;
  auto risultato = lumoScadenze.EseguiLumoScad(comando);
  const int stato = Stato(risultato);
  if (!risultato.empty()) {
    risultato += '\n';
  }
  return Scrivi(risultato, stato);
}

} // namespace

int main(int numero, char** vettore) {
  const auto argomenti = std::span<char* const>(vettore, static_cast<std::size_t>(numero)).subspan(numero > 0 ? 1 : 0);
  const std::string_view primo = argomenti.empty() ? std::string_view() : argomenti.front();
  if (argomenti.size() == 1 && primo == "--aiuto") {
    return Scrivi(uso, 0);
  }
  if (argomenti.size() == 1 && primo == "--versione") {
    return Scrivi("lumoscad " LUMOSCAD_VERSIONE "\n", 0);
  }
  if (argomenti.empty() || primo.starts_with("--")) {
    std::fputs(uso, stderr);
    return StatoUsoErrato;
  }
  return Esegui(argomenti.size() == 1 && primo == "-" ? LeggiIngresso() : Unisci(argomenti));
}
