#pragma once

namespace lumoscad {

/// From here on a crash of this process leaves no image of its memory, in which the password of a command line could be
/// read, and no other process of the same user may look into it. The library never does this: the limits of the program
/// that loads it are not its to change.
void VietaImmagineDiMemoria() noexcept;

} // namespace lumoscad
