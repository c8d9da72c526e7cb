#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace lumoscad::nexaro {

/// The encoding of the host's texts: UTF-8, or an encoding of one byte a character that contains ASCII.
class Encoding {
 public:
  /// `name` is a name that iconv knows; UTF-8 where it is empty. Raises a run-time error for any other encoding.
  explicit Encoding(const std::string& name = {});

  [[nodiscard]] const std::string& Name() const { return name_; }
  /// The host's texts are UTF-8: they pass as they are.
  [[nodiscard]] bool PlainUtf8() const { return codes_.empty(); }

  /// The bytes of `text` (UTF-8) on the host. Raises a run-time error that names the first character that the encoding
  /// lacks; `what` begins its text and says where the character stands.
  [[nodiscard]] std::string ToHost(std::string_view text, const std::string& what) const;

  /// The host's bytes as UTF-8; nothing where one of them is no character of the encoding.
  [[nodiscard]] std::optional<std::string> FromHost(std::string_view text) const;

  /// The host's bytes as UTF-8, with the replacement character U+FFFD for each byte that is no character.
  [[nodiscard]] std::string FromHostTolerant(std::string_view text) const;

 private:
  std::string name_;
  std::array<std::string, 256> characters_;  ///< the character of each byte, empty where there is none
  std::unordered_map<char32_t, char> codes_; ///< the byte of each character; empty for UTF-8
};

} // namespace lumoscad::nexaro
