#include "platform/nexaro/Resti.hpp"

#include "platform/base/Descriptor.hpp"

#include <cerrno>
#include <charconv>
#include <csignal>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <fstream>
#include <memory>
#include <optional>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace lumoscad::nexaro {
namespace {

constexpr std::string_view Prefisso = ".lumoscad-";

struct Chiudi {
  void operator()(DIR* cartella) const { ::closedir(cartella); }
};

/// Reads a number of decimal digits alone from the start of `testo`.
template <typename Numero> bool Taglia(std::string_view& testo, Numero& numero) {
  const auto* fine = testo.data() + testo.size();
  const bool cifra = !testo.empty() && testo.front() >= '0' && testo.front() <= '9';
  const auto [arrivo, errore] = std::from_chars(testo.data(), fine, numero);
  testo.remove_prefix(static_cast<std::size_t>(arrivo - testo.data()));
  return cifra && errore == std::errc();
}

/// The process that a temporary file's name tells; none where it is no such name.
std::optional<pid_t> ProcessoDi(std::string_view nome) {
  pid_t processo = 0;
  unsigned numero = 0;
  if (!nome.starts_with(Prefisso)) {
    return std::nullopt;
  }
  nome.remove_prefix(Prefisso.size());
  if (!Taglia(nome, processo) || processo <= 0 || !nome.starts_with('-')) {
    return std::nullopt;
  }
  nome.remove_prefix(1);
  return Taglia(nome, numero) && nome.empty() ? std::optional(processo) : std::nullopt;
}

std::time_t Ora(clockid_t orologio) {
  timespec ora{};
  ::clock_gettime(orologio, &ora);
  return ora.tv_sec;
}

/// When a process began, by the clock of the day; none where the system does not tell.
std::optional<std::time_t> InizioDi(pid_t processo) {
  std::ifstream file("/proc/" + std::to_string(processo) + "/stat");
  std::string campo;
  std::getline(file, campo, '\0');
  // The second field, the program's name, may hold blanks and parentheses; the start is field 22, in ticks since boot.
  const auto dopoIlNome = campo.rfind(") ");
  if (dopoIlNome == std::string::npos) {
    return std::nullopt;
  }
  std::string_view resto(campo);
  resto.remove_prefix(dopoIlNome + 2);
  for (int numero = 3; numero < 22; ++numero) {
    const auto spazio = resto.find(' ');
    if (spazio == std::string_view::npos) {
      return std::nullopt;
    }
    resto.remove_prefix(spazio + 1);
  }
  unsigned long long scatti = 0;
  const auto alSecondo = ::sysconf(_SC_CLK_TCK);
  if (!Taglia(resto, scatti) || alSecondo <= 0) {
    return std::nullopt;
  }
  return Ora(CLOCK_REALTIME) - Ora(CLOCK_BOOTTIME) +
         static_cast<std::time_t>(scatti / static_cast<unsigned long long>(alSecondo));
}

/// Whether `processo` can be the one that wrote a file at the time `scritto`.
bool PuoAverScritto(pid_t processo, std::time_t scritto) {
  constexpr std::time_t Arrotondamenti = 3;
  if (::kill(processo, 0) != 0 && errno == ESRCH) {
    return false;
  }
  const auto inizio = InizioDi(processo);
  return !inizio || *inizio <= scritto + Arrotondamenti;
}

void TogliSeResto(int cartella, const char* nome) {
  const auto processo = ProcessoDi(nome);
  if (!processo) {
    return;
  }
  const base::Descriptor file(::openat(cartella, nome, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  struct stat stato {};
  if (!file.Opened() || ::fstat(file.Number(), &stato) != 0 || !S_ISREG(stato.st_mode) || stato.st_uid != ::geteuid() ||
      PuoAverScritto(*processo, stato.st_mtime)) {
    return;
  }
  if (::flock(file.Number(), LOCK_EX | LOCK_NB) == 0) {
    ::unlinkat(cartella, nome, 0);
  }
}

} // namespace

std::string NomeProvvisorio(long processo, unsigned numero) {
  return std::string(Prefisso) + std::to_string(processo) + "-" + std::to_string(numero);
}

void TogliResti(const std::string& cartella) noexcept {
  try {
    const std::unique_ptr<DIR, Chiudi> aperta(::opendir(cartella.c_str()));
    while (const dirent* voce = aperta ? ::readdir(aperta.get()) : nullptr) {
      TogliSeResto(::dirfd(aperta.get()), voce->d_name);
    }
  } catch (...) { // NOLINT(bugprone-empty-catch): what is left stays for the next one
  }
}

} // namespace lumoscad::nexaro
