#pragma once

#include "platform/RuntimeError.hpp"
#include "platform/ado/Ado.hpp"
#include "platform/ado/ConnectionText.hpp"
#include "platform/ado/Dialect.hpp"
#include "platform/ado/Handles.hpp"
#include "platform/ado/Watchdog.hpp"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace lumoscad::ado::detail {

class Statement;

/// What the server tells of its side of a connection that has just been opened; empty where it does not.
struct ServerSide {
  Endpoints ends;
  std::string found;  ///< in the place of the mark
  std::string marked; ///< its identity and the mark
};

/// One open connection. Statements keep it alive, but `Close` ends it at once and takes every statement with it.
class Session {
 public:
  using Deadline = std::optional<std::chrono::steady_clock::time_point>;

  /// `timeLimit` is how many seconds a statement may take; at `deadline` every wait ends.
  Session(const ConnectionSettings& settings, std::chrono::seconds timeLimit, const Deadline& deadline);
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  ~Session();

  [[nodiscard]] bool Opened() const noexcept { return open_; }
  [[nodiscard]] TransactionOutcome Outcome() const noexcept { return outcome_; }
  /// See `Connection::InDoubt`.
  [[nodiscard]] std::optional<TransactionMark> InDoubt() const;
  [[nodiscard]] SQLULEN TimeLimit() const noexcept { return timeLimit_; }
  [[nodiscard]] bool InTransaction() const noexcept { return inTransaction_; }
  /// Whether the session's own socket is known, and watched.
  [[nodiscard]] bool Watched() const noexcept { return watchdog_ != nullptr; }
  [[nodiscard]] bool DescribesParameters() const noexcept { return describesParameters_; }
  [[nodiscard]] const Dialect& dialect() const noexcept { return *dialect_; }
  [[nodiscard]] const std::string& Password() const noexcept { return password_; }
  [[nodiscard]] SQLHANDLE handle() const noexcept { return connection_.get(); }

  void Begin();
  void Commit(const std::function<void(const TransactionMark&)>& told);
  void Rollback();
  void Close() noexcept;

  /// The columns of the first row that the server answers to `question`, empty for NULL. Raises when no answer comes.
  [[nodiscard]] std::vector<std::string> Ask(std::string_view question, Handle<SQL_HANDLE_STMT>* kept = nullptr) const;
  /// Sends a query without parameters on a new handle, as the driver bears it.
  SQLRETURN SendQuery(SQLHANDLE statement, std::string& text) const noexcept;
  /// Sends a statement of the layer's own that has no answer. Raises the driver's failure.
  void Tell(std::string_view text) const;
  /// Whether other servers have a say in a COMMIT. Asked after a failure alone; a server that does not answer may be
  /// one of several.
  [[nodiscard]] bool Replicated() const noexcept;

  /// A transaction with a failed statement is not what the caller meant: some servers took its earlier statements
  /// back, others kept them. `Commit` refuses it.
  void StatementFailed() noexcept { statementFailed_ = inTransaction_; }

 private:
  friend class Statement;
  friend class Waiting;

  void RequireOpen() const;
  void RequireTransaction(const char* otherwise) const;
  void Autocommit(bool on);
  [[nodiscard]] SQLRETURN EndTransaction(SQLSMALLINT how) noexcept;
  [[nodiscard]] Handle<SQL_HANDLE_STMT> NewStatement() const;
  void ReadCapabilities();
  void SendOpening();
  void Watch(const Sockets& before);
  [[nodiscard]] ServerSide AskServerSide() const;
  void RequireOwnServerSession(const ServerSide& told);
  [[nodiscard]] std::string OwnServerSession() const;
  [[nodiscard]] std::string RequireOwn(const std::string& answer) const;
  /// The failure, with a note that says so where it is that the server did not answer in time.
  [[nodiscard]] RuntimeError Explained(RuntimeError error) const;
  [[nodiscard]] bool Dead() const noexcept;
  void Identify();
  [[nodiscard]] std::vector<std::string> AskExplained(std::string_view question,
                                                      Handle<SQL_HANDLE_STMT>* kept = nullptr) const;
  [[nodiscard]] std::string ServerSession() const;
  [[nodiscard]] std::string Rollbacks(const std::vector<std::string>& told) const;
  [[nodiscard]] bool OnSameServerSession() const noexcept;
  void RequireWholeTransaction(Handle<SQL_HANDLE_STMT>& question);
  void Abandon() noexcept;
  void Disconnect() noexcept;
  void NoticeReconnection() noexcept;
  void EndPhantomTransaction() noexcept;
  [[nodiscard]] bool Refused(const RuntimeError& error) const noexcept;
  [[noreturn]] void CommitFailed(RuntimeError error);
  void ConfirmCommit();

