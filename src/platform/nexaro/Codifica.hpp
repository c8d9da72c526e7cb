#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace lumoscad::nexaro {

/// The encoding of the host's texts: UTF-8, or an encoding of one byte a character that contains ASCII.
class Codifica {
 public:
  /// `nome` is a name that iconv knows; UTF-8 where it is empty. Raises a run-time error for any other encoding.
  explicit Codifica(const std::string& nome = {});

  [[nodiscard]] const std::string& Nome() const { return nome_; }
  /// The host's texts are UTF-8: they pass as they are.
  [[nodiscard]] bool IsUtf8() const { return codici_.empty(); }

  /// The bytes of `testo` (UTF-8) on the host. Raises a run-time error that names the first character that the encoding
  /// lacks; `cosa` begins its text and says where the character stands.
  [[nodiscard]] std::string VersoHost(std::string_view testo, const std::string& cosa) const;

  /// The host's bytes as UTF-8; nothing where one of them is no character of the encoding.
  [[nodiscard]] std::optional<std::string> DallHost(std::string_view testo) const;

  /// The host's bytes as UTF-8, with the replacement character U+FFFD for each byte that is no character.
  [[nodiscard]] std::string DallHostTollerante(std::string_view testo) const;

 private:
  std::string nome_;
  std::array<std::string, 256> caratteri_;    ///< the character of each byte, empty where there is none
  std::unordered_map<char32_t, char> codici_; ///< the byte of each character; empty for UTF-8
};

} // namespace lumoscad::nexaro
