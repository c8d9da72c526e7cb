#include "common/Testo.hpp"
#include "database/Aggiornamento.hpp"
#include "database/moduloDatabase.hpp"
#include "database/procedureLumoDB2.hpp"

#include <string>
#include <utility>
#include <vector>

namespace lumoscad::procedureLumoDB2 {
namespace {

/// The changes of one list being written.
class Canalizzazione {
 public:
  explicit Canalizzazione(Aggiornamento& aggiornamento) : aggiornamento_(aggiornamento) {}

  /// Returns false when the record's rows were left as somebody else had changed them.
  bool ApplicaScadenza(const VariazioneCanalizzazione& variazione) {
    if (!variazione.isBancaChanged && !variazione.isScadenzaChanged) {
      return true;
    }
    CercaBanche(variazione);
    const std::string selezione = Selezione(variazione);
    const std::vector<std::string> eventi = Eventi(variazione, selezione);
    const std::string assegna = "UPDATE EVENTOCONTABILE SET " + Nuovi(variazione);
    Modifica modifica;
    modifica.Aggiungi(variazione.idPartitaKey);
    modifica.Aggiungi(selezione);
    modifica.Aggiungi(assegna);
    if (eventi.empty()) {
      return aggiornamento_.Fatta(modifica) ||
             aggiornamento_.GiaCosi(Rata(variazione), {variazione.idPartitaKey}, ComeNuovi(variazione));
    }
    bool fatto = true;
    for (const std::string& evento : eventi) {
      fatto = ApplicaEvento(variazione, assegna, evento) && fatto;
    }
    if (fatto) {
      aggiornamento_.SegnaFatta(std::move(modifica));
    }
    return fatto;
  }

  /// Returns as above.
  bool ApplicaPresunto(const VariazioneCanalizzazione& variazione) {
    if (!variazione.isBancaChanged) {
      return true;
    }
    CercaBanche(variazione);
    const bool senzaMovimento = SenzaValore(variazione.idMovimentoKey);
    const bool senzaChiavi = senzaMovimento && SenzaValore(variazione.idPartitaKey);
    std::string chiave = senzaMovimento ? "AND PARTITACONTABILEKEY=?" : "AND MOVIMENTOKEY=?";
    std::vector<std::string> valori = {senzaMovimento ? variazione.idPartitaKey : variazione.idMovimentoKey};
    if (senzaChiavi) {
      // A record without either key changes nothing, and that is no failure.
      chiave = "AND EVENTOCONTABILEKEY=-1 AND PARTITACONTABILEKEY=-1";
      valori.clear();
    }
    const std::string scadenza = "WHERE " + UgualeData("DATASCADENZA", variazione.VecchiaScadenza);
    const bool cambiate = aggiornamento_.Cambia(
        "UPDATE EVENTOCONTABILE SET BANCAPRESENTAZIONE_KEY=" + ValoreChiave(nuovaBanca_) + scadenza + "AND " +
            UgualeChiave("BANCAPRESENTAZIONE_KEY", vecchiaBanca_) + "AND EVENTOCONTABILE.SOSPESA='N' " + chiave,
        valori);
    return cambiate || senzaChiavi ||
           aggiornamento_.GiaCosi("EVENTOCONTABILE " + scadenza + chiave + " ", valori,
                                  UgualeChiave("BANCAPRESENTAZIONE_KEY", nuovaBanca_));
  }

 private:
  /// Returns false for an event that somebody changed between the selection and this statement.
  bool ApplicaEvento(const VariazioneCanalizzazione& variazione, const std::string& assegna,
                     const std::string& evento) {
    const std::string chiave = "EVENTOCONTABILEKEY=" + evento;
    if (aggiornamento_.Esegui(assegna + "WHERE " + chiave) != 0 ||
        aggiornamento_.GiaCosi("EVENTOCONTABILE WHERE " + chiave + " ", {}, ComeNuovi(variazione))) {
      return true;
    }
    aggiornamento_.RifiutaScarto(chiave + " AND " + ComeVecchi(variazione));
    return false;
  }

  /// Finds the keys of both banks; an empty key stands for no bank.
  void CercaBanche(const VariazioneCanalizzazione& variazione) {
    vecchiaBanca_ = aggiornamento_.ChiaveBanca(variazione.VecchiaBanca);
    nuovaBanca_ = variazione.isBancaChanged ? aggiornamento_.ChiaveBanca(variazione.NuovaBanca) : std::string();
  }

