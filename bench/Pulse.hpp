#pragma once

#include "Measures.hpp"

#include <QCoreApplication>
#include <QTimer>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <time.h>
#include <vector>

namespace lumoscad::bench {

/// Milliseconds for which the event loop of a window did not come round, over all plays of one gesture.
struct Standstill {
  double worst = 0;
  double percentile99 = 0; ///< of the rounds in which a gesture was at work
  double work = 0;         ///< processor time of the thread, a gesture: what was put off to later rounds is in it
};

/// Plays gestures in the running event loop and watches by the lateness of a timer how long each keeps it. A gesture is
/// over when the timer has come on time for a while.
class Pulse {
 public:
  Pulse() {
    timer_.setTimerType(Qt::PreciseTimer);
    timer_.setInterval(1);
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { Beat(); });
  }

  /// `prepare` is played before each time and is not measured.
  [[nodiscard]] Standstill Play(int times, const std::function<void()>& prepare, const std::function<void()>& gesture) {
    std::vector<double> rounds;
    double work = 0;
    for (int time = 0; time < times; ++time) {
      if (prepare) {
        static_cast<void>(UntilOver(prepare));
      }
      late_.clear();
      work += UntilOver(gesture);
      std::ranges::copy_if(late_, std::back_inserter(rounds), [](double late) { return late > OnTime; });
    }
    if (rounds.empty()) {
      return {0, 0, work / times};
    }
    std::ranges::sort(rounds);
    return {rounds.back(), rounds[(rounds.size() * 99 - 1) / 100], work / times};
  }

 private:
  static constexpr double OnTime = 1; ///< milliseconds
  static constexpr double Quiet = 60; ///< milliseconds

  [[nodiscard]] static double ProcessorTime() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
  }

  void Beat() {
    const Clock::time_point now = Clock::now();
    const double late = std::chrono::duration<double, std::milli>(now - last_).count() - 1;
    late_.push_back(late);
    last_ = now;
    if (late > OnTime) {
      lastLate_ = now;
    }
  }

  /// The milliseconds of processor time that it took.
  [[nodiscard]] double UntilOver(const std::function<void()>& gesture) {
    timer_.start();
    last_ = lastLate_ = Clock::now();
    Clock::time_point end = Clock::time_point::max(); // no beat before it has seen the gesture
    QTimer::singleShot(0, &timer_, [&] {
      gesture();
      end = Clock::now();
    });
    const double before = ProcessorTime();
    double after = before;
    while (last_ < end || Milliseconds(lastLate_) < Quiet) {
      QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
      if (last_ < end || last_ == lastLate_) {
        after = ProcessorTime();
      }
    }
    timer_.stop();
    return after - before;
  }

  QTimer timer_;
  Clock::time_point last_;
  Clock::time_point lastLate_;
  std::vector<double> late_;
};

} // namespace lumoscad::bench
