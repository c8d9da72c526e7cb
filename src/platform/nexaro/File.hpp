#pragma once

#include <string>
#include <sys/types.h>

namespace lumoscad::nexaro {

/// Copies the ordinary file `sorgente` to `destinazione`, which appears whole or not at all: the copy is written under
/// a private name beside it, brought to the disk and renamed. What stands at `destinazione` is replaced; a symbolic
/// link there is not followed. `modo` holds the permissions before the umask. `operazione` begins the text of the
/// run-time error.
void CopiaFile(const std::string& sorgente, const std::string& destinazione, mode_t modo,
               const std::string& operazione);

} // namespace lumoscad::nexaro
