#pragma once

#include "screens/RigheGriglia.hpp"

#include <cstddef>
#include <vector>

namespace lumoscad::bench {

/// The columns of the schedule screen's list.
inline constexpr std::size_t GridColumns = 12;
[[nodiscard]] std::vector<int> ColumnsWithTag();

/// Adds the rows of an accounting as the screen shows it: few accounts and banks, an item of two or three instalments,
/// an amount of its own. The items come scattered, as a query that groups may give them.
void FillGrid(RigheGriglia& rows, std::size_t howMany);

} // namespace lumoscad::bench
