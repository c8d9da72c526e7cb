#include "common/Stato.hpp"
#include "common/Testo.hpp"
#include "database/procedureLumoDB2.hpp"
#include "entry/InSospeso.hpp"
#include "platform/ControlCharacters.hpp"
#include "platform/RuntimeError.hpp"
#include "platform/Services.hpp"

#include <cstddef>
#include <utility>

namespace lumoscad {

using procedureLumoDB2::RigaEsaminata;
using procedureLumoDB2::StatoRiga;

namespace {

using RigheEsaminate = std::vector<RigaEsaminata>;
using Genere = ModificaChiesta::Genere;

/// What the database did with the rows that were written.
struct Scrittura {
  TransactionOutcome esito = TransactionOutcome::NotApplied;
  std::string errore; ///< empty when it was done
};

EsitoInSospeso NotaRimasta(std::string perche) {
  return {false, std::move(perche) + "\nLa nota resta.\n"};
}

template <typename Variazioni> Variazioni SoloComePrima(const Variazioni& variazioni, const RigheEsaminate& righe) {
  Variazioni rimaste;
  for (std::size_t posto = 0; posto < variazioni.size(); ++posto) {
    if (righe.at(posto).stato == StatoRiga::ComePrima) {
      rimaste.push_back(variazioni[posto]);
    }
  }
  return rimaste;
}

/// An action's list with those of its groups alone that are as before; whole where it has no groups.
std::vector<std::string> SoloComePrima(std::vector<std::string> parametri, const RigheEsaminate& righe) {
  constexpr std::size_t PrimoGruppo = 5;
  constexpr std::size_t ElementiGruppo = 3;
  const std::string& azione = Elemento(parametri, 1);
  if (azione != "SCRIVISCADENZE" && azione != "EXTRASCRIVISCAD") {
    return parametri;
  }
  std::vector<std::string> resto(parametri.begin(), parametri.begin() + PrimoGruppo);
  for (std::size_t gruppo = 0; gruppo < righe.size(); ++gruppo) {
    const auto inizio = PrimoGruppo + gruppo * ElementiGruppo;
    if (righe[gruppo].stato == StatoRiga::ComePrima) {
      for (std::size_t elemento = 0; elemento < ElementiGruppo; ++elemento) {
        resto.push_back(Elemento(parametri, inizio + elemento));
      }
    }
  }
  return resto;
}

/// The procedure of the command that the note is of.
std::string Esegui(const ModificaChiesta& modifica, const RigheEsaminate& righe, MsgAnnulla& msg) {
  switch (modifica.genere) {
  case Genere::Canalizzazione:
    return procedureLumoDB2::AggiornaCanalizzazione(SoloComePrima(modifica.canalizzazioni, righe), msg, modifica.tipo);
  case Genere::BancaPresunti:
    return procedureLumoDB2::AggiornaBancaPresunti(SoloComePrima(modifica.consegne, righe), msg, modifica.tipo);
  case Genere::Consegna:
    return procedureLumoDB2::AggiornaConsegna(SoloComePrima(modifica.consegne, righe), msg, modifica.tipo);
  case Genere::Azione:
    return procedureLumoDB2::EseguiAzioneDB2(SoloComePrima(modifica.parametri, righe), &msg);
  case Genere::Nessuna:
    break;
  }
  return "";
}

/// Writes the rows that are as before, in one transaction. The values of the last command stay as it left them.
Scrittura Registra(const ModificaChiesta& modifica, const RigheEsaminate& righe, std::string_view comando) {
  const StatoSostituito sostituito;
  stato().ComandoCorrente = comando;
  MsgAnnulla msg;
  Scrittura scrittura;
  const std::string risultato = Esegui(modifica, righe, msg);
  scrittura.esito = stato().andamento.EsitoBaseDati();
  if (!risultato.empty() || !msg.Errore.empty()) {
    scrittura.errore = msg.Errore;
  }
  return scrittura;
}

/// What can be said at the end of a note whose rows are now so, and takes it away where nothing is open.
EsitoInSospeso Chiudi(NotaPresa& presa, const Nota& nota, const RigheEsaminate& righe) {
  if (Quante(righe, StatoRiga::ComePrima) > 0) {
    return NotaRimasta("Non tutte le righe sono registrate.");
  }
  if (Quante(righe, StatoRiga::Cambiata) > 0) {
    return NotaRimasta(
        "Le righe cambiate da altri restano come sono: guardarle sull'host e nella base dati, e poi: lumoscad "
        "--archivia " +
        nota.nome + " MOTIVO");
  }
  presa.Cancella();
  return {true, nota.fase == FaseNota::Rifiutata
                    ? "L'host aveva rifiutato la richiesta e nulla è cambiato: la nota è stata tolta.\n"
                    : "L'host e la base dati hanno registrato la modifica: la nota è stata tolta.\n"};
}

/// Writes down in a note that stays what is known now. One that cannot be written goes on saying what was true before;
/// what the database holds is looked up each time.
void Segna(const NotaPresa& presa, Nota nota, FaseNota fase, const RigheEsaminate& righe) {
  if (nota.fase == FaseNota::Avviata) {
    nota.rispostaHost = "lo ha detto chi ha riallineato la nota";
  }
  nota.fase = fase;
  nota.momentoFase = ActiveServices().localTime();
  nota.righeRimaste.clear();
  for (const RigaEsaminata& riga : righe) {
    if (riga.stato == StatoRiga::Cambiata) {
      nota.righeRimaste.push_back(riga.riga);
    }
  }
  try {
    presa.SegnaFase(nota);
  } catch (...) { // NOLINT(bugprone-empty-catch): see above
  }
}

/// What the database holds after the writing, where it can be told.
struct Lettura {
  RigheEsaminate righe;
  std::string errore;
};

Lettura Rileggi(EsameNote& esame, const Nota& nota) {
  Lettura letta;
  try {
    esame.Chiudi();
    letta.righe = esame.Righe(nota);
  } catch (...) {
    letta.errore = CurrentError().Text();
  }
  return letta;
}

/// Writes, looks again, and closes.
EsitoInSospeso Scrivi(NotaPresa& presa, const Nota& nota, const RigheEsaminate& prima, std::string_view comando,
                      EsameNote& esame) {
  const Scrittura scrittura = Registra(nota.modifica, prima, comando);
  const Lettura letta = Rileggi(esame, nota);
  const std::string ora =
      letta.errore.empty() ? TestoRighe(letta.righe) : "La base dati non si lascia rileggere: " + letta.errore + "\n";
  EsitoInSospeso esito;
  if (scrittura.esito == TransactionOutcome::Unknown) {
    Segna(presa, nota, FaseNota::Sconosciuta, letta.righe);
    esito = NotaRimasta(scrittura.errore +
                        "\nNon si sa se la base dati ha registrato le righe: guardarle ancora più tardi, "
                        "con lumoscad --in-sospeso.");
  } else if (!scrittura.errore.empty()) {
    esito = NotaRimasta(scrittura.errore + "\nLa base dati non ha registrato nulla.");
  } else if (!letta.errore.empty()) {
    Segna(presa, nota, FaseNota::Applicata, prima);
    esito = NotaRimasta("La base dati ha registrato le righe «come prima».");
  } else {
    if (Quante(letta.righe, StatoRiga::Cambiata) > 0) {
      Segna(presa, nota, FaseNota::Applicata, letta.righe);
    }
    esito = Chiudi(presa, nota, letta.righe);
  }
  esito.testo.insert(0, ora);
  return esito;
}

EsitoInSospeso Riallinea(const NotaInSospeso& vista, std::string_view comando) {
  NotaPresa presa(CartellaNote(), vista.nome);
  const Nota nota = presa.Leggi();
  if (!nota.errore.empty() || nota.archiviata) {
    return NotaRimasta(nota.errore.empty() ? "La nota è archiviata." : nota.errore);
  }
  if (nota.fase == FaseNota::Rifiutata) {
    return Chiudi(presa, nota, {});
  }
  EsameNote esame(comando);
  if (!esame.OrigineUguale(nota)) {
    return NotaRimasta("La modifica è dell'origine dati «" + nota.origineDati + "», e nessun'altra va toccata.");
  }
  const RigheEsaminate righe = esame.Righe(nota);
  if (Racconta(nota, &righe).impronta != vista.impronta) {
    return NotaRimasta(
        "Nel frattempo è cambiata: guardarla ancora, con lumoscad --in-sospeso. Non è stato registrato nulla.");
  }
  return Quante(righe, StatoRiga::ComePrima) == 0 ? Chiudi(presa, nota, righe)
                                                  : Scrivi(presa, nota, righe, comando, esame);
}

} // namespace

EsitoInSospeso RiallineaVista(const NotaInSospeso& vista, std::string_view comando) {
  EsitoInSospeso esito;
  try {
    esito = Riallinea(vista, comando);
  } catch (...) {
    const RuntimeError errore = CurrentError();
    esito = NotaRimasta(WithSentence(errore.Text(), errore.Note()));
  }
  esito.testo = WithoutControls(esito.testo, "\n");
  return esito;
}

EsitoInSospeso Archivia(std::string_view nome, std::string_view motivo) {
  try {
    if (!MaggioreDiSpazio(motivo)) {
      return {false, "Manca il motivo per cui la nota si archivia.\n"};
    }
    ArchiviaNota(CartellaNote(), nome, motivo);
    return {true, "La nota è stata archiviata.\n"};
  } catch (...) {
    return {false, CurrentError().Text() + "\n"};
  }
}

} // namespace lumoscad
