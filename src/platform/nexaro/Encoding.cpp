#include "platform/nexaro/Encoding.hpp"

#include "platform/base/AsciiCase.hpp"
#include "platform/base/CharacterConverter.hpp"
#include "platform/base/Utf8.hpp"
#include "platform/nexaro/LinkErrors.hpp"
#include "platform/nexaro/Texts.hpp"

#include <cstdio>

namespace lumoscad::nexaro {

namespace {

constexpr std::string_view Replacement = "\xEF\xBF\xBD";

std::string CodePoint(char32_t code) {
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "U+%04X", static_cast<unsigned>(code));
  return text.data();
}

/// The character of one byte, empty where the byte is none; nothing where it only begins one.
std::optional<std::string> CharacterOf(const base::CharacterConverter& converter, char byte) {
  std::string character;
  const auto outcome = converter.Convert({&byte, 1}, character);
  if (outcome != base::Conversion::Whole) {
    return outcome == base::Conversion::Invalid ? std::optional<std::string>(std::string()) : std::nullopt;
  }
  const bool one = !character.empty() && base::FirstCharacter(character).length == character.size();
  return one ? std::optional<std::string>(character) : std::nullopt;
}

bool NamesUtf8(const std::string& name) {
  return name.empty() || base::SameButForCase(name, "UTF-8") || base::SameButForCase(name, "UTF8");
}

/// What iconv would read as a wish of another kind, or as the locale's encoding, is no name.
bool AllowedName(const std::string& name) {
  return name.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._:-") ==
         std::string::npos;
}

} // namespace

Encoding::Encoding(const std::string& name) : name_(NamesUtf8(name) ? "UTF-8" : name) {
  if (NamesUtf8(name)) {
    return;
  }
  const base::CharacterConverter converter(name);
  if (!AllowedName(name) || !converter.Known()) {
    throw LinkError("NEXARO_CODIFICA indica una codifica sconosciuta: vale «" + name + "».");
  }
  for (unsigned byte = 0; byte < characters_.size(); ++byte) {
    const auto character = CharacterOf(converter, static_cast<char>(byte));
    const bool ascii = byte < 0x80U;
    if (!character || (ascii && *character != std::string(1, static_cast<char>(byte)))) {
      throw LinkError("NEXARO_CODIFICA deve indicare UTF-8 o una codifica di un byte per carattere che contenga "
                      "l'ASCII: vale «" +
                      name + "».");
    }
    characters_.at(byte) = *character;
    if (!character->empty()) {
      codes_.emplace(base::FirstCharacter(*character).code, static_cast<char>(byte));
    }
  }
}

std::string Encoding::ToHost(std::string_view text, const std::string& what) const {
  if (PlainUtf8()) {
    return std::string(text);
  }
  std::string byte;
  byte.reserve(text.size());
  while (!text.empty()) {
    const auto character = base::FirstCharacter(text);
    if (character.length == 0) {
      throw LinkError(what + " non è un testo UTF-8 valido e non può essere convertito nella codifica " + name_ +
                      " dell'host.");
    }
    const auto entry = codes_.find(character.code);
    if (entry == codes_.end()) {
      throw LinkError(what + " contiene il carattere " + Quote(text.substr(0, character.length)) + " (" +
                      CodePoint(character.code) + "), che manca nella codifica " + name_ + " dell'host.");
    }
    byte += entry->second;
    text.remove_prefix(character.length);
  }
  return byte;
}

std::optional<std::string> Encoding::FromHost(std::string_view text) const {
  if (PlainUtf8()) {
    return std::string(text);
  }
  std::string result;
  result.reserve(text.size());
  for (const char byte : text) {
    const auto& character = characters_.at(static_cast<unsigned char>(byte));
    if (character.empty()) {
      return std::nullopt;
    }
    result += character;
  }
  return result;
}

std::string Encoding::FromHostTolerant(std::string_view text) const {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    const auto utf8 = PlainUtf8() ? base::FirstCharacter(text) : base::Utf8Character{};
    const auto length = utf8.length == 0 ? std::size_t{1} : utf8.length;
    if (utf8.length > 0) {
      result += text.substr(0, length);
    } else {
      const auto& character = characters_.at(static_cast<unsigned char>(text.front()));
      result += character.empty() ? Replacement : std::string_view(character);
    }
    text.remove_prefix(length);
  }
  return result;
}

} // namespace lumoscad::nexaro
