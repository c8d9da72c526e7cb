#include "platform/ado/Watchdog.hpp"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <functional>
#include <mutex>
#include <netinet/in.h>
#include <optional>
#include <sched.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace lumoscad::ado::detail {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds Step(100); ///< how late a strike may come
constexpr std::int64_t Idle = 0;
constexpr std::int64_t Striking = -1;
constexpr std::int64_t Done = -2;

/// One end of a connection.
struct End {
  std::string address;
  int port = 0;

  bool operator==(const End&) const = default;
};

/// An address in one form: an IPv4 address that comes as an IPv6 one is IPv4. Empty for what is none.
std::string Normalized(const std::string& text) {
  constexpr std::string_view Mapped = "::ffff:";
  in6_addr address{};
  std::array<char, INET6_ADDRSTRLEN> name{};
  for (const int family : {AF_INET, AF_INET6}) {
    if (inet_pton(family, text.c_str(), &address) != 1) {
      continue;
    }
    inet_ntop(family, &address, name.data(), name.size());
    std::string result = name.data();
    const bool ipv4Inside = result.starts_with(Mapped) && result.find('.') != std::string::npos;
    return ipv4Inside ? result.substr(Mapped.size()) : result;
  }
  return {};
}

template <typename Ask> std::optional<End> EndOf(int descriptor, Ask ask) {
  sockaddr_storage storage{};
  socklen_t length = sizeof storage;
  if (ask(descriptor, reinterpret_cast<sockaddr*>(&storage), &length) != 0) {
    return std::nullopt;
  }
  std::array<char, INET6_ADDRSTRLEN> name{};
  End end;
  if (storage.ss_family == AF_INET) {
    const auto& four = reinterpret_cast<const sockaddr_in&>(storage);
    inet_ntop(AF_INET, &four.sin_addr, name.data(), name.size());
    end.port = ntohs(four.sin_port);
  } else if (storage.ss_family == AF_INET6) {
    const auto& six = reinterpret_cast<const sockaddr_in6&>(storage);
    inet_ntop(AF_INET6, &six.sin6_addr, name.data(), name.size());
    end.port = ntohs(six.sin6_port);
  } else {
    return std::nullopt;
  }
  end.address = Normalized(name.data());
  return end;
}

/// A connected socket as it can be known again, whatever its descriptor is used for later.
struct Identity {
  ino_t inode = 0;
  End local;
  End peer;

  bool operator==(const Identity&) const = default;
};

std::optional<ino_t> StreamSocket(int descriptor) {
  struct stat status {};
  int type = 0;
  socklen_t length = sizeof type;
  if (fstat(descriptor, &status) != 0 || !S_ISSOCK(status.st_mode) ||
      getsockopt(descriptor, SOL_SOCKET, SO_TYPE, &type, &length) != 0 || type != SOCK_STREAM) {
    return std::nullopt;
  }
  return status.st_ino;
}

std::optional<Identity> IdentityOf(int descriptor) {
  const auto inode = StreamSocket(descriptor);
  const auto local = inode ? EndOf(descriptor, getsockname) : std::nullopt;
  const auto peer = local ? EndOf(descriptor, getpeername) : std::nullopt;
  if (!peer) {
    return std::nullopt;
  }
  return Identity{*inode, *local, *peer};
}

void ForEachDescriptor(const std::function<void(int)>& look) {
  DIR* const directory = opendir("/proc/self/fd");
  if (directory == nullptr) {
    return;
  }
  while (const dirent* const entry = readdir(directory)) { // NOLINT(concurrency-mt-unsafe): the directory is ours alone
    char* end = nullptr;
    const long descriptor = std::strtol(entry->d_name, &end, 10);
    if (end != entry->d_name && *end == '\0') {
      look(static_cast<int>(descriptor));
    }
  }
  closedir(directory);
}

bool Agrees(const End& end, const std::string& address, int port) {
  if (end.port != port) {
    return false;
  }
  if (address == "localhost") {
    return end.address.starts_with("127.") || end.address == "::1";
  }
  const std::string known = Normalized(address);
  return known.empty() || known == end.address;
}

} // namespace

