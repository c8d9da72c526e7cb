#include "platform/nexaro/Leftovers.hpp"

#include "platform/base/Descriptor.hpp"
#include "platform/base/ProcessLife.hpp"

#include <cerrno>
#include <charconv>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace lumoscad::nexaro {
namespace {

constexpr std::string_view Prefix = ".lumoscad-";

struct Close {
  void operator()(DIR* directory) const { ::closedir(directory); }
};

/// Reads a number of decimal digits alone from the start of `text`.
template <typename Number> bool Cut(std::string_view& text, Number& number) {
  const auto* finish = text.data() + text.size();
  const bool digit = !text.empty() && text.front() >= '0' && text.front() <= '9';
  const auto [arrival, error] = std::from_chars(text.data(), finish, number);
  text.remove_prefix(static_cast<std::size_t>(arrival - text.data()));
  return digit && error == std::errc();
}

/// The process that a temporary file's name tells; none where it is no such name.
std::optional<pid_t> ProcessOf(std::string_view name) {
  pid_t process = 0;
  unsigned number = 0;
  if (!name.starts_with(Prefix)) {
    return std::nullopt;
  }
  name.remove_prefix(Prefix.size());
  if (!Cut(name, process) || process <= 0 || !name.starts_with('-')) {
    return std::nullopt;
  }
  name.remove_prefix(1);
  return Cut(name, number) && name.empty() ? std::optional(process) : std::nullopt;
}

void RemoveIfLeftover(int directory, const char* name) {
  const auto process = ProcessOf(name);
  if (!process) {
    return;
  }
  const base::Descriptor file(::openat(directory, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  struct stat state {};
  if (!file.Opened() || ::fstat(file.Number(), &state) != 0 || !S_ISREG(state.st_mode) || state.st_uid != ::geteuid() ||
      base::MayHaveWritten(*process, state.st_mtime)) {
    return;
  }
  if (::flock(file.Number(), LOCK_EX | LOCK_NB) == 0) {
    ::unlinkat(directory, name, 0);
  }
}

} // namespace

std::string TemporaryName(long process, unsigned number) {
  return std::string(Prefix) + std::to_string(process) + "-" + std::to_string(number);
}

void RemoveLeftovers(const std::string& directory) noexcept {
  try {
    const std::unique_ptr<DIR, Close> opened(::opendir(directory.c_str()));
    while (const dirent* entry = opened ? ::readdir(opened.get()) : nullptr) {
      RemoveIfLeftover(::dirfd(opened.get()), entry->d_name);
    }
  } catch (...) { // NOLINT(bugprone-empty-catch): what is left stays for the next one
  }
}

} // namespace lumoscad::nexaro
