#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace lumoscad {

/// The place that a caller in C has for a text.
class Destinazione {
 public:
  Destinazione(char* dove, std::size_t dimensione) noexcept
      : dove_(dove), dimensione_(dove == nullptr ? 0 : dimensione) {}

  /// Copies what fits of it, behind what was copied before, and ends it by a zero byte. Returns how long it all is.
  std::size_t Aggiungi(std::string_view testo) noexcept {
    if (lunghezza_ + 1 <= dimensione_) {
      const std::size_t copiati = std::min(testo.size(), dimensione_ - 1 - lunghezza_);
      std::memcpy(dove_ + lunghezza_, testo.data(), copiati);
      dove_[lunghezza_ + copiati] = '\0';
    }
    return lunghezza_ += testo.size();
  }

 private:
  char* dove_;
  std::size_t dimensione_;
  std::size_t lunghezza_ = 0; ///< of the whole text, copied or not
};

} // namespace lumoscad
