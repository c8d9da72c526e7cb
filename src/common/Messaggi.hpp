#pragma once

#include <string>
#include <string_view>

namespace lumoscad {

/// The product's name, the title of every box.
inline constexpr std::string_view NomeProdotto = "LumoScad";

/// Shows one modal box with an OK button. A `dettaglio` that holds more than blanks stands on the line above
/// `testo`, and `frase` on the line below. Otherwise as `MostraBox`.
void MostraMessaggio(std::string_view testo, std::string_view dettaglio, std::string_view frase = {}) noexcept;

/// Shows one modal box with an OK button and `testo`, of which at most 32 KiB are seen, and how much is missing;
/// `frase`, what the person must not miss, ends the box and is seen whole. What cannot be shown is written to the
/// standard error, with the reason: a message that fails must neither be lost nor stand in for what it was to tell.
void MostraBox(std::string_view testo, std::string_view frase = {}) noexcept;

/// Writes one message to the standard error, without control characters.
void ScriviErrore(std::string_view testo, std::string_view frase = {}) noexcept;

} // namespace lumoscad
