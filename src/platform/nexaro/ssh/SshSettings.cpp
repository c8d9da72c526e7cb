#include "platform/nexaro/ssh/SshSettings.hpp"

#include "platform/nexaro/LinkErrors.hpp"
#include "platform/nexaro/Settings.hpp"

#include <charconv>

namespace lumoscad::nexaro {

namespace {

unsigned ReadPort() {
  const auto text = Setting("NEXARO_SSH_PORTA");
  if (text.empty()) {
    return 22;
  }
  unsigned port = 0;
  const auto* finish = text.data() + text.size();
  const auto [arrival, error] = std::from_chars(text.data(), finish, port);
  if (error != std::errc() || arrival != finish || port < 1 || port > 65535) {
    throw LinkError("NEXARO_SSH_PORTA deve essere un numero da 1 a 65535: vale «" + text + "».");
  }
  return port;
}

/// A relative path would depend on where the calling program happens to stand.
std::string ReadAbsolutePath(const char* name) {
  auto path = Setting(name);
  if (!path.empty() && !path.starts_with('/')) {
    throw LinkError(std::string(name) + " deve essere un percorso assoluto: vale «" + path + "».");
  }
  while (path.size() > 1 && path.ends_with('/')) {
    path.pop_back();
  }
  return path;
}

} // namespace

SshSettings ReadSshSettings() {
  const auto current = CurrentUser();
  auto home = Setting("HOME");
  if (!home.starts_with('/')) {
    home = current.home;
  }
  SshSettings settings;
  settings.port = ReadPort();
  settings.user = Setting("NEXARO_SSH_UTENTE");
  if (settings.user.empty()) {
    settings.user = current.name;
  }
  if (settings.user.empty()) {
    throw LinkError("Manca l'impostazione NEXARO_SSH_UTENTE, l'utente sull'host.");
  }
  settings.key = ReadAbsolutePath("NEXARO_SSH_CHIAVE");
  settings.directory = home.empty() ? "" : home + "/.ssh";
  settings.knownHosts = ReadAbsolutePath("NEXARO_SSH_NOTI");
  if (settings.knownHosts.empty()) {
    if (home.empty()) {
      throw LinkError("Manca l'impostazione NEXARO_SSH_NOTI, il file degli host noti: l'utente non ha una cartella.");
    }
    settings.knownHosts = settings.directory + "/known_hosts";
  }
  if (settings.knownHosts.find('%') != std::string::npos) {
    throw LinkError(
        "Il percorso del file degli host noti (NEXARO_SSH_NOTI) non può contenere il carattere «%»: vale «" +
        settings.knownHosts + "».");
  }
  settings.programs = ReadAbsolutePath("NEXARO_PROGRAMMI");
  settings.encoding = Encoding(Setting("NEXARO_CODIFICA"));
  settings.timeout = ReadTimeout();
  return settings;
}

} // namespace lumoscad::nexaro
