#include "platform/nexaro/ErroriLink.hpp"

#include "platform/base/SystemError.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

namespace lumoscad::nexaro {

namespace {

struct Voce {
  int codice;
  int numero;
};

/// Those that have a number of their own.
constexpr auto Voci = std::to_array<Voce>({
    {ENOENT, errori::FileNonTrovato},
    {EACCES, ErrorePermesso},
    {EPERM, ErrorePermesso},
    {EROFS, errori::AccessoAlFile},
    {ENOTDIR, errori::AccessoAlFile},
    {EISDIR, errori::AccessoAlFile},
    {EEXIST, errori::AccessoAlFile},
    {ENOTEMPTY, errori::AccessoAlFile},
    {ELOOP, errori::AccessoAlFile},
    {ENAMETOOLONG, errori::AccessoAlFile},
    {EINVAL, errori::AccessoAlFile},
    {ETXTBSY, errori::AccessoAlFile},
    {EBUSY, errori::AccessoAlFile},
    {ENXIO, errori::AccessoAlFile},
    {ENOMEM, errori::MemoriaInsufficiente},
});

} // namespace

ErroreRuntime ErroreSistema(std::string_view operazione, int codice) {
  const auto voce =
      std::find_if(Voci.begin(), Voci.end(), [codice](const Voce& questa) { return questa.codice == codice; });
  return {voce != Voci.end() ? voce->numero : ErroreCollegamento,
          std::string(operazione) + ": " + base::SystemErrorText(codice) + "."};
}

ErroreRuntime ErroreLink(std::string descrizione) {
  return {ErroreCollegamento, std::move(descrizione)};
}

} // namespace lumoscad::nexaro
