#pragma once

#include <ctime>

namespace lumoscad::test {

/// Milliseconds of processor time that the calling thread has worked since the object was made: a bound on it holds on
/// a busy machine too, where it is not known how long the thread waits for its turn.
class WorkClock {
 public:
  [[nodiscard]] double Milliseconds() const noexcept { return now() - start_; }

 private:
  [[nodiscard]] static double now() noexcept {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
  }

  double start_ = now();
};

} // namespace lumoscad::test
