#pragma once

#include <array>

namespace lumoscad::nexaro {

/// Closes every descriptor of this process but these, which are in ascending order. For a child between fork and exec:
/// makes async-signal-safe calls only. Does without close_range(2), which older kernels lack and sandboxes refuse.
void CloseAllBut(const std::array<int, 5>& kept);

} // namespace lumoscad::nexaro
