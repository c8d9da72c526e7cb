#include "platform/nexaro/Deadline.hpp"

#include <algorithm>

namespace lumoscad::nexaro {

namespace {

constexpr long LongestLook = 60000;

} // namespace

std::chrono::milliseconds TimeLeft(Deadline deadline) {
  return std::max(std::chrono::milliseconds(0), std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()));
}

std::optional<int> Looks::Next(Deadline deadline) {
  if (const auto left = TimeLeft(deadline).count(); left > 0) {
    return static_cast<int>(std::min<long>(left, LongestLook));
  }
  if (deadline != deadline_) {
    deadline_ = deadline;
    finish_ = Clock::now() + Grace;
  }
  return Clock::now() < finish_ ? std::optional(static_cast<int>(LookBeyond.count())) : std::nullopt;
}

} // namespace lumoscad::nexaro
