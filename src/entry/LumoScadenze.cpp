#include "lumoscad/LumoScadenze.hpp"

#include "common/Messaggi.hpp"
#include "common/Stato.hpp"
#include "common/Testo.hpp"
#include "entry/Comandi.hpp"
#include "platform/Errore.hpp"

#include <algorithm>
#include <exception>
#include <vector>

namespace lumoscad {
namespace {

std::string TipoComando(const std::vector<std::string>& pezzi) {
  std::string tipo;
  for (std::size_t i = 0; i < pezzi.size(); ++i) {
    if (Maiuscolo(pezzi[i]) == "-T") {
      if (i + 1 == pezzi.size()) {
        throw ErroreRuntime(errori::IndiceNonValido, "Indice non incluso nell'intervallo: manca il valore di -T");
      }
      tipo = Maiuscolo(pezzi[i + 1]);
    }
  }
  return tipo;
}

/// The row of a command type that takes no sub-command.
const Comando* SenzaSottocomando(std::string_view tipo) {
  const auto riga = std::find_if(Comandi().begin(), Comandi().end(),
                                 [&](const Comando& c) { return c.tipo == tipo && c.sottocomando.empty(); });
  return riga == Comandi().end() ? nullptr : &*riga;
}

std::string Esegui(std::string_view comando) {
  const auto pezzi = Dividi(comando, ' ');
  const std::string tipo = TipoComando(pezzi);
  stato().ComandoCorrente = comando;
  if (const Comando* const senza = SenzaSottocomando(tipo)) {
    return senza->gestore(comando);
  }
  std::string risultato;
  for (const std::string& pezzo : pezzi) {
    const std::string sottocomando = Maiuscolo(pezzo);
    for (const Comando& riga : Comandi()) {
      if (riga.tipo == tipo && riga.sottocomando == sottocomando) {
        risultato = riga.gestore(comando);
      }
    }
  }
  return risultato;
}

} // namespace

LumoScadenze::LumoScadenze() = default;
LumoScadenze::~LumoScadenze() = default;

std::string LumoScadenze::EseguiLumoScad(std::string_view comando) noexcept {
  try {
    try {
      return Esegui(comando);
    } catch (...) {
      const ErroreRuntime errore = ErroreCorrente();
      MostraMessaggio(std::to_string(errore.Numero()) + "\r\n" + errore.Testo(), "");
    }
  } catch (...) { // NOLINT(bugprone-empty-catch): without a desktop there is no one to tell; the result says it
  }
  return "error";
}

} // namespace lumoscad
