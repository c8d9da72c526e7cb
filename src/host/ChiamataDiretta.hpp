#pragma once

#include "host/TurnoRichiesta.hpp"
#include "platform/HostLink.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace lumoscad {

class MsgAnnulla;

/// A request whose file is written and closed.
struct RichiestaHost {
  std::string_view hostIP;
  NomiRichiesta nomi;
  std::vector<std::string> parametri;    ///< what the program receives
  std::vector<std::string> parametriDB2; ///< what the reply actions receive
};

/// Uploads the file, renames it to its complete name in one step, runs the program, whose answer `risposta` receives,
/// applies the reply actions with `messaggio`, deletes both host names and returns the reply actions' result. What
/// fails is raised, and leaves the host files where they are; how far the change had come is in `stato().andamento`.
/// Shows the hourglass meanwhile. The request's turn is the caller's.
[[nodiscard]] std::string ChiamataDiretta(const RichiestaHost& richiesta, nexaro::XMLParser& risposta,
                                          MsgAnnulla& messaggio);

} // namespace lumoscad
