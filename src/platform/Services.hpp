#pragma once

#include "platform/Desktop.hpp"
#include "platform/Environment.hpp"
#include "platform/HostLink.hpp"
#include "platform/SystemClock.hpp"

#include <functional>
#include <string_view>

namespace lumoscad {

namespace nexaro {
class ProcessLock;
}

/// The platform services. The composition root fills them once; a test puts its own in place with
/// `ReplacedServices` and gets the old ones back at the end of the scope.
struct Services {
  std::function<Desktop&()> desktop;                       ///< created on first use
  std::function<nexaro::HostLink&()> hostLink;             ///< created on first use, kept
  std::function<const nexaro::Environment&()> environment; ///< read on first use, kept
  std::function<DateTime()> localTime;                     ///< the current local date and time
  std::function<void(std::string_view)> statementSent; ///< told every statement text before it is sent; may be empty
  std::function<WindowThread()> windowThread = {};     ///< asked from any thread; none: as if without an application
  /// the locks that requests of one workstation share on this machine, created on first use, kept; may be empty
  std::function<nexaro::ProcessLock&()> processLock = {};
  /// the native number of the calling program's window over which the running command's open, on X11; 0 for none
  unsigned long callersWindow = 0;
};

/// The one set of services of the process.
[[nodiscard]] Services& ActiveServices();

/// Puts `replacement` in place for the life of the object.
class ReplacedServices {
 public:
  explicit ReplacedServices(Services replacement);
  ReplacedServices(const ReplacedServices&) = delete;
  ReplacedServices& operator=(const ReplacedServices&) = delete;
  ~ReplacedServices();

 private:
  Services previous_;
};

} // namespace lumoscad
