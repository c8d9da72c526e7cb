#pragma once

#include "platform/Desktop.hpp"

#include <QDialog>

#include <deque>
#include <functional>
#include <memory>

namespace lumoscad::test {

/// The real desktop with a person before it: every list window shown takes the next script, every box is closed with
/// Enter. Wants a QApplication.
class FinestreVere final : public Desktop {
 public:
  FinestreVere();

  std::deque<std::function<void(QDialog&)>> copioni;

  void ShowBox(std::string_view testo, std::string_view titolo) override;
  void SetPointer(Pointer puntatore) override { vero_->SetPointer(puntatore); }
  void RunPendingEvents() override { vero_->RunPendingEvents(); }
  void ShowList(ListWindow& finestra) override;
  void ShowSingleItem(SingleItemWindow& finestra) override;
  void ShowWait(std::string_view testo, int millisecondi, const std::function<void()>& lavoro) override {
    vero_->ShowWait(testo, millisecondi, lavoro);
  }

 private:
  void Prossimo();

  std::unique_ptr<Desktop> vero_;
};

} // namespace lumoscad::test
