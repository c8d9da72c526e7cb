#pragma once

#include <span>
#include <string>

namespace lumoscad::base {

/// What a failure of the operating system is called.
struct SystemErrorName {
  int code; ///< as in `errno`
  const char* text;
};

/// The Italian name of a failure of the operating system (`errno`), to stand behind a colon; its number where it has no
/// name.
[[nodiscard]] std::string SystemErrorText(int code);

/// The same by `names` alone, for someone whose sentences need names of their own.
[[nodiscard]] std::string SystemErrorText(int code, std::span<const SystemErrorName> names);

} // namespace lumoscad::base
