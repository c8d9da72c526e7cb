#include "support/Paths.hpp"

#include <fstream>
#include <stdexcept>
#include <string>

namespace lumoscad::test {

namespace fs = std::filesystem;

const fs::path& buildFolder() {
  static const fs::path folder = fs::read_symlink("/proc/self/exe").parent_path().parent_path();
  return folder;
}

const fs::path& sourceFolder() {
  static const fs::path folder = [] {
    const fs::path told = buildFolder() / "sources.txt";
    std::string root;
    if (!std::getline(std::ifstream(told), root) || !fs::is_directory(root)) {
      throw std::runtime_error(told.string() + " names no folder");
    }
    return root;
  }();
  return folder;
}

fs::path sourcePath(std::string_view name) {
  return sourceFolder() / name;
}

fs::path programPath(std::string_view name) {
  return buildFolder() / "bin" / name;
}

fs::path libraryPath(std::string_view name) {
  return buildFolder() / "lib" / ("lib" + std::string(name) + ".so");
}

fs::path outputPath(std::string_view name) {
  return buildFolder() / "tests" / name;
}

} // namespace lumoscad::test
