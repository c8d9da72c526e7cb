#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace lumoscad {

/// One line of a request file: the fields separated by ",", ended by CR LF. The format has no quoting. A comma in a
/// field is written as it is: the line then has a field too many and the host, whose data it is, refuses it by its
/// number. A line end would make two lines of one: such a field raises error 13.
[[nodiscard]] std::string RigaRichiesta(std::initializer_list<std::string_view> campi);

} // namespace lumoscad
