#include "host/FormAspetta.hpp"

#include "common/Stato.hpp"
#include "database/procedureLumoDB2.hpp"
#include "host/RichiestaProgramma.hpp"
#include "platform/RuntimeError.hpp"
#include "platform/Services.hpp"

namespace lumoscad {
namespace {

constexpr int IntervalloTimer = 200; // milliseconds

} // namespace

std::string FormAspetta::Visualizza(std::string_view A_HostIP, std::string_view A_NomeProg,
                                    const std::vector<std::string>& parametri,
                                    const std::vector<std::string>& parametriDB2, lumoscad::MsgAnnulla& A_MSGAnnulla) {
  HostIP = A_HostIP;
  NomeProg = A_NomeProg;
  Parametri = parametri;
  ParametriProcedureDB2 = parametriDB2;
  MsgAnnulla = &A_MSGAnnulla;
  risultato_ = "error";
  interpellato_ = false;
  stato().andamento.Comincia(procedureLumoDB2::NomeOggetto(parametriDB2));
  stato().notaInCorso.Prepara(parametriDB2);
  ActiveServices().desktop().ShowWait("Attendere, sto variando il movimento", IntervalloTimer,
                                      [this] { Timer1_Timer(); });
  if (!interpellato_) {
    throw RuntimeError(errors::Driver, "La finestra d'attesa è stata chiusa dal programma chiamante prima del tempo. "
                                       "L'host non è stato interpellato: nulla è cambiato.");
  }
  return risultato_;
}

void FormAspetta::Timer1_Timer() {
  interpellato_ = true;
  // The running command's own address counts, not the copy that this window was given.
  ChiediProgramma(stato().HostIP, NomeProg, Parametri, MsgAnnulla->XMLParser, *MsgAnnulla);
  risultato_ = procedureLumoDB2::EseguiAzioneDB2(ParametriProcedureDB2, MsgAnnulla);
  if (!MsgAnnulla->Errore.empty()) {
    risultato_ = "error";
  }
}

} // namespace lumoscad
