#include "Figlio.hpp"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace lumoscad::test {
namespace {

using Parole = std::vector<std::string>;

/// Starts a program that ends with this one, "NAME=value" entries first among its words. Nothing of this process is
/// copied for it: under a sanitizer that would take longer than most programs run.
pid_t Avvia(Parole parole, const posix_spawn_file_actions_t* file) {
  parole.insert(parole.begin(), {"/usr/bin/setpriv", "--pdeathsig", "KILL", "--"});
  std::vector<char*> puntatori;
  puntatori.reserve(parole.size() + 1);
  for (auto& parola : parole) {
    puntatori.push_back(parola.data());
  }
  puntatori.push_back(nullptr);
  pid_t processo = -1;
  const int errore = ::posix_spawn(&processo, puntatori.front(), file, nullptr, puntatori.data(), environ);
  if (errore != 0) {
    throw std::system_error(errore, std::generic_category(), "posix_spawn");
  }
  return processo;
}

/// What comes out of `tubo` until its end; it may take a minute.
std::string Tutto(int tubo) {
  std::string testo;
  const auto fine = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  for (std::array<char, 4096> pezzo{};;) {
    pollfd attesa{tubo, POLLIN, 0};
    const auto resto = std::chrono::duration_cast<std::chrono::milliseconds>(fine - std::chrono::steady_clock::now());
    if (resto.count() <= 0) {
      return testo;
    }
    if (::poll(&attesa, 1, static_cast<int>(resto.count())) > 0) {
      const auto letti = ::read(tubo, pezzo.data(), pezzo.size());
      if (letti <= 0) {
        return testo;
      }
      testo.append(pezzo.data(), static_cast<std::size_t>(letti));
    }
  }
}

} // namespace

std::optional<std::string> Comando(const Parole& argomenti, const Parole& ambiente) {
  std::array<int, 2> tubo{};
  if (::pipe2(tubo.data(), O_CLOEXEC) != 0) {
    throw std::system_error(errno, std::generic_category(), "pipe2");
  }
  posix_spawn_file_actions_t file;
  posix_spawn_file_actions_init(&file);
  posix_spawn_file_actions_addopen(&file, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&file, tubo[1], STDOUT_FILENO);
  posix_spawn_file_actions_addopen(&file, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  Parole parole{"/usr/bin/env", "-C", "/"};
  parole.insert(parole.end(), ambiente.begin(), ambiente.end());
  parole.insert(parole.end(), argomenti.begin(), argomenti.end());
  const pid_t processo = Avvia(std::move(parole), &file);
  posix_spawn_file_actions_destroy(&file);
  ::close(tubo[1]);
  auto uscita = Tutto(tubo[0]);
  ::close(tubo[0]);
  int stato = 0;
  if (!Finche([&] { return ::waitpid(processo, &stato, WNOHANG) != 0; })) {
    ::kill(processo, SIGKILL);
    ::waitpid(processo, &stato, 0);
  }
  if (!WIFEXITED(stato) || WEXITSTATUS(stato) != 0) {
    return std::nullopt;
  }
  if (uscita.ends_with('\n')) {
    uscita.pop_back();
  }
  return uscita;
}

Figlio::Figlio(const Parole& argomenti, const Parole& ambiente, const std::filesystem::path& ingresso,
               const std::filesystem::path& uscita, const std::filesystem::path& errori) {
  // A shell opens the files: the input may be a pipe that this process has yet to open.
  Parole parole{"/bin/sh",
                "-c",
                R"(i=$1 o=$2 e=$3; shift 3; exec /usr/bin/env "$@" <"$i" >"$o" 2>"$e")",
                "sh",
                ingresso.string(),
                uscita.string(),
                errori.string()};
  parole.insert(parole.end(), ambiente.begin(), ambiente.end());
  parole.insert(parole.end(), argomenti.begin(), argomenti.end());
  processo_ = Avvia(std::move(parole), nullptr);
}

Figlio::~Figlio() {
  if (!Vivo()) {
    return;
  }
  ::kill(processo_, SIGTERM);
  if (!Attendi(std::chrono::seconds(5))) {
    ::kill(processo_, SIGKILL);
    static_cast<void>(Attendi());
  }
}

bool Figlio::Vivo() {
  int stato = 0;
  if (!stato_ && ::waitpid(processo_, &stato, WNOHANG) == processo_) {
    stato_ = WIFEXITED(stato) ? WEXITSTATUS(stato) : 128 + WTERMSIG(stato);
  }
  return !stato_;
}

std::optional<int> Figlio::Attendi(std::chrono::milliseconds limite) {
  Finche([this] { return !Vivo(); }, limite);
  return stato_;
}

} // namespace lumoscad::test
