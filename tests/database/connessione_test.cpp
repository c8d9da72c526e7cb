#include "BaseDati.hpp"
#include "database/db2Searches.hpp"
#include "database/moduloDatabase.hpp"
#include "database/procedureLumoDB2.hpp"
#include "platform/RuntimeError.hpp"
#include "support/TestBench.hpp"

#include <gmock/gmock.h>

#include <utility>

namespace lumoscad::moduloDatabase {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

TEST(ConnectionOptions, AreReadFromTheCommandLine) {
  const auto letti = LeggiParametriDB2("BANCA /CREDITI -D 001 -DB2SOURCE CONTI -DB2USER ada -DB2PASS Segr3to "
                                       "-DB2SCHEMA LUMO -H 10.0.0.1");
  EXPECT_EQ(letti.DataSource, "CONTI");
  EXPECT_EQ(letti.UserId, "ada");
  EXPECT_EQ(letti.Password, "Segr3to");
  EXPECT_EQ(letti.Schema, "LUMO");
}

TEST(ConnectionOptions, HaveNamesInAnyCaseAndValuesAsWritten) {
  const auto letti = LeggiParametriDB2("-db2user ADMIN -Db2Pass sEGRETO");
  EXPECT_EQ(letti.UserId, "ADMIN");
  EXPECT_EQ(letti.Password, "sEGRETO");
}

TEST(ConnectionOptions, AreEmptyWhereTheyAreMissing) {
  for (const char* comando : {"", "BANCA /CREDITI", "-DB2SOURCEX a DB2USER b"}) {
    const auto letti = LeggiParametriDB2(comando);
    EXPECT_EQ(letti.DataSource + letti.UserId + letti.Password + letti.Schema, "") << comando;
  }
}

TEST(ConnectionOptions, TakeTheLastOfSeveralOccurrences) {
  EXPECT_EQ(LeggiParametriDB2("-DB2USER uno -db2user due").UserId, "due");
}

TEST(ConnectionOptions, AreEmptyAsTheLastWord) {
  const auto letti = LeggiParametriDB2("-DB2USER uno -DB2SOURCE a -DB2USER");
  EXPECT_EQ(letti.UserId, "");
  EXPECT_EQ(letti.DataSource, "a");
}

TEST(ConnectionOptions, AreEmptyBeforeADoubledBlank) {
  EXPECT_EQ(LeggiParametriDB2("-DB2USER  ADMIN").UserId, "");
}

TEST(ConnectionOptions, MayBeTheValueOfTheOptionBeforeAndCountAllTheSame) {
  const auto letti = LeggiParametriDB2("-DB2USER -DB2PASS x");
  EXPECT_EQ(letti.UserId, "-DB2PASS");
  EXPECT_EQ(letti.Password, "x");
}

TEST(ConnectionOptions, GiveTheSchemaThePasswordSettingWhereItIsMissingOrBlank) {
  EXPECT_EQ(LeggiParametriDB2("-DB2USER ada -DB2PASS Segr3to").Schema, "Segr3to");
  EXPECT_EQ(LeggiParametriDB2("-DB2PASS Segr3to -DB2SCHEMA").Schema, "Segr3to");
  EXPECT_EQ(LeggiParametriDB2("-DB2PASS Segr3to -DB2SCHEMA  LUMO").Schema, "Segr3to");
}

/// What is said where the connection does not open; empty where it does.
std::string Rifiuto(const ParametriConnessione& parametri) {
  try {
    static_cast<void>(ApriConnessione(parametri));
  } catch (const RuntimeError& errore) {
    return TestoErrore(errore);
  }
  return "";
}

/// A connection to a database of each kind.
class Connecting : public testing::TestWithParam<const char*> {};
class ConnectingToAServer : public Connecting {};
class Closing : public Connecting {};
class TransactionGuard : public Connecting {};

INSTANTIATE_TEST_SUITE_P(Databases, Connecting, testing::ValuesIn(test::GeneriDiBase()), test::NomeDelGenere);
INSTANTIATE_TEST_SUITE_P(Databases, ConnectingToAServer, testing::ValuesIn(test::DatabaseServers()),
                         test::NomeDelGenere);
INSTANTIATE_TEST_SUITE_P(Databases, Closing, testing::ValuesIn(test::GeneriDiBase()), test::NomeDelGenere);
INSTANTIATE_TEST_SUITE_P(Databases, TransactionGuard, testing::ValuesIn(test::GeneriDiBase()), test::NomeDelGenere);

TEST_P(Connecting, UsesTheWholeConnectionText) {
  const test::BaseDati base(GetParam(), "");
  ParametriConnessione parametri = LeggiParametriDB2(base.Opzioni());
  if (parametri.UserId.empty()) {
    parametri.UserId = "ada";
    parametri.Password = "Segr3to";
  }
  const auto connection = ApriConnessione(parametri);
  EXPECT_EQ(connection->ConnectionString,
            "Provider=MSDASQL.1;Persist Security Info=True;Mode=Read|Write;Connect Timeout=30"
            ";Password=" +
                parametri.Password + ";User ID=" + parametri.UserId + ";Data Source=" + parametri.DataSource);
  EXPECT_EQ(connection->CursorLocation, ado::CursorLocation::Client);
  EXPECT_EQ(connection->State(), ado::State::Open);
}

TEST(ConnectingNowhere, WithoutAnyOptionFailsWithTheErrorMessage) {
  test::OdbcConfiguration::Instance();
  const test::TestBench banco;
  stato().ComandoCorrente = "BANCA /CREDITI";
  MsgAnnulla msg;
  EXPECT_EQ(db2Searches::DescrizioneConto("C01", msg), "error");
  EXPECT_THAT(msg.Errore, StartsWith("ERRORE: -2147467259\r\n"));
  EXPECT_GT(msg.Errore.size(), std::string("ERRORE: -2147467259\r\n").size());
  EXPECT_THAT(banco.statements, IsEmpty());
}

TEST(ConnectingNowhere, ToAnUnknownSourceNeverShowsThePassword) {
  test::OdbcConfiguration::Instance();
  const test::TestBench banco;
  stato().ComandoCorrente = "BANCA /CREDITI -DB2SOURCE non-esiste -DB2USER ada -DB2PASS Segr3to99";
  VariazioniCanalizzazione variazioni(1);
  MsgAnnulla msg;
  EXPECT_EQ(procedureLumoDB2::AggiornaCanalizzazione(variazioni, msg, "CREDITI"), "error");
  EXPECT_THAT(msg.Errore, StartsWith("ERRORE: "));
  EXPECT_THAT(msg.Errore, Not(HasSubstr("Segr3to99")));
}

TEST(ConnectingNowhere, ToAnUnknownSourceNamesIt) {
  test::OdbcConfiguration::Instance();
  EXPECT_THAT(Rifiuto(LeggiParametriDB2("-DB2SOURCE non-esiste -DB2USER ada -DB2PASS Segr3to99")),
              EndsWith("no default driver specified\r\nL'origine dati ODBC «non-esiste» non è definita: -DB2SOURCE ne "
                       "dà il nome come sta in "
                       "odbc.ini."));
}

TEST_P(Connecting, ASemicolonIsExplainedWhereTheOpeningFails) {
  const test::BaseDati base(GetParam(), "");
  const auto consiglio = [](const std::string& opzione) {
    return "\r\nIl valore di " + opzione + " contiene «;», che lo divide: va scritto tra virgolette, " + opzione +
           " \"...\", e ogni virgoletta che contiene va scritta due volte.";
  };
  for (const std::string password : {"Wyxk;Zqjh", ";Wyxk", "Wyxk;Zqjh=1"}) {
    ParametriConnessione parametri = LeggiParametriDB2(base.Opzioni());
    parametri.Password = password;
    const std::string detto = Rifiuto(parametri);
    if (detto.empty()) {
      EXPECT_STREQ(GetParam(), "sqlite") << "a server must not let in who says " << password;
      continue;
    }
    EXPECT_THAT(detto, EndsWith(consiglio("-DB2PASS")));
    EXPECT_THAT(detto, Not(HasSubstr("\r\n\r\n")));
    EXPECT_THAT(detto, Not(HasSubstr("Wyxk")));
    EXPECT_THAT(detto, Not(HasSubstr("Zqjh")));
  }
  ParametriConnessione parametri = LeggiParametriDB2(base.Opzioni());
  parametri.UserId = "ada;x";
  EXPECT_THAT(Rifiuto(parametri), EndsWith(consiglio("-DB2USER")));
}

TEST_P(ConnectingToAServer, APasswordWithASemicolonOpensBetweenQuotes) {
  const test::BaseDati base(GetParam(), "");
  ParametriConnessione parametri = LeggiParametriDB2(base.Opzioni());
  base.Esegui(base.Contesto().CreateAccount("sportello", "wx;yz\"9"));
  parametri.UserId = "sportello";
  parametri.Password = "\"wx;yz\"\"9\"";
  EXPECT_EQ(Rifiuto(parametri), "");
  parametri.Password = "\"wx;yz9\"";
  const std::string detto = Rifiuto(parametri);
  base.Esegui(base.Contesto().DropAccount("sportello"));
  EXPECT_THAT(detto, Not(IsEmpty()));
  EXPECT_THAT(detto, Not(HasSubstr("-DB2PASS"))) << "it is quoted already";
}

TEST_P(ConnectingToAServer, WithAWrongPasswordSaysSoWithoutThePassword) {
  const test::BaseDati base(GetParam(), "");
  ParametriConnessione parametri = LeggiParametriDB2(base.Opzioni());
  parametri.Password = "Sbagliata77";
  try {
    static_cast<void>(ApriConnessione(parametri));
    FAIL() << "the connection was opened";
  } catch (const RuntimeError& errore) {
    EXPECT_THAT(errore.Text(), Not(IsEmpty()));
    EXPECT_THAT(errore.Text(), Not(HasSubstr("Sbagliata77")));
  }
}

TEST_P(Closing, ClosesAnOpenConnectionAndToleratesNoneOrAClosedOne) {
  const test::BaseDati base(GetParam(), "");
  const auto connection = ApriConnessione(LeggiParametriDB2(base.Opzioni()));
  ChiudiConnessione(connection.get());
  EXPECT_EQ(connection->State(), ado::State::Closed);
  ChiudiConnessione(connection.get());
  ChiudiConnessione(nullptr);
  EXPECT_EQ(connection->State(), ado::State::Closed);
}

TEST_P(Closing, ClosesAResultSetOnce) {
  const test::BaseDati base(GetParam(), "");
  const auto connection = ApriConnessione(LeggiParametriDB2(base.Opzioni()));
  ado::Command comando = CreaComando(*connection, "SELECT CODICEAZIENDA FROM AZIENDELINEE");
  EXPECT_EQ(comando.CommandType, ado::CommandType::Text);
  EXPECT_EQ(comando.ActiveConnection, connection.get());
  ado::Recordset righe = comando.Execute();
  EXPECT_EQ(righe.State(), ado::State::Open);
  ChiudiRecordset(righe);
  EXPECT_EQ(righe.State(), ado::State::Closed);
  ChiudiRecordset(righe);
  EXPECT_EQ(righe.State(), ado::State::Closed);
}

TEST(ErrorText, IsNumberLineBreakAndDescription) {
  EXPECT_EQ(TestoErrore(RuntimeError(-2147217900, "Errore di sintassi")), "ERRORE: -2147217900\r\nErrore di sintassi");
}

TEST(ErrorText, ShowsTheSourceOfAFailureWithoutDescription) {
  EXPECT_EQ(TestoErrore(RuntimeError(errors::SearchFailed, "", "AZIENDA INESISTENTE")),
            "ERRORE: -2147220990\r\nAZIENDA INESISTENTE");
}

TEST_P(TransactionGuard, IsUndoneUnlessConfirmed) {
  const test::BaseDati base(GetParam(), "INSERT INTO AZIENDELINEE VALUES (1,'001',' ',' ');");
  const auto connection = ApriConnessione(LeggiParametriDB2(base.Opzioni()));
  {
    const Transazione transazione(*connection);
    connection->Execute("UPDATE AZIENDELINEE SET CODICEAZIENDA='002'");
  }
  EXPECT_THAT(base.Righe("SELECT CODICEAZIENDA FROM AZIENDELINEE"), ElementsAre("001"));
  {
    Transazione transazione(*connection);
    connection->Execute("UPDATE AZIENDELINEE SET CODICEAZIENDA='002'");
    transazione.Conferma();
  }
  EXPECT_THAT(base.Righe("SELECT CODICEAZIENDA FROM AZIENDELINEE"), ElementsAre("002"));
}

} // namespace
} // namespace lumoscad::moduloDatabase
