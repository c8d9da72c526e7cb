#pragma once

#include <chrono>
#include <optional>

namespace lumoscad::nexaro {

using Clock = std::chrono::steady_clock;
using Deadline = Clock::time_point;

/// How long a wait may go on beyond its limit: while what was waited for is still coming in, or while a killed process
/// goes away.
inline constexpr std::chrono::milliseconds Grace{5000};

/// How long the output of a program that has ended must have been silent before its end is no longer waited for: some
/// other process may hold it open for good.
inline constexpr std::chrono::milliseconds Silence{1000};

/// How long one look may take when the limit is over.
inline constexpr std::chrono::milliseconds LookBeyond{100};

/// The time left until `deadline`, rounded up; not negative.
[[nodiscard]] std::chrono::milliseconds TimeLeft(Deadline deadline);

/// The looks of one who waits. When the limit is over, the answer may have been there for long: the calling program may
/// have been stopped, or the machine asleep. So there is one more look beyond it, and then another as long as each
/// brings something, for `Grace` in all.
class Looks {
 public:
  /// How long the next look may take, in milliseconds as poll(2) takes them; nothing when the wait is to be given up.
  /// It is to be given up too when a look beyond `deadline` brought nothing.
  [[nodiscard]] std::optional<int> Next(Deadline deadline);

 private:
  Deadline deadline_;
  Deadline finish_; ///< of the looks beyond `deadline_`, counted from when it was first seen to be over
};

} // namespace lumoscad::nexaro
