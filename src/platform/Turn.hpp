#pragma once

#include <string_view>

namespace lumoscad {

/// The turn of the one call that may run in this process. The module-level values, the screens and the link to the host
/// are not made for two calls at once, be it a second thread or a timer that fires in a window of ours. Nobody waits:
/// who comes second is refused, whatever the first one does, and nothing is locked meanwhile. A child that is forked
/// during a call has the turn free, unless the thread that forked it was inside the call: that goes on in the child.
class Turn {
 public:
  enum class Who {
    Command,      ///< may show windows, and so belongs to the windows' thread
    Administrator ///< uses the link to the host and shows nothing: any thread
  };
  enum class Outcome {
    Taken,
    Nested,     ///< this thread's own call is running: this one came out of it
    Busy,       ///< another thread's call is running
    OtherThread ///< the windows belong to another thread, call or no call
  };

  /// Takes the turn where it is free. The windows' thread is that of the application that owns the windows
  /// (`Services::windowThread`); while there is none, that of the first command of all, for as long as the process
  /// lives; in a forked child, where it does not live on, that of the first command there.
  explicit Turn(Who who) noexcept;
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;
  ~Turn();

  [[nodiscard]] Outcome How() const noexcept { return outcome_; }
  /// Why the turn was refused, for the person; empty where it was taken.
  [[nodiscard]] std::string_view Reason() const noexcept;

 private:
  Outcome outcome_;
};

} // namespace lumoscad
