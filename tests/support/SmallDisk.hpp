#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace lumoscad::test {

/// A file system of its own, in memory, that holds a few pages: it fills up as a disk does. Only this process sees it,
/// and what it starts (https://man7.org/linux/man-pages/man7/mount_namespaces.7.html); it ends with the object.
class SmallDisk {
 public:
  static constexpr std::size_t Page = 4096; ///< what even the smallest file takes

  /// From here on this process has mounts of its own; it must have one thread. Empty, or why the system refuses that.
  [[nodiscard]] static std::string Separate();

  /// Puts the disk in the place of the directory `place`, whose files are out of sight meanwhile. Raises where the
  /// system refuses that.
  SmallDisk(std::filesystem::path place, std::size_t bytes);
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;
  ~SmallDisk();

  /// Takes all room but `left` bytes, in whole pages.
  void Fill(std::size_t left = 0) const;
  /// Lets only `left` more files be made, whatever room there is.
  void LimitFiles(std::size_t left) const;
  /// Gives back what was taken.
  void Clear() const;
  /// The bytes that are free.
  [[nodiscard]] std::size_t Free() const;

 private:
  [[nodiscard]] std::filesystem::path Filling() const { return place_ / ".filling"; }

  std::filesystem::path place_;
};

} // namespace lumoscad::test
