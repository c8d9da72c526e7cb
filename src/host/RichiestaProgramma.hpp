#pragma once

#include "platform/HostLink.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace lumoscad {

class MsgAnnulla;

/// The back-end program that carries out every change on the host.
inline constexpr std::string_view ProgrammaHost = "VB0001";

/// Runs a program on the host and takes down how far the change has come: `risposta` receives the answer, `messaggio`
/// is where a refusal is then found. What fails is raised.
void ChiediProgramma(std::string_view hostIP, std::string_view programma, const std::vector<std::string>& parametri,
                     nexaro::XMLParser& risposta, const MsgAnnulla& messaggio);

} // namespace lumoscad
