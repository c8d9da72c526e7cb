#include "Esiti.hpp"
#include "platform/RuntimeError.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

using namespace lumoscad;
using testing::AllOf;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::Ne;

namespace {

constexpr const char* Occupate = "Un altro terminale tiene occupate le righe, oppure la base dati è lenta: l'attesa "
                                 "massima è trascorsa.";
constexpr const char* Reciproco =
    "Due terminali si sono bloccati a vicenda sulle stesse righe: la base dati ha annullato "
    "le modifiche di questo.";
constexpr const char* UnaRata = "UPDATE EVENTOCONTABILE SET IMPORTOEURO=7 WHERE EVENTOCONTABILEKEY=";

/// Two terminals on one database.
class Waits : public testing::TestWithParam<const char*> {
 protected:
  Waits() : altro_(posto_.base.AltroTerminale()) {}

  /// The other terminal changes an instalment and does not commit yet.
  void AltroTiene(const char* rata) const {
    altro_->BeginTrans();
    altro_->Execute(std::string(UnaRata) + rata);
  }
  /// The driver's own words for a failure, by the kind of database.
  [[nodiscard]] static std::string Parole(const char* sqlite, const char* postgres, const char* mariadb) {
    const std::string_view genere = GetParam();
    return genere == "sqlite" ? sqlite : genere == "postgres" ? postgres : mariadb;
  }
  [[nodiscard]] static bool SuPostgres() { return std::string_view(GetParam()) == "postgres"; }

  test::PostoEsiti posto_{GetParam()};
  std::unique_ptr<ado::Connection> altro_;
};

/// What needs a server, where two terminals write at once. The other one works without PostgreSQL's savepoints: their
/// release would wake who waits for a row, which then waits anew, and looks for a deadlock anew or not at all.
class WaitsOfAServer : public Waits {
 public:
  WaitsOfAServer(const WaitsOfAServer&) = delete;
  WaitsOfAServer& operator=(const WaitsOfAServer&) = delete;
  ~WaitsOfAServer() override {
    if (SuPostgres()) {
      TempoDelBlocco("RESET deadlock_timeout");
    }
  }

 protected:
  WaitsOfAServer() { altro_ = posto_.base.AltroTerminaleSenzaSavepoint(); }
  /// Alters the database for the sessions to come.
  void TempoDelBlocco(const std::string& modifica) const {
    posto_.base.Esegui("DO $do$ BEGIN EXECUTE format($f$ALTER DATABASE %I " + modifica +
                       "$f$, current_database()); END $do$");
  }
  /// Makes the other terminal the one that the server spares in a deadlock, or the one that it does not. PostgreSQL
  /// ends the one that looks for it, once, after its own time of waiting; MariaDB the one that has changed less. The
  /// times lie so far apart that it does not matter who is quicker.
  void AltroResiste(bool resiste) const {
    if (SuPostgres()) {
      TempoDelBlocco(resiste ? "SET deadlock_timeout='1ms'" : "SET deadlock_timeout='60s'");
      altro_->Execute(resiste ? "SET deadlock_timeout='60s'" : "SET deadlock_timeout='1ms'");
    }
    altro_->BeginTrans();
    if (!SuPostgres() && resiste) {
      altro_->Execute("UPDATE EVENTOCONTABILE SET IMPORTOEURO=7 WHERE EVENTOCONTABILEKEY>10");
    }
    altro_->Execute(std::string(UnaRata) + "3");
    if (SuPostgres()) {
      EXPECT_EQ(posto_.base.Valore("SELECT COUNT(*) FROM pg_locks WHERE locktype='transactionid'"), "1");
    }
  }
  /// The other terminal goes on to the instalment 1, which this one has changed by then: at once, or as soon as this
  /// one waits.
  std::thread AltroVuoleLaPrima(bool aspetta, std::string& guasto) {
    return std::thread([this, aspetta, &guasto] {
      if (aspetta) {
        EXPECT_TRUE(posto_.base.QualcunoAspetta());
      }
      try {
        altro_->Execute(std::string(UnaRata) + "1");
      } catch (const RuntimeError& errore) {
        guasto = WithSentence(errore.Description(), errore.Note());
      }
      altro_->RollbackTrans();
    });
  }
};

const auto Genere = [](const auto& scelta) { return std::string(scelta.param); };
INSTANTIATE_TEST_SUITE_P(Databases, Waits, testing::Values("sqlite", "postgres", "mariadb"), Genere);
INSTANTIATE_TEST_SUITE_P(Databases, WaitsOfAServer, testing::Values("postgres", "mariadb"), Genere);

} // namespace

