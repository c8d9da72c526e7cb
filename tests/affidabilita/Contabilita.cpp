#include "Contabilita.hpp"

#include "common/Testo.hpp"
#include "support/DatabaseContext.hpp"

namespace lumoscad::test {
namespace {

constexpr int Banche = 6;
constexpr int PrimoCliente = 101;
constexpr int PrimoFornitore = 201;
constexpr int RatePerDocumento = 3;

int Conti(const Misura& misura) {
  return misura.clienti + misura.fornitori;
}

/// The key of the account at a place among customers and suppliers.
int ChiaveConto(const Misura& misura, int posto) {
  return posto < misura.clienti ? PrimoCliente + posto : PrimoFornitore + posto - misura.clienti;
}

std::string CodiceConto(int chiave) {
  return chiave < PrimoFornitore ? std::to_string(20100000 + chiave - PrimoCliente + 1)
                                 : std::to_string(40100000 + chiave - PrimoFornitore + 1);
}

std::string Giorno(int numero) {
  return "'2026-03-" + ConZeri(1 + numero % 28, 2) + "'";
}

std::string Banca(int numero) {
  return numero % 4 == 0 ? "NULL" : std::to_string(numero % Banche + 1);
}

std::string Inserisci(const std::string& tabella, const std::string& valori) {
  return "INSERT INTO " + tabella + " VALUES (" + valori + ");\n";
}

std::string RigheConti(const Misura& misura) {
  std::string sql = Inserisci("AZIENDELINEE", "1, '01', ' ', ' '");
  for (int banca = 1; banca <= Banche; ++banca) {
    sql += Inserisci("CONTOCONTABILE", std::to_string(banca) + ", '6010000" + std::to_string(banca) + "', 'Banca " +
                                           std::to_string(banca) + "', '06', NULL, 'N'");
  }
  for (int posto = 0; posto < Conti(misura); ++posto) {
    const int chiave = ChiaveConto(misura, posto);
    sql += Inserisci("CONTOCONTABILE", std::to_string(chiave) + ", '" + CodiceConto(chiave) + "', 'Conto " +
                                           CodiceConto(chiave) + "', '" + (chiave < PrimoFornitore ? "01" : "03") +
                                           "', NULL, 'N'");
  }
  return sql;
}

std::string Evento(int chiave, int movimento, const std::string& partita, int conto, const std::string& resto) {
  return Inserisci("EVENTOCONTABILE", std::to_string(chiave) + ", 1, " + std::to_string(movimento) + ", " + partita +
                                          ", " + std::to_string(conto) + ", " + resto);
}

std::string RighePartita(const Misura& misura, int partita) {
  const int conto = ChiaveConto(misura, partita % Conti(misura));
  const std::string chiave = std::to_string(partita);
  std::string sql =
      Inserisci("PARTITACONTABILE", chiave + ", " + std::to_string(conto) + ", 'AB   " + chiave + "', 'A'");
  sql += Inserisci("MOVIMENTOCONTABILE", chiave + ", 1, 'N', 'F', '" + chiave + "', '2026', 'V'");
  for (int rata = 0; rata <= partita % 3; ++rata) {
    const std::string giorno = Giorno(partita + rata);
    sql += Evento(partita * 10 + rata, partita, chiave, conto,
                  "'C', 'N', " + giorno + ", " + giorno + ", " + std::to_string(rata + 1) + ", " +
                      Banca(partita + rata) + ", 100, 100, 'EUR', NULL, NULL, 'O'");
  }
  return sql;
}

std::string RigheDocumento(const Misura& misura, int documento) {
  constexpr int PrimoMovimento = 1000;
  constexpr int PrimoEvento = 10000;
  const int movimento = PrimoMovimento + documento;
  std::string sql = Inserisci("MOVIMENTOCONTABILE", std::to_string(movimento) + ", 1, 'N', 'OC', '" +
                                                        std::to_string(documento) + "06', '2006', 'V'");
  for (int rata = 0; rata < RatePerDocumento; ++rata) {
    const int diverso = documento % 2 == 0 ? documento : documento + rata;
    const std::string giorno = Giorno(diverso);
    sql += Evento(PrimoEvento + documento * 10 + rata, movimento, "NULL", PrimoCliente + documento % misura.clienti,
                  "'P', 'N', NULL, NULL, NULL, " + Banca(diverso) + ", 100, 100, 'EUR', " + giorno + ", " + giorno +
                      ", 'O'");
  }
  return sql;
}

std::string RigheExtra(int extra) {
  constexpr int PrimoMovimento = 2000;
  constexpr int PrimoEvento = 20000;
  const int movimento = PrimoMovimento + extra;
  std::string sql = Inserisci("MOVIMENTOCONTABILE", std::to_string(movimento) + ", 1, 'X', 'A', '" +
                                                        std::to_string(extra) + "', '2006', 'V'");
  for (int rata = 0; rata < 2; ++rata) {
    sql += Evento(PrimoEvento + extra * 10 + rata, movimento, "NULL", PrimoCliente,
                  "'C', 'N', '2026-03-31', '2026-03-31', " + std::to_string(rata + 1) +
                      ", NULL, 100, 100, 'EUR', NULL, NULL, 'O'");
  }
  return sql;
}

} // namespace

std::string ContoDellaPartita(const Misura& misura, int partita) {
  return CodiceConto(ChiaveConto(misura, partita % Conti(misura)));
}

std::string Righe(const Misura& misura) {
  std::string sql = RigheConti(misura);
  for (int partita = 1; partita <= misura.partite; ++partita) {
    sql += RighePartita(misura, partita);
  }
  for (int documento = 1; documento <= misura.documenti; ++documento) {
    sql += RigheDocumento(misura, documento);
  }
  for (int extra = 1; extra <= misura.extra; ++extra) {
    sql += RigheExtra(extra);
  }
  return sql;
}

std::string Sorveglianza() {
  std::string sql = R"(
CREATE TABLE VARIAZIONE (ID BIGSERIAL PRIMARY KEY, TRANSAZIONE BIGINT, COMANDO TEXT, CHIAVE TEXT, PRIMA TEXT, DOPO TEXT);
CREATE TABLE CONFERMA (POSTO BIGSERIAL PRIMARY KEY, TRANSAZIONE BIGINT UNIQUE, COMANDO TEXT, ORA BIGINT);
CREATE FUNCTION chiave(t text, j jsonb) RETURNS text LANGUAGE sql AS 'SELECT CASE t
  WHEN ''eventocontabile'' THEN ''E'' || (j->>''eventocontabilekey'')
  WHEN ''movimentocontabile'' THEN ''M'' || (j->>''movimentokey'')
  ELSE ''R'' || (j->>''errorekey'') END';
CREATE FUNCTION riga(t text, j jsonb) RETURNS text LANGUAGE sql AS 'SELECT CASE t
  WHEN ''eventocontabile'' THEN concat_ws(''|'', j->>''movimentokey'', coalesce(j->>''partitacontabilekey'', ''-''),
    j->>''contocontabile_key'', j->>''tipoevento'', j->>''sospesa'', coalesce(j->>''datascadenza'', ''-''),
    coalesce(j->>''datascadenzaoriginale'', ''-''), coalesce(j->>''numerorata'', ''-''),
    coalesce(j->>''bancapresentazione_key'', ''-''), coalesce(j->>''dataconsegna'', ''-''), j->>''titoloiva'')
  WHEN ''movimentocontabile'' THEN concat_ws(''|'', j->>''tipomovimento'', j->>''serie'', j->>''numero'',
    j->>''esercizio'')
  ELSE j->>''filexml'' END';
CREATE VIEW STATO AS
  SELECT chiave('eventocontabile', to_jsonb(e)) AS CHIAVE, riga('eventocontabile', to_jsonb(e)) AS RIGA
    FROM EVENTOCONTABILE e
  UNION ALL SELECT chiave('movimentocontabile', to_jsonb(m)), riga('movimentocontabile', to_jsonb(m))
    FROM MOVIMENTOCONTABILE m
  UNION ALL SELECT chiave('errore', to_jsonb(r)), riga('errore', to_jsonb(r)) FROM ERRORE r;
CREATE FUNCTION annota() RETURNS trigger LANGUAGE plpgsql AS 'BEGIN
  INSERT INTO VARIAZIONE (TRANSAZIONE, COMANDO, CHIAVE, PRIMA, DOPO)
    VALUES (txid_current(), current_setting(''lumoscad.comando'', true),
      chiave(TG_TABLE_NAME, to_jsonb(CASE WHEN TG_OP = ''INSERT'' THEN NEW ELSE OLD END)),
      CASE WHEN TG_OP = ''INSERT'' THEN NULL ELSE riga(TG_TABLE_NAME, to_jsonb(OLD)) END,
      CASE WHEN TG_OP = ''DELETE'' THEN NULL ELSE riga(TG_TABLE_NAME, to_jsonb(NEW)) END);
  RETURN NULL; END';
CREATE FUNCTION conferma() RETURNS trigger LANGUAGE plpgsql AS 'BEGIN
  IF NOT EXISTS (SELECT 1 FROM CONFERMA WHERE TRANSAZIONE = txid_current()) THEN
    PERFORM pg_advisory_xact_lock(20060305);
    INSERT INTO CONFERMA (TRANSAZIONE, COMANDO, ORA) VALUES (txid_current(),
      current_setting(''lumoscad.comando'', true), (extract(epoch FROM clock_timestamp()) * 1000000000)::bigint);
  END IF;
  RETURN NULL; END';
)";
  for (const std::string tabella : {"EVENTOCONTABILE", "MOVIMENTOCONTABILE", "ERRORE"}) {
    sql += "CREATE TRIGGER ANNOTA_" + tabella + " AFTER INSERT OR UPDATE OR DELETE ON " + tabella +
           " FOR EACH ROW EXECUTE FUNCTION annota();\n";
    // Deferred, it runs as part of the commit; its lock is let go when the commit is done.
    sql += "CREATE CONSTRAINT TRIGGER CONFERMA_" + tabella + " AFTER INSERT OR UPDATE OR DELETE ON " + tabella +
           " DEFERRABLE INITIALLY DEFERRED FOR EACH ROW EXECUTE FUNCTION conferma();\n";
  }
  return sql;
}

