#include "platform/nexaro/ssh/Agent.hpp"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <system_error>

namespace lumoscad::nexaro {

namespace {

/// How long the system is left alone between two attempts at an agent whose queue is full.
constexpr std::chrono::milliseconds Pause{20};

/// While it lives, a thread that is made takes no signal of the calling program.
class WithoutSignals {
 public:
  WithoutSignals() {
    sigset_t all;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &previous_);
  }
  WithoutSignals(const WithoutSignals&) = delete;
  WithoutSignals& operator=(const WithoutSignals&) = delete;
  ~WithoutSignals() { ::pthread_sigmask(SIG_SETMASK, &previous_, nullptr); }

 private:
  sigset_t previous_{};
};

} // namespace

Agent::Agent(const std::string& socket, Deadline deadline) {
  Attach(socket, deadline);
  if (error_ == 0) {
    const WithoutSignals withoutSignals;
    try {
      thread_ = std::thread([this, deadline] { Supervise(deadline); });
    } catch (const std::system_error&) {
      // Without the thread nobody would end the wait.
      error_ = EAGAIN;
      socket_.Close();
    }
  }
}

Agent::~Agent() {
  {
    const std::lock_guard guard(key_);
    finished_ = true;
  }
  changed_.notify_all();
  if (thread_.joinable()) {
    thread_.join();
  }
}

void Agent::Attach(const std::string& socket, Deadline deadline) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (socket.size() >= sizeof address.sun_path) {
    error_ = ENAMETOOLONG;
    return;
  }
  socket.copy(address.sun_path, socket.size());
  const base::Descriptor newOne(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  // Keeps clear of the standard streams, which a calling program may have closed.
  socket_ = base::Descriptor(newOne.Opened() ? ::fcntl(newOne.Number(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1) : -1);
  if (!socket_.Opened()) {
    error_ = errno;
    return;
  }
  // A local connection is made at once or refused; it is refused too while the agent's queue is full.
  while (::connect(socket_.Number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    error_ = errno;
    if (error_ == EAGAIN && TimeLeft(deadline).count() == 0) {
      error_ = ETIMEDOUT;
    }
    if (error_ != EAGAIN && error_ != EINTR) {
      return;
    }
    std::this_thread::sleep_for(Pause);
  }
  error_ = 0;
}

void Agent::Supervise(Deadline deadline) {
  std::unique_lock guard(key_);
  const auto finished = [this] { return finished_; };
  // The look beyond the limit begins when the limit is seen to be over: the calling program may have been stopped.
  if (!changed_.wait_until(guard, deadline, finished) && !changed_.wait_for(guard, LookBeyond, finished)) {
    timedOut_ = true;
    ::shutdown(socket_.Number(), SHUT_RDWR);
  }
}

base::Descriptor Agent::Socket() {
  base::Descriptor copy(::fcntl(socket_.Number(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
  error_ = copy.Opened() ? 0 : errno;
  return copy;
}

bool Agent::TimedOut() {
  const std::lock_guard guard(key_);
  return timedOut_ || error_ == ETIMEDOUT;
}

} // namespace lumoscad::nexaro
