#pragma once

#include <chrono>
#include <optional>

namespace lumoscad::nexaro {

using Orologio = std::chrono::steady_clock;
using Termine = Orologio::time_point;

/// How long a wait may go on beyond its limit: while what was waited for is still coming in, or while a killed process
/// goes away.
inline constexpr std::chrono::milliseconds Proroga{5000};

/// How long the output of a program that has ended must have been silent before its end is no longer waited for: some
/// other process may hold it open for good.
inline constexpr std::chrono::milliseconds Quiete{1000};

/// How long one look may take when the limit is over.
inline constexpr std::chrono::milliseconds SguardoOltre{100};

/// The time left until `termine`, rounded up; not negative.
[[nodiscard]] std::chrono::milliseconds TempoRestante(Termine termine);

/// The looks of one who waits. When the limit is over, the answer may have been there for long: the calling program may
/// have been stopped, or the machine asleep. So there is one more look beyond it, and then another as long as each
/// brings something, for `Proroga` in all.
class Sguardi {
 public:
  /// How long the next look may take, in milliseconds as poll(2) takes them; nothing when the wait is to be given up.
  /// It is to be given up too when a look beyond `termine` brought nothing.
  [[nodiscard]] std::optional<int> Prossimo(Termine termine);

 private:
  Termine termine_;
  Termine fine_; ///< of the looks beyond `termine_`, counted from when it was first seen to be over
};

} // namespace lumoscad::nexaro
