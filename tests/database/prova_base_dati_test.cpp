// The look at a database before it is used: on every kind, and with each of its findings.

#include "BaseDati.hpp"
#include "database/ProvaBaseDati.hpp"
#include "database/moduloDatabase.hpp"
#include "platform/RuntimeError.hpp"
#include "support/ByteProxy.hpp"
#include "support/OtherProcess.hpp"
#include "support/PgBouncer.hpp"
#include "support/TestBench.hpp"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace lumoscad;
using testing::AllOf;
using testing::AnyOf;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

namespace {

/// The lines of a look: step, whether all is well, and what was seen.
std::vector<std::string> Guarda(const std::string& opzioni) {
  std::vector<std::string> righe;
  const bool riuscita = GuardaBaseDati(opzioni, [&](const EsitoDelPasso& passo) {
    righe.push_back(passo.operazione + (passo.riuscito ? ": " : " NO: ") + passo.dettaglio);
  });
  const bool tutte = std::none_of(righe.begin(), righe.end(),
                                  [](const std::string& riga) { return riga.find(" NO: ") != std::string::npos; });
  EXPECT_EQ(riuscita, tutte);
  EXPECT_THAT(righe, SizeIs(17)) << "a line a step, whatever fails";
  return righe;
}

/// Those of the lines that say no.
std::vector<std::string> Rifiuti(const std::string& opzioni) {
  auto righe = Guarda(opzioni);
  std::erase_if(righe, [](const std::string& riga) { return riga.find(" NO: ") == std::string::npos; });
  return righe;
}

std::string ConSchema(const test::BaseDati& base) {
  return "-T BANCA /CREDITI " + base.Opzioni() + " -DB2SCHEMA " + base.Schema();
}

std::string Dati() {
  return test::DatiDiProva() + test::Rata("401,1,301,201,101,'C','N','2006-03-05','2006-03-05',1,106,100.10") +
         test::Rata("402,1,301,201,101,'C','N',NULL,NULL,2,NULL,NULL");
}

class DatabaseLook : public testing::TestWithParam<const char*> {
 protected:
  [[nodiscard]] static bool Server() { return std::string_view(GetParam()) != "sqlite"; }

