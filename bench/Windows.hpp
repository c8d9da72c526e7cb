#pragma once

#include "FirstPaint.hpp"
#include "Measures.hpp"
#include "platform/qt/QtDesktop.hpp"

#include <QDialog>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

namespace lumoscad::bench {

/// The application of the benchmarks' windows, which nobody sees; made on first use.
inline void ApplicationWithoutDisplay() {
  static std::string name = "bench";
  static std::string option = "-platform";
  static std::string platform = "offscreen";
  static char* arguments[] = {name.data(), option.data(), platform.data(), nullptr};
  static int count = 3;
  if (QCoreApplication::instance() == nullptr) {
    qputenv("QT_LOGGING_RULES", "*=false");
    qputenv("XDG_CONFIG_HOME", "/dev/null/nowhere"); // a window that was played with is not remembered
    static_cast<void>(std::make_unique<QApplication>(count, arguments).release());
  }
}

/// Shows a list in its real window, takes the time at which it is painted, lets `inWindow` do what it likes with it and
/// closes it.
class PaintedDesktop final : public Desktop {
 public:
  PaintedDesktop() {
    ApplicationWithoutDisplay();
    desktop_ = qt::CreateDesktop();
  }

  Clock::time_point shown;
  std::size_t rows = 0;
  std::function<void(QDialog&)> inWindow;

  void ShowBox(std::string_view text, std::string_view /*title*/) override {
    throw std::runtime_error(std::string(text));
  }
  void SetPointer(Pointer pointer) override { desktop_->SetPointer(pointer); }
  void RunPendingEvents() override { desktop_->RunPendingEvents(); }
  void ShowList(ListWindow& window) override {
    const FirstPaint painted(QStringLiteral("LV"), [this] {
      shown = Clock::now();
      auto* const dialog = static_cast<QDialog*>(QApplication::activeModalWidget());
      if (inWindow) {
        inWindow(*dialog);
      }
      dialog->close();
    });
    rows = window.RowCount();
    desktop_->ShowList(window);
  }
  void ShowSingleItem(SingleItemWindow& window) override { desktop_->ShowSingleItem(window); }
  void ShowWait(std::string_view text, int milliseconds, const std::function<void()>& work) override {
    desktop_->ShowWait(text, milliseconds, work);
  }

 private:
  std::unique_ptr<Desktop> desktop_;
};

} // namespace lumoscad::bench
