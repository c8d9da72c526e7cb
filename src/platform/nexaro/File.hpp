#pragma once

#include "platform/base/Descriptor.hpp"
#include "platform/nexaro/Deadline.hpp"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace lumoscad::nexaro {

/// Permissions of a file on the host, before its umask: the lock file is shared by the terminals, whose users differ.
constexpr mode_t RemoteMode = 0666;
/// Permissions of a file in the local directory.
constexpr mode_t LocalMode = 0600;

// `operation` begins the text of the run-time error that each of these raises.

/// A file under a private name beside `destination`, removed again unless it got its final name.
class TemporaryFile {
 public:
  /// `mode` holds the permissions before the umask. What killed programs left in the directory is removed.
  TemporaryFile(const std::string& destination, mode_t mode, const std::string& operation);
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile();

  void Write(std::string_view data, const std::string& operation) const;

  /// Brings the file to the disk and renames it; what stands at `destination` is replaced, a symbolic link there is
  /// not followed.
  void Publish(const std::string& destination, const std::string& operation);

 private:
  std::string name_;
  base::Descriptor descriptor_;
  bool published_ = false;
};

/// What stands before the last slash of an absolute path: the directory that the file is in.
[[nodiscard]] std::string ParentDirectory(std::string_view path);

/// 0 where an ordinary file stands at `path`, or a link to one; otherwise the error (`errno`) that says what is
/// wrong.
[[nodiscard]] int OrdinaryFileError(const std::string& path);

/// Opens an ordinary file for reading; anything else is refused without waiting for it.
[[nodiscard]] base::Descriptor OpenOrdinary(const std::string& path, const std::string& operation);

/// Reads up to the size of `buffer`; 0 at the end of the file.
[[nodiscard]] std::size_t ReadBlock(const base::Descriptor& file, std::span<char> buffer, const std::string& operation);

/// How much of a file is copied.
struct Extent {
  std::uint64_t maximum = std::numeric_limits<std::uint64_t>::max(); ///< in bytes
  bool truncate = false; ///< of a longer file the beginning is copied; otherwise it is refused
};

/// Copies the ordinary file `source` to `destination`, which appears whole, as far as `extent` goes, or not at all.
/// `mode` holds the permissions before the umask. Where `timeout` is set, no more is read
/// once that time has passed; what had been read by then counts, if it was all.
void CopyFile(const std::string& source, const std::string& destination, mode_t mode, const std::string& operation,
              const Extent& extent = {}, std::optional<std::chrono::milliseconds> timeout = std::nullopt);

} // namespace lumoscad::nexaro
