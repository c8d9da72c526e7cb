#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace lumoscad {

/// Adds one line to the bytes of a request file: the fields separated by ",", ended by CR LF. The format has no
/// quoting. A comma in a field is written as it is: the line then has a field too many and the host, whose data it is,
/// refuses it by its number. A line end would make two lines of one: such a field raises error 13, and nothing is
/// added.
void AggiungiRiga(std::string& contenuto, std::initializer_list<std::string_view> campi);

} // namespace lumoscad
