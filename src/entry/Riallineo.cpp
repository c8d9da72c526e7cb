#include "common/Stato.hpp"
#include "common/Testo.hpp"
#include "database/procedureLumoDB2.hpp"
#include "entry/InSospeso.hpp"
#include "platform/ControlCharacters.hpp"
#include "platform/RuntimeError.hpp"
#include "platform/Services.hpp"

#include <algorithm>
#include <cstddef>
#include <functional>
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
  std::string errore;               ///< empty when it was done
  std::vector<std::string> rimaste; ///< rows that somebody else had changed by then
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

/// The note in a later phase. That of the command's transaction is settled: it is asked for no more.
Nota InFase(Nota nota, FaseNota fase) {
  if (nota.fase == FaseNota::Avviata) {
    nota.rispostaHost = "lo ha detto chi ha riallineato la nota";
  }
  nota.fase = fase;
  nota.momentoFase = ActiveServices().localTime();
  nota.transazione.clear();
  return nota;
}

Nota InviataOra(const Nota& nota) {
  return InFase(nota, FaseNota::ConfermaInviata);
}

/// Writes the rows that are as before, in one transaction. The values of the last command stay as it left them.
Scrittura Registra(const NotaPresa& presa, const Nota& nota, const RigheEsaminate& righe, std::string_view comando) {
  const StatoSostituito sostituito;
  stato().ComandoCorrente = comando;
  stato().notaInCorso.Riprendi([&](std::string_view transazione) {
    Nota inviata = InviataOra(nota);
    inviata.transazione = transazione;
    presa.SegnaFase(inviata);
  });
  MsgAnnulla msg;
  Scrittura scrittura;
  const std::string risultato = Esegui(nota.modifica, righe, msg);
  scrittura.esito = stato().andamento.EsitoBaseDati();
  if (!risultato.empty() || !msg.Errore.empty()) {
    scrittura.errore = msg.Errore;
  }
  scrittura.rimaste = std::move(msg.righeRimaste);
  return scrittura;
}

std::vector<std::string> InStato(const RigheEsaminate& righe, StatoRiga stato) {
  std::vector<std::string> nomi;
  for (const RigaEsaminata& riga : righe) {
    if (riga.stato == stato) {
      nomi.push_back(riga.riga);
    }
  }
  return nomi;
}

std::vector<std::string> Cambiate(const RigheEsaminate& righe) {
  return InStato(righe, StatoRiga::Cambiata);
}

/// Of rows that others have changed those that no writing of the change has reached: a row that one has reached, and
/// that was put back since, is not among those that the note of a change that was kept counts.
std::vector<std::string> LeRimaste(const Nota& nota, std::vector<std::string> rimaste) {
  if (nota.fase == FaseNota::Applicata) {
    const auto trovata = [&](const std::string& riga) {
      return std::find(nota.righeRimaste.begin(), nota.righeRimaste.end(), riga) != nota.righeRimaste.end();
    };
    rimaste.erase(std::remove_if(rimaste.begin(), rimaste.end(), std::not_fn(trovata)), rimaste.end());
  }
  return rimaste;
}

/// Ends a note of which nothing is to be written any more; `rimaste` are the rows that others have changed.
EsitoInSospeso Chiudi(NotaPresa& presa, const Nota& nota, const std::vector<std::string>& rimaste) {
  if (!rimaste.empty()) {
    return NotaRimasta("Le righe cambiate da altri restano come sono: guardarle sull'host e nella base dati, e poi: "
                       "lumoscad --archivia " +
                       nota.nome + " MOTIVO");
  }
  presa.Cancella();
  return {true, nota.fase == FaseNota::Rifiutata
                    ? "L'host aveva rifiutato la richiesta e nulla è cambiato: la nota è stata tolta.\n"
                    : "L'host e la base dati hanno registrato la modifica: la nota è stata tolta.\n"};
}

/// Writes down in the note what is known now.
void Segna(const NotaPresa& presa, const Nota& nota, FaseNota fase, const std::vector<std::string>& rimaste) {
  Nota segnata = InFase(nota, fase);
  segnata.righeRimaste = rimaste;
  presa.SegnaFase(segnata);
}

/// The same after the writing. Where it fails the note goes on saying that nobody knows, and that is safe.
template <typename Azione> void SegnaEsito(Azione azione) noexcept {
  try {
    azione();
  } catch (...) { // NOLINT(bugprone-empty-catch): see above
  }
}

