#include "common/Testo.hpp"
#include "database/Aggiornamento.hpp"
#include "database/moduloDatabase.hpp"
#include "database/procedureLumoDB2.hpp"

namespace lumoscad::procedureLumoDB2 {
namespace {

/// The changes of one list being written.
class Canalizzazione {
 public:
  explicit Canalizzazione(Aggiornamento& aggiornamento) : aggiornamento_(aggiornamento) {}

  void ApplicaScadenza(const VariazioneCanalizzazione& variazione) {
    if (!variazione.isBancaChanged && !variazione.isScadenzaChanged) {
      return;
    }
    CercaBanche(variazione);
    for (const std::string& istruzione : Istruzioni(variazione)) {
      aggiornamento_.Esegui(istruzione);
    }
  }

  void ApplicaPresunto(const VariazioneCanalizzazione& variazione) {
    if (!variazione.isBancaChanged) {
      return;
    }
    CercaBanche(variazione);
    std::string sql = "UPDATE EVENTOCONTABILE SET BANCAPRESENTAZIONE_KEY=" + ValoreChiave(nuovaBanca_);
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
    aggiornamento_.Esegui(sql, std::move(chiavi));
  }

 private:
  /// Finds the keys of both banks; an empty key stands for no bank.
  void CercaBanche(const VariazioneCanalizzazione& variazione) {
    vecchiaBanca_ = aggiornamento_.ChiaveBanca(variazione.VecchiaBanca);
    nuovaBanca_ = variazione.isBancaChanged ? aggiornamento_.ChiaveBanca(variazione.NuovaBanca) : std::string();
  }

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
    ado::Recordset righe = aggiornamento_.Esegui(Selezione(variazione), {variazione.idPartitaKey});
    std::string assegna = "UPDATE EVENTOCONTABILE SET ";
    if (variazione.isScadenzaChanged) {
      assegna += SenzaValore(variazione.NuovaScadenza) ? "DATASCADENZA=NULL "
                                                       : "DATASCADENZA='" + DataIso(variazione.NuovaScadenza) + "' ";
    }
    if (variazione.isScadenzaChanged && variazione.isBancaChanged) {
      assegna += ",";
    }
    if (variazione.isBancaChanged) {
      assegna += "BANCAPRESENTAZIONE_KEY=" + ValoreChiave(nuovaBanca_);
    }
    std::vector<std::string> istruzioni;
    for (; !righe.Eof(); righe.MoveNext()) {
      istruzioni.push_back(
          assegna + "WHERE EVENTOCONTABILEKEY=" + std::string(righe.Fields("EVENTOCONTABILEKEY").Value().value_or("")));
    }
    moduloDatabase::ChiudiRecordset(righe);
    return istruzioni;
  }

  Aggiornamento& aggiornamento_;
  std::string vecchiaBanca_;
  std::string nuovaBanca_;
};

} // namespace

std::string AggiornaCanalizzazione(const VariazioniCanalizzazione& variazioni, MsgAnnulla& msg,
                                   std::string_view parModalita) {
  return ApplicaVariazioni(variazioni, msg,
                           [&](Aggiornamento& aggiornamento, const VariazioneCanalizzazione& variazione) {
                             if (parModalita == "PRESUNTI") {
                               Canalizzazione(aggiornamento).ApplicaPresunto(variazione);
                             } else if (parModalita == "CREDITI" || parModalita == "DEBITI") {
                               Canalizzazione(aggiornamento).ApplicaScadenza(variazione);
                             }
                           });
}

} // namespace lumoscad::procedureLumoDB2
