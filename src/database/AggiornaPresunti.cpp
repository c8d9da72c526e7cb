#include "database/Aggiornamento.hpp"
#include "database/RigheDelRecord.hpp"
#include "database/procedureLumoDB2.hpp"

namespace lumoscad::procedureLumoDB2 {
namespace {

bool ApplicaBanca(Aggiornamento& aggiornamento, const VariazioneConsegna& variazione) {
  if (!variazione.isBancaChanged) {
    return true;
  }
  return CambiaORimane(aggiornamento, CercaRigheBanca(aggiornamento, variazione));
}

bool ApplicaConsegna(Aggiornamento& aggiornamento, const VariazioneConsegna& variazione) {
  return CambiaORimane(aggiornamento, RigheConsegna(variazione));
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
