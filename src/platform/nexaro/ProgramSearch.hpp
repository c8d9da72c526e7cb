#pragma once

#include <string>
#include <string_view>

namespace lumoscad::nexaro {

/// A link that can tell whether a program could be run, without running it.
class ProgramSearch {
 public:
  ProgramSearch() = default;
  ProgramSearch(const ProgramSearch&) = delete;
  ProgramSearch& operator=(const ProgramSearch&) = delete;
  virtual ~ProgramSearch() = default;

  /// Where the program stands on the host. Raises a run-time error where it is missing or cannot be run.
  [[nodiscard]] virtual std::string FindProgram(std::string_view host, std::string_view program) = 0;
};

} // namespace lumoscad::nexaro
