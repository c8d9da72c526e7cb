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

namespace lumoscad::prova {

/// A forked process that plays another program of this machine: it does `compito` and then stays until the object goes,
/// or the test.
class AltroProcesso {
 public:
  /// Returns once the other has done its task; `Riuscito` tells whether without an exception.
  explicit AltroProcesso(const std::function<void()>& compito) {
    std::array<int, 2> fatto{};
    std::array<int, 2> congedo{};
    if (::pipe(fatto.data()) != 0 || ::pipe(congedo.data()) != 0) {
      throw std::system_error(errno, std::generic_category(), "pipe");
    }
    processo_ = ::fork();
    if (processo_ < 0) {
      throw std::system_error(errno, std::generic_category(), "fork");
    }
    if (processo_ == 0) {
      ::close(fatto[0]);
      ::close(congedo[1]);
      Vivi(compito, fatto[1], congedo[0]);
    }
    ::close(fatto[1]);
    ::close(congedo[0]);
    congedo_ = congedo[1];
    char esito = 0;
    riuscito_ = ::read(fatto[0], &esito, 1) == 1 && esito == '+';
    ::close(fatto[0]);
  }
  AltroProcesso(const AltroProcesso&) = delete;
  AltroProcesso& operator=(const AltroProcesso&) = delete;
  ~AltroProcesso() { Termina(); }

  [[nodiscard]] bool Riuscito() const { return riuscito_; }
  [[nodiscard]] pid_t Numero() const { return processo_; }

  /// Kills the process as the kernel does when memory is short.
  void Uccidi() {
    ::kill(processo_, SIGKILL);
    Termina();
  }
  /// Lets the process end by itself.
  void Termina() {
    if (processo_ > 0) {
      ::close(congedo_);
      while (::waitpid(processo_, nullptr, 0) < 0 && errno == EINTR) {
      }
      processo_ = -1;
    }
  }

 private:
  [[noreturn]] static void Vivi(const std::function<void()>& compito, int fatto, int congedo) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    char esito = '+';
    try {
      compito();
    } catch (...) {
      esito = '-';
    }
    while (::write(fatto, &esito, 1) < 0 && errno == EINTR) {
    }
    char nulla = 0;
    while (::read(congedo, &nulla, 1) < 0 && errno == EINTR) {
    }
    ::_exit(0);
  }

  pid_t processo_ = -1;
  int congedo_ = -1;
  bool riuscito_ = false;
};

} // namespace lumoscad::prova
