#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace lumoscad {

/// Sends a request without a file behind the wait window, with a fresh module-level reply object, and tells the person
/// what the reply says: its error first, then its message. Returns the reply actions' result, or "error".
[[nodiscard]] std::string RichiestaAttesa(std::string_view hostIP, const std::vector<std::string>& parametri,
                                          const std::vector<std::string>& parametriDB2);

} // namespace lumoscad
