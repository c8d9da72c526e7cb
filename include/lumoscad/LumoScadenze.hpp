#pragma once

#include <string>
#include <string_view>

namespace lumoscad {

/// The component's one public class. The accounting program creates it and hands it command lines.
class LumoScadenze {
 public:
  /// Runs one command line and returns its result: the empty text for success or nothing to do, "closed" for a
  /// screen left without changes, "error" for a failure that the person was told. Blocks until every screen has
  /// closed and the host has answered. Call it on the thread that owns the windows. Never throws.
  std::string EseguiLumoScad(std::string_view comando) noexcept;
};

} // namespace lumoscad
