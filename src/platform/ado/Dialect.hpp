#pragma once

#include <array>
#include <chrono>
#include <string>
#include <string_view>

namespace lumoscad::ado::detail {

/// What the layer must say in a server's own words, since ODBC has no call for it or the driver does not carry it out.
struct Dialect {
  std::string_view name;            ///< how the server's own name (SQL_DBMS_NAME) begins
  std::string_view serverSession{}; ///< query of the identity of the server's side of the connection; may be empty
  /// Query at the beginning of a transaction: the same, with the mark upon it where there is one (`marked`), and what
  /// tells this server in this life from any other: the server itself, its life, and a column for the transaction's
  /// number, to see that it can be asked for. Empty for a server that nothing is asked of after a COMMIT without an
  /// answer.
  std::string_view beginning{};
  /// Query of the same right before COMMIT, the transaction's number behind it; empty where it has none.
  std::string_view transaction{};
  /// The last column of `serverSession` and of `beginning` is how often the session has taken a transaction back. A
  /// server of several that takes one back for a change of another server may tell so by a message that has no answer.
  bool countsRollbacks = false;
  std::string_view opening{}; ///< first statement of a connection; may be empty
  /// What gives the opening a time limit for statements, the seconds behind it; may be empty.
  std::string_view openingLimit{};
  bool comparesLongTexts = true; ///< a column of long texts may be compared with a value
  /// A statement that is executed once may be sent without being prepared, its parameters bound as texts that nothing
  /// describes, whatever the type of the columns that they meet: the server finds the types by itself.
  bool sendsUnprepared = false;
  /// A query is prepared before it is executed, always: the driver that is given both at once ends the process where
  /// the connection breaks in the middle of the answer.
  bool preparesQueries = false;
  /// A handle whose statement was not prepared is as good as new once its cursor is closed and its columns and
  /// parameters are let go of, and that says nothing to the server which the handle's release would not have said.
  bool passesHandlesOn = false;
  bool typesHold = true;      ///< a column declared as a number holds numbers alone
  bool infiniteTimes = false; ///< a timestamp may be one without end, which the driver writes as a last day
  bool namesNumbers = false;  ///< the name of a column's type tells its numbers, its description may not
  /// Query of the connection's two ends as the server sees them: its own address and port, the client's address and
  /// port, each of which may be NULL. May be empty. Where `marked` is not, the query has two columns more, and leaves a
  /// mark on the server's session, which no other connection may find: what was found in its place ("new", or "reset"
  /// by a pooler that gives one session to many connections, or "used" where that does not even reset it), and what
  /// `marked` answers from now on.
  std::string_view ends{};
  /// Query of the identity of the server's side of the connection, and behind a blank of the mark upon it. Empty where
  /// no pooler is known that would change it.
  std::string_view marked{};
  /// The numbers with which a database that is a file certainly refuses a COMMIT: after any other failure the change
  /// may be in the file all the same. All 0 for a server, whose every answer but success is a refusal.
  std::array<long, 4> refusals{};

  /// Query of 1 where other servers have a say in whether a COMMIT holds, which fails where the server knows nothing of
  /// such; empty for a server that decides alone.
  std::string_view replicated{};

  /// The whole first statement of a connection whose statements may take `seconds` each; empty for none.
  [[nodiscard]] std::string OpeningFor(std::chrono::seconds seconds) const;
  [[nodiscard]] bool FileBased() const noexcept { return refusals.front() != 0; }
  /// What became of a transaction can be found out over a new connection.
  [[nodiscard]] bool TellsAfterwards() const noexcept { return FileBased() || !beginning.empty(); }
};

/// The dialect of the server named `dbmsName`; one without any statement for a server that is not known.
[[nodiscard]] const Dialect& DialectOf(std::string_view dbmsName) noexcept;

/// How much longer than a statement may take a call to the driver is waited for, COMMIT included, before the connection
/// is shut down: a server that lives has ended the statement by then and said so.
inline constexpr std::chrono::seconds GraceForAnswer(10);

/// Seconds that a statement may take: the environment's `LUMOSCAD_ATTESA_SQL`, a whole number from 1 to 86400, or
/// else 60. Raises when the setting is none of these.
[[nodiscard]] std::chrono::seconds StatementTimeLimit();

} // namespace lumoscad::ado::detail
