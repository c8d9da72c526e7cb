#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::test {

/// One line of a log: fields separated by tabs, with "\\", "\t", "\r" and "\n" escaped, and no line end.
[[nodiscard]] std::string Unisci(const std::vector<std::string>& campi);

/// The fields of such a line.
[[nodiscard]] std::vector<std::string> Separa(std::string_view riga);

} // namespace lumoscad::test
