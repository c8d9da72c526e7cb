#include "platform/nexaro/ssh/RemoteProgram.hpp"

#include "platform/nexaro/Call.hpp"
#include "platform/nexaro/Texts.hpp"

#include <algorithm>

namespace lumoscad::nexaro {

namespace {

bool Dismissed(const Channel& channel) {
  return channel.state || !channel.signal.empty();
}

bool Ended(const Channel& channel) {
  return channel.closed || (channel.eof && Dismissed(channel));
}

/// One wait for a program.
class Timeout {
 public:
  Timeout(Channel& channel, const Completeness& complete)
      : channel_(channel), complete_(complete), deadline_(channel.ItsSession().NewDeadline()) {}

  /// Why the program has to be given up; empty while it need not be.
  std::string Run() {
    while (!Ended(channel_) && !channel_.excessiveOutput) {
      const bool arrived = channel_.HandleEventsUntil(Limit());
      const bool timedOut = !arrived && TimeLeft(deadline_).count() == 0;
      if (Dismissed(channel_) && (timedOut || Silent())) {
        if (Enough()) {
          return {};
        }
        silentAt_ = Clock::now() + Silence;
      }
      if (timedOut && !Ended(channel_)) {
        channel_.Kill();
        return " non ha risposto entro " + Seconds(channel_.ItsSession().Timeout()) +
               " e ne è stata chiesta l'interruzione";
      }
    }
    if (channel_.excessiveOutput) {
      channel_.Kill();
      return " ha dato una risposta di oltre 16 MiB e ne è stata chiesta l'interruzione";
    }
    return {};
  }

 private:
  /// Until when to wait for whatever comes next.
  [[nodiscard]] Deadline Limit() {
    if (!Dismissed(channel_)) {
      return deadline_;
    }
    if (silentAt_ == Deadline()) {
      silentAt_ = Clock::now() + Silence;
    }
    return std::min(deadline_, silentAt_);
  }

  /// Whether the output has been silent for long enough; what comes for the connection's own sake is no output.
  [[nodiscard]] bool Silent() {
    const auto count = channel_.output.size() + channel_.errors.size();
    if (count != taken_) {
      taken_ = count;
      silentAt_ = Clock::now() + Silence;
    }
    return silentAt_ != Deadline() && TimeLeft(silentAt_).count() == 0;
  }

  /// Whether the end of the output can be done without.
  [[nodiscard]] bool Enough() const {
    return !channel_.signal.empty() || channel_.state != 0 || complete_(channel_.output);
  }

  Channel& channel_;
  const Completeness& complete_;
  Deadline deadline_;
  Deadline silentAt_; ///< when the output of a program that has ended will have been silent for long enough
  std::size_t taken_ = 0;
};

} // namespace

std::unique_ptr<Channel> PrepareProgram(Session& session) {
  return std::make_unique<Channel>(session, xml::LargestSize, MaxErrorsShown);
}

RemoteOutcome RunRemotely(Channel& channel, const std::string& line, const Completeness& complete) {
  RemoteOutcome outcome;
  try {
    channel.StartCommand(line);
    outcome.interruption = Timeout(channel, complete).Run();
  } catch (const ConnectionLost& lost) {
    outcome.interruption = " è stato richiesto, ma " + lost.Reason();
  }
  if (outcome.interruption.empty() && !channel.state && channel.signal.empty()) {
    outcome.interruption = " è finito senza che l'host ne dicesse l'esito";
  }
  outcome.output = std::move(channel.output);
  outcome.errors = std::move(channel.errors);
  if (channel.signal.empty()) {
    outcome.state = channel.state;
  }
  outcome.signal = channel.signal;
  return outcome;
}

} // namespace lumoscad::nexaro
