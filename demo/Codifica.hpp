#pragma once

#include <string>
#include <string_view>

namespace lumoscad::demo {

/// The encoding of one call's texts: UTF-8, or one byte a character where what it brought is no UTF-8. Inside the
/// program every text is UTF-8. The bytes of a one-byte encoding come back as they were, whichever it is; the program's
/// own letters are written as the western ones have them.
class Codifica {
 public:
  /// The UTF-8 text of the bytes `ricevuti` that the call brought. From the first ones on that are no UTF-8 every byte
  /// is a character.
  [[nodiscard]] std::string Leggi(std::string_view ricevuti);
  /// The bytes of a UTF-8 text in the encoding of what was read so far.
  [[nodiscard]] std::string Scrivi(std::string_view testo) const;
  /// The first line of an answer in this encoding. It names none where the western encodings differ about a byte that
  /// the call brought: only the caller knows then which it is.
  [[nodiscard]] std::string DichiarazioneXml() const;

 private:
  bool unByte_ = false; ///< one byte a character
  bool dubbia_ = false; ///< a byte came that is not the same letter in all western encodings
};

} // namespace lumoscad::demo
