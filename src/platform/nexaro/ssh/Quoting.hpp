#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::nexaro {

/// One word of a POSIX shell's command line: the shell takes no character of `argument` for anything but itself.
/// `argument` holds no null character.
[[nodiscard]] std::string QuoteForShell(std::string_view argument);

/// The command line that runs `program` with one argument an element of `parameters`. An empty `directory` leaves it to
/// the shell to find the program.
[[nodiscard]] std::string CommandLine(std::string_view directory, std::string_view program,
                                      const std::vector<std::string>& parameters);

} // namespace lumoscad::nexaro
