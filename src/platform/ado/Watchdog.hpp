#pragma once

#include <chrono>
#include <memory>
#include <pthread.h>
#include <string>
#include <sys/types.h>
#include <unordered_set>

namespace lumoscad::ado::detail {

/// The two ends of a connection, as the server sees them. An address that is empty, or a name, is not known.
struct Endpoints {
  std::string serverAddress;
  int serverPort = 0;
  std::string clientAddress;
  int clientPort = 0;
};

using Sockets = std::unordered_set<ino_t>;

/// The stream sockets that this process has open.
[[nodiscard]] Sockets OpenSockets();

/// Ends a wait for a server that says nothing: shuts the connection down under the driver, whose call then fails. It
/// works on a thread of its own, which takes no signal and is joined with the object. In a child that was forked
/// meanwhile the object does nothing.
class Watchdog {
 public:
  /// Over the one socket of this process that was made after `before` was taken and whose two ends are `ends`; nothing
  /// where there is none or more than one, since a socket that is not certainly the session's must not be touched.
  [[nodiscard]] static std::unique_ptr<Watchdog> Over(const Endpoints& ends, const Sockets& before) noexcept;
  Watchdog(const Watchdog&) = delete;
  Watchdog& operator=(const Watchdog&) = delete;
  ~Watchdog();

  /// A call to the driver begins, which may take `limit`. False while another one is under way, whose limit holds.
  [[nodiscard]] bool Enter(std::chrono::milliseconds limit) noexcept;
  /// The call is over. Once this has returned the connection is not shut down any more.
  void Leave() noexcept;
  /// Whether a call was ended.
  [[nodiscard]] bool Struck() const noexcept;

 private:
  struct Shared;

  explicit Watchdog(std::unique_ptr<Shared> shared) noexcept;
  static void* Run(void* shared) noexcept;

  std::unique_ptr<Shared> shared_;
  pthread_t thread_{};
  bool running_ = false;
  pid_t process_; ///< the one that the thread belongs to
};

} // namespace lumoscad::ado::detail