  test::TestBench banco_;
};

INSTANTIATE_TEST_SUITE_P(Databases, DatabaseLook, testing::ValuesIn(test::GeneriDiBase()), test::NomeDelGenere);

TEST_P(DatabaseLook, SaysOfAGoodDatabaseThatItServesAndWritesNothing) {
  const test::BaseDati base(GetParam(), Dati());
  const auto prima = test::Rate(base);
  banco_.statements.clear();
  const auto righe = Guarda(ConSchema(base));
  EXPECT_THAT(righe, Each(Not(HasSubstr(" NO: "))));
  EXPECT_THAT(righe,
              ElementsAre(StartsWith("Origine: l'origine dati «"), StartsWith("Driver: "), StartsWith("Server: "),
                          StartsWith("Accesso: "), StartsWith("Tabella: AZIENDELINEE: AZIENDALINEAKEY "),
                          StartsWith("Tabella: MOVIMENTOCONTABILE: "), StartsWith("Tabella: PARTITACONTABILE: "),
                          StartsWith("Tabella: CONTOCONTABILE: "), StartsWith("Tabella: EVENTOCONTABILE: "),
                          StartsWith("Schema: lo schema «"), StartsWith("Codifica: "), StartsWith("Decimali: 1234.50"),
                          StartsWith("Confronti: "), StartsWith("Transazioni: "),
                          StartsWith("Limiti: un'istruzione può durare 60 secondi; "), StartsWith("Replica: "),
                          StartsWith("Elenco: 2 righe in ")));
  EXPECT_THAT(banco_.statements, Each(AnyOf(StartsWith("SELECT "), StartsWith("PRAGMA "), StartsWith("SHOW "))));
  EXPECT_EQ(test::Rate(base), prima);
  const auto password = moduloDatabase::LeggiParametriDB2(base.Opzioni()).Password;
  if (Server()) {
    EXPECT_THAT(righe, Each(Not(HasSubstr(password))));
    EXPECT_THAT(righe[15], EndsWith("il collegamento va diritto al server"));
  }
  EXPECT_THAT(righe[8], testing::ContainsRegex("IMPORTOEURO [a-zA-Z]+.15"));
  // What the server declares: lengths where it tells them.
  EXPECT_THAT(righe[7], AllOf(HasSubstr("CODICECONTO "), HasSubstr("(12)"), HasSubstr("BLOCCO ")));
}

TEST_P(DatabaseLook, NamesTheColumnsThatAreMissing) {
  const auto tabelle = test::Replaced(test::TabelleContabili(), ",\n  TITOLOIVA CHAR(1)", "");
  const test::BaseDati base(GetParam(), Dati(), tabelle);
  EXPECT_THAT(Rifiuti(ConSchema(base)),
              ElementsAre("Tabella NO: nella tabella EVENTOCONTABILE mancano le colonne TITOLOIVA"));
}

TEST_P(DatabaseLook, NamesTheTableThatIsMissing) {
  const test::BaseDati base(GetParam(), Dati() + "DROP TABLE PARTITACONTABILE;");
  EXPECT_THAT(
      Rifiuti(ConSchema(base)),
      ElementsAre(AllOf(StartsWith("Tabella NO: "), testing::ContainsRegex("PARTITACONTABILE|partitacontabile")),
                  AllOf(StartsWith("Elenco NO: "), testing::ContainsRegex("PARTITACONTABILE|partitacontabile"))));
}

TEST_P(DatabaseLook, MissesTheSchemaAndNeverTakesThePasswordForIt) {
  const test::BaseDati base(GetParam(), Dati());
  banco_.statements.clear();
  EXPECT_THAT(Rifiuti(base.Opzioni()), ElementsAre(StartsWith("Schema NO: -DB2SCHEMA non è indicata")));
  const auto password = moduloDatabase::LeggiParametriDB2(base.Opzioni()).Password;
  if (!password.empty()) {
    EXPECT_THAT(banco_.statements, Each(Not(HasSubstr(password))));
  }
  EXPECT_THAT(Rifiuti(base.Opzioni() + " -DB2SCHEMA ALTROVE"), ElementsAre(StartsWith("Schema NO: [")));
}

TEST_P(DatabaseLook, FindsAnAmountThatIsNoNumber) {
  const auto tabelle = test::Replaced(test::TabelleContabili(), "IMPORTOEURO DECIMAL(15,2)", "IMPORTOEURO VARCHAR(20)");
  const test::BaseDati base(GetParam(), Dati(), tabelle);
  EXPECT_THAT(Rifiuti(ConSchema(base)), testing::IsEmpty());
  base.Esegui("UPDATE EVENTOCONTABILE SET IMPORTOEURO='dodici' WHERE EVENTOCONTABILEKEY=401");
  EXPECT_THAT(Rifiuti(ConSchema(base)), ElementsAre("Decimali NO: Importo non valido: dodici"));
}

TEST_P(DatabaseLook, FindsADateThatIsNone) {
  const auto tabelle = test::Replaced(test::TabelleContabili(), "DATASCADENZA DATE", "DATASCADENZA VARCHAR(10)");
  const test::BaseDati base(GetParam(), Dati(), tabelle);
  EXPECT_THAT(Rifiuti(ConSchema(base)), testing::IsEmpty());
  base.Esegui("UPDATE EVENTOCONTABILE SET DATASCADENZA='05/03/2006' WHERE EVENTOCONTABILEKEY=401");
  EXPECT_THAT(Rifiuti(ConSchema(base)), ElementsAre("Elenco NO: Data non valida nella base dati: 05/03/2006"));
}

TEST_P(DatabaseLook, FindsTheCodesThatDoNotTellCasesApart) {
  const std::string_view genere = GetParam();
  const std::string prima =
      genere == "postgres" ? "CREATE COLLATION UNO (provider=icu, deterministic=false, locale='und-u-ks-level1');" : "";
  const std::string confronto = genere == "postgres"  ? " COLLATE UNO"
                                : genere == "mariadb" ? " COLLATE utf8mb4_general_ci"
                                                      : " COLLATE NOCASE";
  const auto tabelle = prima + test::Replaced(test::TabelleContabili(), "CODICECONTO VARCHAR(12) NOT NULL",
                                              "CODICECONTO VARCHAR(12)" + confronto + " NOT NULL");
  const test::BaseDati base(genere, Dati(), tabelle);
  const std::string accenti = Server() ? ", lettere con e senza accento sono uguali in CONTOCONTABILE.CODICECONTO" : "";
  EXPECT_THAT(Rifiuti(ConSchema(base)),
              ElementsAre("Confronti NO: maiuscole e minuscole sono uguali in CONTOCONTABILE.CODICECONTO" + accenti));
}

TEST_P(DatabaseLook, TellsAnUnfitTimeLimitAndLooksAtTheRest) {
  const test::BaseDati base(GetParam(), Dati());
  ::setenv("LUMOSCAD_ATTESA_SQL", "molti", 1);
  const auto rifiuti = Rifiuti(ConSchema(base));
  ::setenv("LUMOSCAD_ATTESA_SQL", "7", 1);
  const auto righe = Guarda(ConSchema(base));
  ::unsetenv("LUMOSCAD_ATTESA_SQL");
  EXPECT_THAT(rifiuti, ElementsAre(StartsWith("Limiti NO: LUMOSCAD_ATTESA_SQL deve essere un numero intero")));
  EXPECT_THAT(righe[14], StartsWith("Limiti: un'istruzione può durare 7 secondi"));
}

TEST(DatabaseLookAt, AServerThatRefusesTheLoginIsToldWithoutThePassword) {
  const test::TestBench banco;
  for (const char* genere : test::DatabaseServers()) {
    const test::BaseDati base(genere, "");
    const auto parametri = moduloDatabase::LeggiParametriDB2(base.Opzioni());
    const auto righe =
        Rifiuti("-DB2SOURCE " + parametri.DataSource + " -DB2USER " + parametri.UserId + " -DB2PASS Segretissima");
    ASSERT_THAT(righe, SizeIs(17));
    EXPECT_THAT(righe[0], AllOf(StartsWith("Origine NO: ["), HasSubstr(base.Particolarita().refused)));
    EXPECT_THAT(std::vector<std::string>(righe.begin() + 1, righe.end()),
                Each(EndsWith(" NO: non provato: la connessione non è riuscita")));
    EXPECT_THAT(righe, Each(Not(HasSubstr("egretissim"))));
  }
}

TEST(DatabaseLookAt, AnUnknownSourceSaysSo) {
  const test::TestBench banco;
  static_cast<void>(test::OdbcConfiguration::Instance()); // not the machine's own
  const auto righe = Rifiuti("-DB2SOURCE NESSUNA");
  EXPECT_THAT(righe, SizeIs(17));
  EXPECT_THAT(righe[0], HasSubstr("L'origine dati ODBC «NESSUNA» non è definita"));
}

TEST(DatabaseLookAt, AFileThatIsNotThereDoesNotMakeIt) {
  const test::TestBench banco;
  const test::TemporaryFolder cartella;
  auto& configurazione = test::OdbcConfiguration::Instance();
  const std::filesystem::path file = cartella.Path() / "manca.sqlite";
  const auto origine = configurazione.AddSource("manca", "libsqlite3odbc.so", {{"Database", file.string()}});
  EXPECT_THAT(Rifiuti("-DB2SOURCE " + origine)[0], StartsWith("Origine NO: ["));
  EXPECT_FALSE(std::filesystem::exists(file));
  configurazione.RemoveSource(origine);
}

TEST(DatabaseLookAt, TablesWithoutTransactionsAreNamed) {
  const test::TestBench banco;
  const test::BaseDati base("mariadb", Dati());
  base.Esegui("ALTER TABLE EVENTOCONTABILE ENGINE=MyISAM");
  EXPECT_THAT(Rifiuti(ConSchema(base)),
              ElementsAre("Transazioni NO: tabelle di un motore senza transazioni, di cui una "
                          "modifica può restare a metà: EVENTOCONTABILE (MyISAM)"));
}

TEST(DatabaseLookAt, AServerThatTakesNoChangesIsNoticed) {
  const test::TestBench banco;
  const test::BaseDati mariaDb("mariadb", Dati());
  mariaDb.Esegui("SET GLOBAL read_only=1");
  const auto rifiuti = Rifiuti(ConSchema(mariaDb));
  mariaDb.Esegui("SET GLOBAL read_only=0");
  EXPECT_THAT(rifiuti, ElementsAre("Replica NO: la base dati è in sola lettura"));
  const test::BaseDati postgres("postgres", Dati());
  const auto origine = test::Postgres().AddSource(
      "prove", 0,
      {{"ConnSettings", "SET search_path TO " + postgres.Schema() + ";SET default_transaction_read_only TO on"}});
  EXPECT_THAT(Rifiuti(ConSchema(postgres) + " -DB2SOURCE " + origine),
              ElementsAre("Replica NO: la base dati è in sola lettura"));
  test::OdbcConfiguration::Instance().RemoveSource(origine);
}

TEST(DatabaseLookAt, AServerBehindSomethingElseIsSaidToBe) {
  const test::TestBench banco;
  const test::BaseDati base("postgres", Dati());
  const test::TemporaryFolder cartella;
  const int server = test::Postgres().Port();
  // A program of its own: the sockets of a proxy in this one would be this one's.
  const test::OtherProcess proxy([&] {
    static const test::ByteProxy Passaggio(server);
    std::ofstream(cartella / "porta") << Passaggio.Port();
  });
  ASSERT_TRUE(proxy.Succeeded());
  const auto origine = test::Postgres().AddSource("prove", std::stoi(test::FileText(cartella / "porta")),
                                                  {{"ConnSettings", "SET search_path TO " + base.Schema()}});
  EXPECT_THAT(Guarda(ConSchema(base) + " -DB2SOURCE " + origine)[15],
              StartsWith("Replica: fra il programma e il server può stare un intermediario"));
  test::OdbcConfiguration::Instance().RemoveSource(origine);
}

TEST(DatabaseLookAt, APoolerIsNoticedThatIsIdleWhereItWouldChangeTheProcess) {
  const test::TestBench banco;
  const test::BaseDati base("postgres", Dati());
  const auto guarda = [&](const char* modo) {
    const test::PgBouncer pooler(test::ServerDirectory("pgbouncer"), test::Postgres(), modo);
    const auto origine = pooler.AddSource("prove", 0, {{"ConnSettings", "SET search_path TO " + base.Schema()}});
    auto rifiuti = Rifiuti(ConSchema(base) + " -DB2SOURCE " + origine);
    test::OdbcConfiguration::Instance().RemoveSource(origine);
    return rifiuti;
  };
  EXPECT_THAT(guarda("pool_mode=session"), IsEmpty());
  EXPECT_THAT(
      guarda("pool_mode=transaction"),
      ElementsAre("Replica NO: La base dati non si usa attraverso un pooler che cambia il processo del server a "
                  "ogni transazione. Nel pooler occorre pool_mode=session, con server_reset_query=DISCARD ALL; "
                  "oppure l'origine dati deve portare diritto al server.",
                  "Elenco NO: non provato: la connessione non è riuscita"));
}

/// The server's own functions are hidden behind some that answer as a pooler and a standby let them.
TEST(DatabaseLookAt, APoolerOfTransactionsAndAStandbyAreNoticed) {
  const test::TestBench banco;
  const test::BaseDati base("postgres", Dati());
  const auto origine =
      test::Postgres().AddSource("prove", 0, {{"ConnSettings", "SET search_path TO " + base.Schema() + ",pg_catalog"}});
  base.Esegui("CREATE SEQUENCE PROCESSI");
  base.Esegui("CREATE FUNCTION pg_backend_pid() RETURNS INTEGER LANGUAGE sql AS 'SELECT nextval(''PROCESSI'')::int'");
  EXPECT_THAT(Rifiuti(ConSchema(base) + " -DB2SOURCE " + origine),
              ElementsAre("Replica NO: un pooler cambia il processo del server da un'istruzione all'altra: occorre "
                          "pool_mode=session"));
  base.Esegui("CREATE FUNCTION pg_is_in_recovery() RETURNS BOOLEAN LANGUAGE sql AS 'SELECT true'");
  EXPECT_THAT(Rifiuti(ConSchema(base) + " -DB2SOURCE " + origine),
              ElementsAre("Replica NO: il server è una replica (standby) e non si può modificare"));
  test::OdbcConfiguration::Instance().RemoveSource(origine);
}

TEST(DatabaseLookAt, ASourceThatSpoilsAccentsIsNoticed) {
  const test::TestBench banco;
  const test::BaseDati base("postgres", Dati());
  const auto origine = test::Postgres().AddSource(
      "prove", 0, {{"ConnSettings", "SET search_path TO " + base.Schema() + ";SET client_encoding TO LATIN1"}});
  const auto rifiuti = Rifiuti(ConSchema(base) + " -DB2SOURCE " + origine);
  EXPECT_THAT(rifiuti, Contains(StartsWith("Codifica NO: ")));
  test::OdbcConfiguration::Instance().RemoveSource(origine);
}

} // namespace
