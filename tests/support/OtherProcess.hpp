#pragma once

#include <array>
#include <cerrno>
#include <csignal>
#include <functional>
#include <sys/prctl.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace lumoscad::test {

/// A forked process that plays another program of this machine: it does `task` and then stays until the object goes,
/// or the test.
class OtherProcess {
 public:
  /// Returns once the other has done its task; `Succeeded` tells whether without an exception.
  explicit OtherProcess(const std::function<void()>& task) {
    std::array<int, 2> done{};
    std::array<int, 2> dismissal{};
    if (::pipe(done.data()) != 0 || ::pipe(dismissal.data()) != 0) {
      throw std::system_error(errno, std::generic_category(), "pipe");
    }
    process_ = ::fork();
    if (process_ < 0) {
      throw std::system_error(errno, std::generic_category(), "fork");
    }
    if (process_ == 0) {
      ::close(done[0]);
      ::close(dismissal[1]);
      Live(task, done[1], dismissal[0]);
    }
    ::close(done[1]);
    ::close(dismissal[0]);
    dismissal_ = dismissal[1];
    char outcome = 0;
    succeeded_ = ::read(done[0], &outcome, 1) == 1 && outcome == '+';
    ::close(done[0]);
  }
  OtherProcess(const OtherProcess&) = delete;
  OtherProcess& operator=(const OtherProcess&) = delete;
  ~OtherProcess() { End(); }

  [[nodiscard]] bool Succeeded() const { return succeeded_; }
  [[nodiscard]] pid_t Number() const { return process_; }

  /// Kills the process as the kernel does when memory is short.
  void Kill() {
    ::kill(process_, SIGKILL);
    End();
  }
  /// Lets the process end by itself.
  void End() {
    if (process_ > 0) {
      ::close(dismissal_);
      while (::waitpid(process_, nullptr, 0) < 0 && errno == EINTR) {
      }
      process_ = -1;
    }
  }

 private:
  [[noreturn]] static void Live(const std::function<void()>& task, int done, int dismissal) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    char outcome = '+';
    try {
      task();
    } catch (...) {
      outcome = '-';
    }
    while (::write(done, &outcome, 1) < 0 && errno == EINTR) {
    }
    char nothing = 0;
    while (::read(dismissal, &nothing, 1) < 0 && errno == EINTR) {
    }
    ::_exit(0);
  }

  pid_t process_ = -1;
  int dismissal_ = -1;
  bool succeeded_ = false;
};

} // namespace lumoscad::test
