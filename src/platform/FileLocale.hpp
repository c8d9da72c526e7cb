#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace lumoscad {

/// Writes a private local file (mode 0600) in one pass. It is always a new file: what stands in its place is removed
/// first, a symbolic link or a directory there is refused. Raises error 75 with an Italian text, 53 when its directory
/// is not there.
void ScriviFileLocale(const std::string& percorso, std::string_view contenuto);

/// The lines of the first 64 KiB of a local file, without their line ends. A symbolic link, and whatever else is no
/// ordinary file, is refused. Raises error 53 when it is not there, 75 otherwise.
[[nodiscard]] std::vector<std::string> LeggiRigheLocali(const std::string& percorso);

/// Deletes a local file. Raises error 53 when it is not there, 75 otherwise.
void CancellaFileLocale(const std::string& percorso);

} // namespace lumoscad
