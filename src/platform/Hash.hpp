#pragma once

#include <cstdint>
#include <string_view>

namespace lumoscad {

/// The 64-bit FNV-1a hash of a text (parameters: RFC 9923), the same in every process; `start` goes on from the hash
/// of what stands before it. Not for texts that somebody chooses with bad intent.
[[nodiscard]] constexpr std::uint64_t Hash(std::string_view text, std::uint64_t start = 0xCBF29CE484222325U) noexcept {
  std::uint64_t value = start;
  for (const char character : text) {
    value = (value ^ static_cast<unsigned char>(character)) * 0x100000001B3U;
  }
  return value;
}

} // namespace lumoscad
