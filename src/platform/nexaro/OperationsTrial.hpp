#pragma once

#include "platform/Environment.hpp"
#include "platform/HostLink.hpp"

#include <functional>
#include <string>

namespace lumoscad::nexaro {

/// How one operation went; `detail` says what was seen, or why it failed.
struct StepOutcome {
  std::string operation;
  bool succeeded = false;
  std::string detail;
};

/// Runs through the five operations of `link` with a file of its own in the host's /tmp, which it removes
/// again. With an empty `program` the back-end program is looked for and not started; otherwise `program` is run
/// without parameters. Hands every outcome to `show`; true when all went well.
bool TryOperations(HostLink& link, const std::string& host, const std::string& program, const Environment& environment,
                   const std::function<void(const StepOutcome&)>& show);

} // namespace lumoscad::nexaro
