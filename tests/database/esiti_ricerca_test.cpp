#include "Esiti.hpp"
#include "database/RicercaEsito.hpp"
#include "database/procedureLumoDB2.hpp"
#include "platform/RuntimeError.hpp"
#include "platform/ado/Aftermath.hpp"
#include "support/Paths.hpp"
#include "support/PgBouncer.hpp"
#include "support/ProcessLocale.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <functional>
#include <memory>
#include <thread>

// How it is found out what became of a transaction whose COMMIT had no answer.

using namespace lumoscad;
using ado::Aftermath;
using ado::TransactionOutcome;
using test::ByteProxy;
using testing::ElementsAreArray;
using testing::HasSubstr;
using Momento = ByteProxy::Moment;
using Azione = ByteProxy::Action;

namespace {

constexpr const char* Prima = "UPDATE EVENTOCONTABILE SET SOSPESA='S' WHERE EVENTOCONTABILEKEY=1";
constexpr const char* Riga = "SELECT SOSPESA FROM EVENTOCONTABILE WHERE EVENTOCONTABILEKEY=1";
constexpr const char* Unknown = "non si sa se la base dati l'ha registrata";
constexpr const char* NotKept =
    "la base dati non ne ha registrato nulla. Da allineare: partita AB   123 del conto C10.";

/// A procedure whose COMMIT loses its answer, or never arrives.
class LookUp : public testing::TestWithParam<const char*> {
 protected:
  LookUp() : before_(posto_.base.Tutto()) {
    EXPECT_EQ(posto_.Esegui("SospendiPartita"), "") << posto_.msg.Errore;
    after_ = posto_.base.Tutto();
    posto_.base.Ripristina();
  }
  void LoseTheAnswer() {
    posto_.base.Proxy().StrikeAtSequence(posto_.base.Conferma(), Momento::BeforeTheReply, Azione::Close);
  }
  void LoseTheCommit() {
    posto_.base.Proxy().StrikeAtSequence(posto_.base.Conferma(), Momento::BeforeItPasses, Azione::Close);
  }
  /// Calls `action` when the component looks for the outcome, once its rows are about to be read.
  void BeforeTheRowsAreRead(std::function<void()> action) {
    posto_.PrimaDellIstruzione(posto_.istruzioni + 1, std::move(action));
  }
  test::PostoEsiti posto_{GetParam()};
  std::vector<std::string> before_;
  std::vector<std::string> after_;
};

const auto Kind = [](const auto& each) { return std::string(each.param); };
INSTANTIATE_TEST_SUITE_P(Databases, LookUp, testing::Values("postgres", "mariadb"), Kind);

} // namespace

TEST_P(LookUp, OfRowsThatSomebodyChangedSinceLeavesTheOutcomeUnknown) {
  LoseTheAnswer();
  BeforeTheRowsAreRead(
      [&] { posto_.base.Esegui("UPDATE EVENTOCONTABILE SET SOSPESA='X' WHERE EVENTOCONTABILEKEY=2"); });
  EXPECT_EQ(posto_.Esegui("SospendiPartita"), "error");
  EXPECT_THAT(posto_.msg.Errore, HasSubstr(Unknown));
}

TEST_P(LookUp, OfAChangeThatSomebodyMadeInPartAfterItWasLostLeavesTheOutcomeUnknown) {
  LoseTheCommit();
  BeforeTheRowsAreRead([&] { posto_.base.Esegui(Prima); });
  EXPECT_EQ(posto_.Esegui("SospendiPartita"), "error");
  EXPECT_THAT(posto_.msg.Errore, HasSubstr(Unknown));
}

// The server's word and the rows': only PostgreSQL gives both.
TEST_P(LookUp, OfAChangeThatSomebodyMadeWholeAfterItWasLostIsNotCalledThisOne) {
  LoseTheCommit();
  BeforeTheRowsAreRead(
      [&] { posto_.base.Esegui("UPDATE EVENTOCONTABILE SET SOSPESA='S' WHERE EVENTOCONTABILEKEY IN (1,2,3)"); });
  const std::string risultato = posto_.Esegui("SospendiPartita");
  EXPECT_TRUE(posto_.ricercato);
  EXPECT_THAT(posto_.base.Tutto(), ElementsAreArray(after_));
  if (posto_.base.SuPostgres()) {
    EXPECT_EQ(risultato, "error");
    EXPECT_THAT(posto_.msg.Errore, HasSubstr(Unknown));
  } else {
    EXPECT_EQ(risultato, "") << "host and database hold the same";
  }
}

