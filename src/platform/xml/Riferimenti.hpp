#pragma once

#include <string_view>

namespace lumoscad::xml {

/// Whether every character of `testo` (UTF-8) is allowed in a document, every "&" outside comments, CDATA sections
/// and processing instructions begins a predefined entity or a character reference to an allowed character, and no
/// attribute's value holds a "<".
[[nodiscard]] bool RiferimentiValidi(std::string_view testo);

} // namespace lumoscad::xml
