#pragma once

#include <csignal>
#include <ctime>

namespace lumoscad::nexaro {

/// While it lives, a write to a connection that the other side has closed fails with an error on this thread instead of
/// killing the program that loaded the component. The program's own handling of the signal stays as it is.
class SigpipeBlock {
 public:
  SigpipeBlock() {
    sigset_t pending;
    ::sigemptyset(&only_);
    ::sigaddset(&only_, SIGPIPE);
    ::sigpending(&pending);
    wasPending_ = ::sigismember(&pending, SIGPIPE) == 1;
    ::pthread_sigmask(SIG_BLOCK, &only_, &previous_);
  }
  SigpipeBlock(const SigpipeBlock&) = delete;
  SigpipeBlock& operator=(const SigpipeBlock&) = delete;
  ~SigpipeBlock() {
    const timespec immediately{0, 0};
    if (!wasPending_) {
      ::sigtimedwait(&only_, nullptr, &immediately);
    }
    ::pthread_sigmask(SIG_SETMASK, &previous_, nullptr);
  }

 private:
  sigset_t only_{};
  sigset_t previous_{};
  bool wasPending_ = false;
};

} // namespace lumoscad::nexaro
