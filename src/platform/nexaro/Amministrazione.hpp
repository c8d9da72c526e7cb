#pragma once

#include "platform/nexaro/ChiaveHost.hpp"
#include "platform/nexaro/HostLink.hpp"

#include <functional>
#include <string>
#include <string_view>

namespace lumoscad::nexaro {

/// Connects to `host` and looks its key up; nobody is logged in. Raises a run-time error.
[[nodiscard]] ChiaveHost ChiediChiave(const ImpostazioniSsh& impostazioni, const std::string& host);

/// How one operation went; `dettaglio` says what was seen, or why it failed.
struct EsitoPasso {
  std::string operazione;
  bool riuscito = false;
  std::string dettaglio;
};

/// Runs through the five operations of `collegamento` with a file of its own in the host's /tmp, which it removes
/// again. With an empty `programma` the back-end program is looked for and not started; otherwise `programma` is run
/// without parameters. Hands every outcome to `mostra`; true when all went well.
bool ProvaOperazioni(HostLink& collegamento, const std::string& host, const std::string& programma,
                     const Ambiente& ambiente, const std::function<void(const EsitoPasso&)>& mostra);

} // namespace lumoscad::nexaro
