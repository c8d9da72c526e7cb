#include "platform/qt/QtDesktop.hpp"

#include "platform/RuntimeError.hpp"
#include "platform/Services.hpp"
#include "platform/qt/Display.hpp"
#include "platform/qt/ListWindowQt.hpp"
#include "platform/qt/MessageQt.hpp"
#include "platform/qt/ReadingQt.hpp"
#include "platform/qt/SingleItemWindowQt.hpp"
#include "platform/qt/WaitQt.hpp"

#include <QApplication>
#include <QElapsedTimer>
#include <QPointer>
#include <QThread>

#include <clocale>
#include <exception>
#include <memory>
#include <string>
#include <utility>

namespace lumoscad::qt {

namespace {

constexpr qint64 EventInterval = 10; // milliseconds between two turns of the event loop
constexpr qint64 ReadingShows = 500; // milliseconds that a list is read for before anything says so

/// Makes a QApplication of ours. It is never destroyed: no moment before the end of the process is surely late
/// enough, and at the very end Qt's own statics are already gone.
void CreateApplication() {
  static std::string platform = ChoosePlatform();
  static std::string name = "LumoScad";
  static std::string option = "-platform";
  static char* arguments[] = {name.data(), option.data(), platform.data(), nullptr};
  static int count = platform.empty() ? 1 : 3;
  // Qt installs the user's locale in every category and needs none of them afterwards: what the host program writes
  // and compares must not change under it.
  const std::string locale = std::setlocale(LC_ALL, nullptr);
  static_cast<void>(std::make_unique<QApplication>(count, arguments).release());
  std::setlocale(LC_ALL, locale.c_str());
  QGuiApplication::setQuitOnLastWindowClosed(false);
}

void EnsureApplication() {
  const QCoreApplication* application = QCoreApplication::instance();
  if (application == nullptr) {
    CreateApplication();
    return;
  }
  if (qobject_cast<const QApplication*>(application) == nullptr) {
    throw RuntimeError(errors::Driver, "Il programma chiamante non può aprire finestre: la sua applicazione Qt è "
                                       "senza interfaccia grafica.");
  }
  if (QThread::currentThread() != application->thread()) {
    throw RuntimeError(errors::Driver, "Le finestre si possono aprire solo dal thread dell'interfaccia grafica.");
  }
}

/// While one of our windows is the only one, closing it must not end the calling program's event loop.
class ExitPending {
 public:
  ExitPending() : previous_(QGuiApplication::quitOnLastWindowClosed()) {
    QGuiApplication::setQuitOnLastWindowClosed(false);
  }
  ExitPending(const ExitPending&) = delete;
  ExitPending& operator=(const ExitPending&) = delete;
  ~ExitPending() { QGuiApplication::setQuitOnLastWindowClosed(previous_); }

 private:
  bool previous_;
};

/// The window over which one of ours opens. Where the caller has named one that is not Qt's there is none, and the
/// dialog finds it by its number.
QWidget* ParentWindow() {
  if (QWidget* modal = QApplication::activeModalWidget(); modal != nullptr) {
    return modal;
  }
  const auto named = static_cast<WId>(ActiveServices().callersWindow);
  return named != 0 ? QWidget::find(named) : QApplication::activeWindow();
}

class QtDesktop final : public Desktop {
 public:
  QtDesktop() { Prepare(); }
  QtDesktop(const QtDesktop&) = delete;
  QtDesktop& operator=(const QtDesktop&) = delete;
  ~QtDesktop() override { Apply(Pointer::Standard); }

  void ShowBox(std::string_view text, std::string_view title) override {
    Prepare();
    const ExitPending pending;
    if (!MessageQt(text, title, ParentWindow()).Display()) {
      throw RuntimeError(errors::Driver, "Il messaggio è stato chiuso dal programma chiamante.");
    }
  }

  void SetPointer(Pointer pointer) override {
    Apply(pointer);
    pointerChanged_ = true;
  }

  void RunPendingEvents() override {
    if (TurnDue()) {
      // The person's input waits: the calling program must not be entered again in the middle of a command.
      RunTurn(QEventLoop::ExcludeUserInputEvents);
    }
  }

