#include "host/RichiestaProgramma.hpp"

#include "common/MsgAnnulla.hpp"
#include "common/Stato.hpp"
#include "common/Testo.hpp"
#include "platform/RuntimeError.hpp"
#include "platform/Services.hpp"

namespace lumoscad {
namespace {

/// Where the link itself says that the program did nothing, the start that it had sent came to nothing.
void AnnotaGuasto(bool avviato) {
  try {
    throw;
  } catch (const RuntimeError& errore) {
    avviato = avviato && errore.Outcome() != TransactionOutcome::NotApplied;
  } catch (...) { // NOLINT(bugprone-empty-catch): it says nothing of the program
  }
  if (avviato) {
    stato().andamento.Chiesta();
  }
}

} // namespace

void ChiediProgramma(std::string_view hostIP, std::string_view programma, const std::vector<std::string>& parametri,
                     nexaro::XMLParser& risposta, const MsgAnnulla& messaggio) {
  risposta.started = false;
  try {
    ActiveServices().hostLink().EseguiProgramma(hostIP, programma, parametri, risposta);
  } catch (...) {
    AnnotaGuasto(risposta.started);
    throw;
  }
  if (!SenzaSpaziAiLati(messaggio.Errore).empty()) {
    stato().andamento.Rifiutata(messaggio.Errore);
  } else {
    stato().andamento.Accettata();
  }
}

} // namespace lumoscad
