#include "platform/nexaro/ErroriLink.hpp"
#include "platform/nexaro/Impostazioni.hpp"
#include "platform/nexaro/Nexaro.hpp"
#include "platform/nexaro/Postazione.hpp"

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace lumoscad::nexaro {

namespace {

/// The workstation's identifier becomes part of file names here and on the host.
std::string LeggiPostazione() {
  static constexpr std::size_t LunghezzaMassima = 100;
  auto postazione = Impostazione("NEXARO_POSTAZIONE");
  if (postazione.empty()) {
    postazione = PostazionePredefinita();
  }
  bool valida = postazione.size() <= LunghezzaMassima && postazione.find_first_not_of(' ') != std::string::npos;
  for (const char carattere : postazione) {
    const auto codice = static_cast<unsigned char>(carattere);
    valida = valida && codice >= 0x20 && codice != 0x7F && carattere != '/' && carattere != '\\';
  }
  if (!valida) {
    throw ErroreLink("Il codice della postazione (NEXARO_POSTAZIONE) non può far parte di un nome di file.");
  }
  return postazione;
}

std::string SenzaBarraFinale(std::string percorso) {
  while (percorso.size() > 1 && percorso.back() == '/') {
    percorso.pop_back();
  }
  return percorso;
}

/// The place of the user's private directory where no setting names one.
std::string CartellaPredefinita() {
  const auto esecuzione = Impostazione("XDG_RUNTIME_DIR");
  if (esecuzione.starts_with('/')) {
    return SenzaBarraFinale(esecuzione) + "/lumoscad";
  }
  auto temporanea = Impostazione("TMPDIR");
  if (!temporanea.starts_with('/')) {
    temporanea = "/tmp";
  }
  return SenzaBarraFinale(temporanea) + "/lumoscad-" + std::to_string(::getuid());
}

/// Request files are written here under names that anyone can foretell: whoever else can write to the directory could
/// put a link or a file of his own in their place. It is used only when it is safely ours.
std::string CartellaPrivata(const std::string& percorso) {
  struct stat stato {};
  if (::lstat(percorso.c_str(), &stato) != 0) {
    throw ErroreSistema("Apertura della cartella locale " + percorso, errno);
  }
  const auto rifiuta = [&percorso](const std::string& motivo) {
    throw ErroreRuntime(ErrorePermesso, "La cartella locale " + percorso + " non è sicura: " + motivo + ".");
  };
  if (S_ISLNK(stato.st_mode)) {
    rifiuta("è un collegamento simbolico");
  }
  if (!S_ISDIR(stato.st_mode)) {
    rifiuta("non è una cartella");
  }
  if (stato.st_uid != ::geteuid()) {
    rifiuta("appartiene a un altro utente");
  }
  if ((stato.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
    rifiuta("è accessibile ad altri utenti");
  }
  return percorso;
}

std::string LeggiCartellaLocale() {
  const auto scelta = Impostazione("NEXARO_CARTELLA_LOCALE");
  if (scelta.empty()) {
    const auto predefinita = CartellaPredefinita();
    if (::mkdir(predefinita.c_str(), S_IRWXU) != 0 && errno != EEXIST) {
      throw ErroreSistema("Creazione della cartella locale " + predefinita, errno);
    }
    return CartellaPrivata(predefinita);
  }
  if (!scelta.starts_with('/')) {
    throw ErroreLink("NEXARO_CARTELLA_LOCALE deve essere un percorso assoluto: vale «" + scelta + "».");
  }
  return CartellaPrivata(SenzaBarraFinale(scelta));
}

} // namespace

Ambiente LeggiAmbiente() {
  return {LeggiPostazione(), LeggiCartellaLocale()};
}

} // namespace lumoscad::nexaro
