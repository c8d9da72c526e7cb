#pragma once

#include "platform/Environment.hpp"
#include "platform/HostLink.hpp"

#include <functional>
#include <string>

namespace lumoscad::nexaro {

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
