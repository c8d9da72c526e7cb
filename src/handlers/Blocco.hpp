#pragma once

#include <string>
#include <string_view>

namespace lumoscad {

/// Takes the lock file of the list `tipo` on the host, so that two terminals do not edit it at once. Returns the
/// empty text when it was taken; otherwise tells the person who holds it and returns the lock's first line. A host
/// that cannot be reached counts as free: the lock is advisory.
[[nodiscard]] std::string BloccaArea(std::string_view hostIP, std::string_view tipo);

/// Deletes the lock file of the list `tipo`; always returns the empty text.
std::string SbloccaArea(std::string_view hostIP, std::string_view tipo);

/// `testo` without any blank.
[[nodiscard]] std::string TogliSpazi(std::string_view testo);

} // namespace lumoscad
