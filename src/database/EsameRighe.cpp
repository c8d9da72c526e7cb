#include "database/EsameRighe.hpp"

#include "common/Testo.hpp"
#include "database/Aggiornamento.hpp"
#include "database/EsameAzioni.hpp"
#include "database/RigheDelRecord.hpp"
#include "database/procedureLumoDB2.hpp"

#include <utility>

namespace lumoscad::procedureLumoDB2 {
namespace {

/// Whether the failure is one of the change itself, which then cannot be written either, and not of the database.
bool NonScrivibile(const RuntimeError& errore) {
  return errore.Number() == errors::SearchFailed || errore.Number() == errors::TypeMismatch ||
         errore.Number() == errors::SubscriptOutOfRange;
}

template <typename Righe> StatoRiga StatoDelleRighe(Aggiornamento& aggiornamento, const Righe& righe) {
  const auto colpite = aggiornamento.Conta(righe.Colpite(), righe.Valori(), righe.ComeNuove());
  if (colpite.righe > 0) {
    return colpite.righe == colpite.comeNuove ? StatoRiga::Fatta : StatoRiga::ComePrima;
  }
  return righe.SenzaChiavi() || aggiornamento.GiaCosi(righe.Tutte(), righe.Valori(), righe.ComeNuove())
             ? StatoRiga::Fatta
             : StatoRiga::Cambiata;
}

StatoRiga StatoCanalizzazione(Aggiornamento& aggiornamento, const VariazioneCanalizzazione& variazione,
                              std::string_view tipo) {
  if (tipo == "PRESUNTI" && variazione.isBancaChanged) {
    return StatoDelleRighe(aggiornamento, CercaRighePresunto(aggiornamento, variazione));
  }
  if ((tipo == "CREDITI" || tipo == "DEBITI") && (variazione.isBancaChanged || variazione.isScadenzaChanged)) {
    return StatoDelleRighe(aggiornamento, CercaRigheScadenza(aggiornamento, variazione));
  }
  return StatoRiga::Fatta;
}

StatoRiga StatoBanca(Aggiornamento& aggiornamento, const VariazioneConsegna& variazione, std::string_view tipo) {
  return tipo == "PRESUNTI" && variazione.isBancaChanged
             ? StatoDelleRighe(aggiornamento, CercaRigheBanca(aggiornamento, variazione))
             : StatoRiga::Fatta;
}

StatoRiga StatoConsegna(Aggiornamento& aggiornamento, const VariazioneConsegna& variazione, std::string_view tipo) {
  return tipo == "PRESUNTI" ? StatoDelleRighe(aggiornamento, RigheConsegna(variazione)) : StatoRiga::Fatta;
}

template <typename Variazioni, typename Esamina>
std::vector<RigaEsaminata> Esaminate(const Variazioni& variazioni, Esamina esamina) {
  std::vector<RigaEsaminata> righe;
  righe.reserve(variazioni.size());
  for (const auto& variazione : variazioni) {
    auto stato = StatoRiga::Cambiata;
    try {
      stato = esamina(variazione);
    } catch (const RuntimeError& errore) {
      if (!NonScrivibile(errore)) {
        throw;
      }
    }
    righe.push_back({Riga(variazione), stato});
  }
  return righe;
}

std::vector<RigaEsaminata> EsaminaAzione(ado::Connection& connection, const std::string& schema,
                                         const std::vector<std::string>& parametri) {
  const std::string azione = parametri.size() > 1 ? parametri[1] : std::string();
  const std::string oggetto = NomeOggetto(parametri);
  const auto uno = [&](StatoRiga stato) { return std::vector<RigaEsaminata>{{oggetto, stato}}; };
  try {
    if (azione == "SCRIVISCADENZE") {
      return EsaminaScadenzePartita(connection, parametri, oggetto);
    }
    if (azione == "EXTRASCRIVISCAD") {
      return EsaminaScadenzeMovimento(connection, parametri, oggetto);
    }
    if (azione == "EXTRADEL") {
      return uno(EsaminaCancellazione(connection, parametri, schema));
    }
    if (azione == "PRESUNTOCREA" || azione == "PRESUNTOCANCELLA") {
      return uno(EsaminaSospensioneMovimento(connection, parametri, azione == "PRESUNTOCREA" ? "S" : "N"));
    }
    if (azione == "SOSPESOCREA" || azione == "SOSPESOCANCELLA") {
      return uno(EsaminaSospensionePartita(connection, parametri, azione == "SOSPESOCREA" ? "S" : "N"));
    }
  } catch (const RuntimeError& errore) {
    if (!NonScrivibile(errore)) {
      throw;
    }
    return uno(StatoRiga::Cambiata);
  }
  return {};
}

} // namespace

std::vector<RigaEsaminata> EsaminaRighe(ado::Connection& connection,
                                        const moduloDatabase::ParametriConnessione& parametri,
                                        const ModificaChiesta& modifica) {
  Aggiornamento aggiornamento(connection);
  switch (modifica.genere) {
  case ModificaChiesta::Genere::Canalizzazione:
    return Esaminate(modifica.canalizzazioni, [&](const VariazioneCanalizzazione& variazione) {
      return StatoCanalizzazione(aggiornamento, variazione, modifica.tipo);
    });
  case ModificaChiesta::Genere::BancaPresunti:
    return Esaminate(modifica.consegne, [&](const VariazioneConsegna& variazione) {
      return StatoBanca(aggiornamento, variazione, modifica.tipo);
    });
  case ModificaChiesta::Genere::Consegna:
    return Esaminate(modifica.consegne, [&](const VariazioneConsegna& variazione) {
      return StatoConsegna(aggiornamento, variazione, modifica.tipo);
    });
  case ModificaChiesta::Genere::Azione:
    return EsaminaAzione(connection, parametri.Schema, modifica.parametri);
  case ModificaChiesta::Genere::Nessuna:
    break;
  }
  return {};
}

} // namespace lumoscad::procedureLumoDB2
