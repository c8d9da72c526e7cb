#pragma once

#include <string>

namespace lumoscad::nexaro {

/// The two strings that the environment object supplies.
struct Environment {
  std::string CodicePostazione; ///< the workstation's identifier
  std::string CartellaLocale;   ///< the local work directory, without a trailing separator
};

} // namespace lumoscad::nexaro
