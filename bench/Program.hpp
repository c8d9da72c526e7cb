#pragma once

#include <string>
#include <vector>

namespace lumoscad::bench {

/// What became of a program that ran to its end.
struct Ended {
  double begin = 0;        ///< when it was started, as Now() tells
  double milliseconds = 0; ///< from its start to its end
  std::string output;      ///< its standard output
};

/// Runs a program of the build and waits for it; raises where it does not end with status 0. `settings` are
/// "NAME=value" on top of this process' environment.
[[nodiscard]] Ended Run(const std::string& program, const std::vector<std::string>& arguments,
                        const std::vector<std::string>& settings = {});

/// The words of a command line between single blanks.
[[nodiscard]] std::vector<std::string> Words(const std::string& text);

/// The number in `output` right before `unit`.
[[nodiscard]] double NumberBefore(const std::string& output, const std::string& unit);

} // namespace lumoscad::bench
