#pragma once

#include "common/Stato.hpp"
#include "platform/Services.hpp"
#include "platform/ado/Ado.hpp"
#include "support/DatabaseContext.hpp"
#include "support/Files.hpp"
#include "support/KeptConnection.hpp"
#include "support/Paths.hpp"

#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::test {

/// The kinds of database to test on.
inline std::vector<const char*> GeneriDiBase() {
  return test::DatabaseKinds();
}

/// Names a case after its kind of database.
inline const auto NomeDelGenere = [](const auto& caso) { return std::string(caso.param); };

/// The script that creates the accounting tables.
inline const std::string& TabelleContabili() {
  static const std::string Script = FileText(SourcePath("demo/schema.sql"));
  return Script;
}

/// A database of the accounting tables, of the kind `genere`; `tabelle` creates them. Its own statements are not told
/// to the services' listener.
class BaseDati {
 public:
  BaseDati(std::string_view genere, const std::string& dati, const std::string& tabelle = TabelleContabili())
      : contesto_(&test::databaseContext(genere)) {
    const ReplacedServices silenzio(Services{});
    base_ = contesto_->Create(tabelle + dati);
  }

  /// What is different in a database of this kind.
  [[nodiscard]] const test::DatabaseContext& Contesto() const noexcept { return *contesto_; }
  [[nodiscard]] const test::Quirks& Particolarita() const noexcept { return contesto_->quirks(); }
  /// What may stand before a table's name.
  [[nodiscard]] const std::string& Schema() const noexcept { return base_->schema; }
  /// The options of a command line that lead to this database.
  [[nodiscard]] std::string Opzioni() const {
    std::string opzioni = "-DB2SOURCE " + base_->source;
    if (!base_->user.empty()) {
      opzioni += " -DB2USER " + base_->user + " -DB2PASS " + base_->password;
    }
    return opzioni;
  }
  /// Makes every UPDATE of a row of `tabella` that meets `condizione` fail and say `testo`.
  void Impedisci(const std::string& tabella, const std::string& condizione, const std::string& testo) const {
    for (const std::string& istruzione : contesto_->RefuseUpdate(tabella, condizione, testo)) {
      Esegui(istruzione);
    }
  }
  /// Ends every connection to the database, as a failure of the server would.
  void ChiudiConnessioni() const {
    const ReplacedServices silenzio(Services{});
    contesto_->DropConnections(*base_);
  }
  void Apri(ado::Connection& connection) const {
    connection.ConnectionString = base_->ConnectionText();
    connection.Open();
  }
  void Esegui(std::string_view sql) const {
    const ReplacedServices silenzio(Services{});
    diretta_.To(base_->ConnectionText()).Execute(sql);
  }
  /// Runs statements separated by ";".
  void Script(std::string_view script) const {
    const ReplacedServices silenzio(Services{});
    test::RunScript(diretta_.To(base_->ConnectionText()), script);
  }
  /// The rows of a query: the values joined by "|", "NULL" for none.
  [[nodiscard]] std::vector<std::string> Righe(std::string_view sql) const {
    const ReplacedServices silenzio(Services{});
    ado::Command comando;
    comando.ActiveConnection = &diretta_.To(base_->ConnectionText());
    comando.CommandText = sql;
    std::vector<std::string> righe;
    for (ado::Recordset insieme = comando.Execute(); !insieme.Eof(); insieme.MoveNext()) {
      std::string riga;
      for (std::size_t colonna = 0; colonna < insieme.ColumnCount(); ++colonna) {
        riga.append(colonna == 0 ? "" : "|").append(insieme.ValueAt(colonna).value_or("NULL"));
      }
      righe.push_back(riga);
    }
    return righe;
  }

 private:
  test::DatabaseContext* contesto_;
  std::unique_ptr<test::TestDatabase> base_;
  mutable test::KeptConnection diretta_;
};

/// Accounts of every class, open items, movements and instalments around 5 March 2006.
inline const char* DatiDiProva() {
  return "INSERT INTO AZIENDELINEE VALUES (1,'001',' ',' ');"
         "INSERT INTO AZIENDELINEE VALUES (2,'002',' ',' ');"
         "INSERT INTO CONTOCONTABILE VALUES (101,'C01','ROSSI SRL','01','INT1','N');"
         "INSERT INTO CONTOCONTABILE VALUES (102,'C02','BIANCHI','02','INT2','N');"
         "INSERT INTO CONTOCONTABILE VALUES (103,'F03','VERDI','03','INT3','N');"
         "INSERT INTO CONTOCONTABILE VALUES (104,'F04','NERI','04',NULL,'S');"
         "INSERT INTO CONTOCONTABILE VALUES (105,'G05','GENERALE','05',NULL,'N');"
         "INSERT INTO CONTOCONTABILE VALUES (106,'B06','BANCA BETA','06',NULL,'S');"
         "INSERT INTO CONTOCONTABILE VALUES (107,'B07','BANCA ALFA','07',NULL,'N');"
         "INSERT INTO CONTOCONTABILE VALUES (108,'B08','BANCA CHIUSA','07',NULL,'S');"
         "INSERT INTO PARTITACONTABILE VALUES (201,101,'2006   1','A');"
         "INSERT INTO PARTITACONTABILE VALUES (202,102,'2006   2','A');"
         "INSERT INTO PARTITACONTABILE VALUES (203,103,'2006   3','A');"
         "INSERT INTO PARTITACONTABILE VALUES (204,104,'2006   4','A');"
         "INSERT INTO PARTITACONTABILE VALUES (205,105,'2006   5','A');"
         "INSERT INTO PARTITACONTABILE VALUES (206,101,'2005   6','C');"
         "INSERT INTO MOVIMENTOCONTABILE VALUES (301,1,'N','A','1','2006','01');"
         "INSERT INTO MOVIMENTOCONTABILE VALUES (302,1,'X','A','2','2006','01');"
         "INSERT INTO MOVIMENTOCONTABILE VALUES (303,1,'N','A','3','2005','01');"
         "INSERT INTO MOVIMENTOCONTABILE VALUES (304,1,'N','A','3','2006','01');";
}

/// An instalment: `valori` is key, company line, movement, open item, account, kind, suspended, due date, original
/// date, number, bank and amount.
inline std::string Rata(const std::string& valori) {
  return "INSERT INTO EVENTOCONTABILE (EVENTOCONTABILEKEY,AZIENDALINEAKEY,MOVIMENTOKEY,PARTITACONTABILEKEY,"
         "CONTOCONTABILE_KEY,TIPOEVENTO,SOSPESA,DATASCADENZA,DATASCADENZAORIGINALE,NUMERORATA,"
         "BANCAPRESENTAZIONE_KEY,IMPORTOEURO) VALUES (" +
         valori + ");";
}

/// The columns of the instalments that a procedure could write, one text an instalment, by key.
inline std::vector<std::string> Rate(const BaseDati& base) {
  return base.Righe("SELECT * FROM EVENTOCONTABILE ORDER BY EVENTOCONTABILEKEY");
}

/// The statements without those that ask, after a change that matched no row, whether the new value is there already.
inline std::vector<std::string> SenzaDomande(std::vector<std::string> istruzioni) {
  std::erase_if(istruzioni, [](const std::string& sql) { return sql.starts_with("SELECT COUNT(*), "); });
  return istruzioni;
}

} // namespace lumoscad::test
