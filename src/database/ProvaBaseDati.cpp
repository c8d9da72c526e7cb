#include "database/ProvaBaseDati.hpp"

#include "common/Testo.hpp"
#include "common/Utilities.hpp"
#include "database/moduloDatabase.hpp"
#include "platform/ado/Facts.hpp"

#include <algorithm>
#include <array>
#include <chrono>
#include <memory>
#include <vector>

namespace lumoscad {
namespace {

using Genere = ado::ServerKind;
using Colonne = std::vector<std::string_view>;

struct Tabella {
  std::string_view nome;
  Colonne colonne; ///< those that the statements name
};

const std::array<Tabella, 5>& Tabelle() {
  static const std::array<Tabella, 5> Tutte = {{
      {"AZIENDELINEE", {"AZIENDALINEAKEY", "CODICEAZIENDA", "LINEA", "SOTTOLINEA"}},
      {"MOVIMENTOCONTABILE",
       {"MOVIMENTOKEY", "AZIENDALINEAKEY", "TIPOMOVIMENTO", "SERIE", "NUMERO", "ESERCIZIO", "TIPOOPERAZIONE"}},
      {"PARTITACONTABILE", {"PARTITACONTABILEKEY", "CONTOCONTABILE_KEY", "NUMEROPARTITA", "STATO"}},
      {"CONTOCONTABILE",
       {"CONTOCONTABILE_KEY", "CODICECONTO", "DESCRIZIONEVOCE", "TIPOLOGIACONTO", "CODICEINTERNO", "BLOCCO"}},
      {"EVENTOCONTABILE",
       {"EVENTOCONTABILEKEY", "AZIENDALINEAKEY", "MOVIMENTOKEY", "PARTITACONTABILEKEY", "CONTOCONTABILE_KEY",
        "TIPOEVENTO", "SOSPESA", "DATASCADENZA", "DATASCADENZAORIGINALE", "NUMERORATA", "BANCAPRESENTAZIONE_KEY",
        "IMPORTOEURO", "IMPORTODIVISA", "CODICEDIVISA", "DATACONSEGNA", "DATACONSEGNAPRODUZIONE", "TITOLOIVA"}},
  }};
  return Tutte;
}

/// The codes that the statements compare with texts.
constexpr std::array<std::pair<std::string_view, std::string_view>, 6> Codici = {{{"AZIENDELINEE", "CODICEAZIENDA"},
                                                                                  {"CONTOCONTABILE", "CODICECONTO"},
                                                                                  {"CONTOCONTABILE", "CODICEINTERNO"},
                                                                                  {"PARTITACONTABILE", "NUMEROPARTITA"},
                                                                                  {"MOVIMENTOCONTABILE", "SERIE"},
                                                                                  {"MOVIMENTOCONTABILE", "NUMERO"}}};

constexpr std::string_view Accenti = "àèéìòùÀÈÉÌÒÙ€";
constexpr int DurataUsuale = 60;

std::string Testo(const RuntimeError& errore) {
  return WithSentence(errore.Text(), errore.Note());
}

std::string ConVirgole(const std::vector<std::string>& pezzi) {
  std::string testo;
  for (const std::string& pezzo : pezzi) {
    testo.append(testo.empty() ? "" : ", ").append(pezzo);
  }
  return testo;
}

[[noreturn]] void Rifiuta(const std::string& motivo) {
  throw RuntimeError(errors::Driver, motivo);
}

/// One look, step after step.
class Prova {
 public:
  Prova(std::string_view comando, const std::function<void(const EsitoDelPasso&)>& mostra)
      : parametri_(moduloDatabase::LeggiParametriDB2(comando)), mostra_(mostra) {}

  bool Esegui() {
    Apri();
    Passo("Driver", [this] { return detto_.driver + ", ODBC " + detto_.driverManager; });
    Passo("Server", [this] { return detto_.server; });
    Passo("Accesso", [this] { return Accesso(); });
    for (const Tabella& tabella : Tabelle()) {
      Passo("Tabella", [&] { return Colonne(tabella); });
    }
    Passo("Schema", [this] { return Schema(); });
    Passo("Codifica", [this] { return Codifica(); });
    Passo("Decimali", [this] { return Decimali(); });
    Passo("Confronti", [this] { return Confronti(); });
    Passo("Transazioni", [this] { return Transazioni(); });
    Passo("Limiti", [this] { return Limiti(); });
    Passo("Replica", [this] { return Replica(); });
    Passo("Elenco", [this] { return Elenco(); });
    return riuscita_;
  }

 private:
  template <typename Azione> void Passo(const char* operazione, Azione azione) {
    EsitoDelPasso passo{operazione, false, {}};
    try {
      if (!connection_) {
        Rifiuta("non provato: la connessione non è riuscita");
      }
      passo.dettaglio = azione();
      passo.riuscito = true;
    } catch (...) {
      passo.dettaglio = Testo(CurrentError());
      riuscita_ = false;
    }
    mostra_(passo);
  }