TEST_P(LookUp, OfACommittedTransactionWhoseRowsWerePutBackIsNotCalledUndone) {
  LoseTheAnswer();
  BeforeTheRowsAreRead([&] { posto_.base.Ripristina(); });
  const std::string risultato = posto_.Esegui("SospendiPartita");
  EXPECT_EQ(risultato, "error");
  EXPECT_THAT(posto_.msg.Errore, HasSubstr(posto_.base.SuPostgres() ? Unknown : NotKept)) << "the rows are as before";
  EXPECT_THAT(posto_.base.Tutto(), ElementsAreArray(before_));
}

TEST_P(LookUp, IsDoneForTheWritingTestToo) {
  const auto text = [this] { return posto_.base.Valore("SELECT FILEXML FROM ERRORE WHERE ERROREKEY=100"); };
  const std::string options =
      posto_.base.Opzioni() + " -DB2SCHEMA " +
      posto_.base.Valore(posto_.base.SuPostgres() ? "SELECT current_schema()" : "SELECT DATABASE()");
  LoseTheCommit();
  EXPECT_EQ(procedureLumoDB2::TestDB2(options), "error");
  ASSERT_EQ(posto_.banco.desktop.box.size(), 1U);
  EXPECT_THAT(posto_.banco.desktop.box[0], HasSubstr("un nuovo collegamento mostra che non ne è registrata nessuna."));
  EXPECT_EQ(text(), "");
  posto_.base.Proxy().Restore();
  LoseTheAnswer();
  EXPECT_EQ(procedureLumoDB2::TestDB2(options), "");
  EXPECT_EQ(posto_.banco.desktop.box.size(), 1U);
  EXPECT_EQ(text(), "FILEccccc");
}

namespace {

/// The way to the server leads over a pooler of transactions from the look-up on.
class LookUpOverAPooler : public LookUp {
 protected:
  /// Another terminal has worked over the pooler, so that the look-up finds its mark; or nobody has.
  void LoseTheAnswerTo(const test::PgBouncer& pooler, bool used) {
    if (used) {
      ado::Connection other;
      other.ConnectionString = pooler.ConnectionText(pooler.AddSource(posto_.base.Valore("SELECT current_database()")));
      other.Open();
    }
    LoseTheAnswer();
    posto_.PrimaDellIstruzione(1, [&] { posto_.base.Proxy().LeadTo(pooler.Port()); });
  }
};

INSTANTIATE_TEST_SUITE_P(Databases, LookUpOverAPooler, testing::Values("postgres"), Kind);

} // namespace

TEST_P(LookUpOverAPooler, IsNotBelievedAndGivenUpAtOnceWhereItIsNoticed) {
  const test::PgBouncer pooler(test::ServerDirectory("pgbouncer"), test::Postgres(), "pool_mode=transaction");
  LoseTheAnswerTo(pooler, true);
  EXPECT_EQ(posto_.Esegui("SospendiPartita"), "error");
  EXPECT_THAT(posto_.msg.Errore, HasSubstr(Unknown));
  EXPECT_TRUE(posto_.ricercato);
  EXPECT_LT(posto_.secondi, 5);
  EXPECT_THAT(posto_.base.Tutto(), ElementsAreArray(after_));
}

TEST_P(LookUpOverAPooler, FindsWhatTheServerHoldsWhereNobodyElseUsesIt) {
  const test::PgBouncer pooler(test::ServerDirectory("pgbouncer"), test::Postgres(), "pool_mode=transaction");
  LoseTheAnswerTo(pooler, false);
  EXPECT_EQ(posto_.Esegui("SospendiPartita"), "") << posto_.msg.Errore;
  EXPECT_TRUE(posto_.ricercato);
  EXPECT_THAT(posto_.base.Tutto(), ElementsAreArray(after_));
}

