#include "Esiti.hpp"
#include "RegistroEsiti.hpp"
#include "platform/RuntimeError.hpp"
#include "support/Paths.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

using namespace lumoscad;
using ado::TransactionOutcome;
using test::ByteProxy;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::Ne;

namespace {

constexpr const char* Caduta = "La connessione con la base dati è caduta.";

/// Makes the servers of this process run with a disk that can be full. It must be in place before the first starts.
class DiscoPieno final : public testing::Environment {
 public:
  void SetUp() override {
    cartella_ = test::ServerDirectory("disco");
    std::filesystem::create_directories(cartella_);
    setenv("LD_PRELOAD", test::LibraryPath("disco_pieno").c_str(), 1);
    setenv("LUMOSCAD_DISCO_PIENO", Segno().c_str(), 1);
  }
  void TearDown() override { std::filesystem::remove_all(cartella_); }
  /// From now on no file grows whose path holds `parte`.
  void Riempi(std::string_view parte) const { std::ofstream(Segno()) << parte; }
  void Svuota() const { std::filesystem::remove(Segno()); }

 private:
  [[nodiscard]] std::string Segno() const { return (cartella_ / "pieno").string(); }

  std::filesystem::path cartella_;
};

const DiscoPieno& disco = *static_cast<DiscoPieno*>(testing::AddGlobalTestEnvironment(new DiscoPieno));

/// A server that fails, stops or comes back.
class Server : public testing::TestWithParam<const char*> {
 protected:
  [[nodiscard]] static bool SuPostgres() { return std::string_view(GetParam()) == "postgres"; }
  static void Ferma() { SuPostgres() ? test::Postgres().Stop() : test::MariaDb().Stop(); }
  static void Riavvia() { SuPostgres() ? test::Postgres().Restart() : test::MariaDb().Restart(); }
  /// Brings to the disk what was committed before, which these servers otherwise write late, and all that comes.
  void Consolida() {
    posto_.base.Esegui(SuPostgres() ? "CHECKPOINT" : "SET GLOBAL innodb_flush_log_at_trx_commit=1");
    posto_.base.Ripristina();
    posto_.base.Esegui(SuPostgres() ? "CHECKPOINT" : "FLUSH ENGINE LOGS");
  }
  static void Uccidi() { SuPostgres() ? test::Postgres().Kill() : test::MariaDb().Kill(); }

