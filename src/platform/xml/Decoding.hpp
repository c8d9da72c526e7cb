#pragma once

#include <string>
#include <string_view>

namespace lumoscad::xml {

/// Converts a document to UTF-8 by its byte-order mark, by the UTF-16 in which its declaration is written, or by the
/// encoding that it declares (UTF-8 where it declares none); the mark is removed. Raises a run-time error with an
/// Italian text for an unknown encoding or for bytes that the encoding does not allow.
[[nodiscard]] std::string Decode(std::string_view document);

} // namespace lumoscad::xml