std::vector<std::string> SorveglianzaMariaDb() {
  struct Tabella {
    std::string nome;
    std::string lettera; ///< what its keys begin with
    std::string chiave;
    std::string riga; ///< "@." stands before each column; of a CHAR the blanks at the end, which the server cuts off
  };
  static const std::vector<Tabella> Tabelle{
      {"EVENTOCONTABILE", "E", "EVENTOCONTABILEKEY",
       "CONCAT_WS('|', @.MOVIMENTOKEY, COALESCE(@.PARTITACONTABILEKEY, '-'), @.CONTOCONTABILE_KEY, @.TIPOEVENTO, "
       "@.SOSPESA, COALESCE(@.DATASCADENZA, '-'), COALESCE(@.DATASCADENZAORIGINALE, '-'), "
       "COALESCE(@.NUMERORATA, '-'), COALESCE(@.BANCAPRESENTAZIONE_KEY, '-'), COALESCE(@.DATACONSEGNA, '-'), "
       "RPAD(@.TITOLOIVA, 1, ' '))"},
      {"MOVIMENTOCONTABILE", "M", "MOVIMENTOKEY", "CONCAT_WS('|', @.TIPOMOVIMENTO, @.SERIE, @.NUMERO, @.ESERCIZIO)"},
      {"ERRORE", "R", "ERROREKEY", "@.FILEXML"},
  };
  const auto per = [](const std::string& riga, const std::string& prima) { return Replaced(riga, "@.", prima); };
  std::vector<std::string> sql{
      "CREATE TABLE SERRATURA (ID INTEGER PRIMARY KEY, N BIGINT NOT NULL)", "INSERT INTO SERRATURA VALUES (1, 0)",
      "CREATE TABLE VARIAZIONE (ID BIGINT AUTO_INCREMENT PRIMARY KEY, TRANSAZIONE VARCHAR(40), CHIAVE VARCHAR(20), "
      "PRIMA TEXT, DOPO TEXT)",
      "CREATE TABLE CONFERMA (TRANSAZIONE VARCHAR(40) PRIMARY KEY, POSTO BIGINT, COMANDO VARCHAR(20), ORA BIGINT)",
      "CREATE PROCEDURE ANNOTA(IN QUESTA VARCHAR(20), IN VECCHIA TEXT, IN NUOVA TEXT) BEGIN "
      "DECLARE QUALE VARCHAR(40) DEFAULT CONCAT(@@port, '.', CONNECTION_ID()); "
      "IF NOT EXISTS (SELECT 1 FROM CONFERMA WHERE TRANSAZIONE=QUALE) THEN "
      "UPDATE SERRATURA SET N=N+1 WHERE ID=1; "
      "INSERT INTO CONFERMA SELECT QUALE, N, SUBSTRING_INDEX(USER(), '@', 1), "
      "CAST(UNIX_TIMESTAMP(SYSDATE(6)) * 1000000000 AS INTEGER) FROM SERRATURA WHERE ID=1; "
      "END IF; "
      "INSERT INTO VARIAZIONE (TRANSAZIONE, CHIAVE, PRIMA, DOPO) VALUES (QUALE, QUESTA, VECCHIA, NUOVA); END"};
  std::string stato;
  for (const Tabella& tabella : Tabelle) {
    stato += (stato.empty() ? "" : " UNION ALL ") + ("SELECT CONCAT('" + tabella.lettera + "', T." + tabella.chiave) +
             ") AS CHIAVE, " + per(tabella.riga, "T.") + " AS RIGA FROM " + tabella.nome + " T";
    for (const std::string evento : {"INSERT", "UPDATE", "DELETE"}) {
      sql.push_back("CREATE TRIGGER ANNOTA_" + evento + "_" + tabella.nome + " AFTER " + evento + " ON " +
                    tabella.nome + " FOR EACH ROW CALL ANNOTA(CONCAT('" + tabella.lettera + "', " +
                    (evento == "INSERT" ? "NEW." : "OLD.") + tabella.chiave + "), " +
                    (evento == "INSERT" ? "NULL" : per(tabella.riga, "OLD.")) + ", " +
                    (evento == "DELETE" ? "NULL" : per(tabella.riga, "NEW.")) + ")");
    }
  }
  sql.push_back("CREATE VIEW STATO AS " + stato);
  return sql;
}

} // namespace lumoscad::test