namespace {

/// Presumed documents, whose rows are told by their number, where as many others hold the new value already.
class LookUpOfPresumedDocuments : public LookUp {
 protected:
  LookUpOfPresumedDocuments() {
    EXPECT_EQ(Change(), "");
    posto_.base.Ripristina();
    for (const char* each : {"901,1,1001", "902,1,1001", "903,1,1002", "904,1,1005"}) {
      posto_.base.Esegui("INSERT INTO EVENTOCONTABILE (EVENTOCONTABILEKEY,AZIENDALINEAKEY,MOVIMENTOKEY,"
                         "CONTOCONTABILE_KEY,TIPOEVENTO,SOSPESA,BANCAPRESENTAZIONE_KEY) VALUES (" +
                         std::string(each) + ",10,'P','N',11)");
    }
  }
  std::string Change() { return posto_.Esegui("AggiornaBancaPresunti"); }
  [[nodiscard]] std::string Moved() const {
    return posto_.base.Valore("SELECT COUNT(*) FROM EVENTOCONTABILE WHERE BANCAPRESENTAZIONE_KEY=11 AND "
                              "EVENTOCONTABILEKEY IN (11,13,14,17)");
  }
};

INSTANTIATE_TEST_SUITE_P(Databases, LookUpOfPresumedDocuments, testing::Values("postgres", "mariadb"), Kind);

} // namespace

TEST_P(LookUpOfPresumedDocuments, FindsAChangeThatIsKept) {
  LoseTheAnswer();
  EXPECT_EQ(Change(), "") << posto_.msg.Errore;
  EXPECT_TRUE(posto_.ricercato);
  EXPECT_EQ(Moved(), "4");
}

TEST_P(LookUpOfPresumedDocuments, FindsThatNothingIsKept) {
  LoseTheCommit();
  EXPECT_EQ(Change(), "error");
  EXPECT_THAT(posto_.msg.Errore, HasSubstr("la base dati non ne ha registrato nulla."));
  EXPECT_EQ(Moved(), "0");
}

TEST_P(LookUpOfPresumedDocuments, DoesNotTakeOthersForThoseThatAnotherTerminalHasMovedOn) {
  LoseTheCommit();
  BeforeTheRowsAreRead([&] {
    posto_.base.Esegui(
        "UPDATE EVENTOCONTABILE SET BANCAPRESENTAZIONE_KEY=10 WHERE EVENTOCONTABILEKEY IN (11,13,14,17)");
  });
  EXPECT_EQ(Change(), "error");
  EXPECT_THAT(posto_.msg.Errore, HasSubstr(Unknown));
  EXPECT_EQ(Moved(), "0");
}

namespace {

/// A transaction over the direct way, of which the mark is taken as it commits, and a second connection that looks.
class LookBack : public testing::TestWithParam<const char*> {
 protected:
  LookBack() { Open(); }

