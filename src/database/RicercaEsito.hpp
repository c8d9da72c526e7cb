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

} // namespace lumoscad::moduloDatabase
