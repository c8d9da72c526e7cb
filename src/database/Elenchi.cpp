#include "common/Testo.hpp"
#include "common/Utilities.hpp"
#include "database/db2Searches.hpp"
#include "database/moduloDatabase.hpp"
#include "database/procedureLumoDB2.hpp"
#include "platform/Services.hpp"

namespace lumoscad::procedureLumoDB2 {
namespace {

std::string Oggi() {
  const DateTime adesso = ActiveServices().localTime();
  return ConZeri(adesso.year, 4) + "-" + ConZeri(adesso.month, 2) + "-" + ConZeri(adesso.day, 2);
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

std::string SerieEscluse(const std::vector<std::string>& serie) {
  // A single series excludes nothing: callers rely on it.
  if (serie.size() < 2) {
    return "";
  }
  std::string sql = "AND (";
  for (const std::string& esclusa : serie) {
    sql.append(&esclusa == &serie.front() ? "" : "AND ").append("MOV.SERIE != '").append(esclusa).append("' ");
  }
  return sql + ") ";
}

std::string Condizioni(const FiltroPresunti& filtro, ado::Connection& connection, const std::string& aziendaLineaKey) {
  std::string sql =
      "WHERE EVE.AZIENDALINEAKEY=? AND MOV.MOVIMENTOKEY = EVE.MOVIMENTOKEY And CONTO.CONTOCONTABILE_KEY = "
      "EVE.CONTOCONTABILE_KEY AND EVE.TIPOEVENTO = 'P' AND MOV.TIPOOPERAZIONE = '" +
      filtro.parTipoMovimenti +
      "' AND EVE.SOSPESA = 'N' AND CONTO.TIPOLOGIACONTO in ('01','02','03','04') AND CONTO.BLOCCO = 'N' ";
  if (MaggioreDiSpazio(filtro.parConto)) {
    sql += "AND CONTO.CODICECONTO = '" + filtro.parConto + "' ";
  }
  if (MaggioreDiSpazio(filtro.parSerie)) {
    const auto movimento = db2Searches::CercaMovimento(connection, aziendaLineaKey, "N", Nullo, filtro.parSerie,
                                                       filtro.parNumero + filtro.parAnno);
    sql += "AND EVE.MOVIMENTOKEY = " + std::to_string(movimento) + " ";
  }
  if (filtro.parScad == "SCADUTO") {
    sql += "AND (EVE.DATACONSEGNA < '" + Oggi() + "') ";
  } else if (filtro.parScad == "DASCADERE") {
    sql += "AND (EVE.DATACONSEGNA >= '" + Oggi() + "') ";
  }
  if (filtro.parBancaSN == "N") {
    sql += "AND EVE.BANCAPRESENTAZIONE_KEY IS NULL ";
  } else if (filtro.parBancaSN == "S") {
    sql += "AND EVE.BANCAPRESENTAZIONE_KEY IS NOT NULL ";
  }
  return sql + SerieEscluse(filtro.parSerieEscluse);
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
    msg.Errore = moduloDatabase::TestoErrore(CurrentError());
    return std::nullopt;
  }
}

std::optional<ado::Recordset> ElencoPresunti(ado::Connection& connection, std::int32_t aziendaLineaKey,
                                             const FiltroPresunti& filtro, MsgAnnulla& msg) {
  try {
    const std::string azienda = std::to_string(aziendaLineaKey);
    ado::Command comando = moduloDatabase::CreaComando(
        connection,
        "SELECT sum(EVE.IMPORTOEURO) AS IMPORTOEURO, MOV.SERIE, MOV.NUMERO, CONTO.CODICECONTO AS CODICECONTO, "
        "CONTO.DESCRIZIONEVOCE AS DESCRIZIONECONTO, "
        "BANCA.CODICECONTO AS CODICEBANCA, BANCA.DESCRIZIONEVOCE AS BANCADESCRIZIONE, "
        "EVE.DATACONSEGNA AS DATACONSEGNA, EVE.CODICEDIVISA AS DIVISA, sum(EVE.IMPORTODIVISA) AS IMPORTODIVISA, "
        "EVE.DATACONSEGNAPRODUZIONE AS DATACONSEGNAORIGINE "
        "FROM MOVIMENTOCONTABILE AS MOV, EVENTOCONTABILE AS EVE LEFT OUTER JOIN CONTOCONTABILE AS BANCA ON "
        "BANCA.CONTOCONTABILE_KEY=EVE.BANCAPRESENTAZIONE_KEY, CONTOCONTABILE AS CONTO " +
            Condizioni(filtro, connection, azienda) +
            "GROUP BY MOV.SERIE, MOV.NUMERO, CONTO.CODICECONTO, CONTO.DESCRIZIONEVOCE, BANCA.CODICECONTO, "
            "BANCA.DESCRIZIONEVOCE, EVE.DATACONSEGNA, EVE.CODICEDIVISA, EVE.DATACONSEGNAPRODUZIONE ");
    comando.Parameters = {azienda};
    return comando.Execute();
  } catch (...) {
    msg.Errore = moduloDatabase::TestoErrore(CurrentError());
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
    comando.sentOnce = true;
    return comando.Execute();
  } catch (...) {
    msg.Errore = moduloDatabase::TestoErrore(CurrentError());
    return std::nullopt;
  }
}

} // namespace lumoscad::procedureLumoDB2
