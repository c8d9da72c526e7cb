#include "platform/nexaro/ErroriLink.hpp"
#include "platform/nexaro/Impostazioni.hpp"
#include "platform/nexaro/Nexaro.hpp"
#include "platform/nexaro/cartella/CollegamentoCartella.hpp"
#include "platform/nexaro/ssh/CollegamentoSsh.hpp"

namespace lumoscad::nexaro {

std::unique_ptr<HostLink> CreaHostLink() {
  const auto trasporto = Impostazione("NEXARO_TRASPORTO");
  if (trasporto.empty() || trasporto == "ssh") {
    return std::make_unique<CollegamentoSsh>(LeggiImpostazioniSsh());
  }
  if (trasporto != "cartella") {
    throw ErroreLink("NEXARO_TRASPORTO sconosciuto: vale «" + trasporto + "», sono ammessi «ssh» e «cartella».");
  }
  const auto radice = Impostazione("NEXARO_RADICE");
  if (radice.empty()) {
    throw ErroreLink("Manca l'impostazione NEXARO_RADICE, la cartella che fa da host.");
  }
  return std::make_unique<CollegamentoCartella>(radice, LeggiAttesa());
}

} // namespace lumoscad::nexaro
