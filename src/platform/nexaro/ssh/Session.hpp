#pragma once

#include "platform/nexaro/ssh/Socket.hpp"
#include "platform/nexaro/ssh/SshSettings.hpp"

#include <exception>
#include <libssh/libssh.h>
#include <memory>
#include <string>
#include <utility>

namespace lumoscad::nexaro {

/// The connection is gone, or the host no longer answers on it. Stays inside the link, which knows what was under way.
class ConnectionLost final : public std::exception {
 public:
  /// `reason` is Italian and fits behind a colon.
  explicit ConnectionLost(std::string reason) : reason_(std::move(reason)) {}
  [[nodiscard]] const std::string& Reason() const noexcept { return reason_; }
  [[nodiscard]] const char* what() const noexcept override { return reason_.c_str(); }

 private:
  std::string reason_;
};

/// The host refused a request on a connection that stays open. Stays inside the link.
class RequestRefused final : public std::exception {
 public:
  [[nodiscard]] const char* what() const noexcept override { return "richiesta rifiutata"; }
};

/// Takes leave of the host, as far as it is there, and releases what libssh allocated.
struct ReleaseSession {
  void operator()(ssh_session session) const {
    ssh_disconnect(session);
    ssh_free(session);
  }
};
struct ReleaseEvent {
  void operator()(ssh_event event) const { ssh_event_free(event); }
};

/// One SSH connection. It is made with the host's key unchecked and nobody logged in; `Activate` ends that stage. From
/// then on nothing blocks but `HandleEvents`, which never waits beyond its limit.
class Session {
 public:
  /// Connects within the wait of `settings`. Raises a run-time error.
  Session(const SshSettings& settings, const std::string& host);
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  ~Session();

  [[nodiscard]] ssh_session Raw() const { return session_.get(); }
  [[nodiscard]] const std::string& Host() const { return host_; }
  [[nodiscard]] std::chrono::milliseconds Timeout() const { return timeout_; }
  /// When the opening of the connection, the login included, is given up.
  [[nodiscard]] Deadline OpeningDeadline() const { return openingDeadline_; }
  [[nodiscard]] Deadline NewDeadline() const { return Clock::now() + timeout_; }
  /// When a connection that was silent before, and is asked for a sign of life, is given up to be opened anew.
  [[nodiscard]] Deadline GreetingDeadline() const;

  /// While connecting: lets libssh wait no longer than what is left of the wait for the connection; where nothing is
  /// left, as long as one look takes, for the answer may be there.
  void LimitTimeout() const;

  /// What follows a message about a wait for the connection that was too short; see `OpenSocket`.
  [[nodiscard]] const std::string& LookUpNote() const { return lookUpNote_; }

  /// The host's key was checked and the user logged in.
  void Activate();

  [[nodiscard]] bool Alive() const;

  /// Whether the host was heard a moment ago by one who waited for it: then it need not be asked for a sign of life.
  [[nodiscard]] bool HeardLately() const { return Clock::now() - heard_ <= Fresh; }

  /// Handles what arrives, and waits for it until `deadline`. Raises `ConnectionLost` when the connection is gone or
  /// the time is over; what had arrived before was handled.
  void HandleEvents(Deadline deadline);
  /// The same; false when the time is over, and what had arrived by then was handled.
  [[nodiscard]] bool HandleEventsUntil(Deadline deadline);

  /// Handles what has arrived without waiting. Raises `ConnectionLost` when it does not come to an end.
  void HandleEventsNow();

  /// Repeats a call of libssh until it has its answer, at most until `deadline`. Raises `ConnectionLost` or
  /// `RequestRefused`.
  template <typename Call> void Repeat(Deadline deadline, Call call) {
    for (;;) {
      const int outcome = call();
      if (outcome == SSH_OK) {
        return;
      }
      if (outcome != SSH_AGAIN) {
        Refused();
      }
      HandleEvents(deadline);
    }
  }

  /// What became of the connection, Italian, to stand behind a colon.
  [[nodiscard]] std::string LossReason() const;

 private:
  /// A host that was heard this recently is not asked whether it is still there.
  static constexpr std::chrono::milliseconds Fresh{100};

  void Open(base::Descriptor socket, const std::string& operation);
  [[noreturn]] void Refused() const;

  std::string host_;
  std::chrono::milliseconds timeout_;
  Deadline openingDeadline_;
  std::string lookUpNote_;
  ssh_counter_struct counted_{}; ///< what has passed since the login; the session counts in it to its end
  std::unique_ptr<ssh_session_struct, ReleaseSession> session_;
  std::unique_ptr<ssh_event_struct, ReleaseEvent> event_;
  std::string oldError_; ///< the library's error text, which it never clears, from before the connection was used
  Looks looks_;
  Clock::time_point heard_; ///< when something came that was waited for
  bool broken_ = false;
};

} // namespace lumoscad::nexaro
