#pragma once

#include <string_view>

namespace lumoscad::ado::interno {

/// The sentence for a connection that was lost.
inline constexpr std::string_view connectionLost = "La connessione con la base dati è caduta.";

/// What a diagnostic record means to the person: an Italian sentence, empty where the driver's own text must do.
/// `native` is the server's own error number.
[[nodiscard]] std::string_view adviceFor(std::string_view sqlstate, long native, std::string_view text) noexcept;

} // namespace lumoscad::ado::interno
