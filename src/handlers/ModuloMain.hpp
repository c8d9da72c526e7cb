#pragma once

#include <string>
#include <string_view>

/// The handlers of the commands. Each is given the whole command line.
namespace lumoscad::ModuloMain {

/// Shows the credits or debits screen (`tipo` "CREDITI" or "DEBITI"), sends what was confirmed to the host and
/// writes it to the database. Returns "" when changes were applied, "closed" when there was none, "error" when
/// another terminal holds the list. Any other failure is raised; the lock then stays taken.
[[nodiscard]] std::string ComandoBanca(std::string_view comando, std::string_view tipo);

} // namespace lumoscad::ModuloMain
