#pragma once

#include "platform/FieldGestures.hpp"
#include "screens/ElencoBanche.hpp"

#include <string_view>

namespace lumoscad {

/// The entries of a bank box that somebody may mean who types `testo`: each of its words stands somewhere in the
/// entry's name or code, whatever its accents and case. To be proposed is the first whose name or code begins with the
/// text, or else the first of all. A text of blanks means every entry and proposes none.
[[nodiscard]] BankMatches CercaBanche(const BancheCombo& banche, std::string_view testo);

} // namespace lumoscad
