#pragma once

#include "platform/nexaro/HostLink.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace lumoscad {

/// The back-end program that carries out every change on the host.
inline constexpr std::string_view ProgrammaHost = "VB0001";

/// The names of one request's file, taken once at its start.
struct NomiRichiesta {
  std::string locale; ///< local path
  std::string remoto; ///< "/tmp/", workstation, "yyyymmddhhmmss": the name of the upload
  /// The name under which the complete file awaits the program.
  [[nodiscard]] std::string Completo() const { return remoto + ".dos"; }
};

/// The names for a request made now by this workstation.
[[nodiscard]] NomiRichiesta NomiPerRichiesta();

/// A request whose file is written and closed.
struct RichiestaHost {
  std::string_view hostIP;
  NomiRichiesta nomi;
  std::vector<std::string> parametri;    ///< what the program receives
  std::vector<std::string> parametriDB2; ///< what the reply actions receive
};

/// Uploads the file, renames it to its complete name in one step, runs the program, applies the reply actions with
/// the module-level reply object, deletes both host names and returns the reply actions' result. What fails is
/// raised, and leaves the host files where they are. Shows the hourglass meanwhile.
[[nodiscard]] std::string ChiamataDiretta(const RichiestaHost& richiesta, nexaro::XMLParser& risposta);

} // namespace lumoscad
