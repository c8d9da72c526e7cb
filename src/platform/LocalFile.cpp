#include "platform/LocalFile.hpp"

#include "platform/LocalFileErrors.hpp"
#include "platform/RuntimeError.hpp"
#include "platform/base/Descriptor.hpp"
#include "platform/base/SystemError.hpp"

#include <array>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace lumoscad {
namespace {

// They speak of the place that the file was to have, which a name for every failure could not.
constexpr auto Reasons = std::to_array<base::SystemErrorName>({
    {EACCES, "permesso negato"},
    {EPERM, "permesso negato"},
    {ENOENT, "percorso inesistente"},
    {ENOSPC, "spazio esaurito"},
    {EDQUOT, "spazio esaurito"},
    {EFBIG, "file troppo grande"},
    {EROFS, "disco in sola lettura"},
    {ELOOP, "al suo posto c'è un collegamento simbolico"},
    {EISDIR, "al suo posto c'è una cartella"},
    {EEXIST, "un altro programma ne ha messo uno al suo posto"},
});

/// Removes what stands at `path`, be it a file of someone else or a pipe that nobody reads; a link and a directory
/// are not ours to remove.
void MakeRoom(const std::string& path) {
  struct stat state {};
  if (::lstat(path.c_str(), &state) != 0) {
    if (errno == ENOENT) {
      return;
    }
    LocalFileFailed("creare", path, errno);
  }
  if (S_ISLNK(state.st_mode) || S_ISDIR(state.st_mode)) {
    LocalFileFailed("creare", path, S_ISLNK(state.st_mode) ? ELOOP : EISDIR);
  }
  if (::unlink(path.c_str()) != 0 && errno != ENOENT) {
    LocalFileFailed("creare", path, errno);
  }
}

/// Opens an ordinary file for reading. Without waiting: a pipe in the file's place must not hold the caller up.
base::Descriptor Open(const std::string& path) {
  RequirePath("leggere", path);
  base::Descriptor file(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  struct stat state {};
  if (file.Number() < 0 || ::fstat(file.Number(), &state) != 0) {
    LocalFileFailed("leggere", path, errno);
  }
  if (!S_ISREG(state.st_mode)) {
    LocalFileFailed("leggere", path, S_ISDIR(state.st_mode) ? EISDIR : EINVAL);
  }
  return file;
}

/// The first bytes of an open file, as many as asked for or, where it has fewer, all.
std::string Begin(const base::Descriptor& file, const std::string& path, std::size_t maximum) {
  std::string start(maximum, '\0');
  std::size_t wanted = 0;
  while (wanted < start.size()) {
    const auto count = ::read(file.Number(), start.data() + wanted, start.size() - wanted);
    if (count < 0 && errno == EINTR) {
      continue;
    }
    if (count < 0) {
      LocalFileFailed("leggere", path, errno);
    }
    if (count == 0) {
      break;
    }
    wanted += static_cast<std::size_t>(count);
  }
  start.resize(wanted);
  return start;
}

std::vector<std::string> Rows(std::string_view text) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    const auto end = text.find('\n');
    std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (line.ends_with('\r')) {
      line.remove_suffix(1);
    }
    lines.emplace_back(line);
  }
  return lines;
}

} // namespace

void LocalFileFailed(std::string_view action, const std::string& path, int error) {
  throw RuntimeError(error == ENOENT ? errors::FileNotFound : errors::FileAccess,
                     "Impossibile " + std::string(action) + " il file locale " + path + ": " +
                         base::SystemErrorText(error, Reasons));
}

void RequirePath(std::string_view action, const std::string& path) {
  if (path.find('\0') != std::string::npos) {
    throw RuntimeError(errors::FileAccess,
                       "Impossibile " + std::string(action) + " un file locale con un carattere nullo nel nome");
  }
}

void WriteWhole(const base::Descriptor& file, const std::string& path, std::string_view content) {
  while (!content.empty()) {
    const auto written = ::write(file.Number(), content.data(), content.size());
    if (written < 0 && errno == EINTR) {
      continue;
    }
    if (written < 0) {
      LocalFileFailed("scrivere", path, errno);
    }
    content.remove_prefix(static_cast<std::size_t>(written));
  }
}

void WriteLocalFile(const std::string& path, std::string_view content) {
  constexpr mode_t Private = S_IRUSR | S_IWUSR;
  RequirePath("creare", path);
  MakeRoom(path);
  base::Descriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, Private));
  if (file.Number() < 0 || ::fchmod(file.Number(), Private) != 0) {
    LocalFileFailed("creare", path, errno);
  }
  WriteWhole(file, path, content);
  if (file.Close() != 0) {
    LocalFileFailed("scrivere", path, errno);
  }
}

LocalBeginning ReadLocalBeginning(const std::string& path) {
  const auto start = Begin(Open(path), path, MaxRead + 1);
  return {Rows(std::string_view(start).substr(0, MaxRead)), start.size() > MaxRead};
}

std::string ReadLocalFile(const std::string& path, std::size_t maximum) {
  const base::Descriptor file = Open(path);
  struct stat state {};
  if (::fstat(file.Number(), &state) != 0) {
    LocalFileFailed("leggere", path, errno);
  }
  const auto size = static_cast<std::uintmax_t>(state.st_size);
  // One byte more tells a file that grows meanwhile.
  std::string content = Begin(file, path, size < maximum ? static_cast<std::size_t>(size) + 1 : maximum + 1);
  if (content.size() > maximum) {
    LocalFileFailed("leggere", path, EFBIG);
  }
  return content;
}

void DeleteLocalFile(const std::string& path) {
  RequirePath("cancellare", path);
  if (::unlink(path.c_str()) != 0) {
    LocalFileFailed("cancellare", path, errno);
  }
}

} // namespace lumoscad
