#pragma once

#include <string>
#include <vector>

namespace lumoscad {

/// What the due-date request takes from one row of the credits/debits grid: the texts of its columns.
struct RigaScadenze {
  std::string conto;         ///< column 0
  std::string partita;       ///< column 1
  std::string scadenza;      ///< column 2, the present due date
  std::string scadenzaOrig;  ///< column 3
  std::string nuovaScadenza; ///< column 7; a row where it is blank is not sent
};

/// What a due-date request is made of.
struct ElenchiScadenze {
  std::vector<std::string> chiamata; ///< what the program receives
  std::vector<std::string> database; ///< what the reply actions receive
  std::string contenuto;             ///< the bytes of the file
};

/// Makes the request of a grid's rows from them and from the values of the running command; `completo` is the name
/// under which its file awaits the program on the host. Raises error 9 for a row too many and for a date that is none.
[[nodiscard]] ElenchiScadenze ComponiRichiestaScadenze(const std::vector<RigaScadenze>& righe,
                                                       const std::string& completo);

/// Sends the new due dates of a grid to the host as a "SCRIVISCADENZE" request and returns the reply actions' result;
/// "" without a call when no row has a new due date. Dates travel in eight digits, a missing one as "00000000". The
/// database list holds 32 rows: one more is error 9. What fails is raised. The local file stays where it is.
/// The reply is an item (`stato().RispostaPartita`), which has no room for a refusal: a host that refuses must end its
/// program with a status other than 0, or the database is changed all the same.
[[nodiscard]] std::string ScriviRichiestaScadenze(const std::vector<RigaScadenze>& righe);

} // namespace lumoscad