TEST_P(Waits, ABusyRowEndsWithinTheLimitAndMayBeTriedAgain) {
  AltroTiene("3");
  {
    const test::LimiteIstruzioni limite("1");
    posto_.FallisceELasciaTutto("SospendiPartita", "riga tenuta da un altro terminale",
                                Parole("database is locked", "statement timeout", "max_statement_time exceeded"));
  }
  EXPECT_THAT(posto_.msg.Errore, HasSubstr(Occupate));
  EXPECT_LT(posto_.secondi, 6);
  altro_->RollbackTrans();
  EXPECT_EQ(posto_.Esegui("SospendiPartita"), "") << posto_.msg.Errore;
}

TEST_P(WaitsOfAServer, ARowReleasedInTimeIsChanged) {
  const auto prima = posto_.base.Tutto();
  AltroTiene("3");
  std::thread libera([this] {
    EXPECT_TRUE(posto_.base.QualcunoAspetta());
    altro_->RollbackTrans();
  });
  EXPECT_EQ(posto_.Esegui("SospendiPartita"), "") << posto_.msg.Errore;
  libera.join();
  EXPECT_THAT(posto_.base.Tutto(), Ne(prima));
}

TEST_P(WaitsOfAServer, ADeadlockUndoesEverythingAndIsSaid) {
  ASSERT_EQ(posto_.Esegui("SospendiPartita"), "") << posto_.msg.Errore;
  const int ultima = posto_.istruzioni;
  posto_.base.Ripristina();
  AltroResiste(true);
  std::string guasto;
  std::thread altro;
  if (SuPostgres()) {
    // The last statement goes to the row that the other holds: the other waits before it is sent.
    posto_.PrimaDellIstruzione(ultima, [&] {
      altro = AltroVuoleLaPrima(false, guasto);
      EXPECT_TRUE(posto_.base.QualcunoAspetta());
      // For the transaction itself: a savepoint's end would wake it.
      EXPECT_EQ(posto_.base.Valore("SELECT COUNT(*) FROM pg_locks JOIN pg_stat_activity ON backend_xid=transactionid "
                                   "WHERE NOT granted"),
                "1");
    });
  } else {
    altro = AltroVuoleLaPrima(true, guasto);
  }
  posto_.FallisceELasciaTutto("SospendiPartita", "blocco reciproco, annullato questo terminale",
                              Parole("", "deadlock detected", "Deadlock found"));
  altro.join();
  EXPECT_THAT(posto_.msg.Errore, HasSubstr(Reciproco));
  EXPECT_EQ(guasto, "");
  EXPECT_EQ(posto_.Esegui("SospendiPartita"), "") << posto_.msg.Errore;
}

TEST_P(WaitsOfAServer, WhoIsLeftAfterADeadlockChangesEverything) {
  const auto prima = posto_.base.Tutto();
  AltroResiste(false);
  std::string guasto;
  std::thread altro = AltroVuoleLaPrima(true, guasto);
  EXPECT_EQ(posto_.Esegui("SospendiPartita"), "") << posto_.msg.Errore;
  altro.join();
  EXPECT_THAT(guasto, AllOf(HasSubstr(Parole("", "deadlock detected", "Deadlock found")), HasSubstr(Reciproco)));
  const auto tiene = posto_.base.Tutto();
  EXPECT_THAT(tiene, Ne(prima));
  posto_.base.Ripristina();
  EXPECT_EQ(posto_.Esegui("SospendiPartita"), "");
  EXPECT_THAT(posto_.base.Tutto(), ElementsAreArray(tiene));
}

TEST_P(WaitsOfAServer, AStatementThatDoesNotEndIsInterrupted) {
  if (SuPostgres()) {
    posto_.base.Esegui(
        "CREATE FUNCTION PIANO() RETURNS TRIGGER LANGUAGE plpgsql AS 'BEGIN PERFORM pg_sleep(20); RETURN "
        "NEW; END'");
    posto_.base.Esegui("CREATE TRIGGER PIANO BEFORE UPDATE ON EVENTOCONTABILE FOR EACH ROW WHEN "
                       "(OLD.EVENTOCONTABILEKEY=3) EXECUTE FUNCTION PIANO()");
  } else {
    posto_.base.Esegui("CREATE TRIGGER PIANO BEFORE UPDATE ON EVENTOCONTABILE FOR EACH ROW IF "
                       "OLD.EVENTOCONTABILEKEY=3 THEN DO SLEEP(20); END IF");
  }
  const test::LimiteIstruzioni limite("1");
  posto_.FallisceELasciaTutto("SospendiPartita", "istruzione oltre il limite di tempo",
                              Parole("", "statement timeout", "max_statement_time exceeded"));
  EXPECT_LT(posto_.secondi, 6);
}
