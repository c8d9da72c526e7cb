#include "entry/InSospeso.hpp"

#include "common/Testo.hpp"
#include "platform/ControlCharacters.hpp"
#include "platform/RuntimeError.hpp"
#include "platform/Services.hpp"

#include <algorithm>
#include <array>
#include <utility>

namespace lumoscad {

using procedureLumoDB2::RigaEsaminata;
using procedureLumoDB2::StatoRiga;

namespace {

using RigheEsaminate = std::vector<RigaEsaminata>;

constexpr std::array<std::pair<StatoRiga, std::string_view>, 3> NomiStato = {
    {{StatoRiga::ComePrima, "come prima"}, {StatoRiga::Fatta, "fatta"}, {StatoRiga::Cambiata, "cambiata da altri"}}};

std::string_view Nome(StatoRiga stato) {
  return std::find_if(NomiStato.begin(), NomiStato.end(), [stato](const auto& voce) { return voce.first == stato; })
      ->second;
}

/// What others have written gives no orders to a terminal, and a line end in it does not make it pass for ours.
std::string SuUnaRiga(std::string_view testo) {
  return WithoutControls(testo);
}

std::string Allineato(std::string_view testo, std::size_t larghezza) {
  std::string campo(testo);
  campo.resize(std::max(larghezza, campo.size()), ' ');
  return campo;
}

void Aggiungi(std::string& testo, std::string_view nome, std::string_view valore) {
  constexpr std::size_t Larghezza = 11;
  if (!valore.empty()) {
    testo.append("  ").append(Allineato(nome, Larghezza)).append(SuUnaRiga(valore)).append("\n");
  }
}

/// What the person reads of a note, line by line.
std::string Testo(const NotaInSospeso& nota, const std::string& righe) {
  if (nota.archiviata) {
    return SuUnaRiga(nota.nome + "  " + nota.consiglio) + "\n";
  }
  std::string testo = nota.nome + "\n";
  Aggiungi(testo, "comando", nota.chi);
  Aggiungi(testo, "dal", nota.quando);
  Aggiungi(testo, "host", nota.host);
  Aggiungi(testo, "base dati", nota.baseDati);
  testo += righe;
  Aggiungi(testo, "NON letta", nota.errore);
  Aggiungi(testo, "da fare", nota.consiglio);
  return testo;
}

std::string Quando(const DateTime& t) {
  return ConZeri(t.day, 2) + "/" + ConZeri(t.month, 2) + "/" + ConZeri(t.year, 4) + " " + ConZeri(t.hour, 2) + ":" +
         ConZeri(t.minute, 2) + ":" + ConZeri(t.second, 2);
}

std::string Chi(const Nota& nota) {
  return nota.tipoComando + ", postazione " + nota.postazione + ", azienda " + nota.azienda + ", host " + nota.host;
}

std::string RispostaHost(const Nota& nota) {
  switch (nota.fase) {
  case FaseNota::Avviata:
    return nota.rispostaHost.empty() ? "non si sa se ha eseguito la richiesta"
                                     : "non si sa se ha eseguito la richiesta: " + nota.rispostaHost;
  case FaseNota::Rifiutata:
    return "ha rifiutato la richiesta: " + nota.rispostaHost;
  default:
    return nota.rispostaHost.empty() ? "ha accettato la richiesta" : "ha accettato la richiesta: " + nota.rispostaHost;
  }
}

std::string StatoBaseDati(const Nota& nota, std::optional<TransactionOutcome> esito) {
  if (esito == TransactionOutcome::Applied) {
    return "il comando vi ha registrato la modifica: lo dice il numero della transazione";
  }
  if (esito == TransactionOutcome::NotApplied) {
    return "il comando non vi ha registrato nulla: lo dice il numero della transazione";
  }
  switch (nota.fase) {
  case FaseNota::Avviata:
  case FaseNota::Rifiutata:
  case FaseNota::Accettata:
  case FaseNota::NonApplicata:
    return "il comando non vi ha registrato nulla";
  case FaseNota::ConfermaInviata:
  case FaseNota::Sconosciuta:
    return "non si sa se il comando vi ha registrato tutto o nulla";
  case FaseNota::Applicata:
    break;
  }
  return nota.righeRimaste.empty() ? "il comando vi ha registrato la modifica"
                                   : "il comando vi ha registrato la modifica, salvo righe già cambiate da altri";
}

std::string Consiglio(const Nota& nota, const RigheEsaminate* righe) {
  std::string riallinea = "lumoscad --riallinea " + nota.nome + " -DB2SOURCE " +
                          (nota.origineDati.empty() ? "ORIGINE" : nota.origineDati) + " ...";
  std::string archivia = "lumoscad --archivia " + nota.nome + " MOTIVO";
  if (nota.inCorso) {
    return "attendere: il comando è ancora in corso, o qualcuno sta riallineando la nota";
  }
  if (nota.fase == FaseNota::Rifiutata) {
    return "nulla di aperto, e la nota si può togliere: " + riallinea;
  }
  if (nota.fase == FaseNota::Avviata) {
    return "guardare sull'host se la richiesta risulta eseguita. Se lo è: " + riallinea + "; se non lo è: " + archivia;
  }
  if (righe != nullptr && Quante(*righe, StatoRiga::ComePrima) == 0) {
    return Quante(*righe, StatoRiga::Cambiata) == 0
               ? "nulla di aperto, e la nota si può togliere: " + riallinea
               : "guardare sull'host e nella base dati le righe cambiate da altri, e poi: " + archivia;
  }
  return riallinea;
}

std::string Domanda(const Nota& nota, const EsitoEsame& esame) {
  const auto quante = Quante(esame.righe, StatoRiga::ComePrima);
  std::string domanda;
  if (nota.fase == FaseNota::Avviata) {
    domanda = "Non si sa se l'host ha eseguito la richiesta: rispondere sì solo se risulta che l'ha eseguita.\n";
  }
  domanda += esame.avvisi;
  if (quante > 0) {
    return domanda + "Registrare nella base dati le righe «come prima», " + std::to_string(quante) +
           " in tutto? (sì/no) ";
  }
  const bool daTogliere = !domanda.empty() && Quante(esame.righe, StatoRiga::Cambiata) == 0;
  return daTogliere ? domanda + "Togliere la nota? (sì/no) " : std::string();
}

std::string Impronta(const Nota& nota, const EsitoEsame& esame) {
  std::string impronta = std::to_string(static_cast<int>(nota.fase)) + " ";
  impronta += esame.esito ? std::to_string(static_cast<int>(*esame.esito)) + " " : "- ";
  for (const RigaEsaminata& riga : esame.righe) {
    impronta += std::to_string(static_cast<int>(riga.stato));
  }
  return impronta + " " + esame.avvisi;
}

NotaInSospeso NonLetta(std::string_view nome, std::string errore) {
  NotaInSospeso vista;
  vista.nome = nome;
  vista.errore = std::move(errore);
  vista.testo = Testo(vista, "");
  return vista;
}

/// A note with what the database holds of it, where that is asked for and can be told.
NotaInSospeso Guarda(const Nota& nota, EsameNote& esame) {
  if (!esame.ConBaseDati() || nota.archiviata || !nota.errore.empty() || nota.inCorso ||
      nota.fase == FaseNota::Rifiutata) {
    return Racconta(nota);
  }
  std::string errore;
  if (const std::string altri = esame.DiAltri(nota); !altri.empty()) {
    errore = "la modifica è " + altri + ": questa non è stata guardata";
  } else {
    try {
      const EsitoEsame esaminata = esame.Esamina(nota);
      return Racconta(nota, &esaminata);
    } catch (...) {
      const RuntimeError guasto = CurrentError();
      errore = "la base dati: " + WithSentence(guasto.Text(), guasto.Note());
    }
  }
  NotaInSospeso vista = Racconta(nota);
  vista.errore = std::move(errore);
  vista.testo = Testo(vista, "");
  return vista;
}

} // namespace

const std::string& CartellaNote() {
  return ActiveServices().environment().CartellaLocale;
}

std::string TestoRighe(const RigheEsaminate& righe) {
  constexpr std::size_t Larghezza = 19;
  std::string testo;
  for (const RigaEsaminata& riga : righe) {
    testo += "    " + Allineato(Nome(riga.stato), Larghezza) + SuUnaRiga(riga.riga) + "\n";
  }
  return testo;
}

NotaInSospeso Racconta(const Nota& nota, const EsitoEsame* esame) {
  NotaInSospeso vista;
  vista.nome = nota.nome;
  vista.errore = nota.archiviata ? std::string() : nota.errore;
  vista.inCorso = nota.inCorso;
  vista.archiviata = nota.archiviata.has_value();
  if (nota.archiviata) {
    vista.consiglio = "archiviata il " + Quando(nota.archiviata->momento) + ": " + nota.archiviata->motivo;
  } else if (nota.errore.empty()) {
    vista.chi = Chi(nota);
    vista.quando = Quando(nota.inizio);
    vista.host = RispostaHost(nota);
    vista.baseDati = StatoBaseDati(nota, esame == nullptr ? std::nullopt : esame->esito);
    vista.consiglio = Consiglio(nota, esame == nullptr ? nullptr : &esame->righe);
  } else {
    vista.consiglio = "guardare il file, e poi: lumoscad --archivia " + nota.nome + " MOTIVO";
  }
  static const EsitoEsame Nessuno;
  const EsitoEsame& visto = esame == nullptr ? Nessuno : *esame;
  for (const RigaEsaminata& riga : visto.righe) {
    vista.righe.push_back({riga.riga, std::string(Nome(riga.stato))});
  }
  if (esame != nullptr) {
    vista.domanda = Domanda(nota, visto);
  }
  vista.impronta = Impronta(nota, visto);
  vista.testo = Testo(vista, TestoRighe(visto.righe));
  return vista;
}

NotaInSospeso GuardaNota(std::string_view nome, std::string_view comando) {
  try {
    EsameNote esame(comando);
    return Guarda(LeggiNota(CartellaNote(), nome), esame);
  } catch (...) {
    return NonLetta(nome, CurrentError().Text());
  }
}

ElencoInSospeso GuardaInSospeso(std::string_view comando) {
  ElencoInSospeso elenco;
  std::vector<Nota> note = LeggiNote(CartellaNote());
  std::stable_partition(note.begin(), note.end(), [](const Nota& nota) { return !nota.archiviata; });
  EsameNote esame(comando);
  elenco.riuscito = true;
  bool archivio = false;
  for (const Nota& nota : note) {
    elenco.note.push_back(Guarda(nota, esame));
    const NotaInSospeso& vista = elenco.note.back();
    elenco.riuscito = elenco.riuscito && vista.errore.empty();
    if (vista.archiviata && !archivio) {
      archivio = true;
      elenco.testo += "Archiviate:\n";
    }
    elenco.testo += vista.testo;
  }
  if (note.empty() || note.front().archiviata) {
    elenco.testo.insert(0, "Non c'è nulla in sospeso.\n");
  }
  return elenco;
}

} // namespace lumoscad
