#pragma once

#include "platform/RuntimeError.hpp"

#include <string>
#include <string_view>

namespace lumoscad::nexaro {

/// The numbers of the link's own errors.
inline constexpr int PermissionError = 70;         ///< permission denied
inline constexpr int LinkFailure = errors::Driver; ///< a failure without a number of its own

/// The run-time error for a failed operation of the operating system: `operation` says what was tried, and where.
[[nodiscard]] RuntimeError SystemError(std::string_view operation, int code);

/// The run-time error of the link that has no other number.
[[nodiscard]] RuntimeError LinkError(std::string description);

} // namespace lumoscad::nexaro
