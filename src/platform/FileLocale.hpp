#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace lumoscad {

/// Writes a private local file (mode 0600) in one pass, replacing what is there; a symbolic link in its place is
/// refused. Raises error 75 with an Italian text.
void ScriviFileLocale(const std::string& percorso, std::string_view contenuto);

/// The lines of a local file without their line ends. Raises error 53 when it is not there, 75 otherwise.
[[nodiscard]] std::vector<std::string> LeggiRigheLocali(const std::string& percorso);

/// Deletes a local file. Raises error 53 when it is not there, 75 otherwise.
void CancellaFileLocale(const std::string& percorso);

} // namespace lumoscad
