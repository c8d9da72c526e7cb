#pragma once

#include <csignal>
#include <ctime>

namespace lumoscad::nexaro {

/// While it lives, a write to a connection that the other side has closed fails with an error on this thread instead of
/// killing the program that loaded the component. The program's own handling of the signal stays as it is.
class SenzaSigpipe {
 public:
  SenzaSigpipe() {
    sigset_t pendenti;
    ::sigemptyset(&solo_);
    ::sigaddset(&solo_, SIGPIPE);
    ::sigpending(&pendenti);
    giaPendente_ = ::sigismember(&pendenti, SIGPIPE) == 1;
    ::pthread_sigmask(SIG_BLOCK, &solo_, &precedenti_);
  }
  SenzaSigpipe(const SenzaSigpipe&) = delete;
  SenzaSigpipe& operator=(const SenzaSigpipe&) = delete;
  ~SenzaSigpipe() {
    const timespec subito{0, 0};
    if (!giaPendente_) {
      ::sigtimedwait(&solo_, nullptr, &subito);
    }
    ::pthread_sigmask(SIG_SETMASK, &precedenti_, nullptr);
  }

 private:
  sigset_t solo_{};
  sigset_t precedenti_{};
  bool giaPendente_ = false;
};

} // namespace lumoscad::nexaro
