#pragma once

#include "platform/qt/DialogQt.hpp"

#include <exception>
#include <functional>
#include <string_view>

class QTimer;

namespace lumoscad::qt {

/// A small modal window that runs one piece of blocking work once it is painted. The person cannot close it.
class WaitQt final : public DialogQt {
 public:
  WaitQt(std::string_view text, int milliseconds, const std::function<void()>& work, QWidget* below);

  /// Shows the window until the work is done; gives back what the work threw, or null.
  [[nodiscard]] std::exception_ptr Display();

  void reject() override {} // only the end of the work closes it

 protected:
  void TakeLook() override;
  void closeEvent(QCloseEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  void Fire();

  const std::function<void()>& work_;
  QTimer* timer_;
  std::exception_ptr error_;
  bool painted_ = false;
  bool done_ = false;
  int postponements_ = 0;
};

} // namespace lumoscad::qt
