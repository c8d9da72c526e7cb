#pragma once

#include "platform/Environment.hpp"
#include "platform/HostLink.hpp"
#include "platform/ProcessLock.hpp"

#include <memory>

namespace lumoscad::nexaro {

/// Reads the environment object from `NEXARO_POSTAZIONE` and `NEXARO_CARTELLA_LOCALE` (defaults: a
/// name of machine, user and session, and a private directory of the user, which is created with mode 0700).
[[nodiscard]] Environment ReadEnvironment();

/// Creates the link that `NEXARO_TRASPORTO` asks for. Raises a run-time error for an unknown or unfit setting.
[[nodiscard]] std::unique_ptr<HostLink> CreateHostLink();

/// Creates the locks; `NEXARO_ATTESA` limits their wait. Make one a process, and keep it: what one lets go of when it
/// is destroyed, every other loses. Raises a run-time error for an unfit setting.
[[nodiscard]] std::unique_ptr<ProcessLock> CreateProcessLock();

} // namespace lumoscad::nexaro
