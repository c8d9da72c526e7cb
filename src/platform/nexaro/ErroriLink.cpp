#include "platform/nexaro/ErroriLink.hpp"

#include <cerrno>
#include <utility>

namespace lumoscad::nexaro {

namespace {

struct Voce {
  int codice;
  int numero;
  const char* motivo;
};

constexpr Voce voci[] = {
    {ENOENT, errori::FileNonTrovato, "file inesistente"},
    {EACCES, ErrorePermesso, "permesso negato"},
    {EPERM, ErrorePermesso, "operazione non permessa"},
    {EROFS, errori::AccessoAlFile, "file system in sola lettura"},
    {ENOTDIR, errori::AccessoAlFile, "un elemento del percorso non è una cartella"},
    {EISDIR, errori::AccessoAlFile, "è una cartella"},
    {EEXIST, errori::AccessoAlFile, "il file esiste già"},
    {ENOTEMPTY, errori::AccessoAlFile, "la cartella non è vuota"},
    {ELOOP, errori::AccessoAlFile, "collegamento simbolico non ammesso"},
    {ENAMETOOLONG, errori::AccessoAlFile, "nome troppo lungo"},
    {EINVAL, errori::AccessoAlFile, "non è un file ordinario"},
    {ETXTBSY, errori::AccessoAlFile, "file in uso"},
    {EBUSY, errori::AccessoAlFile, "risorsa occupata"},
    {ECONNREFUSED, ErroreCollegamento, "connessione rifiutata"},
    {ENXIO, errori::AccessoAlFile, "dispositivo non disponibile"},
    {ENOSPC, ErroreCollegamento, "spazio esaurito"},
    {EDQUOT, ErroreCollegamento, "quota di disco esaurita"},
    {EFBIG, ErroreCollegamento, "file troppo grande"},
    {EIO, ErroreCollegamento, "errore di lettura o scrittura"},
    {EMFILE, ErroreCollegamento, "troppi file aperti"},
    {ENFILE, ErroreCollegamento, "troppi file aperti nel sistema"},
    {ENOMEM, errori::MemoriaInsufficiente, "memoria insufficiente"},
    {EAGAIN, ErroreCollegamento, "risorse del sistema esaurite"},
    {ENOEXEC, ErroreCollegamento, "il programma non è eseguibile su questo sistema"},
    {E2BIG, ErroreCollegamento, "parametri troppo lunghi"},
};

const Voce* Cerca(int codice) {
  for (const auto& voce : voci) {
    if (voce.codice == codice) {
      return &voce;
    }
  }
  return nullptr;
}

} // namespace

std::string MotivoSistema(int codice) {
  const auto* voce = Cerca(codice);
  return voce != nullptr ? voce->motivo : "errore di sistema " + std::to_string(codice);
}

ErroreRuntime ErroreSistema(std::string_view operazione, int codice) {
  const auto* voce = Cerca(codice);
  return {voce != nullptr ? voce->numero : ErroreCollegamento,
          std::string(operazione) + ": " + MotivoSistema(codice) + "."};
}

ErroreRuntime ErroreLink(std::string descrizione) {
  return {ErroreCollegamento, std::move(descrizione)};
}

} // namespace lumoscad::nexaro
