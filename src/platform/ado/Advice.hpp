#pragma once

#include <string_view>

namespace lumoscad::ado::detail {

/// What a diagnostic record means to the person.
enum class Advice {
  None, ///< the driver's own text must do
  Waited,
  Deadlock,
  Conflict, ///< of two changes to the same rows, wherever the other one was made
  Full,
  ReadOnly, ///< of several servers none was found that takes changes
  ConnectionLost
};

/// The meaning of a record; `native` is the server's own error number.
[[nodiscard]] Advice AdviceFor(std::string_view sqlstate, long native, std::string_view text) noexcept;

/// The Italian sentence; empty for none.
[[nodiscard]] std::string_view Sentence(Advice advice) noexcept;

} // namespace lumoscad::ado::detail
