#include "database/Aggiornamento.hpp"
#include "database/RigheDelRecord.hpp"
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
    const RigheScadenza righe = CercaRigheScadenza(aggiornamento_, variazione);
    const std::string selezione = "SELECT * FROM " + righe.Colpite();
    const std::vector<std::string> eventi = Eventi(selezione, righe.Valori());
    const std::string assegna = "UPDATE EVENTOCONTABILE SET " + righe.Assegna();
    Modifica modifica;
    modifica.Aggiungi(variazione.idPartitaKey);
    modifica.Aggiungi(selezione);
    modifica.Aggiungi(assegna);
    if (eventi.empty()) {
      return aggiornamento_.Fatta(modifica) || aggiornamento_.GiaCosi(righe.Tutte(), righe.Valori(), righe.ComeNuove());
    }
    bool fatto = true;
    std::vector<std::string> scritti;
    for (const std::string& evento : eventi) {
      fatto = ApplicaEvento(righe, assegna, evento, scritti) && fatto;
    }
    if (!scritti.empty()) {
      aggiornamento_.Annota([scritti = std::move(scritti), righe](ado::Connection& connection) {
        return RiscontroDiEventi(connection, scritti, righe.ComeNuove(), righe.ComeVecchie());
      });
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
    const RighePresunto righe = CercaRighePresunto(aggiornamento_, variazione);
    return CambiaORimane(aggiornamento_, righe);
  }

 private:
  /// Returns false for an event that somebody changed between the selection and this statement; puts it into `scritti`
  /// where this statement altered it.
  bool ApplicaEvento(const RigheScadenza& righe, const std::string& assegna, const std::string& evento,
                     std::vector<std::string>& scritti) {
    const std::string chiave = "EVENTOCONTABILEKEY=" + evento;
    if (aggiornamento_.Esegui(assegna + "WHERE " + chiave) != 0) {
      scritti.push_back(evento);
      return true;
    }
    if (aggiornamento_.GiaCosi("EVENTOCONTABILE WHERE " + chiave + " ", {}, righe.ComeNuove())) {
      return true;
    }
    aggiornamento_.RifiutaScarto(chiave + " AND " + righe.ComeVecchie());
    return false;
  }

  /// The keys of the instalments that the record's grid row stands for: all are read before the first is changed.
  std::vector<std::string> Eventi(const std::string& selezione, std::vector<std::string> valori) {
    ado::Recordset righe = aggiornamento_.Leggi(selezione, std::move(valori), std::string(ChiaveEvento));
    std::vector<std::string> eventi;
    for (; !righe.Eof(); righe.MoveNext()) {
      eventi.emplace_back(righe.Fields(ChiaveEvento).Value().value_or(""));
    }
    moduloDatabase::ChiudiRecordset(righe);
    return eventi;
  }

  static constexpr std::string_view ChiaveEvento = "EVENTOCONTABILEKEY";

  Aggiornamento& aggiornamento_;
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
