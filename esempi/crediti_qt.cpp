// A program in C++ with Qt, and a window over which the component's windows open: reads a command line from the
// standard input, runs it when its own event loop is running, and prints what came of it. The event loop goes on
// meanwhile: the program's own timers fire, and a command that one of them gave would be refused.

#include <lumoscad/lumoscad.h>

#include <QApplication>
#include <QLabel>
#include <QTimer>

#include <iostream>
#include <memory>
#include <string>

namespace {

struct Close {
  void operator()(lumoscad_maniglia* handle) const { lumoscad_chiudi(handle); }
  void operator()(lumoscad_esito* outcome) const { lumoscad_libera(outcome); }
};

int Run(const std::string& line, const QWidget& window) {
  lumoscad_maniglia* opened = nullptr;
  if (const int number = lumoscad_apri(&opened); number != LUMOSCAD_RIUSCITO) {
    return number;
  }
  const std::unique_ptr<lumoscad_maniglia, Close> handle(opened);
  lumoscad_finestra_madre(opened, static_cast<unsigned long>(window.winId()));
  lumoscad_esito* given = nullptr;
  const int number = lumoscad_esegui_riga(opened, line.c_str(), &given);
  const std::unique_ptr<lumoscad_esito, Close> outcome(given);
  std::cout << number << " \"" << lumoscad_campo(given, LUMOSCAD_CAMPO_TESTO, nullptr) << "\" \""
            << lumoscad_campo(given, LUMOSCAD_CAMPO_MESSAGGIO, nullptr) << "\"\n";
  return number;
}

} // namespace

int main(int argc, char** argv) {
  std::string line;
  if (!std::getline(std::cin, line)) {
    return 2;
  }
  QApplication application(argc, argv);
  QLabel window(QStringLiteral("Contabilità"));
  window.setWindowTitle(QStringLiteral("Contabilità"));
  window.resize(640, 480);
  window.show();
  int ticks = 0;
  QTimer clock;
  QObject::connect(&clock, &QTimer::timeout, [&ticks] { ++ticks; });
  clock.start(100);
  QTimer::singleShot(0, [&] { QCoreApplication::exit(Run(line, window)); });
  const int number = QApplication::exec();
  std::cout << (ticks > 0 ? "timers went on\n" : "timers stood still\n");
  return number;
}
