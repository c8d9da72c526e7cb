// How many round trips each operation waits for, on a line so long that what need not wait goes together.

#include "BancoSsh.hpp"
#include "support/DelayProxy.hpp"

#include <gmock/gmock.h>
#include <thread>

namespace lumoscad {
namespace {

using namespace std::chrono_literals;

class SshRoundTrips : public test::BancoSsh {
 protected:
  static constexpr auto Trip = 100ms;
  /// Longer than the component trusts an answer.
  static constexpr auto Pause = 150ms;

  void SetUp() override {
    test::BancoSsh::SetUp();
    server->MakeKnown(line.Port());
    impostazioni.port = static_cast<unsigned>(line.Port());
    Collega();
    Programma("echo '<A/>'");
    test::Scrivi(base / "locale/T01", "riga\r\n");
  }
  void TearDown() override { server->Change({}); }

  template <typename Operation> int TripsOf(Operation operation) {
    const int before = line.Trips();
    operation();
    return line.Trips() - before;
  }
  int LookingForALock() {
    return TripsOf([this] {
      EXPECT_ANY_THROW(collegamento->ReceiveBeginning(Host, base / "host/VBX", base / "locale/VBX", 10, testo));
    });
  }
  int Sending(const std::string& name) {
    return TripsOf([&] { collegamento->InviaFile(Host, base / "locale/T01", base / ("host/" + name)); });
  }
  int Renaming() {
    return TripsOf([this] { collegamento->RinominaFile(Host, base / "host/T01", base / "host/T01.dos", testo); });
  }
  int Calling() {
    return TripsOf([this] { EXPECT_TRUE(Risposta().has_value()); });
  }
  int Deleting(const std::string& name) {
    return TripsOf([&] { collegamento->CancellaFile(Host, base / ("host/" + name)); });
  }

  test::DelayProxy line{server->Port(), Trip / 2};
};

TEST_F(SshRoundTrips, AConfirmationWaitsForNoneThatItCanDoWithout) {
  EXPECT_EQ(LookingForALock(), 8) << "keys (2), login (2), channel, file service (2), the look";
  EXPECT_EQ(Sending("VBX"), 2) << "the opening; then writes, flush, size and close together";
  std::this_thread::sleep_for(Pause);
  EXPECT_EQ(Sending("T01"), 3) << "after a while the host is asked for a sign of life";
  EXPECT_EQ(Renaming(), 1);
  EXPECT_EQ(Calling(), 1) << "the channel was asked for with the rename";
  EXPECT_EQ(Deleting("T01"), 1);
  EXPECT_EQ(Deleting("T01.dos"), 1);
  std::this_thread::sleep_for(Pause);
  EXPECT_EQ(Deleting("VBX"), 2);
  std::this_thread::sleep_for(Pause);
  EXPECT_EQ(LookingForALock(), 1) << "the next command's look is the sign of life";
}

TEST_F(SshRoundTrips, AChannelThatWasGivenLongAgoIsNoSignOfLife) {
  static_cast<void>(Sending("T01"));
  EXPECT_EQ(Renaming(), 1);
  std::this_thread::sleep_for(Pause);
  EXPECT_EQ(Calling(), 2) << "another is asked for before the program is";
  EXPECT_EQ(Calling(), 2) << "and for each program that no rename came before";
}

} // namespace
} // namespace lumoscad
