#include "platform/DurableFile.hpp"

#include "platform/LocalFileErrors.hpp"
#include "platform/RuntimeError.hpp"
#include "platform/base/Descriptor.hpp"
#include "platform/base/ProcessLife.hpp"

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstddef>
#include <cstdio>
#include <fcntl.h>
#include <linux/magic.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace lumoscad {
namespace {

/// Clear of 0 to 2: a calling program that has closed one of them goes on writing to it.
constexpr int FirstNumber = 3;

/// What the process holds. A forked child has the descriptors too, and with them the locks.
struct Holding {
  std::atomic<int> number{-1};
  dev_t device = 0;
  ino_t file = 0;
};
std::array<Holding, 8> holdings;

/// Whether the descriptor still is what was opened: a calling program may close what it does not know, and its number
/// may be another file's by now.
bool Ours(const Holding& holding) noexcept {
  struct stat state {};
  return ::fstat(holding.number, &state) == 0 && state.st_dev == holding.device && state.st_ino == holding.file;
}

void ForgetInChild() noexcept {
  for (Holding& holding : holdings) {
    if (holding.number >= 0 && Ours(holding)) {
      ::close(holding.number);
    }
    holding.number = -1;
  }
}

[[maybe_unused]] const int ForksTold = pthread_atfork(nullptr, nullptr, ForgetInChild);

Holding* HoldingOf(int number) noexcept {
  for (Holding& holding : holdings) {
    if (holding.number == number) {
      return &holding;
    }
  }
  return nullptr;
}

/// A write over the limit of the process would be its end.
void RequireWithinLimit(const std::string& path, std::size_t size) {
  rlimit limit{};
  if (::getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY && size > limit.rlim_cur) {
    LocalFileFailed("scrivere", path, EFBIG);
  }
}

/// Removes the file unless it got its name.
class Beside {
 public:
  explicit Beside(const std::string& name) noexcept : name_(&name) {}
  Beside(const Beside&) = delete;
  Beside& operator=(const Beside&) = delete;
  ~Beside() {
    if (name_ != nullptr) {
      ::unlink(name_->c_str());
    }
  }
  void Renamed() noexcept { name_ = nullptr; }

