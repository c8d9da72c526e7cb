#pragma once

#include <iconv.h>
#include <string>
#include <string_view>

namespace lumoscad::base {

/// What became of a text that was converted.
enum class Conversion {
  Whole,
  Invalid,   ///< bytes in it are no character of the encoding
  Incomplete ///< it ends in the middle of a character
};

/// Converts texts of one encoding to UTF-8.
class CharacterConverter {
 public:
  /// `encoding` is a name that iconv_open(3) knows.
  explicit CharacterConverter(const std::string& encoding);
  CharacterConverter(const CharacterConverter&) = delete;
  CharacterConverter& operator=(const CharacterConverter&) = delete;
  ~CharacterConverter();

  /// The encoding is known; without it nothing can be converted.
  [[nodiscard]] bool Known() const;

  /// Converts `text`, on its own, and adds what comes of it to `converted`: all of it, or what stands before the
  /// trouble.
  [[nodiscard]] Conversion Convert(std::string_view text, std::string& converted) const;

 private:
  iconv_t handle_;
};

} // namespace lumoscad::base
