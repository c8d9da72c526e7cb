// Faults of the database.

#include "Figlio.hpp"
#include "Guasti.hpp"
#include "support/Paths.hpp"
#include "support/PostgresServer.hpp"

namespace lumoscad::test {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
namespace fs = std::filesystem;

/// What stands at the end of a message after the host's yes.
const std::string NonRegistrata =
    "\r\nL'host ha già accettato la modifica; la base dati non ne ha registrato nulla. Da allineare: conto 20100023 "
    "partita 2025/46 rata 2 del 19/12/2025; conto 20100023 partita 2026/119 rata 1 del 01/02/2026.";

class DatabaseFaults : public Guasti {};

TEST_F(DatabaseFaults, ADatabaseThatIsNotThereIsReportedAfterAnEmptyScreen) {
  VerificaRifiuto(Esegui("-DB2SOURCE INESISTENTE -DB2SCHEMA main"),
                  {ErroreRegistrato("-2147467259\r\n[IM002] [unixODBC][Driver Manager]Data source name not found and "
                                    "no default driver specified\r\nL'origine dati ODBC «INESISTENTE» non è definita: "
                                    "-DB2SOURCE ne dà il nome come sta in odbc.ini.")},
                  {"VBCREDITI"});
  EXPECT_EQ(desktop.windows, 1U);
  EXPECT_FALSE(fs::exists(demo.Registro()));
}

TEST_F(DatabaseFaults, NoDataSourceAtAllIsReported) {
  VerificaRifiuto(Esegui(""),
                  {ErroreRegistrato("-2147467259\r\nConnessione alla base dati: l'origine dati ODBC non è indicata.")},
                  {"VBCREDITI"});
  EXPECT_FALSE(fs::exists(demo.Registro()));
}

TEST_F(DatabaseFaults, AnUnknownBankRollsTheWholeConfirmationBack) {
  Conferma([this] {
    test::RunScript(demo.Connessione(), "DELETE FROM CONTOCONTABILE WHERE CODICECONTO='60100001'");
    prima = demo.Stato();
  });
  VerificaRifiuto(
      Esegui(),
      {"Variate 2 scadenze", ErroreRegistrato("-2147220990\r\nCONTO CONTABILE INESISTENTE\r\n" + NonRegistrata)},
      {"VBCREDITI"});
  EXPECT_THAT(istruzioni,
              Contains("UPDATE EVENTOCONTABILE SET DATASCADENZA='2026-04-15' WHERE EVENTOCONTABILEKEY=111"));
}

TEST_F(DatabaseFaults, ADatabaseThatGoesWhileTheListIsOpenIsReported) {
  const fs::path altrove = demo.Base() / "altrove.sqlite";
  Conferma([&] { fs::rename(demo.BaseDati(), altrove); });
  const auto risultato = Esegui();
  fs::rename(altrove, demo.BaseDati());
  VerificaRifiuto(
      risultato,
      {"Variate 2 scadenze",
       ErroreRegistrato("-2147467259\r\n[HY000] [SQLite]no such table: CONTOCONTABILE (1)\r\n" + NonRegistrata)},
      {"VBCREDITI"});
}

class PostgresFaults : public Guasti {
 protected:
  void SetUp() override {
    ASSERT_TRUE(test::PostgresServer::Available());
    auto dati =
        Comando({test::ProgramPath("lumoscad-genera").string(), std::string(Dimostrazione::Giorno), "40"}).value_or("");
    // The script runs in a transaction of its own.
    ASSERT_TRUE(dati.starts_with("BEGIN;\n") && dati.ends_with("COMMIT;"));
    dati = dati.substr(7, dati.size() - 14);
    server_ = std::make_unique<test::PostgresServer>(test::ServerDirectory("guasti"));
    sorgente_ = server_->CreateDatabase("contabilita", FileText(test::SourcePath("demo/schema.sql")) + dati);
  }

  std::unique_ptr<test::PostgresServer> server_;
  std::string sorgente_;
};

TEST_F(PostgresFaults, AWrongPasswordIsReportedAndStaysOutOfTheMessage) {
  const auto connessione = server_->ConnectionText(sorgente_);
  const auto contenuto = Fotografa(connessione);
  ASSERT_FALSE(contenuto.at("EVENTOCONTABILE").empty());
  VerificaRifiuto(Esegui("-DB2SOURCE " + sorgente_ + " -DB2USER " + server_->User() +
                         " -DB2PASS ParolaSbagliata -DB2SCHEMA public"),
                  {ErroreRegistrato("-2147467259\r\n[08001] connection to server at \"127.0.0.1\", port " +
                                    std::to_string(server_->Port()) +
                                    " failed: FATAL:  password authentication failed for user \"lumoscad\"")},
                  {"VBCREDITI"});
  EXPECT_EQ(desktop.windows, 1U);
  EXPECT_THAT(desktop.box, Not(Contains(HasSubstr("ParolaSbagliata"))));
  EXPECT_FALSE(fs::exists(demo.Registro()));
  EXPECT_THAT(Differenze(contenuto, Fotografa(connessione)), IsEmpty());
}

} // namespace
} // namespace lumoscad::test
