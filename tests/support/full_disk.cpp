// Loaded into a database server by the tests: while the file named by LUMOSCAD_DISCO_PIENO exists, the disk is full for
// every file whose path holds that file's text. As on a full disk, what was written before can still be overwritten;
// nothing grows.

#include <array>
#include <cerrno>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

namespace {

template <typename Function> Function* Next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

std::string_view TextOf(const char* path, std::array<char, 256>& buffer) {
  const int file = open(path, O_RDONLY | O_CLOEXEC);
  if (file < 0) {
    return {};
  }
  const ssize_t length = read(file, buffer.data(), buffer.size());
  close(file);
  return {buffer.data(), static_cast<std::size_t>(length > 0 ? length : 0)};
}

/// True where the file would have to grow to `end` bytes on a full disk.
bool Full(int file, off64_t end) {
  const char* const flag = std::getenv("LUMOSCAD_DISCO_PIENO");
  if (flag == nullptr || access(flag, R_OK) != 0) {
    return false;
  }
  std::array<char, 256> words{};
  const std::string_view word = TextOf(flag, words);
  std::array<char, 4096> path{};
  const std::string link = "/proc/self/fd/" + std::to_string(file);
  const ssize_t length = readlink(link.c_str(), path.data(), path.size());
  struct stat64 state {};
  return length > 0 && !word.empty() &&
         std::string_view(path.data(), static_cast<std::size_t>(length)).find(word) != std::string_view::npos &&
         fstat64(file, &state) == 0 && S_ISREG(state.st_mode) && end > state.st_size;
}

} // namespace

// Both names of a call are taken: programs are built for one or the other. Offsets have 64 bits in either.
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name): the C library's names are reserved
extern "C" {

ssize_t pwrite64(int file, const void* data, size_t size, off64_t offset) {
  static auto* const Original = Next<decltype(pwrite64)>("pwrite64");
  if (Full(file, offset + static_cast<off64_t>(size))) {
    errno = ENOSPC;
    return -1;
  }
  return Original(file, data, size, offset);
}

ssize_t pwrite(int file, const void* data, size_t size, off_t offset) {
  return pwrite64(file, data, size, offset);
}

int fallocate64(int file, int mode, off64_t offset, off64_t size) {
  static auto* const Original = Next<decltype(fallocate64)>("fallocate64");
  if (Full(file, offset + size)) {
    errno = ENOSPC;
    return -1;
  }
  return Original(file, mode, offset, size);
}

int fallocate(int file, int mode, off_t offset, off_t size) {
  return fallocate64(file, mode, offset, size);
}
}
// NOLINTEND(readability-inconsistent-declaration-parameter-name)
