#include "AdoFixture.hpp"

#include <gmock/gmock.h>

#include <string>

// A server that takes a transaction back and does not say so. A node of several servers does it now and then to the
// loser of two changes; here the connection itself asks for it, behind the layer's back.

namespace lumoscad::ado {
namespace {

using testing::HasSubstr;

constexpr const char* Withdraw = "ROLLBACK";

class Withdrawn : public Ado {
 protected:
  [[nodiscard]] std::string Flags() {
    return Single("SELECT SOSPESA FROM EVENTI WHERE CHIAVE=1").value_or("") +
           Single("SELECT SOSPESA FROM EVENTI WHERE CHIAVE=2").value_or("");
  }
  void Change(int key) { connection_.Execute("UPDATE EVENTI SET SOSPESA='X' WHERE CHIAVE=" + std::to_string(key)); }
};

INSTANTIATE_TEST_SUITE_P(Databases, Withdrawn, testing::Values("mariadb"));

TEST_P(Withdrawn, NothingOfATransactionIsKeptAndItsCommitSaysSo) {
  connection_.BeginTrans();
  Change(1);
  connection_.Execute(Withdraw);
  const auto error = Failure([&] { connection_.CommitTrans(); });
  EXPECT_EQ(error.Description(), "Conferma non eseguita: la base dati ha annullato la transazione.");
  EXPECT_EQ(error.Note(), "") << "no other server has a say in it";
  EXPECT_EQ(error.Outcome(), TransactionOutcome::NotApplied);
  EXPECT_EQ(connection_.Outcome(), TransactionOutcome::NotApplied);
  EXPECT_EQ(Flags(), "NN");
}

TEST_P(Withdrawn, NothingIsKeptOfWhatATransactionDidAfterwards) {
  connection_.BeginTrans();
  Change(1);
  connection_.Execute(Withdraw);
  Change(2);
  const auto error = Failure([&] { connection_.CommitTrans(); });
  EXPECT_EQ(error.Outcome(), TransactionOutcome::NotApplied);
  EXPECT_EQ(Flags(), "NN");
}

TEST_P(Withdrawn, CommitThatItHappensUnderIsOfUnknownOutcome) {
  connection_.onCommit = [&](const TransactionMark&) { connection_.Execute(Withdraw); };
  connection_.BeginTrans();
  Change(1);
  const auto error = Failure([&] { connection_.CommitTrans(); });
  EXPECT_THAT(error.Note(), HasSubstr("ha annullato una transazione mentre si confermavano le modifiche: l'esito è "
                                      "sconosciuto"));
  EXPECT_EQ(error.Outcome(), TransactionOutcome::Unknown);
  EXPECT_EQ(connection_.Outcome(), TransactionOutcome::Unknown);
  EXPECT_EQ(Flags(), "NN");
}

TEST_P(Withdrawn, TransactionThatTheCallerTookBackBeforeIsNoneOfTheNextOne) {
  connection_.BeginTrans();
  Change(1);
  connection_.RollbackTrans();
  connection_.BeginTrans();
  Change(2);
  connection_.CommitTrans();
  EXPECT_EQ(connection_.Outcome(), TransactionOutcome::Applied);
  EXPECT_EQ(Flags(), "NX");
}

TEST_P(Withdrawn, FailedStatementOutsideATransactionIsNoneOfTheNextOne) {
  EXPECT_THROW(connection_.Execute("UPDATE EVENTI SET CHIAVE=1 WHERE CHIAVE=2"), RuntimeError);
  connection_.BeginTrans();
  Change(2);
  connection_.CommitTrans();
  EXPECT_EQ(Flags(), "NX");
}

} // namespace
} // namespace lumoscad::ado
