#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad {

/// One row of the dispatch table.
struct Comando {
  std::string_view tipo;         ///< the value of "-T", upper case
  std::string_view sottocomando; ///< the sub-command's token, upper case
  std::function<std::string(std::string_view comando)> gestore;
};

/// The dispatch table.
[[nodiscard]] const std::vector<Comando>& Comandi();

} // namespace lumoscad
