#include "platform/xml/WellFormed.hpp"

#include "platform/base/AsciiCase.hpp"
#include "platform/base/Utf8.hpp"

#include <array>
#include <charconv>
#include <cstdint>
#include <optional>
#include <set>
#include <unordered_map>
#include <utility>
#include <vector>

namespace lumoscad::xml {

namespace {

bool AllowedCharacter(std::uint32_t code) {
  return code == 0x9 || code == 0xA || code == 0xD || (code >= 0x20 && code <= 0xD7FF) ||
         (code >= 0xE000 && code <= 0xFFFD) || (code >= 0x10000 && code <= 0x10FFFF);
}

/// `name` is what stands between "&" and ";".
bool ValidReference(std::string_view name) {
  static constexpr std::array<std::string_view, 5> Predefined{"amp", "lt", "gt", "quot", "apos"};
  for (const auto& predefinedOne : Predefined) {
    if (name == predefinedOne) {
      return true;
    }
  }
  if (!name.starts_with('#')) {
    return false;
  }
  const bool hexadecimal = name.starts_with("#x");
  const auto digits = name.substr(hexadecimal ? 2 : 1);
  std::uint32_t code = 0;
  const auto* end = digits.data() + digits.size();
  const auto [arrival, error] = std::from_chars(digits.data(), end, code, hexadecimal ? 16 : 10);
  return error == std::errc() && arrival == end && AllowedCharacter(code);
}

constexpr std::string_view ForbiddenCharacter = "contiene un carattere o un riferimento non ammesso";
constexpr std::string_view Whitespace = " \t\r\n";

/// A comment that begins at `position`, which moves past it. "--" may only end it.
std::string_view SkipComment(std::string_view text, std::size_t& position) {
  static constexpr std::string_view Start = "<!--";
  const auto hyphens = text.find("--", position + Start.size());
  if (hyphens == std::string_view::npos || text.substr(hyphens + 2, 1) != ">") {
    return "contiene «--» dentro un commento";
  }
  position = hyphens + 3;
  return {};
}

/// An instruction that begins at `position`, which moves past it. The name "xml" belongs to the declaration, which
/// stands before everything else.
std::string_view SkipInstruction(std::string_view text, std::size_t& position) {
  const auto end = text.find("?>", position);
  const auto body = text.substr(position + 2, end == std::string_view::npos ? end : end - position - 2);
  const auto name = body.substr(0, body.find_first_of(Whitespace));
  if (base::SameButForCase(name, "xml") && (position != 0 || name != "xml")) {
    return "contiene una dichiarazione XML fuori posto";
  }
  position = end == std::string_view::npos ? text.size() : end + 2;
  return {};
}

/// The converter of encodings lets values pass that are no characters.
bool OnlyAllowedCharacters(std::string_view text) {
  while (!text.empty()) {
    const auto character = base::FirstCharacter(text);
    if (character.length == 0 || !AllowedCharacter(character.code)) {
      return false;
    }
    text.remove_prefix(character.length);
  }
  return true;
}

/// `position` stands on a "&" and moves past its reference; false where none is written there.
bool SkipReference(std::string_view text, std::size_t& position) {
  static constexpr std::size_t LongestLength = 16;
  const auto end = text.substr(position, LongestLength).find(';');
  if (end == std::string_view::npos || !ValidReference(text.substr(position + 1, end - 1))) {
    return false;
  }
  position += end + 1;
  return true;
}

/// `position` stands on the quote that opens a value and moves past the one that closes it. A "<" may not stand
/// between them: the parser lets it pass, and what follows it would be taken for a section here.
bool SkipValue(std::string_view text, std::size_t& position) {
  const std::string_view stops = text[position] == '"' ? "\"<&" : "'<&";
  ++position;
  while ((position = text.find_first_of(stops, position)) != std::string_view::npos) {
    if (text[position] == '<') {
      return false;
    }
    if (text[position] != '&') {
      ++position;
      return true;
    }
    if (!SkipReference(text, position)) {
      return false;
    }
  }
  return false;
}

/// `position` stands on the "<" of a tag and moves past its ">".
bool SkipTag(std::string_view text, std::size_t& position) {
  ++position;
  while ((position = text.find_first_of("'\"<>&", position)) != std::string_view::npos) {
    if (text[position] == '>') {
      ++position;
      return true;
    }
    if (text[position] == '<' || text[position] == '&' || !SkipValue(text, position)) {
      return false;
    }
  }
  return false;
}

/// What begins with the "<" at `position`, which moves past it.
std::string_view SkipMarkup(std::string_view text, std::size_t& position) {
  static constexpr std::string_view LiteralStart = "<![CDATA[";
  const auto rest = text.substr(position);
  if (rest.starts_with("<!--")) {
    return SkipComment(text, position);
  }
  if (rest.starts_with("<?")) {
    return SkipInstruction(text, position);
  }
  if (rest.starts_with(LiteralStart)) {
    const auto end = text.find("]]>", position + LiteralStart.size());
    position = end == std::string_view::npos ? text.size() : end + 3;
    return {};
  }
  return SkipTag(text, position) ? std::string_view() : ForbiddenCharacter;
}

constexpr std::string_view PrefixWithoutDeclaration = "usa un prefisso che non dichiara";

/// The namespaces of each prefix that are declared at a place of the tree, the innermost last. A document may declare
/// as many as it has room for, and use each of them everywhere.
using Declarations = std::unordered_map<std::string_view, std::vector<std::string_view>>;

std::string_view Prefix(std::string_view name) {
  const auto twoParts = name.find(':');
  return twoParts == std::string_view::npos ? std::string_view() : name.substr(0, twoParts);
}

/// The namespace of a prefix; none where nothing declares it.
std::optional<std::string_view> Space(const Declarations& declarations, std::string_view prefix) {
  const auto found = declarations.find(prefix);
  return found == declarations.end() || found->second.empty() ? std::nullopt : std::optional(found->second.back());
}

std::string_view AttributeFault(const pugi::xml_node& element, const Declarations& declarations) {
  std::set<std::string_view> names;
  std::set<std::pair<std::string_view, std::string_view>> withSpace;
  for (const auto& attribute : element.attributes()) {
    const std::string_view name = attribute.name();
    if (!names.insert(name).second) {
      return "contiene due volte lo stesso attributo";
    }
    const auto prefix = Prefix(name);
    if (prefix.empty() || prefix == "xmlns") {
      continue;
    }
    const auto space = Space(declarations, prefix);
    if (!space) {
      return PrefixWithoutDeclaration;
    }
    if (!withSpace.emplace(*space, name.substr(prefix.size() + 1)).second) {
      return "contiene due volte lo stesso attributo";
    }
  }
  return {};
}

std::string_view ElementFault(const pugi::xml_node& element, Declarations& declarations) {
  std::vector<std::string_view> declared;
  for (const auto& attribute : element.attributes()) {
    const std::string_view name = attribute.name();
    if (Prefix(name) == "xmlns") {
      declared.push_back(name.substr(sizeof "xmlns"));
      declarations[declared.back()].emplace_back(attribute.value());
    }
  }
  std::string_view fault = AttributeFault(element, declarations);
  const auto prefix = Prefix(element.name());
  if (fault.empty() && !prefix.empty() && !Space(declarations, prefix)) {
    fault = PrefixWithoutDeclaration;
  }
  for (auto child = element.first_child(); child && fault.empty(); child = child.next_sibling()) {
    if (child.type() == pugi::node_element) {
      fault = ElementFault(child, declarations);
    }
  }
  for (const auto declaredOne : declared) {
    declarations[declaredOne].pop_back();
  }
  return fault;
}

} // namespace

std::string_view TextFault(std::string_view text) {
  if (!OnlyAllowedCharacters(text)) {
    return ForbiddenCharacter;
  }
  std::size_t position = 0;
  while ((position = text.find_first_of("<&]", position)) != std::string_view::npos) {
    std::string_view fault;
    if (text[position] == '<') {
      fault = SkipMarkup(text, position);
    } else if (text[position] == '&') {
      fault = SkipReference(text, position) ? fault : ForbiddenCharacter;
    } else if (text.substr(position).starts_with("]]>")) {
      fault = "contiene «]]>» in un testo";
    } else {
      ++position;
    }
    if (!fault.empty()) {
      return fault;
    }
  }
  return {};
}

std::string_view NameFault(const pugi::xml_node& document) {
  Declarations declarations{{"xml", {"http://www.w3.org/XML/1998/namespace"}}};
  return ElementFault(document, declarations);
}

} // namespace lumoscad::xml
