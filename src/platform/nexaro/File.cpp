#include "platform/nexaro/File.hpp"

#include "platform/nexaro/Chiamata.hpp"
#include "platform/nexaro/ErroriLink.hpp"
#include "platform/nexaro/Resti.hpp"

#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <random>
#include <sys/file.h>
#include <sys/stat.h>

namespace lumoscad::nexaro {

namespace {

/// Locks a new file as one that is being written. False where somebody came in between and took it for a leftover: it
/// has lost its name, or is about to. Where there are no such locks, the process' number alone keeps it.
bool Trattieni(const base::Descriptor& file) {
  struct stat stato {};
  const bool preso = ::flock(file.Number(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
  return preso && ::fstat(file.Number(), &stato) == 0 && stato.st_nlink > 0;
}

} // namespace

FileProvvisorio::FileProvvisorio(const std::string& destinazione, mode_t modo, const std::string& operazione) {
  static constexpr int Tentativi = 100;
  const auto barra = destinazione.rfind('/');
  const auto cartella = barra == std::string::npos ? std::string("./") : destinazione.substr(0, barra + 1);
  TogliResti(cartella);
  std::random_device caso;
  for (int tentativo = 0; tentativo < Tentativi && !descrittore_.Opened(); ++tentativo) {
    nome_ = cartella + NomeProvvisorio(::getpid(), caso());
    descrittore_ = base::Descriptor(::open(nome_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, modo));
    if (!descrittore_.Opened() && errno != EEXIST) {
      break;
    }
    if (descrittore_.Opened() && !Trattieni(descrittore_)) {
      descrittore_.Close();
      ::unlink(nome_.c_str());
      errno = EAGAIN;
    }
  }
  if (!descrittore_.Opened()) {
    throw ErroreSistema(operazione, errno);
  }
}

FileProvvisorio::~FileProvvisorio() {
  if (!definitivo_) {
    ::unlink(nome_.c_str());
  }
}

void FileProvvisorio::Scrivi(std::string_view dati, const std::string& operazione) const {
  while (!dati.empty()) {
    const auto scritti = ::write(descrittore_.Number(), dati.data(), dati.size());
    if (scritti >= 0) {
      dati.remove_prefix(static_cast<std::size_t>(scritti));
    } else if (errno != EINTR) {
      throw ErroreSistema(operazione, errno);
    }
  }
}

void FileProvvisorio::Pubblica(const std::string& destinazione, const std::string& operazione) {
  // Closed once it has its final name: until then it must stay locked. After fsync(2) close(2) has nothing left to say.
  if (::fsync(descrittore_.Number()) != 0 || ::rename(nome_.c_str(), destinazione.c_str()) != 0) {
    throw ErroreSistema(operazione, errno);
  }
  definitivo_ = true;
  descrittore_.Close();
}

namespace {

int ErroreGenere(const struct stat& stato) {
  const int altro = S_ISDIR(stato.st_mode) ? EISDIR : EINVAL;
  return S_ISREG(stato.st_mode) ? 0 : altro;
}

} // namespace

std::string ParentDirectory(std::string_view path) {
  const auto slash = path.rfind('/');
  return slash == 0 ? "/" : std::string(path.substr(0, slash));
}

int ErroreOrdinario(const std::string& percorso) {
  struct stat stato {};
  return ::stat(percorso.c_str(), &stato) == 0 ? ErroreGenere(stato) : errno;
}

base::Descriptor ApriOrdinario(const std::string& percorso, const std::string& operazione) {
  // Opens without waiting: a pipe in the file's place must not hold the caller up.
  base::Descriptor descrittore(::open(percorso.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  struct stat stato {};
  if (!descrittore.Opened() || ::fstat(descrittore.Number(), &stato) != 0) {
    throw ErroreSistema(operazione, errno);
  }
  if (const int genere = ErroreGenere(stato); genere != 0) {
    throw ErroreSistema(operazione, genere);
  }
  return descrittore;
}

std::size_t LeggiBlocco(const base::Descriptor& file, std::span<char> tampone, const std::string& operazione) {
  for (;;) {
    const auto letti = ::read(file.Number(), tampone.data(), tampone.size());
    if (letti >= 0) {
      return static_cast<std::size_t>(letti);
    }
    if (errno != EINTR) {
      throw ErroreSistema(operazione, errno);
    }
  }
}

void CopiaFile(const std::string& sorgente, const std::string& destinazione, mode_t modo, const std::string& operazione,
               const Misura& misura, std::optional<std::chrono::milliseconds> attesa) {
  const auto termine = Orologio::now() + attesa.value_or(std::chrono::milliseconds(0));
  const auto ingresso = ApriOrdinario(sorgente, operazione);
  FileProvvisorio copia(destinazione, modo, operazione);
  std::array<char, 65536> tampone;
  auto resta = misura.massimo;
  bool scaduto = false;
  for (std::size_t letti = 0; (letti = LeggiBlocco(ingresso, tampone, operazione)) > 0;) {
    // The look that follows the end of the time may find the end of the file, but no more of it.
    if (scaduto) {
      throw ErroreLink(operazione + ": " + MotivoTroppoLento(*attesa) + ".");
    }
    const bool troppi = letti > resta;
    if (troppi && !misura.tronca) {
      throw ErroreLink(operazione + ": " + MotivoTroppoGrande + ".");
    }
    const auto copiati = troppi ? static_cast<std::size_t>(resta) : letti;
    copia.Scrivi({tampone.data(), copiati}, operazione);
    resta -= copiati;
    if (troppi) {
      break;
    }
    scaduto = attesa && TempoRestante(termine).count() == 0;
  }
  copia.Pubblica(destinazione, operazione);
}

} // namespace lumoscad::nexaro
