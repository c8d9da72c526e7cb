#pragma once

#include "common/MsgAnnulla.hpp"
#include "common/Variazioni.hpp"
#include "database/procedureLumoDB2.hpp"

#include <functional>
#include <string>
#include <string_view>

namespace lumoscad {

/// One row of the presumed documents, as the screens show it. The views live while the row is handed over.
struct RigaPresunto {
  std::string_view CodiceConto;
  std::string_view DescrizioneConto;
  std::string documento;            ///< see `TestoDocumento`; empty for a document without series
  std::string_view dataConsegna;    ///< "YYYY-MM-DD", empty for none
  std::string_view ConsegnaOrigine; ///< the same
  std::string_view divisa;          ///< currency
  std::string importoDivisa;        ///< as shown
  std::string importoEuro;          ///< as shown
  std::string_view codiceBanca;     ///< empty for none
  std::string_view descrizioneBanca;
};

/// The text of a document: series, number, "/" and year, which are the last two characters of `numero`.
[[nodiscard]] std::string TestoDocumento(std::string_view serie, std::string_view numero);

/// Reads series, number and year back from a document's text into a record: the series are its first two characters.
void LeggiDocumento(std::string_view documento, VariazioneConsegna& variazione);

/// Reads a movement's key from a tag "MOVIMENTO_key" into a record; any other tag leaves it alone.
void LeggiMovimento(std::string_view tag, VariazioneConsegna& variazione);

/// Reads the presumed documents of a company that `filtro` selects, on a connection of its own. For each row worth
/// showing (those whose amount in currency shows as "0,00" are not) calls `aggiungi`, which returns the row's number,
/// and then `movimento` with that number and the tag of its movement's key. On failure stores the message in
/// `msg.Errore`; the rows handed over so far stay. False when the person gave the list up.
[[nodiscard]] bool CaricaPresunti(std::string_view parAzienda, const procedureLumoDB2::FiltroPresunti& filtro,
                                  MsgAnnulla& msg, const std::function<std::size_t(const RigaPresunto&)>& aggiungi,
                                  const std::function<void(std::size_t riga, std::string_view tag)>& movimento);

} // namespace lumoscad
