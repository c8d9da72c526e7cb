#include "platform/xml/Decoding.hpp"

#include "platform/RuntimeError.hpp"
#include "platform/base/AsciiCase.hpp"
#include "platform/base/CharacterConverter.hpp"

#include <algorithm>
#include <array>

namespace lumoscad::xml {

namespace {

bool ValidName(std::string_view name) {
  return !name.empty() && name.size() <= 40 &&
         name.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._-") ==
             std::string_view::npos;
}

/// Unicode and the one-byte encodings of western hosts. The system's library knows hundreds more, with state and with
/// faults of their own, which a reply must not be able to call upon.
bool Known(std::string_view encoding) {
  static constexpr std::array<std::string_view, 13> Whole{"utf-8",  "utf8",     "utf-16", "utf-16le", "utf-16be",
                                                          "ascii",  "us-ascii", "latin1", "latin9",   "cp850",
                                                          "ibm850", "cp437",    "ibm437"};
  static constexpr std::array<std::string_view, 4> Families{"iso-8859-", "iso8859-", "windows-125", "cp125"};
  const std::string name = base::LowerCase(encoding);
  const auto family = std::any_of(Families.begin(), Families.end(), [&](std::string_view begin) {
    return name.starts_with(begin) && name.size() <= begin.size() + 2 &&
           name.find_first_not_of("0123456789", begin.size()) == std::string::npos;
  });
  return family || std::find(Whole.begin(), Whole.end(), name) != Whole.end();
}

/// The encoding that the XML declaration names, UTF-8 where it names none.
std::string DeclaredEncoding(std::string_view document) {
  if (!document.starts_with("<?xml")) {
    return "UTF-8";
  }
  const auto declaration = document.substr(0, document.find("?>"));
  auto position = declaration.find("encoding");
  if (position == std::string_view::npos) {
    return "UTF-8";
  }
  position = declaration.find_first_of("\"'", position);
  if (position == std::string_view::npos) {
    return {};
  }
  const auto end = declaration.find(declaration[position], position + 1);
  return std::string(declaration.substr(position + 1, end == std::string_view::npos ? 0 : end - position - 1));
}

} // namespace

std::string Decode(std::string_view document) {
  std::string encoding;
  if (document.starts_with("\xEF\xBB\xBF")) {
    encoding = "UTF-8";
    document.remove_prefix(3);
  } else if (document.starts_with("\xFF\xFE")) {
    encoding = "UTF-16LE";
    document.remove_prefix(2);
  } else if (document.starts_with("\xFE\xFF")) {
    encoding = "UTF-16BE";
    document.remove_prefix(2);
  } else if (document.starts_with(std::string_view("<\0?\0", 4))) {
    encoding = "UTF-16LE";
  } else if (document.starts_with(std::string_view("\0<\0?", 4))) {
    encoding = "UTF-16BE";
  } else {
    encoding = DeclaredEncoding(document);
    // The declaration could be read byte by byte, so that the document cannot be in what it names.
    if (ValidName(encoding) && base::LowerCase(encoding).starts_with("utf-16")) {
      throw RuntimeError(errors::Driver,
                         "Documento XML che si dichiara in " + encoding + " ma è scritto in un'altra codifica.");
    }
  }
  if (!ValidName(encoding)) {
    throw RuntimeError(errors::Driver, "Documento XML con una dichiarazione di codifica non valida.");
  }
  const auto unknown = [&] {
    return RuntimeError(errors::Driver, "Documento XML in una codifica sconosciuta: " + encoding + ".");
  };
  if (!Known(encoding)) {
    throw unknown();
  }
  const base::CharacterConverter converter(encoding);
  if (!converter.Known()) {
    throw unknown();
  }
  std::string text;
  if (converter.Convert(document, text) != base::Conversion::Whole) {
    throw RuntimeError(errors::Driver, "Documento XML con caratteri non validi nella codifica " + encoding + ".");
  }
  return text;
}

} // namespace lumoscad::xml
