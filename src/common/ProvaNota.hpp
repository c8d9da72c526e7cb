#pragma once

#include <string>

namespace lumoscad {

/// Tries whether the note of a command can be written in a local directory, flushed, held, read and removed; nothing of
/// it stays. Returns what was seen, in Italian. Raises error 75 where it cannot, 53 where the directory is not there.
[[nodiscard]] std::string ProvaNota(const std::string& cartella, const std::string& postazione);

} // namespace lumoscad
