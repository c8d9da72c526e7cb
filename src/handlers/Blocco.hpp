#pragma once

#include "platform/LocalFile.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace lumoscad {

/// Takes the lock file of the list `tipo` on the host, so that two terminals do not edit it at once. Returns the
/// empty text when it was taken; otherwise tells the person who holds it and returns the lock's first line. A host
/// that cannot be reached counts as free: the lock is advisory.
[[nodiscard]] std::string BloccaArea(std::string_view hostIP, std::string_view tipo);

/// Deletes the lock file of the list `tipo`; always returns the empty text.
std::string SbloccaArea(std::string_view hostIP, std::string_view tipo);

/// Where the lock file of the list `tipo` stands on the host.
[[nodiscard]] std::string FileDelBlocco(std::string_view tipo);

/// The two lines that say in a lock who takes it, and when: this workstation, now.
[[nodiscard]] std::vector<std::string> RigheDiChiBlocca();

/// The two lines of a lock. One that is longer than what was read of it is held, whatever its first line: by the first
/// line that says something. A lock is held where the first of them is more than blanks.
[[nodiscard]] std::vector<std::string> RigheDelBlocco(LocalBeginning inizio);

/// A lock file that holds these lines.
[[nodiscard]] std::string TestoDelBlocco(const std::vector<std::string>& righe);

/// `testo` without any blank.
[[nodiscard]] std::string TogliSpazi(std::string_view testo);

} // namespace lumoscad