/// What the database holds of a note's rows after the writing.
struct Riletta {
  std::string testo;
  std::vector<std::string> comePrima; ///< rows that the change has not reached
};

/// Reads the rows again; of those that were not to be written none counts as one that the change has not reached.
Riletta Rileggi(EsameNote& esame, const Nota& nota, const RigheEsaminate& prima) {
  try {
    esame.Chiudi();
    RigheEsaminate righe = esame.Esamina(nota).righe;
    for (std::size_t posto = 0; posto < righe.size(); ++posto) {
      if (prima.at(posto).stato == StatoRiga::Cambiata && righe[posto].stato == StatoRiga::ComePrima) {
        righe[posto].stato = StatoRiga::Cambiata;
      }
    }
    return {TestoRighe(righe), InStato(righe, StatoRiga::ComePrima)};
  } catch (...) {
    return {"La base dati non si lascia rileggere: " + CurrentError().Text() + "\n", {}};
  }
}

/// Tells that the transaction is kept, and closes where the rows hold it.
EsitoInSospeso Registrata(NotaPresa& presa, const Nota& nota, const RigheEsaminate& prima, const Scrittura& scrittura,
                          EsameNote& esame) {
  std::vector<std::string> rimaste = Cambiate(prima);
  rimaste.insert(rimaste.end(), scrittura.rimaste.begin(), scrittura.rimaste.end());
  std::vector<std::string> elenco = LeRimaste(nota, rimaste);
  SegnaEsito([&] { Segna(presa, nota, FaseNota::Applicata, elenco); });
  // As of a change that nobody knows to be kept: whatever is still as before was not reached.
  const Riletta ora = Rileggi(esame, InFase(nota, FaseNota::Sconosciuta), prima);
  if (!ora.comePrima.empty()) {
    elenco.insert(elenco.end(), ora.comePrima.begin(), ora.comePrima.end());
    SegnaEsito([&] { Segna(presa, nota, FaseNota::Applicata, elenco); });
    return NotaRimasta(ora.testo + "La base dati ha registrato le righe, ma ce ne sono ancora «come prima»: guardarle "
                                   "ancora, con lumoscad --in-sospeso.");
  }
  EsitoInSospeso esito = Chiudi(presa, nota, rimaste);
  esito.testo.insert(0, ora.testo);
  return esito;
}

/// Writes, and closes on the word of the procedure that wrote.
EsitoInSospeso Scrivi(NotaPresa& presa, const Nota& nota, const RigheEsaminate& prima, std::string_view comando,
                      EsameNote& esame) {
  // Who is killed from here on leaves a note that says so: what may be written is not written a second time.
  presa.SegnaFase(InviataOra(nota));
  const Scrittura scrittura = Registra(presa, nota, prima, comando);
  if (scrittura.esito == TransactionOutcome::Unknown) {
    return NotaRimasta(Rileggi(esame, nota, prima).testo + scrittura.errore +
                       "\nNon si sa se la base dati ha registrato le righe: guardarle ancora più tardi, con lumoscad "
                       "--in-sospeso.");
  }
  // What failed once the transaction was kept, for want of memory say, takes nothing of it back.
  if (!scrittura.errore.empty() && scrittura.esito == TransactionOutcome::NotApplied) {
    SegnaEsito([&] { presa.SegnaFase(nota); });
    return NotaRimasta(Rileggi(esame, nota, prima).testo + scrittura.errore +
                       "\nLa base dati non ha registrato nulla.");
  }
  return Registrata(presa, nota, prima, scrittura, esame);
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
  if (const std::string altri = esame.DiAltri(nota); !altri.empty()) {
    return NotaRimasta("La modifica è " + altri + ", e nessun'altra va toccata.");
  }
  const EsitoEsame esaminata = esame.Esamina(nota);
  const RigheEsaminate& righe = esaminata.righe;
  if (Racconta(nota, &esaminata).impronta != vista.impronta) {
    return NotaRimasta(
        "Nel frattempo è cambiata: guardarla ancora, con lumoscad --in-sospeso. Non è stato registrato nulla.");
  }
  return Quante(righe, StatoRiga::ComePrima) == 0 ? Chiudi(presa, nota, Cambiate(righe))
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
