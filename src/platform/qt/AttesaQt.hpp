#pragma once

#include "platform/qt/DialogoQt.hpp"

#include <exception>
#include <functional>
#include <string_view>

class QTimer;

namespace lumoscad::qt {

/// A small modal window that runs one piece of blocking work once it is painted. The person cannot close it.
class AttesaQt final : public DialogoQt {
 public:
  AttesaQt(std::string_view testo, int millisecondi, const std::function<void()>& lavoro, QWidget* sotto);

  /// Shows the window until the work is done; gives back what the work threw, or null.
  [[nodiscard]] std::exception_ptr Mostra();

  void reject() override {} // only the end of the work closes it

 protected:
  void closeEvent(QCloseEvent* evento) override;
  void paintEvent(QPaintEvent* evento) override;

 private:
  void Scatta();

  const std::function<void()>& lavoro_;
  QTimer* timer_;
  std::exception_ptr errore_;
  bool dipinta_ = false;
  bool eseguito_ = false;
  int rinvii_ = 0;
};

} // namespace lumoscad::qt
