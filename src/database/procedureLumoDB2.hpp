#pragma once

#include "common/MsgAnnulla.hpp"
#include "common/Variazioni.hpp"
#include "platform/ado/Ado.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The queries that fill the screens, the updates that apply accepted changes, and the actions on a reply.
/// A procedure that takes a `msg` traps its failures: the text goes to `msg.Errore`.
namespace lumoscad::procedureLumoDB2 {

/// The filters of the instalment list. A blank one adds no condition; texts enter the statement between quotes
/// as given.
struct FiltroScadenze {
  std::string parModalita;      ///< "CREDITI", "DEBITI", or anything else for accounts of every class
  std::string parScad;          ///< "SCADUTO", "DASCADERE", or anything else for all
  std::string parMesiScadenze;  ///< months as "MMAAAA", separated by ","
  std::string parBancaSN;       ///< "N" without bank, "S" with bank, anything else for all
  std::string parConto;         ///< account code
  std::string parPartita;       ///< open-item number
  std::string parCodiceInterno; ///< internal code of the account
};

/// The instalments of open items with their presentation banks. On failure returns nothing.
[[nodiscard]] std::optional<ado::Recordset> ElencoScadenze(ado::Connection& connection, std::int32_t aziendaLineaKey,
                                                           const FiltroScadenze& filtro, MsgAnnulla& msg);

/// The accounts offered as presentation banks, by description. On failure returns nothing.
[[nodiscard]] std::optional<ado::Recordset> ElencoBanche(ado::Connection& connection, MsgAnnulla& msg);

/// Writes the confirmed bank and due-date changes in one transaction: `parModalita` is "CREDITI", "DEBITI" or
/// "PRESUNTI". Returns "" or, when nothing was kept, "error" with the message and the statements of the record
/// that failed in `msg.Errore`.
[[nodiscard]] std::string AggiornaCanalizzazione(const VariazioniCanalizzazione& variazioni,
                                                 std::string_view parModalita, MsgAnnulla& msg);

/// Repeats in the database what the host did for a request. `parametri` is the request's list: the action's name
/// stands at index 1. A reply with an `Errore` is answered "error" without touching the database; an action that
/// has no database side does nothing and returns "".
[[nodiscard]] std::string EseguiAzioneDB2(const std::vector<std::string>& parametri, MsgAnnulla* msg);

} // namespace lumoscad::procedureLumoDB2
