#pragma once

#include "platform/nexaro/ssh/Session.hpp"

#include <cstddef>
#include <libssh/callbacks.h>
#include <optional>
#include <string>
#include <string_view>

namespace lumoscad::nexaro {

/// One channel of a connection, and what has arrived on it. Every wait raises `ConnectionLost` when the connection is
/// gone or the time is over.
class Channel {
 public:
  /// Asks the host for a channel, without waiting for its answer. `maxOutput` and `maxErrors` limit what is kept of the
  /// two streams.
  Channel(Session& session, std::size_t maxOutput, std::size_t maxErrors);
  Channel(const Channel&) = delete;
  Channel& operator=(const Channel&) = delete;
  ~Channel();

  /// Waits for the answer, which is a sign of life too, at most until `deadline`. Raises `ConnectionLost` or
  /// `RequestRefused`.
  void AwaitOpening(Deadline deadline);
  /// Whether the answer is still due.
  [[nodiscard]] bool Opening();

  /// Asks the host to start a subsystem. Raises `ConnectionLost` or `RequestRefused`.
  void StartSubsystem(const char* name);
  /// Asks the host to start a command line with an empty standard input. Raises `ConnectionLost` or `RequestRefused`.
  void StartCommand(const std::string& line);

  /// Hands all of `data` to the connection, at most until `limit`; where there is none, the wait begins anew each time
  /// that something got through.
  void Write(std::string_view data, std::optional<Deadline> limit = std::nullopt);

  /// Asks the host to kill the program, as far as the host does such a thing.
  void Kill();

  /// Waits until something happens, at most until `deadline`.
  void HandleEvents(Deadline deadline) { session_.HandleEvents(deadline); }
  /// The same; false when the time is over.
  [[nodiscard]] bool HandleEventsUntil(Deadline deadline) { return session_.HandleEventsUntil(deadline); }

  [[nodiscard]] const Session& ItsSession() const { return session_; }
  [[nodiscard]] bool Alive() const { return session_.Alive(); }

  /// What has arrived and was not taken away.
  std::string output;
  std::string errors;
  bool excessiveOutput = false; ///< more than the limit arrived; the rest was dropped
  bool eof = false;             ///< the host sends no more data
  bool closed = false;          ///< the host has closed the channel
  std::optional<int> state;     ///< the program's exit status
  std::string signal;           ///< the name of the signal that killed the program, without "SIG"

 private:
  static int OnData(ssh_session session, ssh_channel channel, void* data, uint32_t length, int isErrorStream,
                    void* self);
  static void OnEof(ssh_session session, ssh_channel channel, void* self);
  static void OnClose(ssh_session session, ssh_channel channel, void* self);
  static void OnExitStatus(ssh_session session, ssh_channel channel, int state, void* self);
  static void OnSignal(ssh_session session, ssh_channel channel, const char* signal, int core, const char* message,
                       const char* language, void* self);
  void Take(std::string_view data, bool isErrorStream) noexcept;

  struct Release {
    void operator()(ssh_channel channel) const { ssh_channel_free(channel); }
  };

  Session& session_;
  std::size_t maxOutput_;
  std::size_t maxErrors_;
  ssh_channel_callbacks_struct callbacks_{};
  std::unique_ptr<ssh_channel_struct, Release> channel_;
};

} // namespace lumoscad::nexaro