  void Open() {
    acting_ = base_.AltroTerminale();
    looking_ = base_.AltroTerminale();
  }
  /// Begins, changes a row and commits; calls `first` right before COMMIT.
  void Commit(const std::function<void()>& first = [] {}) {
    acting_->onCommit = [&](const ado::TransactionMark& mark) {
      mark_ = mark;
      first();
    };
    acting_->BeginTrans();
    acting_->Execute(Prima);
    acting_->CommitTrans();
  }
  [[nodiscard]] Aftermath Look() const { return ado::LookBack(*looking_, mark_); }
  /// A connection to a server that is starting again.
  [[nodiscard]] std::unique_ptr<ado::Connection> OnceItAnswers() const {
    for (int attempt = 0; attempt < 500; ++attempt) {
      try {
        return base_.AltroTerminale();
      } catch (const RuntimeError&) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
      }
    }
    return base_.AltroTerminale();
  }
  /// Once the old session has gone.
  [[nodiscard]] Aftermath LookAtLast() const {
    EXPECT_TRUE(acting_ == nullptr || acting_->State() == ado::State::Closed);
    for (int attempt = 0; attempt < 500; ++attempt) {
      if (const auto found = Look(); found.rows != Aftermath::Rows::SayNothing) {
        return found;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return {};
  }

  test::BaseEsiti base_{GetParam()};
  std::unique_ptr<ado::Connection> acting_;
  std::unique_ptr<ado::Connection> looking_;
  ado::TransactionMark mark_;
};

class LookBackAtPostgres : public LookBack {};
class LookBackAtMariaDb : public LookBack {};

INSTANTIATE_TEST_SUITE_P(Databases, LookBack, testing::Values("postgres", "mariadb"), Kind);
INSTANTIATE_TEST_SUITE_P(Databases, LookBackAtPostgres, testing::Values("postgres"), Kind);
INSTANTIATE_TEST_SUITE_P(Databases, LookBackAtMariaDb, testing::Values("mariadb"), Kind);

} // namespace

TEST_P(LookBack, SaysNothingOfATransactionThatIsOpenAndCanEndIt) {
  EXPECT_THROW(Commit([&] {
                 const auto found = Look();
                 EXPECT_EQ(found.rows, Aftermath::Rows::SayNothing);
                 EXPECT_TRUE(found.lingers);
                 ado::EndSession(*looking_, mark_);
               }),
               RuntimeError);
  ASSERT_TRUE(acting_->InDoubt().has_value());
  acting_->Close();
  EXPECT_TRUE(acting_->InDoubt().has_value()) << "known once closed, too";
  const auto found = LookAtLast();
  EXPECT_EQ(found.rows, Aftermath::Rows::Decide);
  EXPECT_EQ(found.number, base_.SuPostgres() ? std::optional(TransactionOutcome::NotApplied) : std::nullopt);
}

TEST_P(LookBack, EndsNoSessionBehindAPoolerWhichMayBeSomebodyElses) {
  Commit([&] {
    mark_.client.clear();
    const auto found = Look();
    EXPECT_EQ(found.rows, Aftermath::Rows::SayNothing);
    EXPECT_FALSE(found.lingers);
  });
  EXPECT_EQ(acting_->Outcome(), TransactionOutcome::Applied);
}

// Its way to the server is dead, but not the server.
TEST_P(LookBack, EndsASessionThatStaysAndThenFindsNothingKept) {
  auto found = TransactionOutcome::Unknown;
  const auto begin = std::chrono::steady_clock::now();
  const moduloDatabase::Riscontro asBefore = [](ado::Connection& connection) {
    return std::optional(test::FirstValue(connection, Riga) == "N" ? TransactionOutcome::NotApplied
                                                                   : TransactionOutcome::Applied);
  };
  EXPECT_THROW(Commit([&] {
                 found =
                     moduloDatabase::CercaEsito(moduloDatabase::LeggiParametriDB2(base_.Opzioni()), mark_, {asBefore});
               }),
               RuntimeError);
  EXPECT_EQ(found, TransactionOutcome::NotApplied);
  EXPECT_GT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(4)) << "it may end by itself";
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
}

TEST_P(LookBack, KnowsACommittedTransactionByItsNumber) {
  Commit();
  EXPECT_EQ(acting_->InDoubt(), std::nullopt) << "the answer came";
  EXPECT_EQ(Look().rows, base_.SuPostgres() ? Aftermath::Rows::Decide : Aftermath::Rows::SayNothing)
      << "its session is there";
  acting_->Close();
  const auto found = LookAtLast();
  EXPECT_EQ(found.rows, Aftermath::Rows::Decide);
  EXPECT_EQ(found.number, base_.SuPostgres() ? std::optional(TransactionOutcome::Applied) : std::nullopt);
}

TEST_P(LookBack, WaitsForNoSessionThatGotTheNumberAnew) {
  Commit();
  acting_->Close();
  acting_ = base_.AltroTerminale();
  mark_.session = base_.SuPostgres() ? test::FirstValue(*acting_, "SELECT pg_backend_pid()")
                                     : test::FirstValue(*acting_, "SELECT CONNECTION_ID()");
  EXPECT_EQ(Look().rows, Aftermath::Rows::Decide) << "its client is another";
}

TEST_P(LookBack, OfAMarkThatIsNoneSaysNothing) {
  Commit();
  acting_->Close();
  mark_.session = "1 OR 1=1";
  EXPECT_EQ(Look().rows, Aftermath::Rows::SayNothing);
  mark_ = {};
  EXPECT_EQ(Look().rows, Aftermath::Rows::SayNothing);
}

