#pragma once

#include "Measures.hpp"
#include "platform/Services.hpp"

#include <chrono>
#include <cstddef>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::bench {

/// Takes the time at which a list would appear, and leaves it at once.
class StopwatchDesktop final : public Desktop {
 public:
  Clock::time_point shown;
  std::size_t rows = 0;

  void ShowBox(std::string_view text, std::string_view /*titolo*/) override {
    throw std::runtime_error(std::string(text));
  }
  void SetPointer(Pointer /*puntatore*/) override {}
  void RunPendingEvents() override {}
  void ShowList(ListWindow& window) override {
    shown = Clock::now();
    rows = window.RowCount();
    window.Form_QueryUnload();
  }
  void ShowSingleItem(SingleItemWindow& window) override { window.Elenco().Form_QueryUnload(); }
  void ShowWait(std::string_view /*testo*/, int /*millisecondi*/, const std::function<void()>& work) override {
    work();
  }
};

/// Runs `screen` on the services of a benchmark, with a desktop that notes when it has `shown` a list, and returns the
/// milliseconds from the first statement on its open connection (the look-up of the company) to the moment the window
/// would be shown: sorting, layout and the end of the connection are in them. `sent` is told every statement's text.
template <typename Shown, typename Screen>
double LoadScreen(Shown& desktop, const std::function<void(std::string_view)>& sent, Screen screen) {
  Clock::time_point begin;
  const ReplacedServices services({[&]() -> Desktop& { return desktop; }, nullptr, nullptr,
                                   [] { return DateTime{2006, 3, 5, 14, 7, 9}; },
                                   [&](std::string_view text) {
                                     if (text.find("AZIENDELINEE") != std::string_view::npos) {
                                       begin = Clock::now();
                                     }
                                     sent(text);
                                   }});
  screen();
  return std::chrono::duration<double, std::milli>(desktop.shown - begin).count();
}

/// Milliseconds of the two sides of a comparison, medians.
struct Times {
  double screen = 0;
  double bare = 0;
  [[nodiscard]] double Report() const { return screen / bare; }
};

/// Measures the two sides in turns, so that a busy moment of the machine meets both.
template <typename Screen, typename Bare> Times Compare(int runs, Screen screen, Bare bare) {
  std::vector<double> screenTimes;
  std::vector<double> bareTimes;
  for (int prova = 0; prova < runs; ++prova) {
    bareTimes.push_back(bare());
    screenTimes.push_back(screen());
  }
  return {Median(screenTimes), Median(bareTimes)};
}

} // namespace lumoscad::bench
