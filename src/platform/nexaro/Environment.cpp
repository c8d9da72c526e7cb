#include "platform/nexaro/LinkErrors.hpp"
#include "platform/nexaro/Nexaro.hpp"
#include "platform/nexaro/Settings.hpp"
#include "platform/nexaro/Workstation.hpp"

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace lumoscad::nexaro {

namespace {

/// The workstation's identifier becomes part of file names here and on the host.
std::string ReadWorkstation() {
  static constexpr std::size_t LongestLength = 100;
  auto workstation = Setting("NEXARO_POSTAZIONE");
  if (workstation.empty()) {
    workstation = DefaultWorkstation();
  }
  bool valid = workstation.size() <= LongestLength && workstation.find_first_not_of(' ') != std::string::npos;
  for (const char character : workstation) {
    const auto code = static_cast<unsigned char>(character);
    valid = valid && code >= 0x20 && code != 0x7F && character != '/' && character != '\\';
  }
  if (!valid) {
    throw LinkError("Il codice della postazione (NEXARO_POSTAZIONE) non può far parte di un nome di file.");
  }
  return workstation;
}

std::string WithoutTrailingSlash(std::string path) {
  while (path.size() > 1 && path.back() == '/') {
    path.pop_back();
  }
  return path;
}

/// The place of the user's private directory where no setting names one.
std::string DefaultDirectory() {
  const auto execution = Setting("XDG_RUNTIME_DIR");
  if (execution.starts_with('/')) {
    return WithoutTrailingSlash(execution) + "/lumoscad";
  }
  auto temporary = Setting("TMPDIR");
  if (!temporary.starts_with('/')) {
    temporary = "/tmp";
  }
  return WithoutTrailingSlash(temporary) + "/lumoscad-" + std::to_string(::getuid());
}

/// Request files are written here under names that anyone can foretell: whoever else can write to the directory could
/// put a link or a file of his own in their place. It is used only when it is safely ours.
std::string PrivateDirectory(const std::string& path) {
  struct stat state {};
  if (::lstat(path.c_str(), &state) != 0) {
    throw SystemError("Apertura della cartella locale " + path, errno);
  }
  const auto refuse = [&path](const std::string& reason) {
    throw RuntimeError(PermissionError, "La cartella locale " + path + " non è sicura: " + reason + ".");
  };
  if (S_ISLNK(state.st_mode)) {
    refuse("è un collegamento simbolico");
  }
  if (!S_ISDIR(state.st_mode)) {
    refuse("non è una cartella");
  }
  if (state.st_uid != ::geteuid()) {
    refuse("appartiene a un altro utente");
  }
  if ((state.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
    refuse("è accessibile ad altri utenti");
  }
  return path;
}

std::string ReadLocalDirectory() {
  const auto choice = Setting("NEXARO_CARTELLA_LOCALE");
  if (choice.empty()) {
    const auto standard = DefaultDirectory();
    if (::mkdir(standard.c_str(), S_IRWXU) != 0 && errno != EEXIST) {
      throw SystemError("Creazione della cartella locale " + standard, errno);
    }
    return PrivateDirectory(standard);
  }
  if (!choice.starts_with('/')) {
    throw LinkError("NEXARO_CARTELLA_LOCALE deve essere un percorso assoluto: vale «" + choice + "».");
  }
  return PrivateDirectory(WithoutTrailingSlash(choice));
}

} // namespace

Environment ReadEnvironment() {
  return {ReadWorkstation(), ReadLocalDirectory()};
}

} // namespace lumoscad::nexaro
