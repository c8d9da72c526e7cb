#pragma once

#include "BaseDati.hpp"

#include <string>

namespace lumoscad::test {

/// An event of a presumed document: `valori` is key, company line, movement, account, suspended, bank, euro amount,
/// amount in currency, currency, planned and original delivery date, VAT title.
inline std::string Presunto(const std::string& valori) {
  return "INSERT INTO EVENTOCONTABILE (EVENTOCONTABILEKEY,AZIENDALINEAKEY,MOVIMENTOKEY,CONTOCONTABILE_KEY,SOSPESA,"
         "BANCAPRESENTAZIONE_KEY,IMPORTOEURO,IMPORTODIVISA,CODICEDIVISA,DATACONSEGNA,DATACONSEGNAPRODUZIONE,TITOLOIVA,"
         "TIPOEVENTO) VALUES (" +
         valori + ",'P');";
}

/// Movements AB/12306 to AB/12906 and CD/506 of company line 1, around 5 March 2006.
inline std::string MovimentiPresunti() {
  return "INSERT INTO MOVIMENTOCONTABILE VALUES (401,1,'N','AB','12306','2006','V');"
         "INSERT INTO MOVIMENTOCONTABILE VALUES (402,1,'N','AB','12406','2006','V');"
         "INSERT INTO MOVIMENTOCONTABILE VALUES (403,1,'N','CD','506','2006','V');"
         "INSERT INTO MOVIMENTOCONTABILE VALUES (404,1,'N','EF','06','2006','V');"
         "INSERT INTO MOVIMENTOCONTABILE VALUES (405,1,'N','AB','90006','2006','A');"
         "INSERT INTO MOVIMENTOCONTABILE VALUES (406,2,'N','AB','12306','2006','V');";
}

/// A document of three rows (two banks, two currencies), one without bank and date, one of series CD, one whose number
/// is its year alone, a supplier's, and rows that no list shows: suspended, blocked account, another company, an open
/// item's.
inline std::string DatiPresunti() {
  return std::string(DatiDiProva()) + MovimentiPresunti() +
         Presunto("1,1,401,101,'N',106,100,100,'EUR','2006-03-10','2006-03-01','X'") +
         Presunto("2,1,401,101,'N',107,50,50,'EUR','2006-03-10','2006-03-01','X'") +
         Presunto("3,1,401,101,'N',106,80,100.5,'USD','2006-04-10',NULL,'X'") +
         Presunto("4,1,402,102,'N',NULL,1234.5,1234.5,'EUR',NULL,NULL,'X'") +
         Presunto("5,1,403,101,'N',107,0,0.005,'CHF','2006-02-28','2006-02-28','X'") +
         Presunto("6,1,404,102,'N',106,7,7,'EUR','2007-01-01','2006-12-31','X'") +
         Presunto("7,1,405,103,'N',106,9,9,'EUR','2006-03-10','2006-03-10','X'") +
         Presunto("8,1,401,101,'S',106,1,1,'EUR','2006-03-10','2006-03-01','X'") +
         Presunto("9,1,405,104,'N',106,9,9,'EUR','2006-03-10','2006-03-10','X'") +
         Presunto("10,2,406,101,'N',106,9,9,'EUR','2006-03-10','2006-03-10','X'") +
         Presunto("11,1,402,102,'N',NULL,5,0,'USD',NULL,NULL,'X'") +
         Rata("12,1,401,201,101,'C','N','2006-03-10','2006-03-10',1,106,1");
}

} // namespace lumoscad::test