  static std::string Numero(const VariazioneCanalizzazione& variazione) {
    return "AND " + UgualeChiave("EVENTOCONTABILE.NUMERORATA", variazione.NumeroRata);
  }

  static std::string Originale(const VariazioneCanalizzazione& variazione) {
    return "AND " + UgualeData("EVENTOCONTABILE.DATASCADENZAORIGINALE", variazione.ScadenzaOriginale);
  }

  std::string Selezione(const VariazioneCanalizzazione& variazione) const {
    constexpr std::size_t LunghezzaUsuale = 640; // bytes
    std::string testo;
    testo.reserve(LunghezzaUsuale);
    testo.append("SELECT * FROM ").append(Tabelle);
    testo.append("WHERE (MOVIMENTOCONTABILE.TIPOMOVIMENTO='N') "
                 "AND EVENTOCONTABILE.SOSPESA='N' "
                 "AND EVENTOCONTABILE.TIPOEVENTO='C' "
                 "AND EVENTOCONTABILE.PARTITACONTABILEKEY=? "
                 "AND ");
    testo.append(UgualeData("EVENTOCONTABILE.DATASCADENZA", variazione.VecchiaScadenza)).append(Numero(variazione));
    testo.append("AND ").append(UgualeChiave("EVENTOCONTABILE.BANCAPRESENTAZIONE_KEY", vecchiaBanca_));
    testo.append(Originale(variazione));
    return testo;
  }

  /// The same instalment whatever its due date and bank are now.
  static std::string Rata(const VariazioneCanalizzazione& variazione) {
    return std::string(Tabelle) +
           "WHERE MOVIMENTOCONTABILE.TIPOMOVIMENTO='N' AND EVENTOCONTABILE.TIPOEVENTO='C' "
           "AND EVENTOCONTABILE.PARTITACONTABILEKEY=? " +
           Numero(variazione) + Originale(variazione);
  }

  /// The keys of the instalments that the record's grid row stands for: all are read before the first is changed.
  std::vector<std::string> Eventi(const VariazioneCanalizzazione& variazione, const std::string& selezione) {
    ado::Recordset righe = aggiornamento_.Leggi(selezione, {variazione.idPartitaKey}, std::string(ChiaveEvento));
    std::vector<std::string> eventi;
    for (; !righe.Eof(); righe.MoveNext()) {
      eventi.emplace_back(righe.Fields(ChiaveEvento).Value().value_or(""));
    }
    moduloDatabase::ChiudiRecordset(righe);
    return eventi;
  }

  /// The new values as assignments.
  std::string Nuovi(const VariazioneCanalizzazione& variazione) const {
    std::string assegna;
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
    return assegna;
  }

  /// The new values as a condition.
  std::string ComeNuovi(const VariazioneCanalizzazione& variazione) const {
    return Come(variazione, variazione.NuovaScadenza, nuovaBanca_);
  }

  /// The old values of what changes, as a condition.
  std::string ComeVecchi(const VariazioneCanalizzazione& variazione) const {
    return Come(variazione, variazione.VecchiaScadenza, vecchiaBanca_);
  }

  static std::string Come(const VariazioneCanalizzazione& variazione, const std::string& scadenza,
                          const std::string& banca) {
    std::string condizione;
    if (variazione.isScadenzaChanged) {
      condizione = UgualeData("EVENTOCONTABILE.DATASCADENZA", scadenza);
    }
    if (variazione.isBancaChanged) {
      condizione += condizione.empty() ? "" : "AND ";
      condizione += UgualeChiave("EVENTOCONTABILE.BANCAPRESENTAZIONE_KEY", banca);
    }
    return condizione;
  }

  static constexpr std::string_view ChiaveEvento = "EVENTOCONTABILEKEY";
  static constexpr std::string_view Tabelle = "MOVIMENTOCONTABILE RIGHT JOIN EVENTOCONTABILE ON "
                                              "MOVIMENTOCONTABILE.MOVIMENTOKEY = EVENTOCONTABILE.MOVIMENTOKEY ";

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
                               return Canalizzazione(aggiornamento).ApplicaPresunto(variazione);
                             }
                             return (parModalita != "CREDITI" && parModalita != "DEBITI") ||
                                    Canalizzazione(aggiornamento).ApplicaScadenza(variazione);
                           });
}

} // namespace lumoscad::procedureLumoDB2
