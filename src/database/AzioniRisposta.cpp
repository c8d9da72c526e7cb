#include "common/Testo.hpp"
#include "database/procedureLumoDB2.hpp"

namespace lumoscad::procedureLumoDB2 {

std::string EseguiAzioneDB2([[maybe_unused]] const std::vector<std::string>& parametri, MsgAnnulla* msg) {
  if (msg != nullptr && MaggioreDiSpazio(msg->Errore)) {
    return "error";
  }
  return "";
}

} // namespace lumoscad::procedureLumoDB2
