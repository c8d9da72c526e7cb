#include "platform/qt/QtDesktop.hpp"

#include "platform/Errore.hpp"
#include "platform/qt/AttesaQt.hpp"
#include "platform/qt/FinestraElencoQt.hpp"
#include "platform/qt/FinestraScadenzarioQt.hpp"
#include "platform/qt/MessaggioQt.hpp"
#include "platform/qt/Schermo.hpp"

#include <QApplication>
#include <QElapsedTimer>
#include <QPointer>
#include <QThread>

#include <clocale>
#include <exception>
#include <string>
#include <utility>

namespace lumoscad::qt {

namespace {

constexpr qint64 IntervalloEventi = 10; // milliseconds between two turns of the event loop

/// Makes a QApplication of ours. It is never destroyed: no moment before the end of the process is surely late
/// enough, and at the very end Qt's own statics are already gone.
void CreaApplicazione() {
  static std::string piattaforma = ScegliPiattaforma();
  static std::string nome = "LumoScad";
  static std::string opzione = "-platform";
  static char* argomenti[] = {nome.data(), opzione.data(), piattaforma.data(), nullptr};
  static int quanti = piattaforma.empty() ? 1 : 3;
  // Qt installs the user's locale in every category and needs none of them afterwards: what the host program writes
  // and compares must not change under it.
  const std::string locale = std::setlocale(LC_ALL, nullptr);
  static_cast<void>(std::make_unique<QApplication>(quanti, argomenti).release());
  std::setlocale(LC_ALL, locale.c_str());
  QGuiApplication::setQuitOnLastWindowClosed(false);
}

void AssicuraApplicazione() {
  const QCoreApplication* applicazione = QCoreApplication::instance();
  if (applicazione == nullptr) {
    CreaApplicazione();
    return;
  }
  if (qobject_cast<const QApplication*>(applicazione) == nullptr) {
    throw ErroreRuntime(errori::Driver, "Il programma chiamante non può aprire finestre: la sua applicazione Qt è "
                                        "senza interfaccia grafica.");
  }
  if (QThread::currentThread() != applicazione->thread()) {
    throw ErroreRuntime(errori::Driver, "Le finestre si possono aprire solo dal thread dell'interfaccia grafica.");
  }
}

/// While one of our windows is the only one, closing it must not end the calling program's event loop.
class UscitaSospesa {
 public:
  UscitaSospesa() : precedente_(QGuiApplication::quitOnLastWindowClosed()) {
    QGuiApplication::setQuitOnLastWindowClosed(false);
  }
  UscitaSospesa(const UscitaSospesa&) = delete;
  UscitaSospesa& operator=(const UscitaSospesa&) = delete;
  ~UscitaSospesa() { QGuiApplication::setQuitOnLastWindowClosed(precedente_); }

 private:
  bool precedente_;
};

QWidget* Genitore() {
  QWidget* modale = QApplication::activeModalWidget();
  return modale != nullptr ? modale : QApplication::activeWindow();
}

class QtDesktop final : public Desktop {
 public:
  QtDesktop() { Prepara(); }
  QtDesktop(const QtDesktop&) = delete;
  QtDesktop& operator=(const QtDesktop&) = delete;
  ~QtDesktop() override { Imposta(Puntatore::Predefinito); }

  void MostraBox(std::string_view testo, std::string_view titolo) override {
    Prepara();
    const UscitaSospesa sospesa;
    if (!MessaggioQt(testo, titolo, Genitore()).Mostra()) {
      throw ErroreRuntime(errori::Driver, "Il messaggio è stato chiuso dal programma chiamante.");
    }
  }

  void ImpostaPuntatore(Puntatore puntatore) override {
    Imposta(puntatore);
    puntatoreCambiato_ = true;
  }

  void EventiInAttesa() override {
    if (!Riconosci()) {
      return;
    }
    if (!std::exchange(puntatoreCambiato_, false) && giro_.isValid() && giro_.elapsed() < IntervalloEventi) {
      return;
    }
    // The person's input waits: the calling program must not be entered again in the middle of a command.
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    giro_.start();
  }

  void MostraElenco(FinestraElenco& finestra) override { Mostra<FinestraElencoQt>(finestra); }

  void MostraScadenzario(FinestraScadenzario& finestra) override { Mostra<FinestraScadenzarioQt>(finestra); }

  void MostraAttesa(std::string_view testo, int millisecondi, const std::function<void()>& lavoro) override {
    Mostra<AttesaQt>(testo, millisecondi, lavoro);
  }

 private:
  /// Before every window: the application of the calling program may have gone since the last one.
  void Prepara() {
    AssicuraApplicazione();
    if (!Riconosci()) {
      throw ErroreRuntime(errori::Driver, "Questo processo è la copia di uno che ha aperto finestre, e lo schermo è "
                                          "rimasto di quello: una copia non ne può aprire.");
    }
  }

  /// Takes note of the application that there is now; false where none can show anything from here.
  bool Riconosci() {
    auto* const applicazione = qobject_cast<QApplication*>(QCoreApplication::instance());
    if (applicazione == nullptr || QThread::currentThread() != applicazione->thread()) {
      return false;
    }
    const qint64 processo = QCoreApplication::applicationPid();
    if (applicazione_ != applicazione) {
      applicazione_ = applicazione;
      processo_ = processo;
      clessidra_ = false; // the pointers went with the application before
    }
    return processo_ == processo;
  }

  /// Shows a window made of `argomenti` modally; what it gives back is raised once the window is gone.
  template <class Finestra, class... Argomenti> void Mostra(Argomenti&... argomenti) {
    Prepara();
    std::exception_ptr errore;
    {
      const UscitaSospesa sospesa;
      Finestra finestra(argomenti..., Genitore());
      errore = finestra.Mostra();
    }
    if (errore) {
      std::rethrow_exception(errore);
    }
  }

  void Imposta(Puntatore puntatore) {
    const bool clessidra = puntatore == Puntatore::Clessidra;
    if (!Riconosci()) {
      return;
    }
    if (clessidra == std::exchange(clessidra_, clessidra)) {
      return;
    }
    if (clessidra) {
      QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    } else {
      QGuiApplication::restoreOverrideCursor();
    }
  }

  QPointer<QApplication> applicazione_;
  qint64 processo_ = 0; ///< the one that the application showed its first window in
  bool clessidra_ = false;
  bool puntatoreCambiato_ = false;
  QElapsedTimer giro_;
};

} // namespace

std::unique_ptr<Desktop> CreaDesktop() {
  return std::make_unique<QtDesktop>();
}

ThreadFinestre DoveSonoLeFinestre() noexcept {
  try {
    const auto* applicazione = qobject_cast<const QApplication*>(QCoreApplication::instance());
    if (applicazione == nullptr) {
      return ThreadFinestre::Nessuno;
    }
    return QThread::currentThread() == applicazione->thread() ? ThreadFinestre::Questo : ThreadFinestre::Altro;
  } catch (...) { // no memory for what Qt notes of a new thread, which the application's own is not
    return ThreadFinestre::Altro;
  }
}

} // namespace lumoscad::qt
