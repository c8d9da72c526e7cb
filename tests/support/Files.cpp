#include "support/Files.hpp"

#include "support/Paths.hpp"

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <system_error>

namespace lumoscad::test {

namespace fs = std::filesystem;

std::string FileText(const fs::path& file) {
  const std::ifstream stream(file, std::ios::binary);
  std::ostringstream text;
  text << stream.rdbuf(); // raises nothing, not even for the file of a process that ends meanwhile
  return text.str();
}

TemporaryFolder::TemporaryFolder() {
  const fs::path folder = OutputPath("temporary");
  fs::create_directories(folder);
  std::string pattern = (folder / "XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) {
    throw std::system_error(errno, std::generic_category(), "mkdtemp");
  }
  path_ = pattern;
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  fs::permissions(path_, fs::perms::owner_all, ignored);
  fs::remove_all(path_, ignored);
}

} // namespace lumoscad::test
