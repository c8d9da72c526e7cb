#pragma once

#include <chrono>
#include <string>
#include <string_view>

namespace lumoscad::nexaro {

/// " sull'host 10.0.0.1", as the end of what was tried; without the address where there is none.
[[nodiscard]] std::string OnHost(std::string_view host);

/// The text in the quotation marks of the messages.
[[nodiscard]] std::string Quote(std::string_view text);

/// What another program said of itself, fit to stand in a message: one line of UTF-8 without control
/// characters, made of at most 300 of its bytes.
[[nodiscard]] std::string ForeignText(std::string_view text);

/// A wait in words: "60 secondi", "0,300 secondi".
[[nodiscard]] std::string Seconds(std::chrono::milliseconds timeout);

} // namespace lumoscad::nexaro
