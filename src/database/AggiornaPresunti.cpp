#include "common/Testo.hpp"
#include "database/Aggiornamento.hpp"
#include "database/procedureLumoDB2.hpp"

namespace lumoscad::procedureLumoDB2 {
namespace {

void ApplicaBanca(Aggiornamento& aggiornamento, const VariazioneConsegna& variazione) {
  if (!variazione.isBancaChanged) {
    return;
  }
  const std::string vecchia = aggiornamento.ChiaveBanca(variazione.VecchiaBanca);
  const std::string nuova = aggiornamento.ChiaveBanca(variazione.NuovaBanca);
  const std::string conto = aggiornamento.ChiaveConto(variazione.CodiceConto);
  aggiornamento.Esegui("UPDATE EVENTOCONTABILE SET BANCAPRESENTAZIONE_KEY=" + ValoreChiave(nuova) +
                           "WHERE MOVIMENTOKEY=? AND CONTOCONTABILE_KEY= " + conto + " " + "AND " +
                           UgualeChiave("BANCAPRESENTAZIONE_KEY", vecchia) + "AND EVENTOCONTABILE.SOSPESA='N' ",
                       {std::to_string(variazione.idMovimentoKey)});
}

void ApplicaConsegna(Aggiornamento& aggiornamento, const VariazioneConsegna& variazione) {
  const std::string nuova =
      SenzaValore(variazione.NuovaConsegna) ? "NULL" : "'" + DataIso(variazione.NuovaConsegna) + "'";
  const std::string attuale = SenzaValore(variazione.Consegna)
                                  ? "AND DATACONSEGNA IS NULL "
                                  : "AND DATACONSEGNA= '" + DataIso(variazione.Consegna) + "' ";
  const std::string ordine =
      SenzaValore(variazione.idOrdineKey) ? std::to_string(variazione.idMovimentoKey) : variazione.idOrdineKey;
  aggiornamento.Esegui("UPDATE EVENTOCONTABILE SET DATACONSEGNA= " + nuova +
                           ",  "
                           "TITOLOIVA= ' ' "
                           "WHERE MOVIMENTOKEY=? " +
                           attuale + "AND EVENTOCONTABILE.SOSPESA='N' ",
                       {ordine});
}

/// Applies a list of presumed documents; lists of any other kind change nothing.
template <typename Applica>
std::string ApplicaPresunti(const VariazioniConsegna& variazioni, std::string_view parModalita, MsgAnnulla& msg,
                            Applica applica) {
  return ApplicaVariazioni(variazioni, msg, [&](Aggiornamento& aggiornamento, const VariazioneConsegna& variazione) {
    if (parModalita == "PRESUNTI") {
      applica(aggiornamento, variazione);
    }
  });
}

} // namespace

std::string AggiornaBancaPresunti(const VariazioniConsegna& variazioni, MsgAnnulla& msg, std::string_view parModalita) {
  return ApplicaPresunti(variazioni, parModalita, msg, ApplicaBanca);
}

std::string AggiornaConsegna(const VariazioniConsegna& variazioni, MsgAnnulla& msg, std::string_view parModalita) {
  return ApplicaPresunti(variazioni, parModalita, msg, ApplicaConsegna);
}

} // namespace lumoscad::procedureLumoDB2
