#include "host/ChiamataDiretta.hpp"

#include "common/MsgAnnulla.hpp"
#include "common/Stato.hpp"
#include "common/Testo.hpp"
#include "database/procedureLumoDB2.hpp"
#include "platform/Errore.hpp"
#include "platform/Servizi.hpp"

namespace lumoscad {
namespace {

/// Removes the request from the host. By then the program has run: a failure must not look as if nothing had happened,
/// nor hide the host's refusal, `rifiuto`, which is empty where there is none.
void TogliRichiesta(nexaro::HostLink& host, const RichiestaHost& richiesta, const std::string& rifiuto) {
  try {
    host.CancellaFile(richiesta.hostIP, richiesta.nomi.remoto);
    host.CancellaFile(richiesta.hostIP, richiesta.nomi.Completo());
  } catch (...) {
    const ErroreRuntime errore = ErroreCorrente();
    throw ErroreRuntime(errore.Numero(),
                        errore.Testo() + (rifiuto.empty()
                                              ? " L'host ha già accettato la richiesta: prima di ripetere il comando "
                                                "controllare che cosa ne è nella base dati."
                                              : " L'host ha rifiutato la richiesta: " + rifiuto));
  }
}

} // namespace

std::string ChiamataDiretta(const RichiestaHost& richiesta, nexaro::XMLParser& risposta) {
  Desktop& desktop = servizi().desktop();
  desktop.ImpostaPuntatore(Puntatore::Clessidra);
  desktop.EventiInAttesa();
  nexaro::HostLink& host = servizi().hostLink();
  const NomiRichiesta& nomi = richiesta.nomi;
  std::string testo;
  host.InviaFile(richiesta.hostIP, nomi.locale, nomi.remoto);
  host.RinominaFile(richiesta.hostIP, nomi.remoto, nomi.Completo(), testo);
  host.EseguiProgramma(richiesta.hostIP, ProgrammaHost, richiesta.parametri, risposta);
  MsgAnnulla* const messaggio = stato().Risposta.get();
  // Asked before the reply actions, whose own failure comes after the host's yes.
  const std::string rifiuto =
      messaggio != nullptr && !SenzaSpaziAiLati(messaggio->Errore).empty() ? messaggio->Errore : std::string();
  std::string risultato = procedureLumoDB2::EseguiAzioneDB2(richiesta.parametriDB2, messaggio);
  TogliRichiesta(host, richiesta, rifiuto);
  desktop.ImpostaPuntatore(Puntatore::Predefinito);
  desktop.EventiInAttesa();
  return risultato;
}

} // namespace lumoscad
