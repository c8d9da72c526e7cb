#pragma once

#include "platform/ado/Ado.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Questions about the rows that a transaction altered (`moduloDatabase::Riscontro`). An answer `Applied` cannot be had
/// of rows that are as the transaction found them, nor `NotApplied` of rows as it left them.
namespace lumoscad::procedureLumoDB2 {

/// Of events that were altered by their keys; `nuove` and `vecchie` are the conditions that each of them met afterwards
/// and before.
[[nodiscard]] std::optional<TransactionOutcome> RiscontroDiEventi(ado::Connection& connection,
                                                                  const std::vector<std::string>& chiavi,
                                                                  const std::string& nuove, const std::string& vecchie);

/// The rows that a change without keys hits while they hold the old value, and those that it would hit if the new one
/// were the old one: tables and condition, and the values of the markers of either.
struct PrimaEDopo {
  std::string colpite;
  std::string scritte;
  std::vector<std::string> valori;
};

/// The question which rows hold the new value: how many, and the sum of their keys. Empty where a value of `righe` is
/// no number, and where both values are the same.
[[nodiscard]] std::string DomandaDelleScritte(const PrimaEDopo& righe);

/// Of a change without keys, which altered `quante` rows, all that held the old value. `scritte` is what
/// `DomandaDelleScritte` was answered in the transaction, right before COMMIT: others may hold the new value besides,
/// and as many. Without it nothing is called applied.
[[nodiscard]] std::optional<TransactionOutcome> RiscontroPerQuante(ado::Connection& connection, const PrimaEDopo& righe,
                                                                   std::int64_t quante,
                                                                   const std::vector<std::string>& scritte);

/// "colonna='testo' ", or "colonna IS NULL " for a missing one.
[[nodiscard]] std::string UgualeTesto(std::string_view colonna, std::optional<std::string_view> testo);

} // namespace lumoscad::procedureLumoDB2
