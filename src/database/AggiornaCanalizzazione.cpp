#include "common/Stato.hpp"
#include "common/Testo.hpp"
#include "common/Utilities.hpp"
#include "database/db2Searches.hpp"
#include "database/moduloDatabase.hpp"
#include "database/procedureLumoDB2.hpp"
#include "platform/Errore.hpp"

namespace lumoscad::procedureLumoDB2 {
namespace {

/// The database form of a record's date. A text that is neither "DD/MM/YYYY" nor a missing value must never reach
/// a statement, where some databases would store it.
std::string DataIso(const std::string& data) {
  std::string iso = Utilities::DataIsoDaTesto(data);
  if (iso.empty()) {
    throw ErroreRuntime(errori::TipoNonCorrispondente, "Data non valida: " + data);
  }
  return iso;
}

/// "colonna='date' ", or "colonna IS NULL " for a missing date.
std::string UgualeData(const std::string& colonna, const std::string& data) {
  return SenzaValore(data) ? colonna + " IS NULL " : colonna + "='" + DataIso(data) + "' ";
}

/// "colonna=key ", or "colonna IS NULL " for a missing key.
std::string UgualeChiave(const std::string& colonna, const std::string& chiave) {
  return chiave.empty() ? colonna + " IS NULL " : colonna + "=" + chiave + " ";
}

/// One confirmation being written: the connection, and the statements of the current record for its error text.
class Aggiornamento {
 public:
  explicit Aggiornamento(ado::Connection& connection) : connection_(&connection) {}

  [[nodiscard]] const std::string& Istruzioni() const noexcept { return istruzioni_; }

  void ApplicaScadenza(const VariazioneCanalizzazione& variazione) {
    istruzioni_.clear();
    if (!variazione.isBancaChanged && !variazione.isScadenzaChanged) {
      return;
    }
    CercaBanche(variazione);
    for (const std::string& istruzione : Istruzioni(variazione)) {
      Annota(istruzione);
      connection_->Execute(istruzione);
    }
  }

  void ApplicaPresunto(const VariazioneCanalizzazione& variazione) {
    istruzioni_.clear();
    if (!variazione.isBancaChanged) {
      return;
    }
    CercaBanche(variazione);
    std::string sql = "UPDATE EVENTOCONTABILE SET BANCAPRESENTAZIONE_KEY=" + ValoreNuovaBanca();
    sql += "WHERE " + UgualeData("DATASCADENZA", variazione.VecchiaScadenza);
    sql += "AND " + UgualeChiave("BANCAPRESENTAZIONE_KEY", vecchiaBanca_);
    sql += "AND EVENTOCONTABILE.SOSPESA='N' ";
    std::vector<std::string> chiavi;
    if (!SenzaValore(variazione.idMovimentoKey)) {
      sql += "AND MOVIMENTOKEY=?";
      chiavi.push_back(variazione.idMovimentoKey);
    } else if (!SenzaValore(variazione.idPartitaKey)) {
      sql += "AND PARTITACONTABILEKEY=?";
      chiavi.push_back(variazione.idPartitaKey);
    } else {
      // A record without either key changes nothing, and that is no failure.
      sql += "AND EVENTOCONTABILEKEY=-1 AND PARTITACONTABILEKEY=-1";
    }
    Annota(sql);
    ado::Command comando = moduloDatabase::CreaComando(*connection_, sql);
    comando.Parameters = std::move(chiavi);
    comando.Execute();
  }

 private:
  /// Finds the keys of both banks; an empty key stands for no bank.
  void CercaBanche(const VariazioneCanalizzazione& variazione) {
    vecchiaBanca_ = ChiaveBanca(variazione.VecchiaBanca);
    nuovaBanca_ = variazione.isBancaChanged ? ChiaveBanca(variazione.NuovaBanca) : std::string();
  }

  std::string ChiaveBanca(const std::string& codice) {
    return SenzaValore(codice) ? std::string() : std::to_string(db2Searches::CercaContoContabile(*connection_, codice));
  }

  [[nodiscard]] std::string ValoreNuovaBanca() const { return (nuovaBanca_.empty() ? "NULL" : nuovaBanca_) + " "; }

