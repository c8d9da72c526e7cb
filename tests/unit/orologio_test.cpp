#include "platform/Orologio.hpp"

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
std::time_t Momento(const DataOra& ora) {
  constexpr std::time_t Anticipo = 5 * 3600 + 30 * 60;
  std::tm campi{};
  campi.tm_year = ora.anno - 1900;
  campi.tm_mon = ora.mese - 1;
  campi.tm_mday = ora.giorno;
  campi.tm_hour = ora.ora;
  campi.tm_min = ora.minuto;
  campi.tm_sec = ora.secondo;
  return ::timegm(&campi) - Anticipo;
}

} // namespace

TEST(Clock, TellsTheLocalTime) {
  const FusoDiProva fuso;
  const std::time_t prima = std::time(nullptr);
  const std::time_t letto = Momento(OraDiSistema());
  EXPECT_GE(letto, prima);
  EXPECT_LE(letto, std::time(nullptr));
}
