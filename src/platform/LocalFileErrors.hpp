#pragma once

#include "platform/base/Descriptor.hpp"

#include <string>
#include <string_view>

namespace lumoscad {

/// Raises the failure `error` (`errno`) of doing `action` with a local file: error 53 when it is not there, 75
/// otherwise.
[[noreturn]] void LocalFileFailed(std::string_view action, const std::string& path, int error);

/// A path of the system ends at its first zero byte: the rest would be dropped in silence. Raises error 75 for such a
/// path.
void RequirePath(std::string_view action, const std::string& path);

/// Writes the whole content into the open local file `path`. Raises as above.
void WriteWhole(const base::Descriptor& file, const std::string& path, std::string_view content);

} // namespace lumoscad