  std::string Selezione(const VariazioneCanalizzazione& variazione) const {
    return "SELECT * FROM MOVIMENTOCONTABILE RIGHT JOIN EVENTOCONTABILE ON MOVIMENTOCONTABILE.MOVIMENTOKEY = "
           "EVENTOCONTABILE.MOVIMENTOKEY "
           "WHERE (MOVIMENTOCONTABILE.TIPOMOVIMENTO='N') "
           "AND EVENTOCONTABILE.SOSPESA='N' "
           "AND EVENTOCONTABILE.TIPOEVENTO='C' "
           "AND EVENTOCONTABILE.PARTITACONTABILEKEY=? "
           "AND " +
           UgualeData("EVENTOCONTABILE.DATASCADENZA", variazione.VecchiaScadenza) +
           "AND EVENTOCONTABILE.NUMERORATA=" + variazione.NumeroRata + " " + "AND " +
           UgualeChiave("EVENTOCONTABILE.BANCAPRESENTAZIONE_KEY", vecchiaBanca_) + "AND " +
           UgualeData("EVENTOCONTABILE.DATASCADENZAORIGINALE", variazione.ScadenzaOriginale);
  }

  /// The updates of the instalments that the record's grid row stands for: all are built before the first is sent.
  std::vector<std::string> Istruzioni(const VariazioneCanalizzazione& variazione) {
    ado::Command comando = moduloDatabase::CreaComando(*connection_, Selezione(variazione));
    comando.Parameters = {variazione.idPartitaKey};
    Annota(comando.CommandText);
    ado::Recordset righe = comando.Execute();
    std::string assegna = "UPDATE EVENTOCONTABILE SET ";
    if (variazione.isScadenzaChanged) {
      assegna += SenzaValore(variazione.NuovaScadenza) ? "DATASCADENZA=NULL "
                                                       : "DATASCADENZA='" + DataIso(variazione.NuovaScadenza) + "' ";
    }
    if (variazione.isScadenzaChanged && variazione.isBancaChanged) {
      assegna += ",";
    }
    if (variazione.isBancaChanged) {
      assegna += "BANCAPRESENTAZIONE_KEY=" + ValoreNuovaBanca();
    }
    std::vector<std::string> istruzioni;
    for (; !righe.Eof(); righe.MoveNext()) {
      istruzioni.push_back(
          assegna + "WHERE EVENTOCONTABILEKEY=" + std::string(righe.Fields("EVENTOCONTABILEKEY").Value().value_or("")));
    }
    moduloDatabase::ChiudiRecordset(righe);
    return istruzioni;
  }

  void Annota(const std::string& istruzione) { istruzioni_ += "\r\n" + istruzione; }

  ado::Connection* connection_;
  std::string istruzioni_;
  std::string vecchiaBanca_;
  std::string nuovaBanca_;
};

} // namespace

std::string AggiornaCanalizzazione(const VariazioniCanalizzazione& variazioni, std::string_view parModalita,
                                   MsgAnnulla& msg) {
  if (variazioni.empty()) {
    return "";
  }
  std::string istruzioni;
  try {
    const auto connection = moduloDatabase::ApriConnessione(moduloDatabase::LeggiParametriDB2(stato().ComandoCorrente));
    moduloDatabase::Transazione transazione(*connection);
    Aggiornamento aggiornamento(*connection);
    try {
      for (const VariazioneCanalizzazione& variazione : variazioni) {
        if (parModalita == "PRESUNTI") {
          aggiornamento.ApplicaPresunto(variazione);
        } else if (parModalita == "CREDITI" || parModalita == "DEBITI") {
          aggiornamento.ApplicaScadenza(variazione);
        }
      }
      transazione.Conferma();
    } catch (...) {
      istruzioni = aggiornamento.Istruzioni();
      throw;
    }
    return "";
  } catch (...) {
    msg.Errore = moduloDatabase::TestoErrore(ErroreCorrente()) + "\r\n" + istruzioni;
    return "error";
  }
}

} // namespace lumoscad::procedureLumoDB2
