#pragma once

#include "Registro.hpp"

#include "platform/Desktop.hpp"

#include <functional>
#include <string>
#include <string_view>

namespace lumoscad::test {

/// Stands before another desktop and writes into a record what is shown, every gesture that reaches a screen, and what
/// the gesture changed in the window.
class DesktopRegistrato final : public Desktop {
 public:
  DesktopRegistrato(Registro& registro, Desktop& vero) : registro_(registro), vero_(vero) {}

  void ShowBox(std::string_view testo, std::string_view titolo) override;
  void SetPointer(Pointer puntatore) override;
  void RunPendingEvents() override { vero_.RunPendingEvents(); }
  void ShowList(ListWindow& finestra) override;
  void ShowSingleItem(SingleItemWindow& finestra) override;
  void ShowWait(std::string_view testo, int millisecondi, const std::function<void()>& lavoro) override;

 private:
  Registro& registro_;
  Desktop& vero_;
};

} // namespace lumoscad::test
