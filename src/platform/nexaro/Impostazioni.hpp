#pragma once

#include <chrono>
#include <string>

namespace lumoscad::nexaro {

/// The user of this process, as the system knows it; empty texts where it does not.
struct Utente {
  std::string nome;
  std::string casa;
};
[[nodiscard]] Utente UtenteCorrente();

/// The value of an environment variable, empty where it is not set.
[[nodiscard]] std::string Impostazione(const char* nome);

/// `NEXARO_ATTESA`, the limit of every wait, in seconds (default 60). Raises a run-time error unless it is a positive
/// number of at most one day.
[[nodiscard]] std::chrono::milliseconds LeggiAttesa();

} // namespace lumoscad::nexaro
