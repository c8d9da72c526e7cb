#include "common/Messaggi.hpp"

#include "common/Testo.hpp"
#include "platform/Servizi.hpp"

namespace lumoscad {

void MostraMessaggio(std::string_view testo, std::string_view dettaglio) {
  std::string mostrato;
  if (!SenzaSpaziAiLati(dettaglio).empty()) {
    mostrato.append(dettaglio).append("\r\n");
  }
  mostrato.append(testo);
  servizi().desktop().MostraBox(mostrato, NomeProdotto);
}

} // namespace lumoscad
