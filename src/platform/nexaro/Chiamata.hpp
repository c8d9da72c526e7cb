#pragma once

#include "platform/HostLink.hpp"
#include "platform/nexaro/ErroriLink.hpp"
#include "platform/xml/Nodo.hpp"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::nexaro {

/// Bytes of a program's standard error that are kept for the message.
inline constexpr std::size_t MassimoErroriMostrati = 2000;

/// The largest file that is received, in bytes: as much as a reply. What a host has to give is a lock of two lines; one
/// that gives without end is to fill neither this machine's disk nor the person's day.
inline constexpr std::uint64_t MassimoRicevuto = xml::DimensioneMassima;
/// Why a larger one is refused; fits behind a colon.
inline constexpr const char* MotivoTroppoGrande = "il file supera i 16 MiB ammessi";

/// Why a download that was not over at the end of the wait is given up; fits behind a colon.
[[nodiscard]] std::string MotivoTroppoLento(std::chrono::milliseconds attesa);

/// Raises a run-time error unless `remoto` is an absolute path of the host without ".." and null characters.
void VerificaPercorso(std::string_view remoto);

/// "Il programma VB0001 sull'host 10.0.0.1", the subject of every message about a call.
[[nodiscard]] std::string SoggettoProgramma(std::string_view programma, std::string_view host);

/// Raises a run-time error unless `programma` is a plain name and no parameter holds a null character.
void VerificaChiamata(std::string_view programma, const std::vector<std::string>& parametri,
                      const std::string& soggetto);

/// The end of a message: a full stop, or a colon and what the program wrote to its standard error (UTF-8, at most
/// `MassimoErroriMostrati` bytes of it, never half a character).
[[nodiscard]] std::string CodaMessaggio(std::string errori);

/// The error of a program that was started and whose end says nothing of its work: it may have done it. `fatto` is what
/// happened, without an end of its own; `coda` as `CodaMessaggio` gives it. The text says that the outcome is unknown.
[[nodiscard]] ErroreRuntime ErroreDopoAvvio(const std::string& fatto, const std::string& coda,
                                            int numero = ErroreCollegamento);

/// Raises the error of a program that ended with an exit status other than 0. `rimedio` is what can be done where the
/// status says that the program is missing.
void VerificaStato(int stato, const std::string& soggetto, const std::string& coda, const std::string& rimedio = {});

/// Whether a program has answered a whole document, so that nothing is missing though its output is still open.
[[nodiscard]] bool RispostaCompleta(std::string_view uscita);

/// The document that a program answered. Raises a run-time error, which begins with `soggetto`, when there is none or
/// when it is not fit.
[[nodiscard]] xml::Nodo LeggiRisposta(const std::string& uscita, const std::string& soggetto, const std::string& coda);

} // namespace lumoscad::nexaro
