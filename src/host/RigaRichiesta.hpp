#pragma once

#include <initializer_list>
#include <string>

namespace lumoscad {

/// One line of a request file: the fields separated by ",", ended by CR LF. The format has no quoting: a field with a
/// separator or a line end in it cannot be sent and raises error 13.
[[nodiscard]] std::string RigaRichiesta(std::initializer_list<std::string> campi);

} // namespace lumoscad
