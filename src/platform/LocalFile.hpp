#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad {

/// Writes a private local file (mode 0600) in one pass. It is always a new file: what stands in its place is removed
/// first, a symbolic link or a directory there is refused. Raises error 75 with an Italian text, 53 when its directory
/// is not there.
void WriteLocalFile(const std::string& path, std::string_view content);

/// How much of a local file is read, in bytes: the two lines of a lock need far less, whatever the host has put into
/// it.
inline constexpr std::size_t MaxRead = std::size_t{64} * 1024;

/// The beginning of a local file.
struct LocalBeginning {
  std::vector<std::string> lines; ///< the lines of its first `MaxRead` bytes, without their line ends
  bool continues = false;         ///< the file is longer
};

/// Reads the beginning of a local file. A symbolic link, and whatever else is no ordinary file, is refused. Raises
/// error 53 when it is not there, 75 otherwise.
[[nodiscard]] LocalBeginning ReadLocalBeginning(const std::string& path);

/// Reads a whole local file of at most `maximum` bytes; a longer one is refused. Raises as `ReadLocalBeginning`.
[[nodiscard]] std::string ReadLocalFile(const std::string& path, std::size_t maximum);

/// Deletes a local file. Raises error 53 when it is not there, 75 otherwise.
void DeleteLocalFile(const std::string& path);

} // namespace lumoscad
