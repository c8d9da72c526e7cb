#pragma once

#include <pugixml.hpp>

#include <string_view>

namespace lumoscad::xml {

// What a document must keep that the parser lets pass (XML 1.0, Fifth Edition, and Namespaces in XML 1.0, both of the
// W3C). Each gives the Italian reason of the first fault found, or an empty text.

/// Looks at the text (UTF-8): characters, references, comments, "]]>" in a text, "<" in an attribute's value, and a
/// declaration that is not the first thing of all.
[[nodiscard]] std::string_view TextFault(std::string_view text);

/// Looks at the tree: an attribute written twice, by its name or by its namespace, and a prefix that nothing declares.
/// The tree must be known to be shallow.
[[nodiscard]] std::string_view NameFault(const pugi::xml_node& document);

} // namespace lumoscad::xml
