#include "platform/FileLocale.hpp"

#include "platform/Errore.hpp"

#include <cerrno>
#include <fcntl.h>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

namespace lumoscad {
namespace {

/// A file descriptor that closes itself.
class Descrittore {
 public:
  explicit Descrittore(int numero) : numero_(numero) {}
  Descrittore(const Descrittore&) = delete;
  Descrittore& operator=(const Descrittore&) = delete;
  ~Descrittore() {
    if (numero_ >= 0) {
      ::close(numero_);
    }
  }
  [[nodiscard]] int Numero() const { return numero_; }
  /// Closes now and tells whether that went well: a full disk may show only here.
  [[nodiscard]] bool Chiudi() {
    const int numero = numero_;
    numero_ = -1;
    return ::close(numero) == 0;
  }

 private:
  int numero_;
};

[[noreturn]] void Fallito(std::string_view azione, const std::string& percorso, int errore) {
  std::string motivo = "errore di sistema " + std::to_string(errore);
  switch (errore) {
  case EACCES:
  case EPERM:
    motivo = "permesso negato";
    break;
  case ENOENT:
    motivo = "percorso inesistente";
    break;
  case ENOSPC:
  case EDQUOT:
    motivo = "spazio esaurito";
    break;
  case EROFS:
    motivo = "disco in sola lettura";
    break;
  case ELOOP:
    motivo = "al suo posto c'è un collegamento simbolico";
    break;
  case EISDIR:
    motivo = "al suo posto c'è una cartella";
    break;
  default:
    break;
  }
  throw ErroreRuntime(errore == ENOENT ? errori::FileNonTrovato : errori::AccessoAlFile,
                      "Impossibile " + std::string(azione) + " il file locale " + percorso + ": " + motivo);
}

} // namespace

void ScriviFileLocale(const std::string& percorso, std::string_view contenuto) {
  constexpr mode_t privato = S_IRUSR | S_IWUSR;
  Descrittore file(::open(percorso.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, privato));
  if (file.Numero() < 0 || ::fchmod(file.Numero(), privato) != 0) {
    Fallito("creare", percorso, errno);
  }
  while (!contenuto.empty()) {
    const auto scritti = ::write(file.Numero(), contenuto.data(), contenuto.size());
    if (scritti < 0 && errno == EINTR) {
      continue;
    }
    if (scritti < 0) {
      Fallito("scrivere", percorso, errno);
    }
    contenuto.remove_prefix(static_cast<std::size_t>(scritti));
  }
  if (!file.Chiudi()) {
    Fallito("scrivere", percorso, errno);
  }
}

std::vector<std::string> LeggiRigheLocali(const std::string& percorso) {
  errno = 0;
  std::ifstream file(percorso, std::ios::binary);
  if (!file) {
    Fallito("leggere", percorso, errno == 0 ? ENOENT : errno);
  }
  std::vector<std::string> righe;
  for (std::string riga; std::getline(file, riga);) {
    if (!riga.empty() && riga.back() == '\r') {
      riga.pop_back();
    }
    righe.push_back(riga);
  }
  return righe;
}

void CancellaFileLocale(const std::string& percorso) {
  if (::unlink(percorso.c_str()) != 0) {
    Fallito("cancellare", percorso, errno);
  }
}

} // namespace lumoscad
