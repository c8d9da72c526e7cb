#pragma once

#include "common/ModificaChiesta.hpp"
#include "database/moduloDatabase.hpp"
#include "platform/ado/Ado.hpp"

#include <string>
#include <vector>

namespace lumoscad::procedureLumoDB2 {

/// What the database holds of a change that was asked of it.
enum class StatoRiga {
  ComePrima, ///< the procedure's own statements would still change rows. Where those look at no old value, as an
             ///< action's do, that is every row which does not hold the new one
  Fatta,     ///< the rows that were meant hold the new values, or the procedure was asked to change none
  Cambiata   ///< neither: somebody else changed them, or they are not there, or the change cannot be written at all
};

/// A row as the person knows it, and its state.
struct RigaEsaminata {
  std::string riga;
  StatoRiga stato;
};

/// Reads what the database holds now of each record of a list, in its order; of an action, of the object that it is
/// about, or of each group of due dates. Changes nothing. Empty where nothing was asked of the database. It uses the
/// conditions of the procedures that write. Raises the driver's failure.
///
/// A record whose row another record's change has taken may read `Cambiata` though both were written, and so may a
/// group of an extra movement whose old date is another group's new one.
[[nodiscard]] std::vector<RigaEsaminata> EsaminaRighe(ado::Connection& connection,
                                                      const moduloDatabase::ParametriConnessione& parametri,
                                                      const ModificaChiesta& modifica);

} // namespace lumoscad::procedureLumoDB2
