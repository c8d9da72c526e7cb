#pragma once

#include "common/ModificaChiesta.hpp"

#include <vector>

namespace lumoscad {

/// Of each record of a list, whether another record of it arrives where this one departs. Once the list may have been
/// written, rows that are as before this record may be those that the other one has moved there: nobody can tell, and
/// to write the record would move them a second time. Empty for an action.
[[nodiscard]] std::vector<bool> RigheDubbie(const ModificaChiesta& modifica);

} // namespace lumoscad
