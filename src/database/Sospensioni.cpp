#include "common/Testo.hpp"
#include "database/ProceduraDB2.hpp"
#include "database/db2Searches.hpp"
#include "database/procedureLumoDB2.hpp"

namespace lumoscad::procedureLumoDB2 {
namespace {

/// A document's number in the database is its number followed by the two digits of its year.
std::string NumeroConAnno(const std::string& numero, const std::string& anno) {
  return numero + (anno.size() == 4 ? anno.substr(2) : anno);
}

/// Sets `SOSPESA` of every event that `sql` selects by its one key.
void ScriviSospesa(ado::Connection& connection, std::string_view sql, std::int32_t chiave, std::string_view flag) {
  PerOgniEvento(connection, sql, chiave, [flag](ado::Recordset& righe) {
    righe.Fields("SOSPESA").SetValue(flag);
    righe.Update();
  });
}

void Cancella(ado::Connection& connection, const std::string& sql, std::int32_t chiave) {
  ado::Command comando = moduloDatabase::CreaComando(connection, sql);
  comando.Parameters = {std::to_string(chiave)};
  comando.Execute();
}

} // namespace

std::string SospendiMovimento(const std::vector<std::string>& parametri, std::string_view flag, MsgAnnulla& msg) {
  return Procedura(msg, [&](ado::Connection& connection, const auto&) {
    const auto azienda = db2Searches::CercaAziendaLinea(connection, Elemento(parametri, 0), " ", " ");
    const auto movimento =
        db2Searches::CercaMovimento(connection, std::to_string(azienda), "N", Nullo, Elemento(parametri, 2),
                                    NumeroConAnno(Elemento(parametri, 4), Elemento(parametri, 3)));
    ScriviSospesa(connection,
                  "SELECT EVENTOCONTABILEKEY,SOSPESA FROM EVENTOCONTABILE WHERE "
                  "MOVIMENTOKEY=? AND TIPOEVENTO='P'",
                  movimento, flag);
  });
}

std::string SospendiPartita(const std::vector<std::string>& parametri, std::string_view flag, MsgAnnulla& msg) {
  return Procedura(msg, [&](ado::Connection& connection, const auto&) {
    const auto conto = db2Searches::CercaContoContabile(connection, Elemento(parametri, 2));
    const auto partita = db2Searches::CercaPartitaContabile(connection, std::to_string(conto), Elemento(parametri, 3));
    ScriviSospesa(connection,
                  "SELECT EVENTOCONTABILEKEY,SOSPESA FROM EVENTOCONTABILE WHERE "
                  "PARTITACONTABILEKEY=? AND TIPOEVENTO='C'",
                  partita, flag);
  });
}

std::string CancellaMovimentoExtra(const std::vector<std::string>& parametri, MsgAnnulla& msg) {
  return Procedura(msg, [&](ado::Connection& connection, const moduloDatabase::ParametriConnessione& connessione) {
    const auto movimento = MovimentoExtra(connection, parametri);
    moduloDatabase::Transazione transazione(connection);
    Cancella(connection,
             "DELETE FROM EVENTOCONTABILE WHERE "
             "MOVIMENTOKEY=?",
             movimento);
    Cancella(connection, "DELETE FROM " + connessione.Schema + ".MOVIMENTOCONTABILE WHERE " + "MOVIMENTOKEY=?",
             movimento);
    transazione.Conferma();
  });
}

} // namespace lumoscad::procedureLumoDB2
