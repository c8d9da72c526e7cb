#pragma once

#include "common/MsgAnnulla.hpp"
#include "common/Stato.hpp"
#include "common/Testo.hpp"
#include "handlers/Blocco.hpp"
#include "platform/RuntimeError.hpp"
#include "platform/Services.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::ModuloMain {

/// Sets the pointer and lets the desktop show it.
inline void MostraPuntatore(Pointer puntatore) {
  ActiveServices().desktop().SetPointer(puntatore);
  ActiveServices().desktop().RunPendingEvents();
}

/// Tells the person which rows of a change that the host accepted the database kept as somebody else had changed them;
/// nothing for none.
void MostraRigheRimaste(const std::vector<std::string>& righe);

/// What the editing commands have in common: the lock, the screen, the request, the database, the release, and
/// what the person must know of it.
/// `mostra(variazioni)` shows the screen, `scrivi(variazioni)` sends the request and returns its result,
/// `aggiorna(variazioni, risposta)` writes the database and leaves its failure in `risposta.Errore`. A list of another
/// kind (`lista` false) is neither locked nor shown. Returns as the commands do; what fails after the lock was taken
/// leaves it taken.
template <typename Variazioni, typename Mostra, typename Scrivi, typename Aggiorna>
std::string ComandoModifica(std::string_view tipo, bool lista, Mostra mostra, Scrivi scrivi, Aggiorna aggiorna) {
  Variazioni variazioni;
  if (lista) {
    if (MaggioreDiSpazio(BloccaArea(stato().HostIP, tipo))) {
      return "error";
    }
    mostra(variazioni);
  }
  MsgAnnulla risposta;
  MostraPuntatore(Pointer::Hourglass);
  if (scrivi(variazioni).empty()) {
    // The procedure's answer repeats what `Errore` says.
    static_cast<void>(aggiorna(variazioni, risposta));
    if (!risposta.Errore.empty()) {
      throw RuntimeError(errors::RecordedError, risposta.Errore);
    }
  }
  MostraPuntatore(Pointer::Standard);
  if (lista) {
    SbloccaArea(stato().HostIP, tipo);
  }
  MostraRigheRimaste(risposta.righeRimaste);
  return variazioni.empty() ? "closed" : "";
}

} // namespace lumoscad::ModuloMain
