#include "platform/nexaro/Nexaro.hpp"

#include "platform/Hash.hpp"
#include "platform/base/Descriptor.hpp"
#include "platform/base/SystemError.hpp"
#include "platform/nexaro/LinkErrors.hpp"
#include "platform/nexaro/Settings.hpp"
#include "platform/nexaro/Texts.hpp"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <thread>

namespace lumoscad::nexaro {
namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* Device = "/dev/full";
/// Between two looks at a lock that another process holds.
constexpr std::chrono::milliseconds Interval{20};
constexpr const char* NothingSent = "La richiesta non è stata inviata all'host. Prima di ripetere il comando può "
                                    "essere necessario togliere il blocco della lista "
                                    "sull'host.";

// What a lock on a text is for.
constexpr std::string_view ForTheTurn = "lumoscad turno ";
constexpr std::string_view ForTheNext = "lumoscad prossimo ";
constexpr std::string_view ForTheName = "lumoscad nome ";

struct flock Record(short type, std::string_view kind, std::string_view text) noexcept {
  static_assert(sizeof(off_t) == sizeof(std::uint64_t), "the locks need all of a 64-bit file");
  constexpr std::uint64_t Maximum = 0x3FFFFFFFFFFFFFFFU;
  struct flock lock {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  lock.l_start = static_cast<off_t>(Hash(text, Hash(kind)) & Maximum);
  lock.l_len = 1;
  return lock;
}

[[noreturn]] void Impossible(int error) {
  throw RuntimeError(errors::FileAccess,
                     "Non è possibile escludere le richieste di altri programmi con lo stesso codice di postazione (" +
                         std::string(Device) + ": " + base::SystemErrorText(error) + "). " + NothingSent);
}

/// Whether `descriptor` still is what we opened: a calling program may have closed what it does not know, and its
/// number may be another file's by now.
bool Ours(const base::Descriptor& descriptor) noexcept {
  struct stat state {};
  return descriptor.Opened() && ::fstat(descriptor.Number(), &state) == 0 && S_ISCHR(state.st_mode) &&
         state.st_rdev == makedev(1, 7);
}

/// The locks are record locks (fcntl(2), F_SETLK) on bytes of /dev/full, each text's byte being its hash. That device
/// is the one file that every user of a machine may open for writing and none can make, replace or close to others, so
/// that no file of anybody's stands in the way; and nothing else puts locks on it. A record lock belongs to the process
/// and not to the descriptor: a forked child has none, but whoever closes the file in this process, by any descriptor,
/// ends them all.
class DeviceLock final : public ProcessLock {
 public:
  explicit DeviceLock(std::chrono::milliseconds timeout) : timeout_(timeout) {}

  [[nodiscard]] bool Wait(const std::string& text, const std::function<void()>& idle) override;
  void LetGo() noexcept override;
  [[nodiscard]] bool Reserve(const std::string& name) override;

 private:
  [[nodiscard]] int IsOpen();
  [[nodiscard]] bool Take(std::string_view kind, std::string_view text);
  void LetGo(std::string_view kind, std::string_view text) noexcept;
  [[noreturn]] void TimedOut(std::string_view text);

  std::chrono::milliseconds timeout_;
  base::Descriptor device_;
  std::string held_;     ///< the text that `Wait` took
  std::string reserved_; ///< the name that `Reserve` took
};

int DeviceLock::IsOpen() {
  if (!Ours(device_)) {
    static_cast<void>(device_.Release());
    const base::Descriptor first(::open(Device, O_RDWR | O_CLOEXEC | O_NOCTTY));
    if (!first.Opened()) {
      Impossible(errno);
    }
    // Clear of 0 to 2, which a calling program may have closed.
    base::Descriptor high(::fcntl(first.Number(), F_DUPFD_CLOEXEC, 3));
    if (!high.Opened()) {
      Impossible(errno);
    }
    if (!Ours(high)) {
      Impossible(ENODEV);
    }
    device_ = std::move(high);
  }
  return device_.Number();
}

bool DeviceLock::Take(std::string_view kind, std::string_view text) {
  auto lock = Record(F_WRLCK, kind, text);
  const bool taken = ::fcntl(IsOpen(), F_SETLK, &lock) == 0;
  if (!taken && errno != EAGAIN && errno != EACCES && errno != EINTR) {
    Impossible(errno);
  }
  return taken;
}

void DeviceLock::LetGo(std::string_view kind, std::string_view text) noexcept {
  auto lock = Record(F_UNLCK, kind, text);
  if (Ours(device_)) {
    ::fcntl(device_.Number(), F_SETLK, &lock);
  }
}

bool DeviceLock::Wait(const std::string& text, const std::function<void()>& idle) {
  const auto deadline = Clock::now() + timeout_;
  std::string held = text;
  bool waited = false;
  const auto wait = [&](std::string_view kind) {
    while (!Take(kind, text)) {
      if (Clock::now() >= deadline) {
        TimedOut(text);
      }
      waited = true;
      idle();
      std::this_thread::sleep_for(Interval);
    }
  };
  // Whoever comes next keeps the others behind itself, and so the last holder too.
  wait(ForTheNext);
  try {
    wait(ForTheTurn);
  } catch (...) {
    LetGo(ForTheNext, text);
    throw;
  }
  LetGo(ForTheNext, text);
  held_ = std::move(held);
  return waited;
}

void DeviceLock::LetGo() noexcept {
  LetGo(ForTheTurn, held_);
}

bool DeviceLock::Reserve(const std::string& name) {
  if (!Take(ForTheName, name)) {
    return false;
  }
  if (reserved_ != name) {
    LetGo(ForTheName, std::exchange(reserved_, name));
  }
  return true;
}

void DeviceLock::TimedOut(std::string_view text) {
  auto lock = Record(F_WRLCK, ForTheTurn, text);
  std::string who;
  // Of a process in another container the number is not told.
  if (::fcntl(IsOpen(), F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK && lock.l_pid > 0) {
    who = " (processo " + std::to_string(lock.l_pid) + ")";
  }
  throw LinkError("Un altro programma" + who + " di questa macchina con lo stesso codice di postazione " + Quote(text) +
                  " sta inviando una richiesta e non ha finito entro " + Seconds(timeout_) + ". " + NothingSent);
}

} // namespace

std::unique_ptr<ProcessLock> CreateProcessLock() {
  return std::make_unique<DeviceLock>(ReadTimeout());
}

} // namespace lumoscad::nexaro
