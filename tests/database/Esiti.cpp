#include "Esiti.hpp"

#include "BaseDelleAzioni.hpp"
#include "RegistroEsiti.hpp"
#include "common/Stato.hpp"
#include "database/procedureLumoDB2.hpp"
#include "support/Files.hpp"
#include "support/Paths.hpp"

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <thread>
#include <utility>

namespace lumoscad::test {
namespace {

namespace db2 = procedureLumoDB2;

constexpr const char* const Tabelle[] = {"AZIENDELINEE",       "CONTOCONTABILE",  "PARTITACONTABILE",
                                         "MOVIMENTOCONTABILE", "EVENTOCONTABILE", "ERRORE"};

/// True while the thread's statements are the test's own.
thread_local bool muto = false;

class Silenzio {
 public:
  Silenzio() : prima_(std::exchange(muto, true)) {}
  Silenzio(const Silenzio&) = delete;
  Silenzio& operator=(const Silenzio&) = delete;
  ~Silenzio() { muto = prima_; }

 private:
  bool prima_;
};

std::string SchemaEDati() {
  return FileText(SourcePath("demo/schema.sql")) + DatiDelleAzioni();
}

VariazioneCanalizzazione Rata(const std::string& partita, const std::string& conto, const std::string& numero) {
  VariazioneCanalizzazione v;
  v.idPartitaKey = partita;
  v.CodiceConto = conto;
  v.NumeroPartita = numero;
  v.VecchiaBanca = "#null#";
  v.NuovaBanca = "C11";
  v.ScadenzaOriginale = "28/02/2006";
  v.NumeroRata = "1";
  v.VecchiaScadenza = "31/03/2006";
  v.NuovaScadenza = "15/05/2006";
  v.isBancaChanged = true;
  v.isScadenzaChanged = true;
  return v;
}

VariazioneConsegna Documento(std::int32_t movimento, const std::string& anno, const std::string& numero) {
  VariazioneConsegna v;
  v.idOrdineKey = "#null#";
  v.idMovimentoKey = movimento;
  v.CodiceConto = "C10";
  v.Serie = "OC";
  v.Anno = anno;
  v.Numero = numero;
  v.VecchiaBanca = "#null#";
  v.NuovaBanca = "C11";
  v.Consegna = "#null#";
  v.NuovaConsegna = "01/06/2006";
  v.isBancaChanged = true;
  v.isConsegnaChanged = true;
  return v;
}

VariazioniCanalizzazione Rate() {
  return {Rata("100", "C10", "AB   123"), Rata("101", "C10", "AB 123"), Rata("102", "C11", "AB   123")};
}

VariazioniConsegna Documenti() {
  return {Documento(1001, "06", "123"), Documento(1002, "05", "123"), Documento(1005, "06", "1")};
}

/// The procedure behind a reply, by the request's list.
ProceduraProvata Risposta(const char* nome, const std::vector<std::string>& parametri, const char* oggetto) {
  return {nome, [parametri](MsgAnnulla& msg) { return db2::EseguiAzioneDB2(parametri, &msg); },
          db2::NomeOggetto(parametri), oggetto};
}

std::string ValoreDa(ado::Connection& connection, std::string_view sql) {
  ado::Command comando;
  comando.ActiveConnection = &connection;
  comando.CommandText = sql;
  const ado::Recordset righe = comando.Execute();
  return std::string(righe.ValueAt(0).value_or("NULL"));
}

} // namespace

const std::vector<ProceduraProvata>& ProcedureProvate() {
  static const std::vector<ProceduraProvata> Tutte = {
      {"AggiornaCanalizzazione", [](MsgAnnulla& msg) { return db2::AggiornaCanalizzazione(Rate(), msg, "CREDITI"); },
       db2::Righe(Rate()),
       "conto C10 partita AB   123 rata 1 del 31/03/2006; conto C10 partita AB 123 rata 1 del 31/03/2006; "
       "conto C11 partita AB   123 rata 1 del 31/03/2006."},
      {"AggiornaBancaPresunti",
       [](MsgAnnulla& msg) { return db2::AggiornaBancaPresunti(Documenti(), msg, "PRESUNTI"); },
       db2::Righe(Documenti()),
       "conto C10 documento OC/06/123; conto C10 documento OC/05/123; conto C10 documento OC/06/1."},
      {"AggiornaConsegna", [](MsgAnnulla& msg) { return db2::AggiornaConsegna(Documenti(), msg, "PRESUNTI"); },
       db2::Righe(Documenti()),
       "conto C10 documento OC/06/123; conto C10 documento OC/05/123; conto C10 documento OC/06/1."},
      Risposta("SospendiPartita", {"01", "SOSPESOCREA", "C10", "AB   123", ""}, "partita AB   123 del conto C10."),
      Risposta("SospendiMovimento", {"01", "PRESUNTOCREA", "OC", "06", "123", "T01", ""},
               "documento OC/06/123 dell'azienda 01."),
      Risposta("CancellaMovimentoExtra", {"01", "EXTRADEL", "A", "2006", "15", ""},
               "documento A/2006/15 dell'azienda 01."),
      Risposta(
          "ScriviScadenzePartita",
          {"01", "SCRIVISCADENZE", "C10", "AB   123", "", "1", "20060228", "20060705", "2", "20060531", "20060805"},
          "partita AB   123 del conto C10."),
      Risposta("ScriviScadenzeMovimento",
               {"01", "EXTRASCRIVISCAD", "A", "2006", "15", "1", "20060331", "20060705", "2", "20060430", "20060805"},
               "documento A/2006/15 dell'azienda 01."),
  };
  return Tutte;
}

const ProceduraProvata& TrovaProcedura(std::string_view nome) {
  for (const ProceduraProvata& procedura : ProcedureProvate()) {
    if (procedura.nome == nome) {
      return procedura;
    }
  }
  throw std::invalid_argument("no such procedure: " + std::string(nome));
}

BaseEsiti::BaseEsiti(std::string_view genere, const test::OdbcConfiguration::Settings& altre) : genere_(genere) {
  const Silenzio silenzio;
  base_ = test::databaseContext(genere).Create(SchemaEDati());
  Riapri();
  if (SuPostgres()) {
    proxy_ = std::make_unique<ByteProxy>(test::Postgres().Port());
    sorgente_ = SorgentePostgres(proxy_->Port(), altre);
  } else if (SuMariaDb()) {
    proxy_ = std::make_unique<ByteProxy>(test::MariaDb().Port());
    sorgente_ = test::MariaDb().AddSource(Valore("SELECT DATABASE()"), proxy_->Port(), altre);
  } else {
    sorgente_ = base_->source;
  }
  opzioni_ = "-DB2SOURCE " + sorgente_ + " -DB2USER " + base_->user + " -DB2PASS " + base_->password + " -DB2SCHEMA " +
             base_->schema;
  testo_ = test::ConnectionText(sorgente_, base_->user, base_->password);
}

BaseEsiti::~BaseEsiti() {
  test::OdbcConfiguration::Instance().RemoveSource(sorgente_);
}

void BaseEsiti::Riapri() {
  diretta_ = AltroTerminale();
}

std::unique_ptr<ado::Connection> BaseEsiti::AltroTerminale() const {
  return Apri(base_->ConnectionText());
}

std::unique_ptr<ado::Connection> BaseEsiti::AltroTerminaleSenzaSavepoint() const {
  if (!SuPostgres()) {
    return AltroTerminale();
  }
  const std::string sorgente = SorgentePostgres(0, {{"Protocol", "7.4-1"}});
  auto connection = Apri(test::ConnectionText(sorgente, base_->user, base_->password));
  test::OdbcConfiguration::Instance().RemoveSource(sorgente);
  return connection;
}

std::string BaseEsiti::SorgentePostgres(int porta, const test::OdbcConfiguration::Settings& altre) const {
  test::OdbcConfiguration::Settings tutte{{"ConnSettings", "SET search_path TO " + base_->schema}};
  tutte.insert(tutte.end(), altre.begin(), altre.end());
  return test::Postgres().AddSource(Valore("SELECT current_database()"), porta, tutte);
}

std::unique_ptr<ado::Connection> BaseEsiti::Apri(std::string testo) {
  auto connection = std::make_unique<ado::Connection>();
  connection->ConnectionString = std::move(testo);
  connection->commandTimeout = 30;
  connection->Open();
  return connection;
}

void BaseEsiti::Esegui(std::string_view sql) const {
  const Silenzio silenzio;
  diretta_->Execute(sql);
}

std::string BaseEsiti::Valore(std::string_view sql) const {
  const Silenzio silenzio;
  return ValoreDa(*diretta_, sql);
}

std::vector<std::string> BaseEsiti::Tutto() const {
  const Silenzio silenzio;
  std::vector<std::string> testi;
  for (const char* tabella : Tabelle) {
    ado::Command comando;
    comando.ActiveConnection = diretta_.get();
    comando.CommandText = std::string("SELECT * FROM ") + tabella + " ORDER BY 1";
    for (ado::Recordset righe = comando.Execute(); !righe.Eof(); righe.MoveNext()) {
      testi.emplace_back(tabella);
      for (std::size_t colonna = 0; colonna < righe.ColumnCount(); ++colonna) {
        testi.back().append("|").append(righe.ValueAt(colonna).value_or("NULL"));
      }
    }
  }
  return testi;
}

void BaseEsiti::Ripristina() const {
  const Silenzio silenzio;
  std::string script;
  for (const char* tabella : Tabelle) {
    script += std::string("DELETE FROM ") + tabella + ";";
  }
  script += "INSERT INTO ERRORE (ERROREKEY, FILEXML) VALUES (100, '');" + DatiDelleAzioni();
  test::RunScript(base_->ConnectionText(), script);
}

bool BaseEsiti::Entro(const std::function<bool()>& condizione) {
  const auto limite = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (!condizione()) {
    if (std::chrono::steady_clock::now() > limite) {
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}

bool BaseEsiti::SenzaAltreSessioni() const {
  const auto domanda = SuPostgres()
                           ? "SELECT COUNT(*) FROM pg_stat_activity WHERE datname=current_database() AND "
                             "backend_type='client backend' AND pid<>pg_backend_pid() AND application_name<>'" +
                                 std::string(test::OwnSession) + "'"
                           : "SELECT COUNT(*) FROM information_schema.PROCESSLIST WHERE DB=DATABASE() AND "
                             "ID<>CONNECTION_ID()";
  return Entro([&] { return Valore(domanda) == "0"; });
}

bool BaseEsiti::QualcunoAspetta() const {
  const char* domanda = SuPostgres() ? "SELECT COUNT(*) FROM pg_stat_activity WHERE datname=current_database() AND "
                                       "wait_event_type='Lock'"
                                     : "SELECT VARIABLE_VALUE FROM information_schema.GLOBAL_STATUS WHERE "
                                       "VARIABLE_NAME='INNODB_ROW_LOCK_CURRENT_WAITS'";
  const Silenzio silenzio;
  const auto guardia = AltroTerminale();
  return Entro([&] { return ValoreDa(*guardia, domanda) != "0"; });
}

LimiteIstruzioni::LimiteIstruzioni(const char* secondi) {
  setenv("LUMOSCAD_ATTESA_SQL", secondi, 1);
}

LimiteIstruzioni::~LimiteIstruzioni() {
  unsetenv("LUMOSCAD_ATTESA_SQL");
}

PostoEsiti::PostoEsiti(std::string_view genere, const test::OdbcConfiguration::Settings& altre) : base(genere, altre) {
  stato().ComandoCorrente = base.Opzioni();
  ActiveServices().statementSent = [this, mio = std::this_thread::get_id()](std::string_view) {
    if (muto || std::this_thread::get_id() != mio) {
      return;
    }
    ++istruzioni;
    if (istruzioni == quale_ && azione_) {
      std::exchange(azione_, nullptr)();
    }
  };
}

std::string PostoEsiti::Esegui(const ProceduraProvata& procedura) {
  istruzioni = 0;
  msg.Errore.clear();
  stato().andamento.Comincia(procedura.chiamato);
  stato().andamento.Accettata();
  const int connessioni = base.Connessioni();
  const auto inizio = std::chrono::steady_clock::now();
  std::string risultato = procedura.esegui(msg);
  ricercato = base.Connessioni() - connessioni > 1;
  secondi = std::chrono::duration<double>(std::chrono::steady_clock::now() - inizio).count();
  quale_ = 0;
  if (!risultato.empty()) {
    msg.Errore = WithSentence(msg.Errore, stato().andamento.Frase());
  }
  return risultato;
}

void PostoEsiti::FallisceELasciaTutto(std::string_view nome, const char* guasto, const std::string& causa) {
  const auto& procedura = TrovaProcedura(nome);
  const auto prima = base.Tutto();
  EXPECT_EQ(Esegui(procedura), "error") << guasto;
  EXPECT_THAT(msg.Errore, testing::AllOf(testing::StartsWith("ERRORE: -2147"), testing::HasSubstr(causa),
                                         testing::HasSubstr("la base dati non ne ha registrato nulla. Da allineare: " +
                                                            procedura.oggetto)));
  base.Riapri();
  const auto tiene = base.Tutto();
  EXPECT_THAT(tiene, testing::ElementsAreArray(prima)) << guasto;
  RegistroEsiti::Unico().AnnotaGuasto(base.Genere(), guasto, msg.Errore, tiene == prima ? "come prima" : "CAMBIATA",
                                      secondi);
}

void PostoEsiti::PrimaDellIstruzione(int quale, std::function<void()> azione) {
  quale_ = quale;
  azione_ = std::move(azione);
}

} // namespace lumoscad::test