  /// A setting that is unfit is told in its place: everything else can be looked at all the same.
  void Apri() {
    try {
      durata_ = ado::StatementSeconds();
    } catch (const RuntimeError& errore) {
      limiteErrato_ = errore.Text();
    }
    EsitoDelPasso passo{"Origine", false, {}};
    try {
      connection_ = moduloDatabase::ApriPerProva(parametri_, durata_);
      detto_ = ado::FactsOf(*connection_);
      passo.riuscito = true;
      passo.dettaglio = "l'origine dati «" + parametri_.DataSource + "» si apre";
    } catch (...) {
      connection_.reset();
      passo.dettaglio = Testo(CurrentError());
      riuscita_ = false;
    }
    mostra_(passo);
  }

  /// The first value of the first row; nothing of an answer without rows, and of NULL.
  std::string Chiedi(std::string_view sql, const std::vector<std::string>& valori = {}) {
    auto righe = Righe(sql, valori);
    return righe.Eof() ? std::string() : std::string(righe.ValueAt(0).value_or(""));
  }
  ado::Recordset Righe(std::string_view sql, const std::vector<std::string>& valori = {}) {
    auto comando = moduloDatabase::CreaComando(*connection_, sql);
    comando.Parameters = valori;
    return comando.Execute();
  }
  /// What stands behind the values of a query of no table.
  [[nodiscard]] std::string SenzaTabella() const { return detto_.kind == Genere::Db2 ? " FROM SYSIBM.SYSDUMMY1" : ""; }
  [[nodiscard]] std::string PrimiDieci() const {
    return detto_.kind == Genere::Db2 || detto_.kind == Genere::Other ? " FETCH FIRST 10 ROWS ONLY" : " LIMIT 10";
  }

  [[nodiscard]] std::string Accesso() const {
    return detto_.user.empty() ? "senza utente, base dati «" + detto_.database + "»"
                               : "utente «" + detto_.user + "», base dati «" + detto_.database + "»";
  }

  std::string Colonne(const Tabella& tabella) {
    const auto trovate = ado::ColumnsOf(*connection_, "SELECT * FROM " + std::string(tabella.nome) + " WHERE 1=0");
    std::vector<std::string> presenti;
    std::vector<std::string> mancanti;
    for (const auto nome : tabella.colonne) {
      const auto colonna =
          std::find_if(trovate.begin(), trovate.end(), [&](const auto& ogni) { return Maiuscolo(ogni.name) == nome; });
      if (colonna == trovate.end()) {
        mancanti.emplace_back(nome);
        continue;
      }
      presenti.push_back(std::string(nome) + " " + colonna->type);
      if (colonna->text) {
        testi_.emplace_back(std::string(tabella.nome) + "." + std::string(nome));
      }
    }
    if (!mancanti.empty()) {
      Rifiuta("nella tabella " + std::string(tabella.nome) + " mancano le colonne " + ConVirgole(mancanti));
    }
    return std::string(tabella.nome) + ": " + ConVirgole(presenti);
  }

  /// A schema that is not given is the password: no statement is made of it.
  std::string Schema() {
    if (parametri_.Schema == parametri_.Password) {
      Rifiuta(
          "-DB2SCHEMA non è indicata, o è uguale alla password: i comandi EXTRA e TEST non trovano le loro tabelle");
    }
    const auto schema = parametri_.Schema + ".";
    static_cast<void>(
        ado::ColumnsOf(*connection_, "SELECT MOVIMENTOKEY FROM " + schema + "MOVIMENTOCONTABILE WHERE 1=0"));
    static_cast<void>(ado::ColumnsOf(*connection_, "SELECT ERROREKEY,FILEXML FROM " + schema + "ERRORE WHERE 1=0"));
    return "lo schema «" + parametri_.Schema + "» ha le tabelle MOVIMENTOCONTABILE ed ERRORE";
  }

  std::string Codifica() {
    const std::string tutti(Accenti);
    const auto tornato = Chiedi("SELECT '" + tutti + "' AS TESTO" + SenzaTabella());
    if (tornato != tutti) {
      Rifiuta("il testo «" + tutti + "» torna come «" + tornato + "»");
    }
    // A server that takes the bytes of a letter for letters gives them back unharmed, but counts them.
    if (detto_.kind != Genere::Db2 &&
        Chiedi("SELECT SUBSTR('" + tutti + "',1,1) AS LETTERA" + SenzaTabella()) != Primi(Accenti, 1)) {
      Rifiuta("il server prende ogni lettera accentata per più lettere: la codifica verso il client non è UTF-8");
    }
    if (Chiedi("SELECT CASE WHEN CODICECONTO=? THEN 'S' ELSE 'N' END FROM (SELECT '" + tutti + "' AS CODICECONTO" +
                   SenzaTabella() + ") T",
               {tutti}) != "S") {
      Rifiuta("un parametro con lettere accentate arriva diverso");
    }
    return "le lettere accentate e l'euro tornano uguali";
  }

