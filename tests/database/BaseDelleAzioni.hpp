#pragma once

#include "BaseDati.hpp"
#include "common/MsgAnnulla.hpp"
#include "common/Stato.hpp"
#include "database/procedureLumoDB2.hpp"
#include "lumoscad/LumoScadenze.hpp"
#include "support/TestBench.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::test {

/// Two companies, items and movements that differ from each other in one thing each, and their events.
inline std::string DatiDelleAzioni() {
  std::string sql = "INSERT INTO AZIENDELINEE VALUES (1,'01',' ',' ');"
                    "INSERT INTO AZIENDELINEE VALUES (2,'02',' ',' ');"
                    "INSERT INTO AZIENDELINEE VALUES (3,'01','L2',' ');"
                    "INSERT INTO CONTOCONTABILE VALUES (10,'C10','ALFA','01',NULL,'N');"
                    "INSERT INTO CONTOCONTABILE VALUES (11,'C11','BETA','01',NULL,'N');"
                    "INSERT INTO PARTITACONTABILE VALUES (100,10,'AB   123','A');"
                    "INSERT INTO PARTITACONTABILE VALUES (101,10,'AB 123','A');"
                    "INSERT INTO PARTITACONTABILE VALUES (102,11,'AB   123','A');"
                    "INSERT INTO PARTITACONTABILE VALUES (103,11,'SENZA RATE','A');";
  for (const char* movimento :
       {"1000,1,'N','A','1','2006'", "1001,1,'N','OC','12306','2006'", "1002,1,'N','OC','12305','2005'",
        "1003,1,'X','OC','12306','2006'", "1004,2,'N','OC','12306','2006'", "1005,1,'N','OC','123','2006'",
        "1006,1,'N','OF','12306','2006'", "2000,1,'X','A','15','2006'", "2001,1,'X','A','15','2005'",
        "2002,1,'N','A','15','2006'", "2003,2,'X','A','15','2006'", "2004,1,'X','A','16','2006'",
        "2005,1,'X','B','15','2006'"}) {
    sql += "INSERT INTO MOVIMENTOCONTABILE VALUES (" + std::string(movimento) + ",'01');";
  }
  for (const char* evento : {"1,1,1000,100,10,'C','N','2006-03-31','2006-02-28',1",
                             "2,1,1000,100,10,'C','N','2006-04-30',NULL,2",
                             "3,1,1000,100,10,'C','S','2006-05-31','2006-05-31',3",
                             "4,1,1000,100,10,'P','N','2006-06-30','2006-02-28',4",
                             "5,1,1000,101,10,'C','N','2006-03-31','2006-02-28',1",
                             "6,1,1000,102,11,'C','N','2006-03-31','2006-02-28',1",
                             "11,1,1001,NULL,10,'P','N',NULL,NULL,NULL",
                             "12,1,1001,NULL,10,'P','S',NULL,NULL,NULL",
                             "13,1,1001,NULL,10,'C','N',NULL,NULL,NULL",
                             "14,1,1002,NULL,10,'P','N',NULL,NULL,NULL",
                             "15,1,1003,NULL,10,'P','N',NULL,NULL,NULL",
                             "16,2,1004,NULL,10,'P','N',NULL,NULL,NULL",
                             "17,1,1005,NULL,10,'P','N',NULL,NULL,NULL",
                             "18,1,1006,NULL,10,'P','N',NULL,NULL,NULL",
                             "21,1,2000,NULL,10,'C','N','2006-03-31','2006-02-28',1",
                             "22,1,2000,NULL,10,'C','N','2006-04-30',NULL,2",
                             "23,1,2000,NULL,10,'C','N',NULL,'2006-03-31',3",
                             "24,1,2001,NULL,10,'C','N','2006-03-31','2006-02-28',1",
                             "25,1,2002,NULL,10,'C','N','2006-03-31','2006-02-28',1",
                             "26,2,2003,NULL,10,'C','N','2006-03-31','2006-02-28',1",
                             "27,1,2005,NULL,10,'C','N','2006-03-31','2006-02-28',1"}) {
    sql += Rata(std::string(evento) + ",NULL,100");
  }
  return sql;
}

/// Every row of every table.
inline std::vector<std::string> Tutto(const BaseDati& base) {
  std::vector<std::string> righe;
  for (const char* tabella :
       {"AZIENDELINEE", "CONTOCONTABILE", "PARTITACONTABILE", "MOVIMENTOCONTABILE", "EVENTOCONTABILE", "ERRORE"}) {
    for (const std::string& riga : base.Righe(std::string("SELECT * FROM ") + tabella + " ORDER BY 1")) {
      righe.push_back(tabella + (" " + riga));
    }
  }
  return righe;
}

/// The reply actions on a database of each kind, reached by the running command's options.
class BaseDelleAzioni : public testing::TestWithParam<const char*> {
 protected:
  BaseDelleAzioni() : base_(GetParam(), DatiDelleAzioni()), prima_(Tutto(base_)) {
    stato().ComandoCorrente = Opzioni();
    banco_.statements.clear();
  }

  [[nodiscard]] const std::string& Schema() const { return base_.Schema(); }
  [[nodiscard]] std::string Opzioni() const { return base_.Opzioni() + " -DB2SCHEMA " + Schema(); }
  [[nodiscard]] std::string Azione(const std::vector<std::string>& parametri) {
    return procedureLumoDB2::EseguiAzioneDB2(parametri, &msg_);
  }
  /// Runs a command line with this database's options.
  [[nodiscard]] std::string Esegui(const std::string& comando) const {
    return LumoScadenze().EseguiLumoScad(comando + " " + Opzioni());
  }
  /// The rows that the database would have after `sql`.
  [[nodiscard]] static std::vector<std::string> Dopo(const std::string& sql) {
    const BaseDati altra(GetParam(), DatiDelleAzioni());
    altra.Esegui(sql);
    return Tutto(altra);
  }
  /// The whole database is what `sql` alone would have made of it, and that is a change.
  void CambiatoCome(const std::string& sql) const {
    const auto dopo = Tutto(base_);
    EXPECT_NE(dopo, prima_);
    EXPECT_THAT(dopo, testing::ElementsAreArray(Dopo(sql)));
  }
  void NienteCambiato() const { EXPECT_THAT(Tutto(base_), testing::ElementsAreArray(prima_)); }
  /// The statements sent that begin with `inizio`.
  [[nodiscard]] std::vector<std::string> Inviate(std::string_view inizio) const {
    std::vector<std::string> trovate;
    for (const std::string& istruzione : banco_.statements) {
      if (istruzione.starts_with(inizio)) {
        trovate.push_back(istruzione);
      }
    }
    return trovate;
  }

  TestBench banco_;
  BaseDati base_;
  std::vector<std::string> prima_;
  MsgAnnulla msg_;
};

} // namespace lumoscad::test
