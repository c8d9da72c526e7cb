#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace lumoscad::base {

// Of ASCII letters alone, whatever the locale of the process: in a Turkish one "I" is no capital "i".

[[nodiscard]] constexpr char LowerCase(char c) noexcept {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

[[nodiscard]] constexpr char UpperCase(char c) noexcept {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

[[nodiscard]] inline std::string LowerCase(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    c = LowerCase(c);
  }
  return lower;
}

[[nodiscard]] inline std::string UpperCase(std::string_view text) {
  std::string upper(text);
  for (char& c : upper) {
    c = UpperCase(c);
  }
  return upper;
}

/// Whether the texts are the same but for the case of their letters.
[[nodiscard]] constexpr bool SameButForCase(std::string_view a, std::string_view b) noexcept {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return LowerCase(x) == LowerCase(y); });
}

} // namespace lumoscad::base
