#pragma once

#include <ctime>
#include <sys/types.h>

namespace lumoscad::base {

/// Whether `process`, of this machine, can be the one that wrote a file at the time `written` (seconds since 1970): it
/// lives, and had begun by then. Another process may have got its number since.
[[nodiscard]] bool MayHaveWritten(pid_t process, std::time_t written);

} // namespace lumoscad::base