 private:
  const std::string* name_;
};

base::Descriptor Create(const std::string& path) {
  base::Descriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
  if (!file.Opened()) {
    LocalFileFailed("creare", path, errno);
  }
  return file;
}

/// Writes the whole content and brings it to the disk.
void Fill(const base::Descriptor& file, const std::string& path, std::string_view content) {
  RequireWithinLimit(path, content.size());
  if (::fchmod(file.Number(), S_IRUSR | S_IWUSR) != 0) {
    LocalFileFailed("scrivere", path, errno);
  }
  WriteWhole(file, path, content);
  if (::fdatasync(file.Number()) != 0) {
    LocalFileFailed("scrivere", path, errno);
  }
}

/// Gives the file its final name where nothing has it. False where something does.
bool RenameToFree(const std::string& beside, const std::string& path) {
  if (::renameat2(AT_FDCWD, beside.c_str(), AT_FDCWD, path.c_str(), RENAME_NOREPLACE) == 0) {
    return true;
  }
  // Where the file system knows no such renaming, a second name is as good: it is given to nobody twice.
  if (errno == EINVAL || errno == ENOSYS) {
    if (::link(beside.c_str(), path.c_str()) == 0) {
      ::unlink(beside.c_str());
      return true;
    }
  }
  if (errno != EEXIST) {
    LocalFileFailed("creare", path, errno);
  }
  return false;
}

/// Brings the name of a file to the disk. What fails is no reason to do without the file, which is there. Takes no
/// memory.
void FlushDirectoryOf(const std::string& path) noexcept {
  std::array<char, PATH_MAX> directory{'.'};
  if (const auto slash = path.rfind('/'); slash != std::string::npos) {
    if (slash + 2 > directory.size()) {
      return;
    }
    path.copy(directory.data(), slash + 1);
  }
  const base::Descriptor opened(::open(directory.data(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (opened.Opened()) {
    ::fsync(opened.Number());
  }
}

void RemoveOrdinary(const std::string& path) {
  struct stat state {};
  if (::lstat(path.c_str(), &state) == 0 && S_ISREG(state.st_mode)) {
    ::unlink(path.c_str());
  }
}

/// Takes a lock; 0 or what the system says.
int TryLock(int number, int kind) noexcept {
  while (::flock(number, kind | LOCK_NB) != 0) {
    if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

/// Whether the lock was taken; also where there are no such locks.
bool Lock(int number, int kind) noexcept {
  return TryLock(number, kind) != EWOULDBLOCK;
}

} // namespace

void ReplaceLocalFile(const std::string& path, const std::string& beside, std::string_view content, Durable durable) {
  RequirePath("creare", path);
  RequirePath("creare", beside);
  RemoveOrdinary(beside);
  const base::Descriptor file = Create(beside);
  Beside waiting(beside);
  Fill(file, beside, content);
  if (::rename(beside.c_str(), path.c_str()) != 0) {
    LocalFileFailed("creare", path, errno);
  }
  waiting.Renamed();
  if (durable == Durable::NameToo) {
    FlushDirectoryOf(path);
  }
}

bool MarkLocalFile(const std::string& path, const std::string& mark) noexcept {
  constexpr mode_t Private = S_IRUSR | S_IWUSR;
  bool marked = ::rename(path.c_str(), mark.c_str()) == 0;
  if (!marked) {
    marked = base::Descriptor(::open(mark.c_str(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_CLOEXEC, Private)).Opened();
  }
  FlushDirectoryOf(mark);
  return marked;
}

HeldFile::HeldFile(int number) : number_(number), process_(::getpid()) {}

HeldFile::HeldFile(HeldFile&& other) noexcept
    : number_(std::exchange(other.number_, -1)), process_(std::exchange(other.process_, 0)) {}

HeldFile& HeldFile::operator=(HeldFile&& other) noexcept {
  if (this != &other) {
    LetGo();
    number_ = std::exchange(other.number_, -1);
    process_ = std::exchange(other.process_, 0);
  }
  return *this;
}

/// Keeps an open file, of which `number` is given up to the object.
HeldFile HeldFile::Hold(int number) {
  base::Descriptor file(number);
  struct stat state {};
  Holding* const free = HoldingOf(-1);
  const bool known = ::fstat(file.Number(), &state) == 0;
  if (free == nullptr || !known) {
    throw RuntimeError(errors::FileAccess, "Impossibile tenere un altro file locale");
  }
  free->device = state.st_dev;
  free->file = state.st_ino;
  free->number = file.Number();
  return HeldFile(file.Release());
}

std::optional<HeldFile> HeldFile::Publish(const std::string& path, const std::string& beside,
                                          std::string_view content) {
  RequirePath("creare", path);
  RequirePath("creare", beside);
  RemoveOrdinary(beside);
  const base::Descriptor file = Create(beside);
  Beside waiting(beside);
  base::Descriptor high(::fcntl(file.Number(), F_DUPFD_CLOEXEC, FirstNumber));
  if (!high.Opened() || !Lock(high.Number(), LOCK_EX)) {
    LocalFileFailed("creare", beside, errno);
  }
  Fill(file, beside, content);
  // After the renaming nothing may fail any more: nobody would have the file that is there.
  HeldFile held = Hold(high.Release());
  if (!RenameToFree(beside, path)) {
    return std::nullopt;
  }
  waiting.Renamed();
  FlushDirectoryOf(path);
  return held;
}

std::optional<HeldFile> HeldFile::Take(const std::string& path) {
  constexpr int Attempts = 20;
  constexpr std::chrono::milliseconds Interval{10};
  RequirePath("leggere", path);
  const base::Descriptor file(::open(path.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  base::Descriptor high(file.Opened() ? ::fcntl(file.Number(), F_DUPFD_CLOEXEC, FirstNumber) : -1);
  struct stat state {};
  if (!high.Opened() || ::fstat(high.Number(), &state) != 0) {
    LocalFileFailed("leggere", path, errno);
  }
  if (!S_ISREG(state.st_mode)) {
    LocalFileFailed("leggere", path, EINVAL);
  }
  // Whoever only looks whether it is held has it for a moment.
  for (int attempt = 0; attempt < Attempts; ++attempt) {
    if (Lock(high.Number(), LOCK_EX)) {
      // Whoever had it may have removed it.
      if (::fstat(high.Number(), &state) == 0 && state.st_nlink == 0) {
        LocalFileFailed("leggere", path, ENOENT);
      }
      return Hold(high.Release());
    }
    std::this_thread::sleep_for(Interval);
  }
  return std::nullopt;
}

void HeldFile::LetGo() noexcept {
  const bool held = Held();
  const int number = std::exchange(number_, -1);
  if (!held) {
    return;
  }
  if (Holding* const holding = HoldingOf(number)) {
    if (Ours(*holding)) {
      ::close(number);
    }
    holding->number = -1;
  }
}

bool HeldFile::Held() const noexcept {
  return number_ >= 0 && process_ == ::getpid();
}

void HeldFile::MarkInPlace() const noexcept {
  const Holding* const holding = Held() ? HoldingOf(number_) : nullptr;
  if (holding != nullptr && Ours(*holding) && ::fchmod(number_, S_IRUSR | S_IWUSR | S_ISVTX) == 0) {
    ::fsync(number_);
  }
}

bool MarkedInPlace(const std::string& path) noexcept {
  struct stat state {};
  return ::lstat(path.c_str(), &state) == 0 && S_ISREG(state.st_mode) && (state.st_mode & S_ISVTX) != 0;
}

bool HeldBySomebody(const std::string& path) noexcept {
  const base::Descriptor file(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  return file.Opened() && !Lock(file.Number(), LOCK_SH);
}

bool WriterMayLive(const std::string& path, long process) noexcept {
  const base::Descriptor file(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  struct stat state {};
  if (!file.Opened() || ::fstat(file.Number(), &state) != 0) {
    return false;
  }
  const int error = TryLock(file.Number(), LOCK_SH);
  const bool another = process > 0 && process != ::getpid();
  try {
    return error != 0 && error != EWOULDBLOCK && another &&
           base::MayHaveWritten(static_cast<pid_t>(process), state.st_mtime);
  } catch (...) {
    return true;
  }
}

bool RemoveLocalFile(const std::string& path) noexcept {
  return ::unlink(path.c_str()) == 0 || errno == ENOENT;
}

bool InMemory(const std::string& directory) noexcept {
  struct statfs state {};
  return ::statfs(directory.c_str(), &state) == 0 && (state.f_type == TMPFS_MAGIC || state.f_type == RAMFS_MAGIC);
}

long ProcessNumber() noexcept {
  return ::getpid();
}

} // namespace lumoscad
