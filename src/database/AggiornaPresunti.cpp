#include "common/Testo.hpp"
#include "database/Aggiornamento.hpp"
#include "database/procedureLumoDB2.hpp"

namespace lumoscad::procedureLumoDB2 {
namespace {

/// The rows of a document, as the lists show them.
std::string RigheDelDocumento(const std::string& altre) {
  return "EVENTOCONTABILE WHERE MOVIMENTOKEY=? AND TIPOEVENTO='P' " + altre;
}

bool ApplicaBanca(Aggiornamento& aggiornamento, const VariazioneConsegna& variazione) {
  if (!variazione.isBancaChanged) {
    return true;
  }
  const std::string vecchia = aggiornamento.ChiaveBanca(variazione.VecchiaBanca);
  const std::string nuova = aggiornamento.ChiaveBanca(variazione.NuovaBanca);
  const std::string conto = aggiornamento.ChiaveConto(variazione.CodiceConto);
  const std::string movimento = std::to_string(variazione.idMovimentoKey);
  const bool cambiate =
      aggiornamento.Cambia("UPDATE EVENTOCONTABILE SET BANCAPRESENTAZIONE_KEY=" + ValoreChiave(nuova) +
                               "WHERE MOVIMENTOKEY=? AND CONTOCONTABILE_KEY= " + conto + " " + "AND " +
                               UgualeChiave("BANCAPRESENTAZIONE_KEY", vecchia) + "AND EVENTOCONTABILE.SOSPESA='N' ",
                           {movimento});
  return cambiate || variazione.idMovimentoKey == 0 ||
         aggiornamento.GiaCosi(RigheDelDocumento("AND CONTOCONTABILE_KEY=" + conto + " "), {movimento},
                               UgualeChiave("BANCAPRESENTAZIONE_KEY", nuova));
}

bool ApplicaConsegna(Aggiornamento& aggiornamento, const VariazioneConsegna& variazione) {
  const std::string nuova =
      SenzaValore(variazione.NuovaConsegna) ? "NULL" : "'" + DataIso(variazione.NuovaConsegna) + "'";
  const std::string attuale = SenzaValore(variazione.Consegna)
                                  ? "AND DATACONSEGNA IS NULL "
                                  : "AND DATACONSEGNA= '" + DataIso(variazione.Consegna) + "' ";
  const bool conOrdine = !SenzaValore(variazione.idOrdineKey);
  const std::string ordine = conOrdine ? variazione.idOrdineKey : std::to_string(variazione.idMovimentoKey);
  const bool cambiate = aggiornamento.Cambia("UPDATE EVENTOCONTABILE SET DATACONSEGNA= " + nuova +
                                                 ",  "
                                                 "TITOLOIVA= ' ' "
                                                 "WHERE MOVIMENTOKEY=? " +
                                                 attuale + "AND EVENTOCONTABILE.SOSPESA='N' ",
                                             {ordine});
  if (cambiate || (!conOrdine && variazione.idMovimentoKey == 0)) {
    return true;
  }
  // The rows of a document with several dates are told apart by the first one, which no change touches.
  const std::string origine = "AND " + UgualeData("DATACONSEGNAPRODUZIONE", variazione.ConsegnaOrigine);
  return aggiornamento.GiaCosi(RigheDelDocumento(origine), {ordine},
                               UgualeData("DATACONSEGNA", variazione.NuovaConsegna));
}

/// Applies a list of presumed documents; lists of any other kind change nothing.
template <typename Applica>
std::string ApplicaPresunti(const VariazioniConsegna& variazioni, std::string_view parModalita, MsgAnnulla& msg,
                            Applica applica) {
  return ApplicaVariazioni(variazioni, msg, [&](Aggiornamento& aggiornamento, const VariazioneConsegna& variazione) {
    return parModalita != "PRESUNTI" || applica(aggiornamento, variazione);
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
