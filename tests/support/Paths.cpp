#include "support/Paths.hpp"

#include <fstream>
#include <stdexcept>
#include <string>

namespace lumoscad::test {

namespace fs = std::filesystem;

const fs::path& BuildFolder() {
  static const fs::path Folder = fs::read_symlink("/proc/self/exe").parent_path().parent_path();
  return Folder;
}

const fs::path& SourceFolder() {
  static const fs::path Folder = [] {
    const fs::path told = BuildFolder() / "sources.txt";
    std::string root;
    if (!std::getline(std::ifstream(told), root) || !fs::is_directory(root)) {
      throw std::runtime_error(told.string() + " names no folder");
    }
    return root;
  }();
  return Folder;
}

fs::path SourcePath(std::string_view name) {
  return SourceFolder() / name;
}

fs::path ProgramPath(std::string_view name) {
  return BuildFolder() / "bin" / name;
}

fs::path LibraryPath(std::string_view name) {
  return BuildFolder() / "lib" / ("lib" + std::string(name) + ".so");
}

fs::path OutputPath(std::string_view name) {
  return BuildFolder() / "tests" / name;
}

} // namespace lumoscad::test
