#pragma once

#include "lumoscad/lumoscad.h"

#include <array>
#include <string>
#include <string_view>

namespace lumoscad {

/// The component's one public class, over the C interface: the program's compiler and standard library need not be
/// those that the library was built with. The accounting program creates it and hands it command lines.
class LumoScadenze {
 public:
  /// Runs one command line and returns its result: the empty text for success or nothing to do, "closed" for a
  /// screen left without changes, "error" for a failure that the person was told. Blocks until every screen has
  /// closed and the host has answered. One call runs at a time, on the thread of the windows: that of the process'
  /// QApplication, or else the one that gave the first command, for good. Any other call is refused before it is read:
  /// "error", one line on the standard error, and where it came out of a running call on that thread, one box. Never
  /// throws.
  std::string EseguiLumoScad(std::string_view comando) noexcept {
    // A text as short as these takes no memory, of which there may be none left.
    std::array<char, sizeof "closed"> risultato{};
    lumoscad_esegui_n(comando.data(), comando.size(), risultato.data(), risultato.size());
    return risultato.data();
  }
};

} // namespace lumoscad
