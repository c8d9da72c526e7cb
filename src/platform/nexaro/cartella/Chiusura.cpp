#include "platform/nexaro/cartella/Chiusura.hpp"

#include <algorithm>
#include <cstddef>
#include <dirent.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace lumoscad::nexaro {

namespace {

using Tenuti = std::array<int, 5>;

/// False where the system has no such call, or does not let it be made.
bool ChiudiPerIntervalli(const Tenuti& tenuti) {
  unsigned inizio = 0;
  for (const int tenuto : tenuti) {
    const auto numero = static_cast<unsigned>(tenuto);
    if (numero > inizio && ::close_range(inizio, numero - 1, 0) != 0) {
      return false;
    }
    inizio = numero + 1;
  }
  return ::close_range(inizio, ~0U, 0) == 0;
}

void ChiudiUno(const Tenuti& tenuti, int numero) {
  if (!std::binary_search(tenuti.begin(), tenuti.end(), numero)) {
    ::close(numero);
  }
}

/// The number that a name of the list stands for; negative for the directory's own names.
int NumeroDi(const char* nome) {
  int numero = 0;
  for (; *nome != '\0'; ++nome) {
    if (*nome < '0' || *nome > '9') {
      return -1;
    }
    numero = numero * 10 + (*nome - '0');
  }
  return numero;
}

/// False where the process cannot see its own descriptors. opendir(3) would allocate, which a child of a process with
/// threads must not.
bool ChiudiPerElenco(const Tenuti& tenuti) {
  const int elenco = ::open("/proc/self/fd", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (elenco < 0) {
    return false;
  }
  alignas(dirent64) std::array<char, 4096> tampone;
  ssize_t letti = 0;
  while ((letti = ::getdents64(elenco, tampone.data(), tampone.size())) > 0) {
    for (std::size_t posto = 0; posto < static_cast<std::size_t>(letti);) {
      const auto* voce = reinterpret_cast<const dirent64*>(tampone.data() + posto);
      if (const int numero = NumeroDi(voce->d_name); numero >= 0 && numero != elenco) {
        ChiudiUno(tenuti, numero);
      }
      posto += voce->d_reclen;
    }
  }
  ::close(elenco);
  return letti == 0;
}

void ChiudiUnoAUno(const Tenuti& tenuti) {
  // Tried one by one up to a bound that takes a fraction of a second: a process may be allowed a thousand times as
  // many.
  static constexpr rlim_t Massimo = rlim_t{1} << 20U;
  rlimit limite{};
  const bool noto = ::getrlimit(RLIMIT_NOFILE, &limite) == 0;
  const auto fine = static_cast<int>(noto ? std::min(limite.rlim_max, Massimo) : Massimo);
  for (int numero = 0; numero < fine; ++numero) {
    ChiudiUno(tenuti, numero);
  }
}

} // namespace

void ChiudiTranne(const Tenuti& tenuti) {
  if (!ChiudiPerIntervalli(tenuti) && !ChiudiPerElenco(tenuti)) {
    ChiudiUnoAUno(tenuti);
  }
}

} // namespace lumoscad::nexaro
