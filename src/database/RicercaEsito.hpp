#pragma once

#include "database/moduloDatabase.hpp"

#include <vector>

namespace lumoscad::moduloDatabase {

/// Finds out what became of a transaction whose COMMIT was sent and had no answer: connects anew and asks until it is
/// known, 20 seconds at most, and no longer than one wait for the server may last by the settings; a file one second.
///
/// The rows have the last word in any case: `Applied` where every one of `riscontri` says so, `NotApplied` where every
/// one says that. Where the server knows the transaction by its number, both must say the same. What does not agree,
/// what is mixed, and what nobody answers in time, stays `Unknown`.
///
/// Another terminal that makes the very same change of all rows in between is not told from this one: the database then
/// holds what the host holds.
[[nodiscard]] TransactionOutcome CercaEsito(const ParametriConnessione& parametri, const ado::TransactionMark& segno,
                                            const std::vector<Riscontro>& riscontri) noexcept;

/// Commits over `connection`. Where the answer is lost it closes that, finds out as above what became of the
/// transaction, puts it into `esito`, and returns when the change is kept; raises the failure otherwise, which then
/// says what is known.
void ConfermaOCerca(Transazione& transazione, ado::Connection& connection, const ParametriConnessione& parametri,
                    const std::vector<Riscontro>& riscontri, std::optional<TransactionOutcome>& esito);

/// What the server says of a transaction that a note remembers.
struct DettoDalServer {
  bool inCorso = false;   ///< it is certainly under way still
  bool altroNodo = false; ///< it was another server's of the same cluster, which may still bring it about
  bool ignota = false;    ///< the server cannot have anything to say of it: it is another one, or does not say which
  std::optional<TransactionOutcome> esito; ///< where it still knows the number that it gave
};

/// Asks over an open connection, again while the transaction is under way, until `termine`. What cannot be asked is
/// `ignota`.
[[nodiscard]] DettoDalServer ChiediAlServer(ado::Connection& connection, const ado::TransactionMark& segno,
                                            std::chrono::steady_clock::time_point termine);

} // namespace lumoscad::moduloDatabase