  Handle<SQL_HANDLE_DBC> connection_;
  std::string password_;
  std::unordered_set<Statement*> statements_;
  Handle<SQL_HANDLE_STMT> passedOn_; ///< of a statement of the open transaction, for the next one; as good as new
  bool open_ = false;
  bool inTransaction_ = false;
  bool statementFailed_ = false;
  bool describesParameters_ = false;
  TransactionOutcome outcome_ = TransactionOutcome::NotApplied;
  std::string marked_;        ///< what the server answers as long as its session is this connection's alone
  std::string serverSession_; ///< the one that the open transaction began on
  std::string rollbacks_;     ///< how many it had behind it by then, where the server counts them
  Endpoints ends_;
  bool identified_ = true; ///< false once the server could not say which one it is
  TransactionMark mark_;   ///< of the open transaction, or the last one
  bool commitSent_ = false;
  const Dialect* dialect_ = nullptr;
  SQLULEN timeLimit_;
  Deadline deadline_;
  std::unique_ptr<Watchdog> watchdog_; ///< none where the session's socket could not be told for certain
};

/// A call to the driver that may wait for the server: it ends in any case, a little after a statement's time limit.
class Waiting {
 public:
  explicit Waiting(const Session& session) noexcept;
  Waiting(const Waiting&) = delete;
  Waiting& operator=(const Waiting&) = delete;
  ~Waiting();

 private:
  Watchdog* watchdog_; ///< none inside another call
};

/// Where a statement has its handle from.
enum class Handles {
  Own,     ///< allocated for it
  PassedOn ///< what an earlier statement of the transaction has passed on, where there is one, or else one of its own
};

/// One statement handle of a session; it is released early when the session is closed.
class Statement {
 public:
  explicit Statement(std::shared_ptr<Session> session, Handles handles = Handles::Own);
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;
  ~Statement();

  [[nodiscard]] SQLHANDLE handle() const noexcept { return handle_.get(); }
  [[nodiscard]] Session& session() const noexcept { return *session_; }
  [[nodiscard]] bool Alive() const noexcept { return static_cast<bool>(handle_); }

  /// What `call`, which may wait for the server, returns.
  template <typename Call> SQLRETURN WaitFor(Call call) const {
    const Waiting waiting(*session_);
    return call();
  }
  /// Raises the diagnostics of the statement unless `rc` is a success.
  void Require(SQLRETURN rc, std::string_view context) const;
  /// Ends the statement, which was sent without being prepared and without a failure. Within a transaction, and where
  /// the dialect allows it, the handle serves the next statement that takes what was passed on; nothing of this one is
  /// left on it but the time limit. A handle that is never passed on, after a failure first of all, is released.
  void PassOn() noexcept;

 private:
  friend class Session;

  std::shared_ptr<Session> session_;
  Handle<SQL_HANDLE_STMT> handle_;
};

/// Tells the services that `sql` is about to be sent.
void Announce(std::string_view sql);

/// Rows changed by the statement just executed with `rc`; -1 where the driver does not tell.
[[nodiscard]] std::int64_t AffectedRows(const Statement& statement, SQLRETURN rc);

} // namespace lumoscad::ado::detail

namespace lumoscad::ado {

struct Connection::Impl {
  std::shared_ptr<detail::Session> session;
  TransactionOutcome outcome = TransactionOutcome::NotApplied; ///< of a session that was closed
  std::optional<TransactionMark> inDoubt;                      ///< of the last transaction

  /// The open session; raises when the connection is closed.
  [[nodiscard]] const std::shared_ptr<detail::Session>& Require() const;
};

} // namespace lumoscad::ado
