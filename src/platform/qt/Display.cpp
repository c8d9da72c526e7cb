#include "platform/qt/Display.hpp"

#include "platform/RuntimeError.hpp"

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
bool X11Reachable() {
  if (qEnvironmentVariableIsEmpty("DISPLAY")) {
    return false;
  }
  using ConnectIt = void* (*)(const char*, int*);
  using InError = int (*)(void*);
  using DisconnectIt = void (*)(void*);
  QLibrary library(QStringLiteral("xcb"), 1);
  const auto connectIt = reinterpret_cast<ConnectIt>(library.resolve("xcb_connect"));
  const auto inError = reinterpret_cast<InError>(library.resolve("xcb_connection_has_error"));
  const auto disconnectIt = reinterpret_cast<DisconnectIt>(library.resolve("xcb_disconnect"));
  if (connectIt == nullptr || inError == nullptr || disconnectIt == nullptr) {
    return false;
  }
  void* connection = connectIt(nullptr, nullptr);
  const bool succeeded = inError(connection) == 0;
  disconnectIt(connection);
  return succeeded;
}

bool WaylandPluginPresent() {
  const QDir plugin(QLibraryInfo::path(QLibraryInfo::PluginsPath) + QStringLiteral("/platforms"));
  return !plugin.entryList({QStringLiteral("libqwayland*")}).isEmpty();
}

/// A Wayland server answers, whether or not Qt can speak with it.
bool WaylandAnswers() {
#ifdef Q_OS_UNIX
  const QString name = qEnvironmentVariable("WAYLAND_DISPLAY");
  if (name.isEmpty()) {
    return false;
  }
  const QByteArray path = QDir(qEnvironmentVariable("XDG_RUNTIME_DIR")).filePath(name).toLocal8Bit();
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (static_cast<std::size_t>(path.size()) >= sizeof address.sun_path) {
    return false;
  }
  std::memcpy(address.sun_path, path.constData(), static_cast<std::size_t>(path.size()));
  const int peer = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (peer < 0) {
    return false;
  }
  const bool succeeded = connect(peer, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  close(peer);
  return succeeded;
#else
  return false;
#endif
}

bool WaylandReachable() {
  return WaylandPluginPresent() && WaylandAnswers();
}

[[noreturn]] void WithoutScreen() {
  if (!WaylandPluginPresent() && WaylandAnswers()) {
    throw RuntimeError(errors::Driver,
                       "Impossibile aprire la finestra: lo schermo è di Wayland, e manca il plugin di Qt "
                       "per Wayland (qt6-wayland). Installarlo, o aprire uno schermo X11 (DISPLAY).");
  }
  throw RuntimeError(errors::Driver, "Impossibile aprire la finestra: nessuno schermo raggiungibile. "
                                     "Controllare DISPLAY, WAYLAND_DISPLAY o QT_QPA_PLATFORM.");
}

/// True when one of the platforms the environment asks for can be opened.
bool RequestCanOpen(const QString& request) {
  for (const QString& entry : request.split(QLatin1Char(';'))) {
    const QString name = entry.section(QLatin1Char(':'), 0, 0);
    const bool canOpen = name == QStringLiteral("xcb")                ? X11Reachable()
                         : name.startsWith(QStringLiteral("wayland")) ? WaylandReachable()
                                                                      : !name.isEmpty();
    if (canOpen) {
      return true;
    }
  }
  return false;
}

} // namespace

std::string ChoosePlatform() {
#ifdef Q_OS_LINUX
  const QString request = qEnvironmentVariable("QT_QPA_PLATFORM");
  if (!request.isEmpty()) {
    if (!RequestCanOpen(request)) {
      WithoutScreen();
    }
    return {};
  }
  if (X11Reachable()) {
    return "xcb";
  }
  if (WaylandReachable()) {
    return "wayland";
  }
  WithoutScreen();
#else
  return {};
#endif
}

} // namespace lumoscad::qt
