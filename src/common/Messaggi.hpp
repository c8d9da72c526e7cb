#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace lumoscad {

/// The product's name, the title of every box.
inline constexpr std::string_view NomeProdotto = "LumoScad";

/// Shows one modal box with an OK button. A `dettaglio` that holds more than blanks stands on the line above
/// `testo`, and `frase` on the line below. Otherwise as `ShowBox`.
void MostraMessaggio(std::string_view testo, std::string_view dettaglio, std::string_view frase = {}) noexcept;

/// Shows one modal box with an OK button and `testo`, of which at most 32 KiB are seen, and how much is missing;
/// `frase`, what the person must not miss, ends the box and is seen whole. What cannot be shown is written to the
/// standard error, with the reason: a message that fails must neither be lost nor stand in for what it was to tell.
void ShowBox(std::string_view testo, std::string_view frase = {}) noexcept;

/// Keeps what the person is told last, for the life of the object. One at a time, on the thread whose call runs; where
/// there is no memory for a text, the one before it stays out too.
class AscoltoMessaggi {
 public:
  explicit AscoltoMessaggi(std::string& ultimo) noexcept;
  AscoltoMessaggi(const AscoltoMessaggi&) = delete;
  AscoltoMessaggi& operator=(const AscoltoMessaggi&) = delete;
  ~AscoltoMessaggi();
};

/// Writes one message to the standard error, whole and in one go, without control characters and without memory of its
/// own: the pieces in their order, with a blank between them; an empty one counts as none.
void ScriviErrore(std::initializer_list<std::string_view> pezzi) noexcept;

} // namespace lumoscad
