#pragma once

#include "common/Variazioni.hpp"

#include <string>
#include <string_view>

namespace lumoscad {

/// Sends the bank and due-date changes of a list to the host as a "CANALIZZAZIONE" request and returns the reply
/// actions' result; "" without a file or a call when there is no change. `tipo` is the list's kind. The local file
/// is deleted on every path. A failure, and a refusal by the program, is raised as error -2147220905 with the
/// reply's `Errore` text.
[[nodiscard]] std::string ScriviRichiestaCanalizzazione(std::string_view hostIP, std::string_view azienda,
                                                        const VariazioniCanalizzazione& variazioni,
                                                        std::string_view tipo);

/// The same request for the bank changes of presumed documents, with the same file format and outcome.
[[nodiscard]] std::string ScriviRichiestaBancaPresunti(std::string_view hostIP, std::string_view azienda,
                                                       const VariazioniConsegna& variazioni, std::string_view tipo);

/// Sends the delivery-date changes of a list as a "CONSEGNA" request; a missing date is written "00000000". Outcome
/// and failures as above.
[[nodiscard]] std::string ScriviRichiestaConsegna(std::string_view hostIP, std::string_view azienda,
                                                  const VariazioniConsegna& variazioni, std::string_view tipo);

} // namespace lumoscad