  test::PostoEsiti posto_{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Databases, Server, testing::Values("postgres", "mariadb"),
                         [](const auto& scelta) { return std::string(scelta.param); });

} // namespace

TEST_P(Server, WithAFullDiskNothingStaysAndItMayBeTriedAgainLater) {
  if (!SuPostgres()) {
    posto_.base.Esegui("SET GLOBAL innodb_file_per_table=1");
  }
  posto_.base.Esegui("CREATE TABLE STORIA (TESTO CHAR(200))");
  if (SuPostgres()) {
    posto_.base.Esegui("CREATE FUNCTION STORIA() RETURNS TRIGGER LANGUAGE plpgsql AS 'BEGIN INSERT INTO STORIA SELECT "
                       "''x'' FROM generate_series(1,1000); RETURN NEW; END'");
    posto_.base.Esegui("CREATE TRIGGER STORIA BEFORE UPDATE ON EVENTOCONTABILE FOR EACH ROW WHEN "
                       "(OLD.EVENTOCONTABILEKEY=2) EXECUTE FUNCTION STORIA()");
  } else {
    posto_.base.Esegui("CREATE TRIGGER STORIA BEFORE UPDATE ON EVENTOCONTABILE FOR EACH ROW IF "
                       "OLD.EVENTOCONTABILEKEY=2 THEN INSERT INTO STORIA SELECT 'x' FROM seq_1_to_100000; END IF");
  }
  disco.Riempi(SuPostgres() ? "/base/" : "STORIA.ibd");
  posto_.FallisceELasciaTutto("SospendiPartita", "disco pieno",
                              "Lo spazio della base dati è esaurito: avvisare chi amministra il sistema.");
  disco.Svuota();
  if (!SuPostgres()) {
    posto_.base.Esegui("SET GLOBAL innodb_file_per_table=0");
  }
  EXPECT_EQ(posto_.Esegui("SospendiPartita"), "") << posto_.msg.Errore;
}

TEST_P(Server, MayBeRestartedBetweenTwoCommands) {
  const auto prima = posto_.base.Tutto();
  ASSERT_EQ(posto_.Esegui("SospendiMovimento"), "") << posto_.msg.Errore;
  const auto dopo = posto_.base.Tutto();
  EXPECT_THAT(dopo, Ne(prima));
  Riavvia();
  posto_.base.Riapri();
  EXPECT_THAT(posto_.base.Tutto(), ElementsAreArray(dopo));
  EXPECT_EQ(posto_.Esegui("SospendiPartita"), "") << posto_.msg.Errore;
}

TEST_P(Server, RefusesWhileDownAndAcceptsOnceBack) {
  const auto prima = posto_.base.Tutto();
  Ferma();
  posto_.base.Proxy().Refuse(true);
  EXPECT_EQ(posto_.Esegui("SospendiPartita"), "error");
  EXPECT_THAT(posto_.msg.Errore, HasSubstr("la base dati non ne ha registrato nulla. Da allineare: partita"));
  Riavvia();
  posto_.base.Proxy().Refuse(false);
  posto_.base.Riapri();
  const auto tiene = posto_.base.Tutto();
  EXPECT_THAT(tiene, ElementsAreArray(prima));
  test::RegistroEsiti::Unico().AnnotaGuasto(GetParam(), "server fermo all'apertura", posto_.msg.Errore,
                                            tiene == prima ? "come prima" : "CAMBIATA", posto_.secondi);
  EXPECT_EQ(posto_.Esegui("SospendiPartita"), "") << posto_.msg.Errore;
}

TEST_P(Server, KilledHalfwayKeepsNothing) {
  ASSERT_EQ(posto_.Esegui("SospendiPartita"), "") << posto_.msg.Errore;
  const int ultima = posto_.istruzioni;
  Consolida();
  posto_.PrimaDellIstruzione(ultima, [] {
    Uccidi();
    Riavvia();
  });
  posto_.FallisceELasciaTutto("SospendiPartita", "server ucciso prima dell'ultima istruzione e riavviato", Caduta);
  EXPECT_EQ(posto_.Esegui("SospendiPartita"), "") << posto_.msg.Errore;
}

TEST(RefusedCommit, ByADeferredConstraintIsNotApplied) {
  const test::BaseEsiti base("postgres");
  base.Esegui("CREATE TABLE UNA (A INTEGER, CONSTRAINT DOPPIA UNIQUE (A) DEFERRABLE INITIALLY DEFERRED)");
  const auto connection = base.AltroTerminale();
  connection->BeginTrans();
  connection->Execute("INSERT INTO UNA VALUES (1)");
  connection->Execute("INSERT INTO UNA VALUES (1)");
  try {
    connection->CommitTrans();
    FAIL() << "committed";
  } catch (const RuntimeError& errore) {
    EXPECT_EQ(errore.Number(), -2147217873);
    EXPECT_THAT(errore.Description(), HasSubstr("duplicate key"));
  }
  EXPECT_EQ(connection->Outcome(), TransactionOutcome::NotApplied);
  EXPECT_EQ(base.Valore("SELECT COUNT(*) FROM UNA"), "0");
  connection->BeginTrans();
  connection->Execute("INSERT INTO UNA VALUES (1)");
  connection->CommitTrans();
  EXPECT_EQ(connection->Outcome(), TransactionOutcome::Applied);
  EXPECT_EQ(base.Valore("SELECT COUNT(*) FROM UNA"), "1");
}

TEST(RefusedCommit, ByAServerThatBecameReadOnlyIsNotApplied) {
  const test::BaseEsiti base("mariadb");
  base.Esegui("CREATE USER OPERATORE IDENTIFIED BY 'Operatore!1'");
  base.Esegui("GRANT SELECT,UPDATE ON " + base.Valore("SELECT DATABASE()") + ".* TO OPERATORE");
  ado::Connection connection;
  connection.ConnectionString =
      test::ConnectionText(test::MariaDb().AddSource(base.Valore("SELECT DATABASE()")), "OPERATORE", "Operatore!1");
  connection.Open();
  connection.BeginTrans();
  connection.Execute("UPDATE EVENTOCONTABILE SET SOSPESA='S' WHERE EVENTOCONTABILEKEY=1");
  base.Esegui("SET GLOBAL read_only=1");
  try {
    connection.CommitTrans();
    ADD_FAILURE() << "committed";
  } catch (const RuntimeError& errore) {
    EXPECT_THAT(errore.Description(), HasSubstr("--read-only"));
  }
  base.Esegui("SET GLOBAL read_only=0");
  EXPECT_EQ(connection.Outcome(), TransactionOutcome::NotApplied);
  EXPECT_EQ(base.Valore("SELECT SOSPESA FROM EVENTOCONTABILE WHERE EVENTOCONTABILEKEY=1"), "N");
  connection.Close();
  EXPECT_EQ(connection.Outcome(), TransactionOutcome::NotApplied);
  base.Esegui("DROP USER OPERATORE");
}

TEST(RefusedCommit, ByAReaderOfSqliteIsNotApplied) {
  const test::BaseEsiti base("sqlite");
  const auto lettore = base.AltroTerminale();
  lettore->BeginTrans();
  ado::Command comando;
  comando.ActiveConnection = lettore.get();
  comando.CommandText = "SELECT * FROM EVENTOCONTABILE";
  EXPECT_GT(comando.Execute().RecordCount(), 0U);
  const auto scrittore = base.AltroTerminale();
  scrittore->BeginTrans();
  scrittore->Execute("UPDATE EVENTOCONTABILE SET SOSPESA='S' WHERE EVENTOCONTABILEKEY=1");
  try {
    scrittore->CommitTrans();
    ADD_FAILURE() << "committed";
  } catch (const RuntimeError& errore) {
    EXPECT_THAT(errore.Description(), HasSubstr("database is locked"));
  }
  EXPECT_EQ(scrittore->Outcome(), TransactionOutcome::NotApplied);
  lettore->RollbackTrans();
  EXPECT_EQ(base.Valore("SELECT SOSPESA FROM EVENTOCONTABILE WHERE EVENTOCONTABILEKEY=1"), "N");
  EXPECT_NO_THROW(scrittore->BeginTrans());
}
