// The calling program's own application and windows come and go while the component stays loaded.

#include "FinestraFinta.hpp"
#include "platform/qt/QtDesktop.hpp"

#include <QApplication>
#include <QThread>
#include <QTimer>

#include <atomic>
#include <memory>
#include <optional>

#include <gtest/gtest.h>

namespace lumoscad::test {
namespace {

/// An application of the calling program, for a scope.
class DelChiamante {
 public:
  DelChiamante() { applicazione_.emplace(quanti_, argomenti_); }

 private:
  int quanti_ = 1;
  char nome_[8] = "prova";
  char* argomenti_[2] = {nome_, nullptr};
  std::optional<QApplication> applicazione_;
};

/// Closes every modal window that comes up, whichever application shows it, and counts them.
class Chiusore {
 public:
  Chiusore() : thread_(QThread::create([this] { Lavora(); })) { thread_->start(); }
  Chiusore(const Chiusore&) = delete;
  Chiusore& operator=(const Chiusore&) = delete;
  ~Chiusore() { Ferma(); }
  void Ferma() {
    fine_ = true;
    thread_->wait();
  }
  /// Whether there is an application to be asked.
  void Attiva(bool attiva) { attiva_ = attiva; }
  [[nodiscard]] int Chiuse() const { return chiuse_; }

 private:
  void Lavora() {
    while (!fine_) {
      QThread::msleep(20);
      if (attiva_) {
        QMetaObject::invokeMethod(
            qApp, [this] { Chiudi(); }, Qt::QueuedConnection);
      }
    }
  }
  void Chiudi() {
    auto* finestra = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    if (finestra != nullptr && finestra->isVisible() && finestra->objectName() != "FormAspetta") {
      ++chiuse_;
      finestra->close();
    }
  }

  std::atomic<bool> attiva_{false};
  int chiuse_ = 0;
  std::atomic<bool> fine_{false};
  std::unique_ptr<QThread> thread_;
};

void MostraTutto(Desktop& desktop) {
  desktop.SetPointer(Pointer::Hourglass);
  desktop.RunPendingEvents();
  desktop.ShowBox("Buongiorno", "LumoScad");
  FinestraFinta finta(5);
  desktop.ShowList(finta);
  bool fatto = false;
  desktop.ShowWait("Attendere", 1, [&] { fatto = true; });
  EXPECT_TRUE(fatto);
  ASSERT_NE(QGuiApplication::overrideCursor(), nullptr);
  EXPECT_EQ(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
}

TEST(CallersApplication, WhenItIsGoneTheNextWindowsGetOneOfOurOwnAndSoDoesThePointer) {
  Chiusore chiusore;
  std::unique_ptr<Desktop> desktop;
  {
    const DelChiamante prima;
    desktop = qt::CreateDesktop();
    EXPECT_EQ(qt::WhereTheWindowsAre(), WindowThread::ThisOne);
    chiusore.Attiva(true);
    MostraTutto(*desktop);
    chiusore.Attiva(false);
  }
  ASSERT_EQ(QCoreApplication::instance(), nullptr);
  EXPECT_EQ(qt::WhereTheWindowsAre(), WindowThread::None);
  desktop->SetPointer(Pointer::Standard);
  desktop->RunPendingEvents();
  EXPECT_EQ(QCoreApplication::instance(), nullptr) << "a pointer alone needs no application";
  {
    const DelChiamante seconda;
    chiusore.Attiva(true);
    MostraTutto(*desktop);
    chiusore.Attiva(false);
  }
  QThread::msleep(50);
  const int chiuse = chiusore.Chiuse();
  EXPECT_GE(chiuse, 2);
  bool fatto = false;
  desktop->ShowWait("Attendere", 1, [&] { fatto = true; });
  EXPECT_TRUE(fatto);
  ASSERT_NE(qobject_cast<QApplication*>(QCoreApplication::instance()), nullptr);
  chiusore.Attiva(true);
  MostraTutto(*desktop);
  chiusore.Ferma();
  EXPECT_GT(chiusore.Chiuse(), chiuse);
}

} // namespace
} // namespace lumoscad::test
