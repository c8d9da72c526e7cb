#pragma once

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace lumoscad::test {

/// A process of its own in which a piece of a test runs: what happens to it happens to nobody else, and it can be
/// stopped, let go on, and given up.
class Chiamante {
 public:
  /// Runs `lavoro` there; its text is what `Esito` returns.
  explicit Chiamante(const std::function<std::string()>& lavoro) {
    int tubo[2]{};
    if (::pipe2(tubo, O_CLOEXEC) != 0 || (pid_ = ::fork()) < 0) {
      throw std::runtime_error("fork");
    }
    if (pid_ == 0) {
      std::string testo;
      try {
        testo = lavoro();
      } catch (const std::exception& errore) {
        testo = std::string("errore: ") + errore.what();
      }
      ::_exit(::write(tubo[1], testo.data(), testo.size()) == static_cast<ssize_t>(testo.size()) ? 0 : 1);
    }
    ::close(tubo[1]);
    lettura_ = tubo[0];
  }
  Chiamante(const Chiamante&) = delete;
  Chiamante& operator=(const Chiamante&) = delete;
  ~Chiamante() {
    ::kill(pid_, SIGKILL);
    ::waitpid(pid_, nullptr, 0);
    ::close(lettura_);
  }

  /// Stops it, and lets it go on after `durata`.
  void Ferma(std::chrono::milliseconds durata) const {
    ::kill(pid_, SIGSTOP);
    std::this_thread::sleep_for(durata);
    ::kill(pid_, SIGCONT);
  }

  /// What it had to say; "(fermo)" when it does not within `limite`.
  [[nodiscard]] std::string Esito(std::chrono::milliseconds limite) const {
    pollfd pronto{lettura_, POLLIN, 0};
    if (::poll(&pronto, 1, static_cast<int>(limite.count())) <= 0) {
      return "(fermo)";
    }
    std::string testo(4096, '\0');
    const auto letti = ::read(lettura_, testo.data(), testo.size());
    testo.resize(letti > 0 ? static_cast<std::size_t>(letti) : 0);
    return testo;
  }

 private:
  pid_t pid_ = -1;
  int lettura_ = -1;
};

} // namespace lumoscad::test
