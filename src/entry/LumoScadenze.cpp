#include "lumoscad/LumoScadenze.hpp"

#include "common/Messaggi.hpp"
#include "common/Stato.hpp"
#include "common/Testo.hpp"
#include "entry/Comandi.hpp"
#include "platform/Controlli.hpp"
#include "platform/Errore.hpp"
#include "platform/Servizi.hpp"
#include "platform/Turno.hpp"

#include <algorithm>
#include <atomic>
#include <cstdio>
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

/// What the host or a server has said is among it.
void ScriviErrore(const std::string& testo) {
  std::fprintf(stderr, "%s: %s\n", std::string(NomeProdotto).c_str(), SenzaControlli(testo, "\n").c_str());
}

/// Tells the person of the failure in flight; where there is no desktop to do so, the standard error gets it.
void Racconta() noexcept {
  try {
    const ErroreRuntime errore = ErroreCorrente();
    const std::string testo = std::to_string(errore.Numero()) + "\r\n" + errore.Testo();
    try {
      MostraMessaggio(testo, "");
    } catch (...) {
      ScriviErrore(std::to_string(errore.Numero()) + " " + errore.Testo());
      if (const std::string perche = ErroreCorrente().Testo(); perche != errore.Testo()) {
        ScriviErrore(perche);
      }
    }
  } catch (...) { // NOLINT(bugprone-empty-catch): not even memory for the text is left; the result says it
  }
}

/// Tells of a call that came while another one ran, or on a thread that may not show windows. The person sees it once:
/// a timer would heap up boxes for as long as the first of them is open.
void Rifiuta(const Turno& turno) noexcept {
  static std::atomic<bool> aperto{false};
  try {
    ScriviErrore(std::string(turno.Motivo()));
    if (turno.Come() == Turno::Esito::Annidato && !aperto.exchange(true)) {
      try {
        servizi().desktop().MostraBox(turno.Motivo(), NomeProdotto);
      } catch (...) { // NOLINT(bugprone-empty-catch): the standard error has the reason already
      }
      aperto = false;
    }
  } catch (...) { // NOLINT(bugprone-empty-catch): not even memory for the text is left; the result says it
  }
}

} // namespace

std::string LumoScadenze::EseguiLumoScad(std::string_view comando) noexcept {
  const Turno turno(Turno::Chi::Comando);
  if (turno.Come() != Turno::Esito::Preso) {
    Rifiuta(turno);
    return "error";
  }
  try {
    return Esegui(comando);
  } catch (...) {
    Racconta();
  }
  return "error";
}

} // namespace lumoscad