  std::string Decimali() {
    const auto numero = Chiedi("SELECT CAST('1234.50' AS DECIMAL(15,2)) AS NUMERO" + SenzaTabella());
    if (Utilities::FormattaImporto(numero) != "1.234,50") {
      Rifiuta("il numero 1234.50 torna come «" + numero + "»");
    }
    for (auto righe = Righe("SELECT IMPORTOEURO,IMPORTODIVISA FROM EVENTOCONTABILE" + PrimiDieci()); !righe.Eof();
         righe.MoveNext()) {
      static_cast<void>(Utilities::FormattaImporto(righe.ValueAt(0).value_or("0")));
      static_cast<void>(Utilities::FormattaImporto(righe.ValueAt(1).value_or("0")));
    }
    return "1234.50 torna come «" + numero + "», e gli importi dei primi eventi sono numeri";
  }

  /// Compares as the column does, without a row of it: the empty column gives its collation to the text beside it.
  bool Uguale(std::string_view tabella, std::string_view colonna, std::string_view testo, std::string_view altro) {
    const std::string nome(colonna);
    return Chiedi("SELECT COUNT(*) FROM (SELECT " + nome + " FROM " + std::string(tabella) +
                  " WHERE 1=0 UNION ALL SELECT '" + std::string(testo) + "'" + SenzaTabella() + ") T WHERE T." + nome +
                  "='" + std::string(altro) + "'") != "0";
  }

  std::string Confronti() {
    std::vector<std::string> maiuscole;
    std::vector<std::string> accenti;
    for (const auto& [tabella, colonna] : Codici) {
      const auto nome = std::string(tabella) + "." + std::string(colonna);
      if (std::find(testi_.begin(), testi_.end(), nome) == testi_.end()) {
        continue;
      }
      if (Uguale(tabella, colonna, "CAFFE", "caffe")) {
        maiuscole.push_back(nome);
      }
      if (Uguale(tabella, colonna, "CAFFÈ", "CAFFE")) {
        accenti.push_back(nome);
      }
    }
    std::vector<std::string> perche;
    if (!maiuscole.empty()) {
      perche.push_back("maiuscole e minuscole sono uguali in " + ConVirgole(maiuscole));
    }
    if (!accenti.empty()) {
      perche.push_back("lettere con e senza accento sono uguali in " + ConVirgole(accenti));
    }
    if (!perche.empty()) {
      Rifiuta(ConVirgole(perche));
    }
    return "i codici distinguono maiuscole e accenti";
  }

  std::string Transazioni() {
    if (!detto_.transactions) {
      Rifiuta("il driver non offre transazioni");
    }
    connection_->BeginTrans();
    connection_->RollbackTrans();
    if (detto_.kind == Genere::MariaDb) {
      std::vector<std::string> senza;
      for (auto righe = Righe("SELECT T.TABLE_NAME, T.ENGINE FROM information_schema.TABLES T JOIN "
                              "information_schema.ENGINES E ON E.ENGINE=T.ENGINE WHERE T.TABLE_SCHEMA=DATABASE() AND "
                              "COALESCE(E.TRANSACTIONS,'NO')<>'YES' ORDER BY T.TABLE_NAME");
           !righe.Eof(); righe.MoveNext()) {
        const auto nome = Maiuscolo(righe.ValueAt(0).value_or(""));
        const auto usato = [&](const Tabella& tabella) { return tabella.nome == nome; };
        if (std::any_of(Tabelle().begin(), Tabelle().end(), usato)) {
          senza.push_back(nome + " (" + std::string(righe.ValueAt(1).value_or("")) + ")");
        }
      }
      if (!senza.empty()) {
        Rifiuta("tabelle di un motore senza transazioni, di cui una modifica può restare a metà: " + ConVirgole(senza));
      }
    }
    return "una transazione si apre e si annulla";
  }

  std::string Limiti() {
    if (!limiteErrato_.empty()) {
      Rifiuta(limiteErrato_);
    }
    auto testo = "un'istruzione può durare " + std::to_string(ado::StatementSeconds()) + " secondi";
    if (detto_.kind == Genere::PostgreSql) {
      testo += "; del server: statement_timeout " + Chiedi("SELECT current_setting('statement_timeout')") +
               ", lock_timeout " + Chiedi("SELECT current_setting('lock_timeout')");
    } else if (detto_.kind == Genere::MariaDb) {
      testo += "; del server: max_statement_time " + Chiedi("SELECT @@max_statement_time") +
               ", innodb_lock_wait_timeout " + Chiedi("SELECT @@innodb_lock_wait_timeout");
    } else if (detto_.kind == Genere::Sqlite) {
      testo += "; per un file occupato vale «Timeout» dell'origine dati";
    }
    return testo;
  }

