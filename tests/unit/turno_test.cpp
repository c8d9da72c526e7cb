// Whose turn it is in a child that was forked while a call ran.

#include "platform/Turno.hpp"
#include "support/AltroProcesso.hpp"

#include <functional>
#include <future>
#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>

namespace lumoscad {
namespace {

using Chi = Turno::Chi;
using Esito = Turno::Esito;

Esito Prende(Chi chi) {
  return Turno(chi).Come();
}

Esito PrendeSuUnThread(Chi chi) {
  Esito esito{};
  std::thread([&] { esito = Prende(chi); }).join();
  return esito;
}

/// Whether a child that is forked now gets `atteso` for every call.
bool NelFiglio(Esito atteso, const std::function<Esito()>& prende) {
  return prova::AltroProcesso([&] {
           for (int volta = 0; volta < 2; ++volta) {
             if (prende() != atteso) {
               throw std::runtime_error("another outcome");
             }
           }
         })
      .Riuscito();
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
    const Turno turno(Chi::Amministratore);
    EXPECT_EQ(turno.Come(), Esito::Preso);
    presa_.set_value();
    fine_.get_future().wait();
  }};
};

TEST(TurnInAForkedChild, TheCallOfAThreadThatTheChildHasNotGotRefusesNothingThere) {
  ASSERT_EQ(Prende(Chi::Comando), Esito::Preso);
  const ChiamataAltrove altrove;
  EXPECT_EQ(Prende(Chi::Amministratore), Esito::Occupato);
  EXPECT_TRUE(NelFiglio(Esito::Preso, [] { return Prende(Chi::Amministratore); }));
  EXPECT_TRUE(NelFiglio(Esito::Preso, [] { return Prende(Chi::Comando); }));
  EXPECT_TRUE(NelFiglio(Esito::Preso, [] { return PrendeSuUnThread(Chi::Amministratore); }));
  EXPECT_EQ(Prende(Chi::Amministratore), Esito::Occupato) << "the parent's call runs on";
}

TEST(TurnInAForkedChild, ACallThatTheChildHasOnItsStackRunsThereToo) {
  const Turno turno(Chi::Comando);
  ASSERT_EQ(turno.Come(), Esito::Preso);
  EXPECT_TRUE(NelFiglio(Esito::Annidato, [] { return Prende(Chi::Comando); }));
  EXPECT_TRUE(NelFiglio(Esito::Occupato, [] { return PrendeSuUnThread(Chi::Amministratore); }));
}

TEST(TurnInAForkedChild, TheThreadThatForkedGivesTheFirstCommandAnew) {
  ASSERT_EQ(Prende(Chi::Comando), Esito::Preso);
  bool preso = false;
  std::thread([&] {
    EXPECT_EQ(Prende(Chi::Comando), Esito::AltroThread);
    preso = NelFiglio(Esito::Preso, [] { return Prende(Chi::Comando); });
  }).join();
  EXPECT_TRUE(preso);
}

} // namespace
} // namespace lumoscad