TEST_P(LookBackAtPostgres, TrustsNoNumberOfAnotherLifeAndNoRowsOfAnotherDatabase) {
  Commit();
  acting_->Close();
  mark_.life += "1";
  const auto found = LookAtLast();
  EXPECT_EQ(found.rows, Aftermath::Rows::Decide);
  EXPECT_EQ(found.number, std::nullopt);
  mark_.server = "1";
  EXPECT_EQ(Look().rows, Aftermath::Rows::SayNothing);
}

TEST_P(LookBackAtMariaDb, BelievesNothingOfAnotherServerThatIsNoneOfACluster) {
  Commit();
  acting_->Close();
  mark_.server += "1";
  EXPECT_EQ(Look().rows, Aftermath::Rows::SayNothing);
}

// The transaction is lost with the server, and its number is given to others, which are committed.
TEST_P(LookBackAtPostgres, TrustsNoNumberThatWasGivenOutAgainAfterACrash) {
  const auto number = [&] { return std::stoll(base_.Valore("SELECT pg_current_xact_id()::text")); };
  base_.Esegui("CHECKPOINT");
  acting_->onCommit = [&](const ado::TransactionMark& mark) {
    mark_ = mark;
    test::Postgres().KillAll();
  };
  acting_->BeginTrans();
  acting_->Execute(Prima);
  EXPECT_THROW(acting_->CommitTrans(), RuntimeError);
  acting_->Close();
  looking_->Close();
  test::Postgres().Restart();
  base_.Riapri();
  while (number() <= std::stoll(mark_.number)) {
  }
  EXPECT_EQ(base_.Valore("SELECT pg_xact_status('" + mark_.number + "'::xid8)"), "committed");
  EXPECT_EQ(base_.Valore("SELECT SOSPESA FROM EVENTOCONTABILE WHERE EVENTOCONTABILEKEY=1"), "N");
  Open();
  acting_->Close();
  const auto found = Look();
  EXPECT_EQ(found.rows, Aftermath::Rows::Decide);
  EXPECT_EQ(found.number, std::nullopt);
}

// An administrator resets the statistics, by which the life is told.
TEST_P(LookBackAtPostgres, WaitsForTheOldSessionThoughTheLifeSeemsAnother) {
  acting_->onCommit = [&](const ado::TransactionMark& mark) {
    mark_ = mark;
    mark_.life += " later";
    EXPECT_EQ(Look().rows, Aftermath::Rows::SayNothing);
  };
  acting_->BeginTrans();
  acting_->Execute(Prima);
  acting_->CommitTrans();
  acting_->Close();
  while (Look().rows == Aftermath::Rows::SayNothing) {
  }
  EXPECT_EQ(Look().rows, Aftermath::Rows::Decide);
  EXPECT_EQ(Look().number, std::nullopt);
}

// The server survives the crash of one of its processes, but ends all sessions and begins a new life.
TEST_P(LookBackAtPostgres, TrustsNoNumberAfterTheCrashOfAnotherSession) {
  Commit();
  acting_->Close();
  EXPECT_EQ(LookAtLast().number, TransactionOutcome::Applied);
  kill(std::stoi(test::FirstValue(*looking_, "SELECT pg_backend_pid()")), SIGKILL);
  EXPECT_THROW(looking_->Execute("SELECT 1"), RuntimeError);
  looking_->Close();
  looking_ = OnceItAnswers();
  base_.Riapri();
  EXPECT_EQ(Look().rows, Aftermath::Rows::Decide);
  EXPECT_EQ(Look().number, std::nullopt);
}

