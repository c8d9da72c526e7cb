#include "platform/RuntimeError.hpp"
#include "platform/qt/QtDesktop.hpp"
#include "support/Paths.hpp"

#include <QApplication>
#include <QCoreApplication>
#include <QDialog>
#include <QDir>
#include <QLibraryInfo>
#include <QTemporaryDir>
#include <QTimer>

#include <gtest/gtest.h>

#include <clocale>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace lumoscad::qt {
namespace {

/// Puts an environment variable in place for a scope.
class Variabile {
 public:
  Variabile(const char* nome, const char* valore)
      : nome_(nome), prima_(qgetenv(nome)), cera_(qEnvironmentVariableIsSet(nome)) {
    valore == nullptr ? qunsetenv(nome) : qputenv(nome, valore);
  }
  Variabile(const Variabile&) = delete;
  Variabile& operator=(const Variabile&) = delete;
  ~Variabile() { cera_ ? qputenv(nome_, prima_) : qunsetenv(nome_); }

 private:
  const char* nome_;
  QByteArray prima_;
  bool cera_;
};

void AttendiSenzaSchermo(const std::string& parola = "nessuno schermo") {
  try {
    static_cast<void>(CreateDesktop());
    FAIL() << "a desktop without a display";
  } catch (const RuntimeError& errore) {
    EXPECT_EQ(errore.Number(), errors::Driver);
    EXPECT_NE(errore.Description().find(parola), std::string::npos) << errore.Description();
  }
  EXPECT_EQ(QCoreApplication::instance(), nullptr);
}

TEST(Application, WithoutADisplayAnErrorComesInsteadOfTheEndOfTheProcess) {
  const Variabile piattaforma("QT_QPA_PLATFORM", nullptr);
  const Variabile x11("DISPLAY", nullptr);
  const Variabile wayland("WAYLAND_DISPLAY", nullptr);
  AttendiSenzaSchermo();
}

TEST(Application, ADisplayThatNobodyServesIsNoDisplay) {
  const Variabile piattaforma("QT_QPA_PLATFORM", "xcb");
  const Variabile x11("DISPLAY", ":4711");
  AttendiSenzaSchermo();
  const Variabile predefinita("QT_QPA_PLATFORM", nullptr);
  const Variabile wayland("WAYLAND_DISPLAY", "nessuno-0");
  AttendiSenzaSchermo();
}

TEST(Application, AWaylandDisplayWithoutQtsPluginForItIsNamedAsSuch) {
  const QDir plugin(QLibraryInfo::path(QLibraryInfo::PluginsPath) + QStringLiteral("/platforms"));
  if (!plugin.entryList({QStringLiteral("libqwayland*")}).isEmpty()) {
    GTEST_SKIP() << "Qt's plugin for Wayland is installed here";
  }
  const QTemporaryDir esecuzione;
  const QByteArray presa = esecuzione.filePath(QStringLiteral("wayland-0")).toLocal8Bit();
  sockaddr_un indirizzo{};
  indirizzo.sun_family = AF_UNIX;
  std::strncpy(indirizzo.sun_path, presa.constData(), sizeof indirizzo.sun_path - 1);
  const int servente = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  ASSERT_EQ(::bind(servente, reinterpret_cast<const sockaddr*>(&indirizzo), sizeof indirizzo), 0);
  ASSERT_EQ(::listen(servente, 8), 0);
  const Variabile cartella("XDG_RUNTIME_DIR", esecuzione.path().toLocal8Bit().constData());
  const Variabile wayland("WAYLAND_DISPLAY", "wayland-0");
  const Variabile x11("DISPLAY", nullptr);
  const Variabile predefinita("QT_QPA_PLATFORM", nullptr);
  AttendiSenzaSchermo("plugin di Qt per Wayland (qt6-wayland)");
  const Variabile chiesta("QT_QPA_PLATFORM", "wayland");
  AttendiSenzaSchermo("plugin di Qt per Wayland (qt6-wayland)");
  ::close(servente);
  AttendiSenzaSchermo();
}

TEST(Application, ACallingProgramWithoutWindowsIsRefused) {
  int quanti = 1;
  char nome[] = "prova";
  char* argomenti[] = {nome, nullptr};
  const QCoreApplication applicazione(quanti, argomenti);
  try {
    static_cast<void>(CreateDesktop());
    FAIL() << "a desktop without a graphical application";
  } catch (const RuntimeError& errore) {
    EXPECT_EQ(errore.Number(), errors::Driver);
    EXPECT_NE(errore.Description().find("interfaccia grafica"), std::string::npos);
  }
}

TEST(Application, WithoutOneTheDesktopMakesItsOwnKeepsItAndLeavesTheLocaleAsItWas) {
  const Variabile piattaforma("QT_QPA_PLATFORM", "offscreen");
  const Variabile cartella("LOCPATH", (test::BuildFolder() / "locali").c_str());
  const Variabile dellaPersona("LC_ALL", "it_IT.UTF-8");
  ASSERT_EQ(QCoreApplication::instance(), nullptr);
  const std::string locale = std::setlocale(LC_ALL, "C");
  {
    const auto desktop = CreateDesktop();
    ASSERT_NE(qobject_cast<QApplication*>(QCoreApplication::instance()), nullptr);
    bool vista = false;
    QTimer::singleShot(20, qApp, [&vista] {
      vista = QApplication::activeModalWidget() != nullptr;
      qobject_cast<QDialog*>(QApplication::activeModalWidget())->accept();
    });
    desktop->ShowBox("Buongiorno", "LumoScad");
    EXPECT_TRUE(vista);
  }
  EXPECT_EQ(std::setlocale(LC_ALL, nullptr), locale);
  const QCoreApplication* prima = QCoreApplication::instance();
  const auto ancora = CreateDesktop();
  EXPECT_EQ(QCoreApplication::instance(), prima);
}

} // namespace
} // namespace lumoscad::qt
