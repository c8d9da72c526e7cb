#include "common/Testo.hpp"
#include "database/EsameAzioni.hpp"
#include "database/ProceduraDB2.hpp"
#include "database/db2Searches.hpp"
#include "database/procedureLumoDB2.hpp"

namespace lumoscad::procedureLumoDB2 {
namespace {

/// A document's number in the database is its number followed by the two digits of its year.
std::string NumeroConAnno(const std::string& numero, const std::string& anno) {
  return numero + (anno.size() == 4 ? anno.substr(2) : anno);
}

EventiScelti EventiDelDocumento(ado::Connection& connection, const std::vector<std::string>& parametri) {
  const auto azienda = db2Searches::CercaAziendaLinea(connection, Elemento(parametri, 0), " ", " ");
  const auto movimento =
      db2Searches::CercaMovimento(connection, std::to_string(azienda), "N", Nullo, Elemento(parametri, 2),
                                  NumeroConAnno(Elemento(parametri, 4), Elemento(parametri, 3)));
  return {"SELECT EVENTOCONTABILEKEY,SOSPESA FROM EVENTOCONTABILE WHERE "
          "MOVIMENTOKEY=? AND TIPOEVENTO='P'",
          movimento};
}

EventiScelti RateDellaPartita(ado::Connection& connection, const std::vector<std::string>& parametri) {
  return {"SELECT EVENTOCONTABILEKEY,SOSPESA FROM EVENTOCONTABILE WHERE "
          "PARTITACONTABILEKEY=? AND TIPOEVENTO='C'",
          ChiavePartita(connection, parametri)};
}

StatoRiga StatoSospensione(ado::Connection& connection, const EventiScelti& scelti, std::string_view flag) {
  ado::Recordset righe = LeggiEventi(connection, scelti);
  if (righe.Eof()) {
    return StatoRiga::Cambiata;
  }
  for (; !righe.Eof(); righe.MoveNext()) {
    if (SenzaSpaziAiLati(righe.Fields("SOSPESA").Value().value_or("")) != flag) {
      return StatoRiga::ComePrima;
    }
  }
  return StatoRiga::Fatta;
}

/// Sets `SOSPESA` of every event chosen.
void ScriviSospesa(moduloDatabase::Lavoro& lavoro, ado::Connection& connection, const EventiScelti& scelti,
                   std::string_view flag) {
  PerOgniEvento(lavoro, connection, scelti, [flag](ado::Recordset& righe) {
    const auto prima = righe.Fields("SOSPESA").Value();
    Alterazione alterazione;
    if (SenzaSpaziAiLati(prima.value_or("")) != flag) {
      alterazione = {UgualeTesto("SOSPESA", flag), UgualeTesto("SOSPESA", prima)};
    }
    righe.Fields("SOSPESA").SetValue(flag);
    righe.Update();
    return alterazione;
  });
}

/// The one table that is named with its schema.
std::string TabellaMovimenti(std::string_view schema) {
  return std::string(schema) + ".MOVIMENTOCONTABILE";
}

/// A movement that was there is gone, or it is not.
TransactionOutcome RiscontroDiCancellazione(ado::Connection& connection, const std::string& tabella,
                                            std::int32_t movimento) {
  ado::Command comando =
      moduloDatabase::CreaComando(connection, "SELECT MOVIMENTOKEY FROM " + tabella + " WHERE MOVIMENTOKEY=?");
  comando.sentOnce = true;
  comando.Parameters = {std::to_string(movimento)};
  return comando.Execute().RecordCount() == 0 ? TransactionOutcome::Applied : TransactionOutcome::NotApplied;
}

void Cancella(ado::Connection& connection, const std::string& sql, std::int32_t chiave) {
  ado::Command comando = moduloDatabase::CreaComando(connection, sql);
  comando.Parameters = {std::to_string(chiave)};
  comando.Execute();
}

} // namespace

std::string SospendiMovimento(const std::vector<std::string>& parametri, std::string_view flag, MsgAnnulla& msg) {
  return Procedura(msg, [&](moduloDatabase::Lavoro& lavoro, ado::Connection& connection, const auto&) {
    ScriviSospesa(lavoro, connection, EventiDelDocumento(connection, parametri), flag);
  });
}

StatoRiga EsaminaSospensioneMovimento(ado::Connection& connection, const std::vector<std::string>& parametri,
                                      std::string_view flag) {
  return StatoSospensione(connection, EventiDelDocumento(connection, parametri), flag);
}

std::string SospendiPartita(const std::vector<std::string>& parametri, std::string_view flag, MsgAnnulla& msg) {
  return Procedura(msg, [&](moduloDatabase::Lavoro& lavoro, ado::Connection& connection, const auto&) {
    ScriviSospesa(lavoro, connection, RateDellaPartita(connection, parametri), flag);
  });
}

StatoRiga EsaminaSospensionePartita(ado::Connection& connection, const std::vector<std::string>& parametri,
                                    std::string_view flag) {
  return StatoSospensione(connection, RateDellaPartita(connection, parametri), flag);
}

std::string CancellaMovimentoExtra(const std::vector<std::string>& parametri, MsgAnnulla& msg) {
  return Procedura(msg, [&](moduloDatabase::Lavoro& lavoro, ado::Connection& connection,
                            const moduloDatabase::ParametriConnessione& connessione) {
    const std::string movimenti = TabellaMovimenti(connessione.Schema);
    const auto movimento = MovimentoExtra(connection, parametri);
    moduloDatabase::Transazione transazione(connection);
    Cancella(connection,
             "DELETE FROM EVENTOCONTABILE WHERE "
             "MOVIMENTOKEY=?",
             movimento);
    Cancella(connection, "DELETE FROM " + movimenti + " WHERE " + "MOVIMENTOKEY=?", movimento);
    lavoro.Annota([movimenti, movimento](ado::Connection& nuova) {
      return std::optional(RiscontroDiCancellazione(nuova, movimenti, movimento));
    });
    lavoro.Conferma(transazione);
  });
}

StatoRiga EsaminaCancellazione(ado::Connection& connection, const std::vector<std::string>& parametri,
                               std::string_view schema) {
  const auto azienda = db2Searches::CercaAziendaLinea(connection, Elemento(parametri, 0), " ", " ");
  const std::size_t quanti =
      db2Searches::ContaMovimenti(connection, TabellaMovimenti(schema), std::to_string(azienda), "X",
                                  Elemento(parametri, 3), Elemento(parametri, 2), Elemento(parametri, 4));
  return quanti == 0 ? StatoRiga::Fatta : quanti == 1 ? StatoRiga::ComePrima : StatoRiga::Cambiata;
}

} // namespace lumoscad::procedureLumoDB2
