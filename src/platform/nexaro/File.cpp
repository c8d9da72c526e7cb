#include "platform/nexaro/File.hpp"

#include "platform/nexaro/Call.hpp"
#include "platform/nexaro/Leftovers.hpp"
#include "platform/nexaro/LinkErrors.hpp"

#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <random>
#include <sys/file.h>
#include <sys/stat.h>

namespace lumoscad::nexaro {

namespace {

/// Locks a new file as one that is being written. False where somebody came in between and took it for a leftover: it
/// has lost its name, or is about to. Where there are no such locks, the process' number alone keeps it.
bool Hold(const base::Descriptor& file) {
  struct stat state {};
  const bool taken = ::flock(file.Number(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
  return taken && ::fstat(file.Number(), &state) == 0 && state.st_nlink > 0;
}

} // namespace

TemporaryFile::TemporaryFile(const std::string& destination, mode_t mode, const std::string& operation) {
  static constexpr int Attempts = 100;
  const auto slash = destination.rfind('/');
  const auto directory = slash == std::string::npos ? std::string("./") : destination.substr(0, slash + 1);
  RemoveLeftovers(directory);
  std::random_device random;
  for (int attempt = 0; attempt < Attempts && !descriptor_.Opened(); ++attempt) {
    name_ = directory + TemporaryName(::getpid(), random());
    descriptor_ = base::Descriptor(::open(name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
    if (!descriptor_.Opened() && errno != EEXIST) {
      break;
    }
    if (descriptor_.Opened() && !Hold(descriptor_)) {
      descriptor_.Close();
      ::unlink(name_.c_str());
      errno = EAGAIN;
    }
  }
  if (!descriptor_.Opened()) {
    throw SystemError(operation, errno);
  }
}

TemporaryFile::~TemporaryFile() {
  if (!published_) {
    ::unlink(name_.c_str());
  }
}

void TemporaryFile::Write(std::string_view data, const std::string& operation) const {
  while (!data.empty()) {
    const auto written = ::write(descriptor_.Number(), data.data(), data.size());
    if (written >= 0) {
      data.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno != EINTR) {
      throw SystemError(operation, errno);
    }
  }
}

void TemporaryFile::Publish(const std::string& destination, const std::string& operation) {
  // Closed once it has its final name: until then it must stay locked. After fsync(2) close(2) has nothing left to say.
  if (::fsync(descriptor_.Number()) != 0 || ::rename(name_.c_str(), destination.c_str()) != 0) {
    throw SystemError(operation, errno);
  }
  published_ = true;
  descriptor_.Close();
}

namespace {

int KindError(const struct stat& state) {
  const int other = S_ISDIR(state.st_mode) ? EISDIR : EINVAL;
  return S_ISREG(state.st_mode) ? 0 : other;
}

} // namespace

std::string ParentDirectory(std::string_view path) {
  const auto slash = path.rfind('/');
  return slash == 0 ? "/" : std::string(path.substr(0, slash));
}

int OrdinaryFileError(const std::string& path) {
  struct stat state {};
  return ::stat(path.c_str(), &state) == 0 ? KindError(state) : errno;
}

base::Descriptor OpenOrdinary(const std::string& path, const std::string& operation) {
  // Opens without waiting: a pipe in the file's place must not hold the caller up.
  base::Descriptor descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  struct stat state {};
  if (!descriptor.Opened() || ::fstat(descriptor.Number(), &state) != 0) {
    throw SystemError(operation, errno);
  }
  if (const int kind = KindError(state); kind != 0) {
    throw SystemError(operation, kind);
  }
  return descriptor;
}

std::size_t ReadBlock(const base::Descriptor& file, std::span<char> buffer, const std::string& operation) {
  for (;;) {
    const auto count = ::read(file.Number(), buffer.data(), buffer.size());
    if (count >= 0) {
      return static_cast<std::size_t>(count);
    }
    if (errno != EINTR) {
      throw SystemError(operation, errno);
    }
  }
}

void CopyFile(const std::string& source, const std::string& destination, mode_t mode, const std::string& operation,
              const Extent& extent, std::optional<std::chrono::milliseconds> timeout) {
  const auto deadline = Clock::now() + timeout.value_or(std::chrono::milliseconds(0));
  const auto input = OpenOrdinary(source, operation);
  TemporaryFile copy(destination, mode, operation);
  std::array<char, 65536> buffer;
  auto left = extent.maximum;
  bool timedOut = false;
  for (std::size_t count = 0; (count = ReadBlock(input, buffer, operation)) > 0;) {
    // The look that follows the end of the time may find the end of the file, but no more of it.
    if (timedOut) {
      throw LinkError(operation + ": " + TooSlowReason(*timeout) + ".");
    }
    const bool tooMany = count > left;
    if (tooMany && !extent.truncate) {
      throw LinkError(operation + ": " + TooLargeReason + ".");
    }
    const auto copied = tooMany ? static_cast<std::size_t>(left) : count;
    copy.Write({buffer.data(), copied}, operation);
    left -= copied;
    if (tooMany) {
      break;
    }
    timedOut = timeout && TimeLeft(deadline).count() == 0;
  }
  copy.Publish(destination, operation);
}

} // namespace lumoscad::nexaro
