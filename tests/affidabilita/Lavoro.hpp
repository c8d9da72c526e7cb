#pragma once

#include "Modello.hpp"
#include "Registro.hpp"
#include "Sistema.hpp"
#include "Storia.hpp"

#include <cstddef>
#include <string>
#include <vector>

namespace lumoscad::test {

/// The name of a terminal, by its number from 1.
[[nodiscard]] std::string Postazione(int quale);

/// Adds a terminal's commands to `comandi`; returns how many there are.
std::size_t LeggiComandi(const Sistema& sistema, const std::string& postazione, std::vector<Eseguito>& comandi);
/// Every row of the database.
[[nodiscard]] Stato LeggiStato(Sistema& sistema);
/// The database's own log.
[[nodiscard]] std::vector<Conferma> LeggiConferme(Sistema& sistema);

/// The requests that the host's log calls accepted, each as its parameters and its file's content in one text, in order
/// of text.
[[nodiscard]] Testi AccettateDallHost(const Sistema& sistema);
/// The same of the terminals' logs.
[[nodiscard]] Testi AccettatePerITerminali(const std::vector<Eseguito>& comandi);

/// Prints how the commands of each kind ended, each line behind `inizio`.
void StampaComandi(const std::string& inizio, const std::vector<Eseguito>& comandi);
/// Prints what came of comparing them with the database.
void StampaRiscontro(const std::string& inizio, const Riscontro& riscontro, const std::vector<Eseguito>& comandi);

} // namespace lumoscad::test
