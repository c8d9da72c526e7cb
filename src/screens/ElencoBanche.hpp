#pragma once

#include "common/MsgAnnulla.hpp"

#include <string>
#include <vector>

namespace lumoscad {

/// The presentation banks offered by a combo: entry 0 is a single blank, entry i has code i - 1.
struct BancheCombo {
  std::vector<std::string> voci;
  std::vector<std::string> codici;

  /// The code of entry `indice`. Raises error 9 when there is none.
  [[nodiscard]] const std::string& Codice(int indice) const;
};

/// What a list of banks makes of a code that comes twice.
enum class CodiceRipetuto {
  Errore, ///< a failure, error 457
  Ammesso ///< an entry like any other
};

/// Reads the banks on a connection of its own. On failure stores the message in `msg.Errore` and returns the
/// entries read so far.
[[nodiscard]] BancheCombo CaricaBanche(MsgAnnulla& msg, CodiceRipetuto ripetuto);

} // namespace lumoscad
