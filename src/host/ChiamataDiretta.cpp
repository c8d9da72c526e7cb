#include "host/ChiamataDiretta.hpp"

#include "common/MsgAnnulla.hpp"
#include "database/procedureLumoDB2.hpp"
#include "host/RichiestaProgramma.hpp"
#include "platform/Services.hpp"

namespace lumoscad {

std::string ChiamataDiretta(const RichiestaHost& richiesta, nexaro::XMLParser& risposta, MsgAnnulla& messaggio) {
  Desktop& desktop = ActiveServices().desktop();
  desktop.SetPointer(Pointer::Hourglass);
  desktop.RunPendingEvents();
  nexaro::HostLink& host = ActiveServices().hostLink();
  const NomiRichiesta& nomi = richiesta.nomi;
  std::string testo;
  host.InviaFile(richiesta.hostIP, nomi.locale, nomi.remoto);
  host.RinominaFile(richiesta.hostIP, nomi.remoto, nomi.Completo(), testo);
  ChiediProgramma(richiesta.hostIP, ProgrammaHost, richiesta.parametri, risposta, messaggio);
  std::string risultato = procedureLumoDB2::EseguiAzioneDB2(richiesta.parametriDB2, &messaggio);
  host.CancellaFile(richiesta.hostIP, nomi.remoto);
  host.CancellaFile(richiesta.hostIP, nomi.Completo());
  desktop.SetPointer(Pointer::Standard);
  desktop.RunPendingEvents();
  return risultato;
}

} // namespace lumoscad