  std::string Replica() {
    static constexpr std::string_view SenzaScrittura = "la base dati è in sola lettura";
    if (detto_.readOnly) {
      Rifiuta(std::string(SenzaScrittura));
    }
    if (detto_.kind == Genere::Sqlite) {
      return "la base dati è un file di questa macchina";
    }
    if (detto_.kind == Genere::PostgreSql) {
      if (Chiedi("SELECT CASE WHEN pg_is_in_recovery() THEN 'S' ELSE 'N' END") == "S") {
        Rifiuta("il server è una replica (standby) e non si può modificare");
      }
      if (Chiedi("SELECT current_setting('transaction_read_only')") == "on") {
        Rifiuta(std::string(SenzaScrittura));
      }
      RichiediUnProcesso();
      if (!detto_.direct) {
        ApriAltraVolta();
      }
    }
    std::string testo;
    if (detto_.kind == Genere::MariaDb) {
      if (Chiedi("SELECT @@read_only") != "0") {
        Rifiuta(std::string(SenzaScrittura));
      }
      testo = Gruppo();
    }
    return detto_.direct ? testo + "il collegamento va diritto al server"
                         : testo + "fra il programma e il server può stare un intermediario (un pooler, un proxy, un "
                                   "socket di questa macchina)";
  }

  /// A pooler of transactions gives each statement the server's process that is free.
  void RichiediUnProcesso() {
    static constexpr int Quante = 5;
    const auto primo = Chiedi("SELECT pg_backend_pid()");
    for (int volta = 1; volta < Quante; ++volta) {
      if (Chiedi("SELECT pg_backend_pid()") != primo) {
        Rifiuta("un pooler cambia il processo del server da un'istruzione all'altra: occorre pool_mode=session");
      }
    }
  }

  /// What the first opening left with the server's process a second one finds, where a pooler of transactions gives it
  /// the same: then the opening itself is refused.
  void ApriAltraVolta() {
    connection_.reset();
    connection_ = moduloDatabase::ApriPerProva(parametri_, durata_);
  }

  /// A node of a group that others do not reach must not be written to.
  std::string Gruppo() {
    auto righe = Righe("SHOW STATUS LIKE 'wsrep_ready'");
    if (righe.Eof() || Chiedi("SELECT @@wsrep_on") != "1") {
      return {};
    }
    if (righe.ValueAt(1).value_or("") != "ON") {
      Rifiuta("il nodo del gruppo Galera non è pronto");
    }
    return "nodo pronto di un gruppo Galera; ";
  }

  std::string Elenco() {
    const auto inizio = std::chrono::steady_clock::now();
    auto righe = Righe("SELECT CONTO.CODICECONTO, PARTITACONTABILE.NUMEROPARTITA, EVENTOCONTABILE.DATASCADENZA, "
                       "EVENTOCONTABILE.IMPORTOEURO FROM PARTITACONTABILE JOIN EVENTOCONTABILE ON "
                       "PARTITACONTABILE.PARTITACONTABILEKEY = EVENTOCONTABILE.PARTITACONTABILEKEY JOIN CONTOCONTABILE "
                       "CONTO ON CONTO.CONTOCONTABILE_KEY = EVENTOCONTABILE.CONTOCONTABILE_KEY WHERE "
                       "PARTITACONTABILE.STATO='A' AND EVENTOCONTABILE.SOSPESA='N' AND EVENTOCONTABILE.TIPOEVENTO='C'" +
                       PrimiDieci());
    const auto durata =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - inizio);
    for (; !righe.Eof(); righe.MoveNext()) {
      const auto data = righe.ValueAt(2).value_or("");
      if (!data.empty() && !Utilities::DataDellaBaseDati(data)) {
        Rifiuta("Data non valida nella base dati: " + std::string(data));
      }
    }
    return std::to_string(righe.RecordCount()) + " righe in " + std::to_string(durata.count()) + " millisecondi";
  }

  moduloDatabase::ParametriConnessione parametri_;
  const std::function<void(const EsitoDelPasso&)>& mostra_;
  std::unique_ptr<ado::Connection> connection_;
  ado::ConnectionFacts detto_;
  std::vector<std::string> testi_; ///< "TABLE.COLUMN" of those that hold texts
  std::string limiteErrato_;
  int durata_ = DurataUsuale;
  bool riuscita_ = true;
};

} // namespace

bool GuardaBaseDati(std::string_view comando, const std::function<void(const EsitoDelPasso&)>& mostra) {
  return Prova(comando, mostra).Esegui();
}

} // namespace lumoscad
