#include "platform/SystemClock.hpp"

#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>
#include <string>

using namespace lumoscad;

namespace {

/// The zone of the process for as long as it lives: a time five and a half hours ahead of the universal one.
class FusoDiProva {
 public:
  FusoDiProva() {
    const char* valore = std::getenv("TZ");
    precedente_ = valore != nullptr ? valore : "";
    aveva_ = valore != nullptr;
    ::setenv("TZ", "PROVA-05:30", 1);
    ::tzset();
  }
  FusoDiProva(const FusoDiProva&) = delete;
  FusoDiProva& operator=(const FusoDiProva&) = delete;
  ~FusoDiProva() {
    if (aveva_) {
      ::setenv("TZ", precedente_.c_str(), 1);
    } else {
      ::unsetenv("TZ");
    }
    ::tzset();
  }

 private:
  std::string precedente_;
  bool aveva_ = false;
};

/// The moment that a clock of the zone shows, in seconds of universal time.
std::time_t Momento(const DateTime& ora) {
  constexpr std::time_t Anticipo = 5 * 3600 + 30 * 60;
  std::tm campi{};
  campi.tm_year = ora.year - 1900;
  campi.tm_mon = ora.month - 1;
  campi.tm_mday = ora.day;
  campi.tm_hour = ora.hour;
  campi.tm_min = ora.minute;
  campi.tm_sec = ora.second;
  return ::timegm(&campi) - Anticipo;
}

} // namespace

TEST(Clock, TellsTheLocalTime) {
  const FusoDiProva fuso;
  const std::time_t prima = std::time(nullptr);
  const std::time_t letto = Momento(SystemTime());
  EXPECT_GE(letto, prima);
  EXPECT_LE(letto, std::time(nullptr));
}
