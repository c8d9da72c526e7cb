#pragma once

#include "PresuntiDiProva.hpp"
#include "common/ModificaChiesta.hpp"
#include "common/MsgAnnulla.hpp"
#include "common/NotaInCorso.hpp"
#include "database/procedureLumoDB2.hpp"
#include "platform/Services.hpp"

#include <ostream>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace lumoscad::test {

/// What a command may ask of host and database, on the data of `DatiDelleModifiche`.
struct ModificaProvata {
  const char* nome;
  ModificaChiesta modifica;
  std::string prima;   ///< what is to be done to the data beforehand
  std::size_t righe;   ///< that the person knows it by
  std::string altri;   ///< how somebody else changes what the first row means; empty where it makes no difference
  std::string sparita; ///< how somebody else takes away what the first row means; empty where that is the change
};

inline void PrintTo(const ModificaProvata& provata, std::ostream* uscita) {
  *uscita << provata.nome;
}

/// Two items of a customer and a supplier's, presumed documents, an extra movement with two due dates.
inline std::string DatiDelleModifiche() {
  return DatiPresunti() + Rata("101,1,301,201,101,'C','N','2006-03-04','2006-01-31',1,106,100") +
         Rata("102,1,301,201,101,'C','N','2006-03-04','2006-01-31',1,106,50") +
         Rata("103,1,301,201,101,'C','N','2006-04-04','2006-02-28',2,106,1") +
         Rata("104,1,301,201,101,'C','N',NULL,'2006-03-31',3,NULL,1") +
         Rata("105,1,301,202,102,'C','N','2006-05-04','2006-05-04',1,106,1") +
         Rata("106,1,301,202,102,'C','N','2006-06-04','2006-06-04',2,106,1") +
         Rata("107,1,304,203,103,'C','N','2006-03-04','2006-03-04',1,107,1") +
         Rata("108,1,302,NULL,101,'C','N','2006-03-31','2006-02-28',1,NULL,1") +
         Rata("109,1,302,NULL,101,'C','N','2006-04-30','2006-04-30',2,NULL,1");
}

inline VariazioneCanalizzazione UnaRata(const std::string& partita, const std::string& rata,
                                        const std::string& originale, const std::string& scadenza,
                                        const std::string& nuovaScadenza, const std::string& banca,
                                        const std::string& nuovaBanca) {
  VariazioneCanalizzazione v;
  v.idPartitaKey = partita;
  v.CodiceConto = partita == "203" ? "F03" : "C01";
  v.NumeroPartita = partita == "203" ? "2006   3" : "2006   1";
  v.NumeroRata = rata;
  v.ScadenzaOriginale = originale;
  v.VecchiaScadenza = scadenza;
  v.NuovaScadenza = nuovaScadenza.empty() ? "#null#" : nuovaScadenza;
  v.isScadenzaChanged = !nuovaScadenza.empty();
  v.VecchiaBanca = banca;
  v.NuovaBanca = nuovaBanca.empty() ? "#null#" : nuovaBanca;
  v.isBancaChanged = !nuovaBanca.empty();
  return v;
}

inline VariazioneConsegna UnDocumento(int movimento, const std::string& conto, const std::string& serie,
                                      const std::string& numero) {
  VariazioneConsegna v;
  v.idMovimentoKey = movimento;
  v.CodiceConto = conto;
  v.Serie = serie;
  v.Anno = "06";
  v.Numero = numero;
  return v;
}

inline VariazioneConsegna UnaBanca(VariazioneConsegna v, const std::string& vecchia, const std::string& nuova) {
  v.VecchiaBanca = vecchia;
  v.NuovaBanca = nuova;
  v.isBancaChanged = true;
  return v;
}

inline VariazioneConsegna UnaConsegna(VariazioneConsegna v, const std::string& consegna, const std::string& origine,
                                      const std::string& nuova) {
  v.Consegna = consegna;
  v.ConsegnaOrigine = origine;
  v.NuovaConsegna = nuova;
  v.isConsegnaChanged = true;
  return v;
}

inline ModificaChiesta UnAzione(std::vector<std::string> parametri) {
  ModificaChiesta modifica;
  modifica.genere = ModificaChiesta::Genere::Azione;
  modifica.parametri = std::move(parametri);
  return modifica;
}

