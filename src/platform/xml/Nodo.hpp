#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::xml {

/// One element of a parsed document. Texts are UTF-8.
struct Nodo {
  std::string name;           ///< the element's name as written
  std::string value;          ///< the text of the element and of all its descendants, in document order
  std::vector<Nodo> children; ///< the child elements, in document order
  bool containsText = false;  ///< the element has a non-blank text of its own: it has child nodes though no `children`
};

/// The largest document that `Read` takes, in bytes.
inline constexpr std::size_t LargestSize = std::size_t{16} * 1024 * 1024;
/// The deepest nesting that `Read` takes; the document element has depth 1.
inline constexpr int GreatestDepth = 64;

/// Parses a whole document and returns its document element.
/// The bytes are decoded by the encoding that the document declares (UTF-8 where it declares none).
/// Raises a run-time error with an Italian text when the document is empty, too large, too deep, not well
/// formed, in an unknown encoding, or carries a DOCTYPE.
[[nodiscard]] Nodo Read(std::string_view document);

} // namespace lumoscad::xml
