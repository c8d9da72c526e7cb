#pragma once

#include <filesystem>
#include <string>

namespace lumoscad::test {

/// All bytes of a file; empty where it cannot be read.
[[nodiscard]] std::string FileText(const std::filesystem::path& file);

/// A new folder below the build folder, of this user alone, which goes with the object, and all that is in it.
class TemporaryFolder {
 public:
  TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder();

  [[nodiscard]] const std::filesystem::path& Path() const noexcept { return path_; }
  /// The path of something in it.
  [[nodiscard]] std::string operator/(const std::string& name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

} // namespace lumoscad::test
