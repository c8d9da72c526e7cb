#include "entry/EsameNote.hpp"

#include "common/Testo.hpp"
#include "database/RicercaEsito.hpp"
#include "entry/RigheDubbie.hpp"
#include "platform/ado/Aftermath.hpp"
#include "platform/ado/Facts.hpp"

#include <algorithm>
#include <cstddef>

namespace lumoscad {

using procedureLumoDB2::RigaEsaminata;
using procedureLumoDB2::StatoRiga;

namespace {

using RigheEsaminate = std::vector<RigaEsaminata>;
using Confronto = AccessoComando::Confronto;

/// A session whose client has just died is gone a moment later. All notes together wait no longer.
constexpr std::chrono::seconds AttesaSessioni(5);

/// Whether the database may hold the whole of the change already.
bool DopoConferma(FaseNota fase) {
  return fase == FaseNota::ConfermaInviata || fase == FaseNota::Sconosciuta || fase == FaseNota::Applicata;
}

/// Whether the server is asked for the transaction: the note does not say itself what became of it.
bool DaChiedere(FaseNota fase) {
  return fase == FaseNota::ConfermaInviata || fase == FaseNota::Sconosciuta;
}

/// Rows that are as before are left alone: those for which `quali` says so.
template <typename Quali> void LasciaStare(RigheEsaminate& righe, Quali quali) {
  for (std::size_t posto = 0; posto < righe.size(); ++posto) {
    if (righe[posto].stato == StatoRiga::ComePrima && quali(posto)) {
      righe[posto].stato = StatoRiga::Cambiata;
    }
  }
}

/// An action is looked at by its new values alone.
std::string AvvisoDellAzione(const Nota& nota, const RigheEsaminate& righe) {
  const bool azione = nota.modifica.genere == ModificaChiesta::Genere::Azione;
  return azione && Quante(righe, StatoRiga::ComePrima) > 0
             ? "Di un comando come questo non si conoscono i valori di prima: «come prima» sono anche le righe che "
               "qualcuno ha riportato indietro da allora.\n"
             : "";
}

/// What the two ways of asking say together. A row that is as before though the transaction was committed was put back
/// by somebody, and so was one that the note of a change that was kept does not count among those left over; one that
/// another record of the same change may have put there is left alone, unless nothing was.
void Confronta(const Nota& nota, EsitoEsame& esame) {
  if (esame.esito == TransactionOutcome::Applied) {
    LasciaStare(esame.righe, [](std::size_t) { return true; });
  } else if (esame.esito == TransactionOutcome::NotApplied) {
    if (Quante(esame.righe, StatoRiga::Fatta) > 0) {
      esame.avvisi += "La transazione del comando è stata annullata, eppure ci sono righe «fatta»: le ha registrate "
                      "qualcun altro, o la base dati non è quella del comando. Guardare prima di rispondere.\n";
    }
  } else if (DopoConferma(nota.fase)) {
    const std::vector<bool> dubbie = RigheDubbie(nota.modifica);
    LasciaStare(esame.righe, [&dubbie](std::size_t posto) { return posto < dubbie.size() && dubbie[posto]; });
    if (nota.fase == FaseNota::Applicata) {
      const auto& rimaste = nota.righeRimaste;
      LasciaStare(esame.righe, [&](std::size_t posto) {
        return std::find(rimaste.begin(), rimaste.end(), esame.righe[posto].riga) == rimaste.end();
      });
    }
  }
}

std::string AvvisoDelServer(const moduloDatabase::DettoDalServer& detto) {
  if (detto.altroNodo) {
    return "Risponde un altro server dello stesso gruppo: finché quello del comando non è tornato, le righe «come "
           "prima» possono ancora cambiare. Rispondere sì solo quando i server sono tutti in linea.\n";
  }
  return detto.ignota ? "Questo server non sa nulla della transazione del comando, e dicono solo le righe: accertarsi "
                        "che la base dati sia quella, e aggiornata.\n"
                      : "";
}

std::string Tra(std::string_view prima, const DatoAccesso& dato) {
  return std::string(prima) + (dato.riservato ? "" : " «" + dato.valore + "»");
}

} // namespace

std::size_t Quante(const RigheEsaminate& righe, StatoRiga stato) {
  return static_cast<std::size_t>(
      std::count_if(righe.begin(), righe.end(), [stato](const RigaEsaminata& riga) { return riga.stato == stato; }));
}

EsameNote::EsameNote(std::string_view comando)
    : parametri_(moduloDatabase::LeggiParametriDB2(comando)), accesso_(comando),
      conBaseDati_(MaggioreDiSpazio(comando)) {}

std::string EsameNote::DiAltri(const Nota& nota) const {
  if (Maiuscolo(accesso_.Origine()) != Maiuscolo(nota.origineDati)) {
    return "dell'origine dati «" + nota.origineDati + "»";
  }
  if (accesso_.ConfrontaUtente(nota.utente) == Confronto::Diverso) {
    return Tra("dell'utente", nota.utente) + " della base dati";
  }
  return accesso_.ConfrontaSchema(nota.schema) == Confronto::Diverso ? Tra("dello schema", nota.schema) : std::string();
}

ado::Connection& EsameNote::Aperta() {
  if (rifiuto_) {
    throw RuntimeError(*rifiuto_);
  }
  if (!connection_) {
    try {
      connection_ = moduloDatabase::ApriPerProva(parametri_, ado::StatementSeconds());
      ado::AwaitReplicas(*connection_);
    } catch (const RuntimeError& errore) {
      rifiuto_ = std::make_unique<RuntimeError>(errore);
      throw;
    }
  }
  return *connection_;
}

EsitoEsame EsameNote::Guarda(const Nota& nota) {
  EsitoEsame esame;
  ado::Connection& connection = Aperta();
  const auto segno = ado::TransactionMark::FromText(DaChiedere(nota.fase) ? nota.transazione : std::string());
  if (!segno.session.empty()) {
    termine_ = termine_.value_or(std::chrono::steady_clock::now() + AttesaSessioni);
    const auto detto = moduloDatabase::ChiediAlServer(connection, segno, *termine_);
    if (detto.inCorso) {
      throw RuntimeError(errors::Driver, "la transazione del comando è ancora in corso. Guardare più tardi.", "ODBC");
    }
    esame.esito = detto.esito;
    esame.avvisi = AvvisoDelServer(detto);
  }
  // Only now: while it was under way its rows told nothing.
  esame.righe = procedureLumoDB2::EsaminaRighe(connection, parametri_, nota.modifica);
  Confronta(nota, esame);
  esame.avvisi += AvvisoDellAzione(nota, esame.righe);
  if (accesso_.ConfrontaUtente(nota.utente) == Confronto::NonSiSa ||
      accesso_.ConfrontaSchema(nota.schema) == Confronto::NonSiSa) {
    esame.avvisi += "La nota non dice con quale utente e quale schema della base dati lavorava il comando: accertarsi "
                    "che siano quelli delle opzioni.\n";
  }
  return esame;
}

EsitoEsame EsameNote::Esamina(const Nota& nota) {
  try {
    return Guarda(nota);
  } catch (...) {
    connection_.reset();
    throw;
  }
}

void EsameNote::Chiudi() noexcept {
  connection_.reset();
  rifiuto_.reset();
}

} // namespace lumoscad