/// Every list, and every action that has a side in the database.
inline const std::vector<ModificaProvata>& ModificheProvate() {
  using Genere = ModificaChiesta::Genere;
  static const std::string Rate1 = "UPDATE EVENTOCONTABILE SET BANCAPRESENTAZIONE_KEY=108 WHERE EVENTOCONTABILEKEY ";
  static const std::string Togli = "DELETE FROM EVENTOCONTABILE WHERE EVENTOCONTABILEKEY ";
  static const std::vector<ModificaProvata> Tutte = {
      {"Crediti",
       {Genere::Canalizzazione,
        "CREDITI",
        {UnaRata("201", "1", "31/01/2006", "04/03/2006", "15/03/2006", "B06", "B07"),
         UnaRata("201", "2", "28/02/2006", "04/04/2006", "15/04/2006", "B06", ""),
         UnaRata("201", "3", "31/03/2006", "#null#", "", "#null#", "B07")},
        {},
        {}},
       "",
       3,
       Rate1 + "IN (101,102)",
       Togli + "IN (101,102)"},
      {"Debiti",
       {Genere::Canalizzazione,
        "DEBITI",
        {UnaRata("203", "1", "04/03/2006", "04/03/2006", "20/03/2006", "B07", "B06")},
        {},
        {}},
       "",
       1,
       Rate1 + "=107",
       Togli + "=107"},
      {"BancaPresunti",
       {Genere::BancaPresunti,
        "PRESUNTI",
        {},
        {UnaBanca(UnDocumento(403, "C01", "CD", "5"), "B07", "B06"),
         UnaBanca(UnDocumento(402, "C02", "AB", "124"), "#null#", "B06")},
        {}},
       "",
       2,
       Rate1 + "=5",
       Togli + "=5"},
      {"Consegna",
       {Genere::Consegna,
        "PRESUNTI",
        {},
        {UnaConsegna(UnDocumento(403, "C01", "CD", "5"), "28/02/2006", "28/02/2006", "15/03/2006"),
         UnaConsegna(UnDocumento(404, "C01", "EF", ""), "01/01/2007", "31/12/2006", "#null#")},
        {}},
       "",
       2,
       "UPDATE EVENTOCONTABILE SET DATACONSEGNA='2006-12-01' WHERE EVENTOCONTABILEKEY=5",
       Togli + "=5"},
      {"SospendiPartita", UnAzione({"001", "SOSPESOCREA", "C02", "2006   2", ""}), "", 1, "", Togli + "IN (105,106)"},
      {"RiattivaPartita", UnAzione({"001", "SOSPESOCANCELLA", "C02", "2006   2", ""}),
       "UPDATE EVENTOCONTABILE SET SOSPESA='S' WHERE PARTITACONTABILEKEY=202", 1, "", Togli + "IN (105,106)"},
      {"SospendiPresunto", UnAzione({"001", "PRESUNTOCREA", "CD", "06", "5", "T01", ""}), "", 1, "", Togli + "=5"},
      {"RiattivaPresunto", UnAzione({"001", "PRESUNTOCANCELLA", "CD", "06", "5", "T01", ""}),
       "UPDATE EVENTOCONTABILE SET SOSPESA='S' WHERE MOVIMENTOKEY=403", 1, "", Togli + "=5"},
      {"CancellaExtra", UnAzione({"001", "EXTRADEL", "A", "2006", "2", ""}), "", 1, "", ""},
      {"ScadenzePartita",
       UnAzione({"001", "SCRIVISCADENZE", "C01", "2006   1", "", "1", "20060131", "20060601", "1", "20060228",
                 "20060701", "", "", ""}),
       "", 2, "", Togli + "IN (101,102)"},
      {"ScadenzeExtra",
       UnAzione({"001", "EXTRASCRIVISCAD", "A", "2006", "2", "1", "20060331", "20060601", "1", "20060430", "20060701"}),
       "", 2, "UPDATE EVENTOCONTABILE SET DATASCADENZA='2006-12-01' WHERE EVENTOCONTABILEKEY=108", Togli + "=108"}};
  return Tutte;
}

inline const ModificaProvata& TrovaModifica(std::string_view nome) {
  for (const ModificaProvata& provata : ModificheProvate()) {
    if (provata.nome == nome) {
      return provata;
    }
  }
  throw std::invalid_argument(std::string(nome));
}

/// Runs the procedure of the command, as it would run after the host's yes.
inline std::string EseguiModifica(const ModificaChiesta& modifica, MsgAnnulla& msg) {
  using Genere = ModificaChiesta::Genere;
  switch (modifica.genere) {
  case Genere::Canalizzazione:
    return procedureLumoDB2::AggiornaCanalizzazione(modifica.canalizzazioni, msg, modifica.tipo);
  case Genere::BancaPresunti:
    return procedureLumoDB2::AggiornaBancaPresunti(modifica.consegne, msg, modifica.tipo);
  case Genere::Consegna:
    return procedureLumoDB2::AggiornaConsegna(modifica.consegne, msg, modifica.tipo);
  case Genere::Azione:
    return procedureLumoDB2::EseguiAzioneDB2(modifica.parametri, &msg);
  case Genere::Nessuna:
    break;
  }
  return "";
}

inline std::set<std::string> NomiDelleNote() {
  std::set<std::string> nomi;
  for (const Nota& nota : LeggiNote(ActiveServices().environment().CartellaLocale)) {
    nomi.insert(nota.nome);
  }
  return nomi;
}

/// The note that a command leaves which ended in that phase; returns its name.
inline std::string LasciaNota(const ModificaChiesta& modifica, FaseNota fase,
                              const std::vector<std::string>& rimaste = {}) {
  const std::set<std::string> prima = NomiDelleNote();
  {
    NotaInCorso nota;
    nota.Comincia("PROVA", "/DI");
    switch (modifica.genere) {
    case ModificaChiesta::Genere::Canalizzazione:
      nota.Prepara(modifica.tipo, modifica.canalizzazioni);
      break;
    case ModificaChiesta::Genere::BancaPresunti:
    case ModificaChiesta::Genere::Consegna:
      nota.Prepara(modifica.genere, modifica.tipo, modifica.consegne);
      break;
    default:
      nota.Prepara(modifica.parametri);
    }
    nota.Avviata("10.0.0.1", "VB0001", {"001"});
  }
  std::set<std::string> nuove = NomiDelleNote();
  for (const std::string& nome : prima) {
    nuove.erase(nome);
  }
  if (nuove.size() != 1) {
    throw std::runtime_error("the note was not written");
  }
  const std::string nome = *nuove.begin();
  if (fase != FaseNota::Avviata) {
    const NotaPresa presa(ActiveServices().environment().CartellaLocale, nome);
    Nota nota = presa.Leggi();
    nota.fase = fase;
    nota.rispostaHost = fase == FaseNota::Rifiutata ? "conto bloccato" : "Variate 3 scadenze";
    nota.righeRimaste = rimaste;
    presa.SegnaFase(nota);
  }
  return nome;
}

} // namespace lumoscad::test
