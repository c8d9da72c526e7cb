// Whose turn it is in a child that was forked while a call ran.

#include "platform/Turn.hpp"
#include "support/OtherProcess.hpp"

#include <functional>
#include <future>
#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>

namespace lumoscad {
namespace {

using Chi = Turn::Who;
using Esito = Turn::Outcome;

Esito Prende(Chi chi) {
  return Turn(chi).How();
}

Esito PrendeSuUnThread(Chi chi) {
  Esito esito{};
  std::thread([&] { esito = Prende(chi); }).join();
  return esito;
}

/// Whether a child that is forked now gets `atteso` for every call.
bool NelFiglio(Esito atteso, const std::function<Esito()>& prende) {
  return test::OtherProcess([&] {
           for (int volta = 0; volta < 2; ++volta) {
             if (prende() != atteso) {
               throw std::runtime_error("another outcome");
             }
           }
         })
      .Succeeded();
}

/// A thread in the middle of a call, for the life of the object.
class ChiamataAltrove {
 public:
  ChiamataAltrove() { presa_.get_future().wait(); }
  ChiamataAltrove(const ChiamataAltrove&) = delete;
  ChiamataAltrove& operator=(const ChiamataAltrove&) = delete;
  ~ChiamataAltrove() {
    fine_.set_value();
    thread_.join();
  }

 private:
  std::promise<void> presa_;
  std::promise<void> fine_;
  std::thread thread_{[this] {
    const Turn turno(Chi::Administrator);
    EXPECT_EQ(turno.How(), Esito::Taken);
    presa_.set_value();
    fine_.get_future().wait();
  }};
};

TEST(TurnInAForkedChild, TheCallOfAThreadThatTheChildHasNotGotRefusesNothingThere) {
  ASSERT_EQ(Prende(Chi::Command), Esito::Taken);
  const ChiamataAltrove altrove;
  EXPECT_EQ(Prende(Chi::Administrator), Esito::Busy);
  EXPECT_TRUE(NelFiglio(Esito::Taken, [] { return Prende(Chi::Administrator); }));
  EXPECT_TRUE(NelFiglio(Esito::Taken, [] { return Prende(Chi::Command); }));
  EXPECT_TRUE(NelFiglio(Esito::Taken, [] { return PrendeSuUnThread(Chi::Administrator); }));
  EXPECT_EQ(Prende(Chi::Administrator), Esito::Busy) << "the parent's call runs on";
}

TEST(TurnInAForkedChild, ACallThatTheChildHasOnItsStackRunsThereToo) {
  const Turn turno(Chi::Command);
  ASSERT_EQ(turno.How(), Esito::Taken);
  EXPECT_TRUE(NelFiglio(Esito::Nested, [] { return Prende(Chi::Command); }));
  EXPECT_TRUE(NelFiglio(Esito::Busy, [] { return PrendeSuUnThread(Chi::Administrator); }));
}

TEST(TurnInAForkedChild, TheThreadThatForkedGivesTheFirstCommandAnew) {
  ASSERT_EQ(Prende(Chi::Command), Esito::Taken);
  bool preso = false;
  std::thread([&] {
    EXPECT_EQ(Prende(Chi::Command), Esito::OtherThread);
    preso = NelFiglio(Esito::Taken, [] { return Prende(Chi::Command); });
  }).join();
  EXPECT_TRUE(preso);
}

} // namespace
} // namespace lumoscad
