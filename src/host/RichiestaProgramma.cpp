#include "host/RichiestaProgramma.hpp"

#include "common/MsgAnnulla.hpp"
#include "common/Stato.hpp"
#include "common/Testo.hpp"
#include "platform/RuntimeError.hpp"
#include "platform/Services.hpp"

namespace lumoscad {
namespace {

/// Where the link itself says that the program did nothing, the start that it had sent came to nothing. Another failure
/// says nothing of the program, and may have no text.
void AnnotaGuasto(const nexaro::XMLParser& risposta) {
  const auto annota = [&risposta](bool chiesta, std::string_view motivo) {
    if (chiesta) {
      stato().andamento.Chiesta();
    }
    // What it says it did not find it may have found: who has answered was there.
    if (chiesta || (risposta.started && risposta.answered)) {
      stato().notaInCorso.SenzaRisposta(motivo);
    } else {
      stato().notaInCorso.NonAvviata();
    }
  };
  try {
    throw;
  } catch (const RuntimeError& errore) {
    annota(risposta.started && errore.Outcome() != TransactionOutcome::NotApplied, errore.Text());
  } catch (...) {
    annota(risposta.started, {});
  }
}

} // namespace

void ChiediProgramma(std::string_view hostIP, std::string_view programma, const std::vector<std::string>& parametri,
                     nexaro::XMLParser& risposta, const MsgAnnulla& messaggio) {
  risposta.started = false;
  risposta.answered = false;
  stato().notaInCorso.Avviata(hostIP, programma, parametri);
  try {
    ActiveServices().hostLink().EseguiProgramma(hostIP, programma, parametri, risposta);
  } catch (...) {
    AnnotaGuasto(risposta);
    throw;
  }
  if (!SenzaSpaziAiLati(messaggio.Errore).empty()) {
    stato().andamento.Rifiutata(messaggio.Errore);
    stato().notaInCorso.Rifiutata(messaggio.Errore);
  } else {
    stato().andamento.Accettata();
    stato().notaInCorso.Accettata(messaggio.Messaggio);
  }
}

} // namespace lumoscad
