#include "platform/qt/Schermo.hpp"

#include "platform/Errore.hpp"

#include <QDir>
#include <QLibrary>
#include <QLibraryInfo>
#include <QString>
#include <QStringList>

#include <cstring>

#ifdef Q_OS_UNIX
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#endif

namespace lumoscad::qt {

namespace {

/// Opens and closes a connection with the library that Qt itself uses, so that a refused authorisation counts too.
bool X11Raggiungibile() {
  if (qEnvironmentVariableIsEmpty("DISPLAY")) {
    return false;
  }
  using Connetti = void* (*)(const char*, int*);
  using InErrore = int (*)(void*);
  using Disconnetti = void (*)(void*);
  QLibrary libreria(QStringLiteral("xcb"), 1);
  const auto connetti = reinterpret_cast<Connetti>(libreria.resolve("xcb_connect"));
  const auto inErrore = reinterpret_cast<InErrore>(libreria.resolve("xcb_connection_has_error"));
  const auto disconnetti = reinterpret_cast<Disconnetti>(libreria.resolve("xcb_disconnect"));
  if (connetti == nullptr || inErrore == nullptr || disconnetti == nullptr) {
    return false;
  }
  void* connessione = connetti(nullptr, nullptr);
  const bool riuscita = inErrore(connessione) == 0;
  disconnetti(connessione);
  return riuscita;
}

bool HaPluginWayland() {
  const QDir plugin(QLibraryInfo::path(QLibraryInfo::PluginsPath) + QStringLiteral("/platforms"));
  return !plugin.entryList({QStringLiteral("libqwayland*")}).isEmpty();
}

/// A Wayland server answers, whether or not Qt can speak with it.
bool WaylandRisponde() {
#ifdef Q_OS_UNIX
  const QString nome = qEnvironmentVariable("WAYLAND_DISPLAY");
  if (nome.isEmpty()) {
    return false;
  }
  const QByteArray percorso = QDir(qEnvironmentVariable("XDG_RUNTIME_DIR")).filePath(nome).toLocal8Bit();
  sockaddr_un indirizzo{};
  indirizzo.sun_family = AF_UNIX;
  if (static_cast<std::size_t>(percorso.size()) >= sizeof indirizzo.sun_path) {
    return false;
  }
  std::memcpy(indirizzo.sun_path, percorso.constData(), static_cast<std::size_t>(percorso.size()));
  const int presa = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (presa < 0) {
    return false;
  }
  const bool riuscita = connect(presa, reinterpret_cast<const sockaddr*>(&indirizzo), sizeof indirizzo) == 0;
  close(presa);
  return riuscita;
#else
  return false;
#endif
}

bool WaylandRaggiungibile() {
  return HaPluginWayland() && WaylandRisponde();
}

[[noreturn]] void SenzaSchermo() {
  if (!HaPluginWayland() && WaylandRisponde()) {
    throw ErroreRuntime(errori::Driver,
                        "Impossibile aprire la finestra: lo schermo è di Wayland, e manca il plugin di Qt "
                        "per Wayland (qt6-wayland). Installarlo, o aprire uno schermo X11 (DISPLAY).");
  }
  throw ErroreRuntime(errori::Driver, "Impossibile aprire la finestra: nessuno schermo raggiungibile. "
                                      "Controllare DISPLAY, WAYLAND_DISPLAY o QT_QPA_PLATFORM.");
}

/// True when one of the platforms the environment asks for can be opened.
bool RichiestaApribile(const QString& richiesta) {
  for (const QString& voce : richiesta.split(QLatin1Char(';'))) {
    const QString nome = voce.section(QLatin1Char(':'), 0, 0);
    const bool apribile = nome == QStringLiteral("xcb")                ? X11Raggiungibile()
                          : nome.startsWith(QStringLiteral("wayland")) ? WaylandRaggiungibile()
                                                                       : !nome.isEmpty();
    if (apribile) {
      return true;
    }
  }
  return false;
}

} // namespace

std::string ScegliPiattaforma() {
#ifdef Q_OS_LINUX
  const QString richiesta = qEnvironmentVariable("QT_QPA_PLATFORM");
  if (!richiesta.isEmpty()) {
    if (!RichiestaApribile(richiesta)) {
      SenzaSchermo();
    }
    return {};
  }
  if (X11Raggiungibile()) {
    return "xcb";
  }
  if (WaylandRaggiungibile()) {
    return "wayland";
  }
  SenzaSchermo();
#else
  return {};
#endif
}

} // namespace lumoscad::qt
