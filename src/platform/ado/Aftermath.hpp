#pragma once

#include "platform/ado/Ado.hpp"

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::ado {

/// What a new connection can tell of a transaction whose COMMIT was sent and had no answer.
struct Aftermath {
  enum class Rows {
    SayNothing, ///< the transaction may still be under way, or the server has none of its rows: ask again
    /// It is another server of the same cluster: rows that hold the change tell that it was made, rows that do not tell
    /// nothing.
    SayIfDone,
    Decide ///< nothing of it is under way any more
  };
  Rows rows = Rows::SayNothing;
  /// What the server says of the transaction's number; nothing where it has none, or is not the one that gave it, or no
  /// longer in that life.
  std::optional<TransactionOutcome> number;
  /// The transaction's session is there, and is certainly its own: not one that a pooler may have given to somebody
  /// else.
  bool lingers = false;
  /// The transaction is certainly under way still: its outcome is not there to be told.
  bool pending = false;
};

/// The native code of the refusal of a pooler that changes the server's process.
inline constexpr long SharedSession = -1;

/// Whether the failure of an opening is an answer that stays as it is, however often it is asked for: a login that is
/// refused, a source that is not there, a pooler.
[[nodiscard]] bool RefusedForGood(const RuntimeError& error);

/// Asks one question of one row, such as a procedure asks right before COMMIT so that its outcome can be told later.
/// The services' listener is not told. Empty at a server that nobody asks for an outcome. Raises the driver's failure.
[[nodiscard]] std::vector<std::string> AskAboutOutcome(const Connection& connection, std::string_view question);

/// Looks over `connection`, which was opened after it. Raises the driver's failure, which tells nothing either.
[[nodiscard]] Aftermath LookBack(const Connection& connection, const TransactionMark& mark);

/// Where other servers have a say in a COMMIT, makes every later look over `connection` wait for what they have
/// committed. Raises the driver's failure.
void AwaitReplicas(const Connection& connection);

/// Ends the session of a transaction that `LookBack` says to linger: its client is gone, and it holds its rows. One
/// that waits for a standby is left alone. What became of the transaction is to be asked afterwards.
void EndSession(const Connection& connection, const TransactionMark& mark) noexcept;

/// The longest that one wait for a server lasts, by the setting of the environment. Raises where it is unfit.
[[nodiscard]] std::chrono::seconds LongestWait();

} // namespace lumoscad::ado