  bool RowRead(std::size_t rows) override {
    if (!TurnDue()) {
      return !givenUp_;
    }
    if (!reading_.isValid()) {
      reading_.start();
    } else if (window_ == nullptr && reading_.elapsed() >= ReadingShows) {
      window_ = std::make_unique<ReadingWindow>(ParentWindow());
      window_->shown.show();
    }
    if (window_ != nullptr) {
      window_->shown.Tell(rows);
    }
    // Our window is modal: of the person's input it alone gets any.
    RunTurn(window_ != nullptr ? QEventLoop::AllEvents : QEventLoop::ExcludeUserInputEvents);
    givenUp_ = givenUp_ || (window_ != nullptr && window_->shown.GivenUp());
    return !givenUp_;
  }

  void ReadingEnded() noexcept override {
    reading_.invalidate();
    givenUp_ = false;
    if (window_ != nullptr && !Recognise()) {
      static_cast<void>(window_.release()); // its application has gone, and with it what it would take its leave of
    }
    window_.reset();
  }

  void ShowList(ListWindow& window) override { Display<ListWindowQt>(window); }

  void ShowSingleItem(SingleItemWindow& window) override { Display<SingleItemWindowQt>(window); }

  void ShowWait(std::string_view text, int milliseconds, const std::function<void()>& work) override {
    Display<WaitQt>(text, milliseconds, work);
  }

 private:
  struct ReadingWindow {
    explicit ReadingWindow(QWidget* below) : shown(below) {}

    ExitPending pending;
    ReadingQt shown;
  };

  /// True when it is time for another turn of the event loop, and there is an application to run it.
  [[nodiscard]] bool TurnDue() {
    // The clock first: a list asks at every row, and who is asked for the application asks the system for the process.
    if (!pointerChanged_ && turn_.isValid() && turn_.elapsed() < EventInterval) {
      return false;
    }
    return Recognise();
  }

  void RunTurn(QEventLoop::ProcessEventsFlags events) {
    pointerChanged_ = false;
    QCoreApplication::processEvents(events);
    turn_.start();
  }

  /// Before every window: the application of the calling program may have gone since the last one.
  void Prepare() {
    EnsureApplication();
    if (!Recognise()) {
      throw RuntimeError(errors::Driver, "Questo processo è la copia di uno che ha aperto finestre, e lo schermo è "
                                         "rimasto di quello: una copia non ne può aprire.");
    }
  }

  /// Takes note of the application that there is now; false where none can show anything from here.
  bool Recognise() {
    auto* const application = qobject_cast<QApplication*>(QCoreApplication::instance());
    if (application == nullptr || QThread::currentThread() != application->thread()) {
      return false;
    }
    const qint64 process = QCoreApplication::applicationPid();
    if (application_ != application) {
      application_ = application;
      process_ = process;
      hourglass_ = false; // the pointers went with the application before
    }
    return process_ == process;
  }

  /// Shows a window made of `arguments` modally; what it gives back is raised once the window is gone.
  template <class MakeWindow, class... Arguments> void Display(Arguments&... arguments) {
    Prepare();
    std::exception_ptr error;
    {
      const ExitPending pending;
      MakeWindow window(arguments..., ParentWindow());
      error = window.Display();
    }
    if (error) {
      std::rethrow_exception(error);
    }
  }

  void Apply(Pointer pointer) {
    const bool hourglass = pointer == Pointer::Hourglass;
    if (!Recognise()) {
      return;
    }
    if (hourglass == std::exchange(hourglass_, hourglass)) {
      return;
    }
    if (hourglass) {
      QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    } else {
      QGuiApplication::restoreOverrideCursor();
    }
  }

  QPointer<QApplication> application_;
  qint64 process_ = 0; ///< the one that the application showed its first window in
  bool hourglass_ = false;
  bool pointerChanged_ = false;
  QElapsedTimer turn_;
  QElapsedTimer reading_; ///< since the first row of the list that is being read
  std::unique_ptr<ReadingWindow> window_;
  bool givenUp_ = false;
};

} // namespace

std::unique_ptr<Desktop> CreateDesktop() {
  return std::make_unique<QtDesktop>();
}

WindowThread WhereTheWindowsAre() noexcept {
  try {
    const auto* application = qobject_cast<const QApplication*>(QCoreApplication::instance());
    if (application == nullptr) {
      return WindowThread::None;
    }
    return QThread::currentThread() == application->thread() ? WindowThread::ThisOne : WindowThread::Other;
  } catch (...) { // no memory for what Qt notes of a new thread, which the application's own is not
    return WindowThread::Other;
  }
}

} // namespace lumoscad::qt
