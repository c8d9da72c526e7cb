#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::nexaro {

/// One word of a POSIX shell's command line: the shell takes no character of `argomento` for anything but itself.
/// `argomento` holds no null character.
[[nodiscard]] std::string CitaPerShell(std::string_view argomento);

/// The command line that runs `programma` with one argument an element of `parametri`. An empty `cartella` leaves it to
/// the shell to find the program.
[[nodiscard]] std::string RigaDiComando(std::string_view cartella, std::string_view programma,
                                        const std::vector<std::string>& parametri);

} // namespace lumoscad::nexaro
