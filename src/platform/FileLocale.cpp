#include "platform/FileLocale.hpp"

#include "platform/Errore.hpp"
#include "platform/base/Descriptor.hpp"
#include "platform/base/SystemError.hpp"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace lumoscad {
namespace {

// They speak of the place that the file was to have, which a name for every failure could not.
constexpr auto Motivi = std::to_array<base::SystemErrorName>({
    {EACCES, "permesso negato"},
    {EPERM, "permesso negato"},
    {ENOENT, "percorso inesistente"},
    {ENOSPC, "spazio esaurito"},
    {EDQUOT, "spazio esaurito"},
    {EROFS, "disco in sola lettura"},
    {ELOOP, "al suo posto c'è un collegamento simbolico"},
    {EISDIR, "al suo posto c'è una cartella"},
    {EEXIST, "un altro programma ne ha messo uno al suo posto"},
});

[[noreturn]] void Fallito(std::string_view azione, const std::string& percorso, int errore) {
  throw ErroreRuntime(errore == ENOENT ? errori::FileNonTrovato : errori::AccessoAlFile,
                      "Impossibile " + std::string(azione) + " il file locale " + percorso + ": " +
                          base::SystemErrorText(errore, Motivi));
}

/// Removes what stands at `percorso`, be it a file of someone else or a pipe that nobody reads; a link and a directory
/// are not ours to remove.
void FaiPosto(const std::string& percorso) {
  struct stat stato {};
  if (::lstat(percorso.c_str(), &stato) != 0) {
    if (errno == ENOENT) {
      return;
    }
    Fallito("creare", percorso, errno);
  }
  if (S_ISLNK(stato.st_mode) || S_ISDIR(stato.st_mode)) {
    Fallito("creare", percorso, S_ISLNK(stato.st_mode) ? ELOOP : EISDIR);
  }
  if (::unlink(percorso.c_str()) != 0 && errno != ENOENT) {
    Fallito("creare", percorso, errno);
  }
}

/// The first bytes of an open file, and one more where it is longer.
std::string Inizio(const base::Descriptor& file, const std::string& percorso) {
  std::string inizio(MassimoLetto + 1, '\0');
  std::size_t quanti = 0;
  while (quanti < inizio.size()) {
    const auto letti = ::read(file.Number(), inizio.data() + quanti, inizio.size() - quanti);
    if (letti < 0 && errno == EINTR) {
      continue;
    }
    if (letti < 0) {
      Fallito("leggere", percorso, errno);
    }
    if (letti == 0) {
      break;
    }
    quanti += static_cast<std::size_t>(letti);
  }
  inizio.resize(quanti);
  return inizio;
}

std::vector<std::string> Righe(std::string_view testo) {
  std::vector<std::string> righe;
  while (!testo.empty()) {
    const auto fine = testo.find('\n');
    std::string_view riga = testo.substr(0, fine);
    testo.remove_prefix(fine == std::string_view::npos ? testo.size() : fine + 1);
    if (riga.ends_with('\r')) {
      riga.remove_suffix(1);
    }
    righe.emplace_back(riga);
  }
  return righe;
}

/// A path of the system ends at its first zero byte: the rest would be dropped in silence.
void RichiediPercorso(std::string_view azione, const std::string& percorso) {
  if (percorso.find('\0') != std::string::npos) {
    throw ErroreRuntime(errori::AccessoAlFile,
                        "Impossibile " + std::string(azione) + " un file locale con un carattere nullo nel nome");
  }
}

} // namespace

void ScriviFileLocale(const std::string& percorso, std::string_view contenuto) {
  constexpr mode_t privato = S_IRUSR | S_IWUSR;
  RichiediPercorso("creare", percorso);
  FaiPosto(percorso);
  base::Descriptor file(::open(percorso.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, privato));
  if (file.Number() < 0 || ::fchmod(file.Number(), privato) != 0) {
    Fallito("creare", percorso, errno);
  }
  while (!contenuto.empty()) {
    const auto scritti = ::write(file.Number(), contenuto.data(), contenuto.size());
    if (scritti < 0 && errno == EINTR) {
      continue;
    }
    if (scritti < 0) {
      Fallito("scrivere", percorso, errno);
    }
    contenuto.remove_prefix(static_cast<std::size_t>(scritti));
  }
  if (file.Close() != 0) {
    Fallito("scrivere", percorso, errno);
  }
}

InizioLocale LeggiInizioLocale(const std::string& percorso) {
  RichiediPercorso("leggere", percorso);
  // Without waiting: a pipe in the file's place must not hold the caller up.
  const base::Descriptor file(::open(percorso.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  struct stat stato {};
  if (file.Number() < 0 || ::fstat(file.Number(), &stato) != 0) {
    Fallito("leggere", percorso, errno);
  }
  if (!S_ISREG(stato.st_mode)) {
    Fallito("leggere", percorso, S_ISDIR(stato.st_mode) ? EISDIR : EINVAL);
  }
  const auto inizio = Inizio(file, percorso);
  return {Righe(std::string_view(inizio).substr(0, MassimoLetto)), inizio.size() > MassimoLetto};
}

void CancellaFileLocale(const std::string& percorso) {
  RichiediPercorso("cancellare", percorso);
  if (::unlink(percorso.c_str()) != 0) {
    Fallito("cancellare", percorso, errno);
  }
}

} // namespace lumoscad
