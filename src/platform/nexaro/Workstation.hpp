#pragma once

#include <string>

namespace lumoscad::nexaro {

/// The identifier of a workstation that has none of its own: the machine, the user and the user's session, as
/// "contab-mario-3-9f2c01ab". No two sessions have the same at one time; the programs of one session share it. At most
/// 93 bytes, of ASCII letters, digits, ".", "_" and "-".
[[nodiscard]] std::string DefaultWorkstation();

} // namespace lumoscad::nexaro
