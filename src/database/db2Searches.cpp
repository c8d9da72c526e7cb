#include "database/db2Searches.hpp"

#include "common/Stato.hpp"
#include "common/Testo.hpp"
#include "database/moduloDatabase.hpp"
#include "platform/RuntimeError.hpp"

#include <utility>
#include <vector>

namespace lumoscad::db2Searches {
namespace {

constexpr std::string_view ContoPerCodice = "SELECT CONTOCONTABILE_KEY FROM CONTOCONTABILE WHERE CODICECONTO=? ";
constexpr std::string_view Movimenti = "MOVIMENTOCONTABILE";

std::string MovimentoDiOgniAnno(std::string_view tabella = Movimenti) {
  return std::string("SELECT MOVIMENTOKEY FROM ").append(tabella) +
         " WHERE AZIENDALINEAKEY=? AND TIPOMOVIMENTO=? AND SERIE=? AND NUMERO=?";
}

std::int32_t Cerca(ado::Command& comando, std::vector<std::string> valori, std::string_view colonna,
                   std::string_view fallimento) {
  std::int32_t chiave = -1;
  comando.Parameters = std::move(valori);
  ado::Recordset righe = comando.Execute();
  if (righe.RecordCount() == 1) {
    const auto valore = righe.Fields(colonna).Value();
    // A key kept in a CHAR column comes back padded.
    chiave = valore ? Intero(SenzaSpaziAiLati(*valore)) : -1;
  }
  moduloDatabase::ChiudiRecordset(righe);
  if (chiave < 0) {
    throw RuntimeError(errors::SearchFailed, "", std::string(fallimento));
  }
  return chiave;
}

std::int32_t Cerca(ado::Connection& connection, std::string_view sql, std::vector<std::string> valori,
                   std::string_view colonna, std::string_view fallimento) {
  ado::Command comando = moduloDatabase::CreaComando(connection, sql);
  comando.sentOnce = true;
  return Cerca(comando, std::move(valori), colonna, fallimento);
}

std::int32_t CercaMovimento(ado::Command& comando, std::vector<std::string> valori) {
  return Cerca(comando, std::move(valori), "MOVIMENTOKEY", "MOVIMENTO CONTABILE INESISTENTE");
}

std::int32_t CercaConto(ado::Command& comando, std::string_view codiceConto) {
  return Cerca(comando, {std::string(codiceConto)}, "CONTOCONTABILE_KEY", "CONTO CONTABILE INESISTENTE");
}

ado::Command ComandoMovimento(ado::Connection& connection, std::string_view tabella, std::string_view esercizio) {
  std::string sql = MovimentoDiOgniAnno(tabella);
  if (esercizio != Nullo) {
    sql += " AND ESERCIZIO=?";
  }
  ado::Command comando = moduloDatabase::CreaComando(connection, sql);
  comando.sentOnce = true;
  return comando;
}

std::vector<std::string> ValoriMovimento(std::string_view aziendaLineaKey, std::string_view tipoMovimento,
                                         std::string_view esercizio, std::string_view serie, std::string_view numero) {
  std::vector<std::string> valori = {std::string(aziendaLineaKey), std::string(tipoMovimento), std::string(serie),
                                     std::string(numero)};
  if (esercizio != Nullo) {
    valori.emplace_back(esercizio);
  }
  return valori;
}

} // namespace

std::int32_t CercaAziendaLinea(ado::Connection& connection, std::string_view codiceAzienda, std::string_view linea,
                               std::string_view sottolinea) {
  return Cerca(connection,
               "SELECT AZIENDALINEAKEY FROM AZIENDELINEE WHERE "
               "CODICEAZIENDA=? AND LINEA=? AND SOTTOLINEA=?",
               {std::string(codiceAzienda), std::string(linea), std::string(sottolinea)}, "AZIENDALINEAKEY",
               "AZIENDA INESISTENTE");
}

std::int32_t CercaMovimento(ado::Connection& connection, std::string_view aziendaLineaKey,
                            std::string_view tipoMovimento, std::string_view esercizio, std::string_view serie,
                            std::string_view numero) {
  ado::Command comando = ComandoMovimento(connection, Movimenti, esercizio);
  return CercaMovimento(comando, ValoriMovimento(aziendaLineaKey, tipoMovimento, esercizio, serie, numero));
}

std::size_t ContaMovimenti(ado::Connection& connection, std::string_view tabella, std::string_view aziendaLineaKey,
                           std::string_view tipoMovimento, std::string_view esercizio, std::string_view serie,
                           std::string_view numero) {
  ado::Command comando = ComandoMovimento(connection, tabella, esercizio);
  comando.Parameters = ValoriMovimento(aziendaLineaKey, tipoMovimento, esercizio, serie, numero);
  return comando.Execute().RecordCount();
}

RicercaMovimenti::RicercaMovimenti(ado::Connection& connection, std::string_view aziendaLineaKey,
                                   std::string_view tipoMovimento)
    : comando_(moduloDatabase::CreaComando(connection, MovimentoDiOgniAnno())), aziendaLineaKey_(aziendaLineaKey),
      tipoMovimento_(tipoMovimento) {}

std::int32_t RicercaMovimenti::Cerca(std::string_view serie, std::string_view numero) {
  std::string documento(serie);
  documento.append(1, '\0').append(numero);
  if (const auto nota = chiavi_.find(documento); nota != chiavi_.end()) {
    return nota->second;
  }
  const auto chiave =
      CercaMovimento(comando_, {aziendaLineaKey_, tipoMovimento_, std::string(serie), std::string(numero)});
  chiavi_.emplace(std::move(documento), chiave);
  return chiave;
}

std::int32_t CercaContoContabile(ado::Connection& connection, std::string_view codiceConto) {
  ado::Command comando = moduloDatabase::CreaComando(connection, ContoPerCodice);
  comando.sentOnce = true;
  return CercaConto(comando, codiceConto);
}

RicercaConti::RicercaConti(ado::Connection& connection)
    : comando_(moduloDatabase::CreaComando(connection, ContoPerCodice)) {}

std::int32_t RicercaConti::Cerca(std::string_view codiceConto) {
  return CercaConto(comando_, codiceConto);
}

std::int32_t CercaPartitaContabile(ado::Connection& connection, std::string_view contoContabileKey,
                                   std::string_view numeroPartita) {
  return Cerca(connection,
               "SELECT PARTITACONTABILEKEY FROM PARTITACONTABILE WHERE "
               "CONTOCONTABILE_KEY=? AND NUMEROPARTITA=?",
               {std::string(contoContabileKey), std::string(numeroPartita)}, "PARTITACONTABILEKEY",
               "PARTITA CONTABILE INESISTENTE");
}

std::string DescrizioneConto(std::string_view codiceConto, MsgAnnulla& msg) {
  try {
    const auto connection = moduloDatabase::ApriConnessione(moduloDatabase::LeggiParametriDB2(stato().ComandoCorrente));
    ado::Command comando = moduloDatabase::CreaComando(*connection, "SELECT DESCRIZIONEVOCE FROM CONTOCONTABILE WHERE "
                                                                    "CODICECONTO=?");
    comando.sentOnce = true;
    comando.Parameters = {std::string(codiceConto)};
    ado::Recordset righe = comando.Execute();
    if (righe.RecordCount() != 1) {
      throw RuntimeError(errors::SearchFailed, "", "CONTO CONTABILE INESISTENTE");
    }
    return std::string(righe.Fields("DESCRIZIONEVOCE").Value().value_or(""));
  } catch (...) {
    msg.Errore = moduloDatabase::TestoErrore(CurrentError());
    return "error";
  }
}

} // namespace lumoscad::db2Searches