Sockets OpenSockets() {
  Sockets sockets;
  ForEachDescriptor([&](int descriptor) {
    if (const auto inode = StreamSocket(descriptor)) {
      sockets.insert(*inode);
    }
  });
  return sockets;
}

/// What the object and its thread both know.
struct Watchdog::Shared {
  int descriptor = -1;
  Identity identity;
  std::atomic<std::int64_t> deadline{Idle}; ///< of the call under way, or one of the three values above
  std::atomic<bool> struck{false};
  std::mutex mutex;
  std::condition_variable ended;
  bool ending = false;

  /// The copy is the socket that it was made of, even if the driver closes the descriptor at this moment and somebody
  /// else is given its number.
  void Strike() {
    const int copy = fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
    if (copy < 0) {
      return;
    }
    if (IdentityOf(copy) == identity) {
      struck = true; // whoever waits for an answer asks as soon as the connection ends
      if (shutdown(copy, SHUT_RDWR) != 0) {
        struck = false;
      }
    }
    close(copy);
  }

  void Look() {
    std::int64_t due = deadline;
    if (due <= Idle || Clock::now().time_since_epoch().count() < due ||
        !deadline.compare_exchange_strong(due, Striking)) {
      return;
    }
    Strike();
    deadline = Done;
  }
};

Watchdog::Watchdog(std::unique_ptr<Shared> shared) noexcept : shared_(std::move(shared)), process_(getpid()) {}

std::unique_ptr<Watchdog> Watchdog::Over(const Endpoints& ends, const Sockets& before) noexcept {
  try {
    auto shared = std::make_unique<Shared>();
    Sockets found;
    ForEachDescriptor([&](int descriptor) {
      const auto identity = IdentityOf(descriptor);
      if (identity && before.count(identity->inode) == 0 &&
          Agrees(identity->peer, ends.serverAddress, ends.serverPort) &&
          Agrees(identity->local, ends.clientAddress, ends.clientPort) && found.insert(identity->inode).second) {
        shared->descriptor = descriptor;
        shared->identity = *identity;
      }
    });
    if (found.size() != 1) {
      return nullptr;
    }
    std::unique_ptr<Watchdog> watchdog(new Watchdog(std::move(shared)));
    sigset_t all;
    sigset_t former;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &former);
    watchdog->running_ = pthread_create(&watchdog->thread_, nullptr, Run, watchdog->shared_.get()) == 0;
    pthread_sigmask(SIG_SETMASK, &former, nullptr);
    return watchdog->running_ ? std::move(watchdog) : nullptr;
  } catch (...) {
    return nullptr;
  }
}

Watchdog::~Watchdog() {
  if (!running_) {
    return;
  }
  if (process_ != getpid()) {
    // A forked child has no such thread, and what the thread waits on cannot be destroyed there.
    static_cast<void>(shared_.release());
    return;
  }
  {
    const std::lock_guard lock(shared_->mutex);
    shared_->ending = true;
  }
  shared_->ended.notify_one();
  pthread_join(thread_, nullptr);
}

void* Watchdog::Run(void* shared) noexcept {
  auto& mine = *static_cast<Shared*>(shared);
  std::unique_lock lock(mine.mutex);
  while (!mine.ended.wait_for(lock, Step, [&] { return mine.ending; })) {
    mine.Look();
  }
  return nullptr;
}

bool Watchdog::Enter(std::chrono::milliseconds limit) noexcept {
  std::int64_t free = Idle;
  const auto due = Clock::now() + std::chrono::duration_cast<Clock::duration>(limit);
  return shared_->deadline.compare_exchange_strong(free, due.time_since_epoch().count());
}

void Watchdog::Leave() noexcept {
  for (;;) {
    std::int64_t due = shared_->deadline;
    if (due == Striking && process_ == getpid()) {
      sched_yield();
    } else if (shared_->deadline.compare_exchange_strong(due, Idle)) {
      return;
    }
  }
}

bool Watchdog::Struck() const noexcept {
  return shared_->struck;
}

} // namespace lumoscad::ado::detail
