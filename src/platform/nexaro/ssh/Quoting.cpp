#include "platform/nexaro/ssh/Quoting.hpp"

namespace lumoscad::nexaro {

std::string QuoteForShell(std::string_view argument) {
  std::string word = "'";
  for (const char character : argument) {
    // Nothing ends a quotation but its own mark, which therefore stands outside, behind a backslash.
    if (character == '\'') {
      word += "'\\''";
    } else {
      word += character;
    }
  }
  return word + "'";
}

std::string CommandLine(std::string_view directory, std::string_view program,
                        const std::vector<std::string>& parameters) {
  auto line =
      QuoteForShell(directory.empty() ? std::string(program) : std::string(directory) + "/" + std::string(program));
  for (const auto& parameter : parameters) {
    line += " " + QuoteForShell(parameter);
  }
  return line;
}

} // namespace lumoscad::nexaro
