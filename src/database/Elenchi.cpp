#include "common/Testo.hpp"
#include "common/Utilities.hpp"
#include "database/moduloDatabase.hpp"
#include "database/procedureLumoDB2.hpp"
#include "platform/Servizi.hpp"

namespace lumoscad::procedureLumoDB2 {
namespace {

std::string Oggi() {
  const DataOra adesso = servizi().adesso();
  return ConZeri(adesso.anno, 4) + "-" + ConZeri(adesso.mese, 2) + "-" + ConZeri(adesso.giorno, 2);
}

std::string Mesi(std::string_view parMesiScadenze) {
  std::string sql = "AND (";
  bool primo = true;
  for (const std::string& elemento : Dividi(parMesiScadenze, ',')) {
    const std::string mese = elemento.substr(0, 2);
    const std::string anno = elemento.size() > 2 ? elemento.substr(2) : std::string();
    sql += primo ? "" : "OR ";
    sql.append("(EVENTOCONTABILE.DATASCADENZA >='").append(anno).append("-").append(mese).append("-01' ");
    sql.append("AND EVENTOCONTABILE.DATASCADENZA <='").append(Utilities::FineMese(mese, anno)).append("') ");
    primo = false;
  }
  return sql + ") ";
}

std::string Condizioni(const FiltroScadenze& filtro) {
  std::string sql = "WHERE EVENTOCONTABILE.AZIENDALINEAKEY=? ";
  if (MaggioreDiSpazio(filtro.parConto)) {
    sql += "AND CONTO.CODICECONTO = '" + filtro.parConto + "' ";
  }
  if (MaggioreDiSpazio(filtro.parPartita)) {
    sql += "AND PARTITACONTABILE.NUMEROPARTITA='" + filtro.parPartita + "' ";
  }
  sql += "AND PARTITACONTABILE.STATO='A' AND EVENTOCONTABILE.SOSPESA='N' AND EVENTOCONTABILE.TIPOEVENTO='C' AND "
         "MOVIMENTOCONTABILE.TIPOMOVIMENTO='N' ";
  if (filtro.parModalita == "CREDITI") {
    sql += "AND ((CONTO.TIPOLOGIACONTO='01') OR (CONTO.TIPOLOGIACONTO='02')) ";
  } else if (filtro.parModalita == "DEBITI") {
    sql += "AND ((CONTO.TIPOLOGIACONTO='03') OR (CONTO.TIPOLOGIACONTO='04')) ";
  }
  if (MaggioreDiSpazio(filtro.parCodiceInterno)) {
    sql += "AND CONTO.CODICEINTERNO = '" + filtro.parCodiceInterno + "' ";
  }
  if (filtro.parScad == "SCADUTO") {
    sql += "AND EVENTOCONTABILE.DATASCADENZA < '" + Oggi() + "' ";
  } else if (filtro.parScad == "DASCADERE") {
    sql += "AND EVENTOCONTABILE.DATASCADENZA >= '" + Oggi() + "' ";
  }
  if (filtro.parBancaSN == "N") {
    sql += "AND EVENTOCONTABILE.BANCAPRESENTAZIONE_KEY IS NULL ";
  } else if (filtro.parBancaSN == "S") {
    sql += "AND EVENTOCONTABILE.BANCAPRESENTAZIONE_KEY IS NOT NULL ";
  }
  if (!SenzaSpaziAiLati(filtro.parMesiScadenze).empty()) {
    sql += Mesi(filtro.parMesiScadenze);
  }
  return sql;
}

} // namespace

std::optional<ado::Recordset> ElencoScadenze(ado::Connection& connection, std::int32_t aziendaLineaKey,
                                             const FiltroScadenze& filtro, MsgAnnulla& msg) {
  try {
    ado::Command comando = moduloDatabase::CreaComando(
        connection,
        "SELECT CONTO.CODICECONTO AS CODICECONTO, CONTO.DESCRIZIONEVOCE AS DESCRIZIONECONTO, "
        "PARTITACONTABILE.PARTITACONTABILEKEY AS IDPARTITA, PARTITACONTABILE.NUMEROPARTITA, "
        "EVENTOCONTABILE.DATASCADENZA, EVENTOCONTABILE.NUMERORATA, EVENTOCONTABILE.DATASCADENZAORIGINALE, "
        "BANCA.CODICECONTO AS CODICEBANCA, BANCA.DESCRIZIONEVOCE AS DESCRIZIONEBANCA, "
        "Sum(EVENTOCONTABILE.IMPORTOEURO) AS IMPORTOEURO "
        "FROM CONTOCONTABILE AS CONTO RIGHT JOIN (MOVIMENTOCONTABILE RIGHT JOIN (CONTOCONTABILE AS BANCA RIGHT JOIN "
        "(PARTITACONTABILE LEFT JOIN EVENTOCONTABILE ON PARTITACONTABILE.PARTITACONTABILEKEY = "
        "EVENTOCONTABILE.PARTITACONTABILEKEY) ON BANCA.CONTOCONTABILE_KEY = EVENTOCONTABILE.BANCAPRESENTAZIONE_KEY) ON "
        "MOVIMENTOCONTABILE.MOVIMENTOKEY = EVENTOCONTABILE.MOVIMENTOKEY) ON CONTO.CONTOCONTABILE_KEY = "
        "EVENTOCONTABILE.CONTOCONTABILE_KEY " +
            Condizioni(filtro) +
            "GROUP BY CONTO.CODICECONTO, CONTO.DESCRIZIONEVOCE, PARTITACONTABILE.PARTITACONTABILEKEY, "
            "PARTITACONTABILE.NUMEROPARTITA, EVENTOCONTABILE.DATASCADENZA, EVENTOCONTABILE.NUMERORATA, "
            "EVENTOCONTABILE.DATASCADENZAORIGINALE, BANCA.CODICECONTO, BANCA.DESCRIZIONEVOCE ");
    comando.Parameters = {std::to_string(aziendaLineaKey)};
    return comando.Execute();
  } catch (...) {
    msg.Errore = moduloDatabase::TestoErrore(ErroreCorrente());
    return std::nullopt;
  }
}

std::optional<ado::Recordset> ElencoBanche(ado::Connection& connection, MsgAnnulla& msg) {
  try {
    // AND binds before OR: the blocked-account condition is meant for class '07' alone.
    ado::Command comando = moduloDatabase::CreaComando(
        connection, "SELECT * FROM CONTOCONTABILE "
                    "WHERE CONTOCONTABILE.TIPOLOGIACONTO='06' OR CONTOCONTABILE.TIPOLOGIACONTO='07' AND "
                    "CONTOCONTABILE.BLOCCO = 'N' "
                    "ORDER BY CONTOCONTABILE.DESCRIZIONEVOCE");
    return comando.Execute();
  } catch (...) {
    msg.Errore = moduloDatabase::TestoErrore(ErroreCorrente());
    return std::nullopt;
  }
}

} // namespace lumoscad::procedureLumoDB2
