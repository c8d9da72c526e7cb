#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::xml {

/// One element of a parsed document. Texts are UTF-8.
struct Nodo {
  std::string nome;        ///< the element's name as written
  std::string valore;      ///< the text of the element and of all its descendants, in document order
  std::vector<Nodo> figli; ///< the child elements, in document order
  bool haTesto = false;    ///< the element has a non-blank text of its own: it has child nodes though no `figli`
};

/// The largest document that `Leggi` takes, in bytes.
inline constexpr std::size_t DimensioneMassima = std::size_t{16} * 1024 * 1024;
/// The deepest nesting that `Leggi` takes; the document element has depth 1.
inline constexpr int ProfonditaMassima = 64;

/// Parses a whole document and returns its document element.
/// The bytes are decoded by the encoding that the document declares (UTF-8 where it declares none).
/// Raises a run-time error with an Italian text when the document is empty, too large, too deep, not well
/// formed, in an unknown encoding, or carries a DOCTYPE.
[[nodiscard]] Nodo Leggi(std::string_view documento);

} // namespace lumoscad::xml
