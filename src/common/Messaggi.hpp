#pragma once

#include <string>
#include <string_view>

namespace lumoscad {

/// The product's name, the title of every box.
inline constexpr std::string_view NomeProdotto = "LumoScad";

/// Shows one modal box with an OK button. A `dettaglio` that holds more than blanks stands on the line above
/// `testo`.
void MostraMessaggio(std::string_view testo, std::string_view dettaglio);

} // namespace lumoscad
