#include "common/Andamento.hpp"

#include <gtest/gtest.h>

using namespace lumoscad;

namespace {

class ProgressOfAChange : public testing::Test {
 protected:
  ProgressOfAChange() { andamento_.Comincia("partita 1 del conto C10"); }

  Andamento andamento_;
};

constexpr const char* Ignoto = "L'esito sull'host non è noto: verificarlo prima di ripetere il comando.";

} // namespace

TEST_F(ProgressOfAChange, HasNothingToSayBeforeTheHostIsAsked) {
  EXPECT_EQ(andamento_.Frase(), "");
  andamento_.Accettata();
  andamento_.Azzera();
  EXPECT_EQ(andamento_.Frase(), "");
}

TEST_F(ProgressOfAChange, LeavesTheOutcomeOnTheHostUnknownAfterTheRequest) {
  andamento_.Chiesta();
  EXPECT_EQ(andamento_.Frase(), Ignoto);
  EXPECT_EQ(andamento_.Frase(TransactionOutcome::Unknown), "") << "the failure's own text says it";
  EXPECT_EQ(andamento_.Frase(TransactionOutcome::NotApplied), "");
}

TEST_F(ProgressOfAChange, KeepsTheReasonAfterTheHostsNo) {
  andamento_.Chiesta();
  andamento_.Rifiutata("conto bloccato");
  EXPECT_EQ(andamento_.Frase(), "L'host ha rifiutato la richiesta: conto bloccato");
  EXPECT_EQ(andamento_.Frase(TransactionOutcome::NotApplied), "") << "the refusal itself is shown";
}

TEST_F(ProgressOfAChange, SaysWhatTheDatabaseHoldsAfterTheHostsYes) {
  andamento_.Accettata();
  const std::string nulla = "L'host ha già accettato la modifica; la base dati non ne ha registrato nulla. Da "
                            "allineare: partita 1 del conto C10.";
  EXPECT_EQ(andamento_.Frase(), nulla);
  EXPECT_EQ(andamento_.Frase(TransactionOutcome::Unknown), nulla) << "whatever the failure says of itself";
  andamento_.Registrata(TransactionOutcome::Unknown);
  EXPECT_EQ(andamento_.Frase(), "L'host ha già accettato la modifica; non si sa se la base dati l'ha registrata. Da "
                                "controllare prima di ripeterla: partita 1 del conto C10.");
  andamento_.Registrata(TransactionOutcome::Applied);
  EXPECT_EQ(andamento_.Frase(), "L'host e la base dati hanno registrato la modifica: partita 1 del conto C10.");
  andamento_.RigheRimaste();
  EXPECT_EQ(andamento_.Frase(), "L'host ha registrato la modifica; nella base dati alcune di queste righe erano già "
                                "cambiate e sono rimaste com'erano: partita 1 del conto C10.");
}

TEST_F(ProgressOfAChange, OfANewChangeKnowsNothingOfTheOneBefore) {
  andamento_.Accettata();
  andamento_.Registrata(TransactionOutcome::Applied);
  andamento_.Comincia("documento A/2006/15 dell'azienda 01");
  EXPECT_EQ(andamento_.Frase(), "");
  andamento_.Accettata();
  EXPECT_NE(andamento_.Frase().find("nulla. Da allineare: documento A/2006/15 dell'azienda 01."), std::string::npos);
}

TEST_F(ProgressOfAChange, OfANewChangeForgetsTheRowsThatTheOneBeforeLeft) {
  andamento_.Accettata();
  andamento_.Registrata(TransactionOutcome::Applied);
  andamento_.RigheRimaste();
  andamento_.Comincia("partita 2 del conto C10");
  andamento_.Accettata();
  andamento_.Registrata(TransactionOutcome::Applied);
  EXPECT_EQ(andamento_.Frase(), "L'host e la base dati hanno registrato la modifica: partita 2 del conto C10.");
}
