#pragma once

#include <cstdint>
#include <string_view>

namespace lumoscad {

/// The 64-bit FNV-1a hash of a text (parameters: RFC 9923), the same in every process; `inizio` goes on from the hash
/// of what stands before it. Not for texts that somebody chooses with bad intent.
[[nodiscard]] constexpr std::uint64_t Impronta(std::string_view testo,
                                               std::uint64_t inizio = 0xCBF29CE484222325U) noexcept {
  std::uint64_t valore = inizio;
  for (const char carattere : testo) {
    valore = (valore ^ static_cast<unsigned char>(carattere)) * 0x100000001B3U;
  }
  return valore;
}

} // namespace lumoscad