// An administrator may close the functions that tell servers apart: then nothing is lost but the look-up.
TEST_P(LookBackAtPostgres, IsGivenUpWhereTheServerDoesNotSayWhichOneItIs) {
  base_.Esegui("CREATE ROLE CHIUSO LOGIN PASSWORD 'Chiuso!1'");
  base_.Esegui("DO $do$ BEGIN EXECUTE format('GRANT USAGE ON SCHEMA %I TO CHIUSO', current_schema()); EXECUTE "
               "format('GRANT SELECT, UPDATE ON ALL TABLES IN SCHEMA %I TO CHIUSO', current_schema()); END $do$");
  base_.Esegui("REVOKE EXECUTE ON FUNCTION pg_control_system() FROM PUBLIC");
  for (const char* protocol : {"7.4-2", "7.4-1"}) {
    const std::string source = test::Postgres().AddSource(
        base_.Valore("SELECT current_database()"), 0,
        {{"ConnSettings", "SET search_path TO " + base_.Valore("SELECT current_schema()")}, {"Protocol", protocol}});
    ado::Connection closed;
    closed.ConnectionString = test::ConnectionText(source, "chiuso", "Chiuso!1");
    closed.Open();
    for (const char* value : {"A", "B"}) {
      closed.onCommit = [&](const ado::TransactionMark& mark) { mark_ = mark; };
      closed.BeginTrans();
      closed.Execute(std::string("UPDATE EVENTOCONTABILE SET SOSPESA='") + value + "' WHERE EVENTOCONTABILEKEY=1");
      closed.CommitTrans();
      EXPECT_EQ(closed.Outcome(), TransactionOutcome::Applied) << protocol;
      EXPECT_EQ(mark_.server, "");
      EXPECT_EQ(base_.Valore("SELECT SOSPESA FROM EVENTOCONTABILE WHERE EVENTOCONTABILEKEY=1"), value) << protocol;
    }
  }
  base_.Esegui("GRANT EXECUTE ON FUNCTION pg_control_system() TO PUBLIC");
  base_.Esegui("DROP OWNED BY CHIUSO");
  base_.Esegui("DROP ROLE CHIUSO");
}

TEST_P(LookBack, IsGivenUpAtOnceWhereTheLoginIsRefused) {
  Commit();
  acting_->Close();
  auto parameters = moduloDatabase::LeggiParametriDB2(base_.Opzioni());
  parameters.Password = "altra";
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(moduloDatabase::CercaEsito(parameters, mark_, {}), TransactionOutcome::Unknown);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
}

namespace {

/// What is told of a connection to `server` with another password.
RuntimeError OfARefusedLogin(const test::DatabaseServer& server, const std::string& source) {
  ado::Connection connection;
  connection.ConnectionString = test::ConnectionText(source, server.User(), "altra");
  try {
    connection.Open();
  } catch (const RuntimeError& error) {
    return error;
  }
  return {0, "the login was not refused"};
}

} // namespace

TEST(LoginRefusedInItalian, IsKnownOfPostgres) {
  const test::EnvironmentSetting locales("LOCPATH", (test::BuildFolder() / "locali").c_str());
  test::PostgresServer server(test::ServerDirectory("postgres-it"));
  const std::string source = server.CreateDatabase("prove");
  {
    ado::Connection connection;
    connection.ConnectionString = server.ConnectionText(source);
    connection.Open();
    connection.Execute("ALTER SYSTEM SET lc_messages='it_IT.UTF-8'");
  }
  server.Restart();
  const RuntimeError error = OfARefusedLogin(server, source);
  EXPECT_THAT(error.Description(), HasSubstr("autenticazione con password fallita"));
  EXPECT_TRUE(ado::RefusedForGood(error));
}

TEST(LoginRefusedInItalian, IsKnownOfMariaDb) {
  const test::MariaDbServer& server = test::MariaDb();
  const auto database = test::databaseContext("mariadb").Create("");
  const auto speak = [&](const std::string& language) {
    test::RunScript(database->ConnectionText(), "SET GLOBAL lc_messages='" + language + "'");
  };
  speak("it_IT");
  const RuntimeError error = OfARefusedLogin(server, database->source);
  speak("en_US");
  EXPECT_THAT(error.Description(), HasSubstr("Accesso non consentito"));
  EXPECT_TRUE(ado::RefusedForGood(error));
}

TEST(LookUpOfNothing, TellsNothing) {
  const test::BaseEsiti base("sqlite");
  EXPECT_EQ(moduloDatabase::CercaEsito(moduloDatabase::LeggiParametriDB2(base.Opzioni()), {}, {}),
            TransactionOutcome::Unknown);
}
