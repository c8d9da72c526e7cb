#include "platform/base/SystemError.hpp"

#include <algorithm>
#include <array>
#include <cerrno>

namespace lumoscad::base {

namespace {

constexpr auto Names = std::to_array<SystemErrorName>({
    {ENOENT, "file inesistente"},
    {EACCES, "permesso negato"},
    {EPERM, "operazione non permessa"},
    {EROFS, "file system in sola lettura"},
    {ENOTDIR, "un elemento del percorso non è una cartella"},
    {EISDIR, "è una cartella"},
    {EEXIST, "il file esiste già"},
    {ENOTEMPTY, "la cartella non è vuota"},
    {ELOOP, "collegamento simbolico non ammesso"},
    {ENAMETOOLONG, "nome troppo lungo"},
    {EINVAL, "non è un file ordinario"},
    {ETXTBSY, "file in uso"},
    {EBUSY, "risorsa occupata"},
    {ECONNREFUSED, "connessione rifiutata"},
    {ENXIO, "dispositivo non disponibile"},
    {ENOSPC, "spazio esaurito"},
    {EDQUOT, "quota di disco esaurita"},
    {EFBIG, "file troppo grande"},
    {EIO, "errore di lettura o scrittura"},
    {EMFILE, "troppi file aperti"},
    {ENFILE, "troppi file aperti nel sistema"},
    {ENOMEM, "memoria insufficiente"},
    {EAGAIN, "risorse del sistema esaurite"},
    {ENOEXEC, "il programma non è eseguibile su questo sistema"},
    {E2BIG, "parametri troppo lunghi"},
});

} // namespace

std::string SystemErrorText(int code) {
  return SystemErrorText(code, Names);
}

std::string SystemErrorText(int code, std::span<const SystemErrorName> names) {
  const auto found =
      std::find_if(names.begin(), names.end(), [code](const SystemErrorName& name) { return name.code == code; });
  return found != names.end() ? found->text : "errore di sistema " + std::to_string(code);
}

} // namespace lumoscad::base
