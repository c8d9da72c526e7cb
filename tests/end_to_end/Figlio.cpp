#include "Figlio.hpp"

#include "platform/nexaro/cartella/Process.hpp"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace lumoscad::prova {
namespace {

constexpr std::size_t MassimoUscita = 4U << 20U;

std::vector<char*> Puntatori(std::vector<std::string>& testi) {
  std::vector<char*> puntatori;
  for (auto& testo : testi) {
    puntatori.push_back(testo.data());
  }
  puntatori.push_back(nullptr);
  return puntatori;
}

} // namespace

std::optional<std::string> Comando(const std::vector<std::string>& argomenti,
                                   const std::vector<std::string>& ambiente) {
  auto esito = nexaro::Run({"/usr/bin/env", argomenti, ambiente, "/", std::chrono::seconds(60), MassimoUscita, 2000});
  if (esito.finish != nexaro::ProcessEnd::Exited || esito.state != 0) {
    return std::nullopt;
  }
  if (esito.output.ends_with('\n')) {
    esito.output.pop_back();
  }
  return std::move(esito.output);
}

Figlio::Figlio(const std::vector<std::string>& argomenti, const std::vector<std::string>& ambiente,
               const std::filesystem::path& ingresso, const std::filesystem::path& uscita,
               const std::filesystem::path& errori) {
  // env puts the variables in place: after the fork only async-signal-safe calls are made.
  std::vector<std::string> testi{"/usr/bin/env"};
  testi.insert(testi.end(), ambiente.begin(), ambiente.end());
  testi.insert(testi.end(), argomenti.begin(), argomenti.end());
  const auto puntatori = Puntatori(testi);
  processo_ = ::fork();
  if (processo_ < 0) {
    throw std::system_error(errno, std::generic_category(), "fork");
  }
  if (processo_ == 0) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    constexpr int Nuovo = O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC;
    ::dup2(::open(ingresso.c_str(), O_RDONLY | O_CLOEXEC), STDIN_FILENO);
    ::dup2(::open(uscita.c_str(), Nuovo, 0600), STDOUT_FILENO);
    ::dup2(::open(errori.c_str(), Nuovo, 0600), STDERR_FILENO);
    ::execv(puntatori.front(), puntatori.data());
    ::_exit(127);
  }
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

} // namespace lumoscad::prova
