#include "Bersagli.hpp"

#include "common/Nota.hpp"
#include "common/TestoNota.hpp"
#include "platform/LocalFile.hpp"
#include "platform/RuntimeError.hpp"
#include "support/TestBench.hpp"

namespace lumoscad::fuzz {
namespace {

enum class FileNota { Contenuto, Fase, Archivio };

std::string Riscritto(FileNota quale, const Nota& nota) {
  std::string testo;
  switch (quale) {
  case FileNota::Contenuto:
    return testoNota::DiNota({nota.inizio, nota.postazione, nota.processo, nota.tipoComando, nota.azienda, nota.host,
                              nota.programma, nota.richiesta, nota.origineDati, nota.parametriHost,
                              testoNota::DiModifica(nota.modifica), nota.utente, nota.schema});
  case FileNota::Fase:
    testoNota::ComponiFase(testo, {nota.fase, nota.momentoFase, nota.rispostaHost, nota.transazione},
                           nota.righeRimaste);
    return testo;
  case FileNota::Archivio:
    return testoNota::DiArchivio(nota.archiviata.value());
  }
  return testo;
}

void Leggi(FileNota quale, std::string_view testo, Nota& nota) {
  switch (quale) {
  case FileNota::Contenuto:
    testoNota::LeggiContenuto(testo, nota);
    break;
  case FileNota::Fase:
    testoNota::LeggiFase(testo, nota);
    break;
  case FileNota::Archivio:
    testoNota::LeggiArchivio(testo, nota);
    break;
  }
}

/// Why the text cannot be read; empty where it can.
std::string Rifiuto(FileNota quale, std::string_view testo, Nota& nota) {
  try {
    Leggi(quale, testo, nota);
    return "";
  } catch (const RuntimeError& errore) {
    Esigi(errore.Number() == errors::TypeMismatch && !errore.Text().empty(), "un rifiuto senza motivo");
    return errore.Text();
  }
}

} // namespace

void TestoDiNota(Ingresso ingresso) {
  if (ingresso.empty()) {
    return;
  }
  const auto quale = static_cast<FileNota>(ingresso[0] % 3);
  const std::string_view testo = Testo(ingresso.subspan(1));
  Nota nota;
  const std::string rifiuto = Rifiuto(quale, testo, nota);
  if (rifiuto.empty()) {
    const std::string scritto = Riscritto(quale, nota);
    Nota riletta;
    Esigi(Rifiuto(quale, scritto, riletta).empty(), "una nota scritta e non letta");
    Esigi(Riscritto(quale, riletta) == scritto, "una nota che cambia a ogni lettura");
    Esigi(!Rifiuto(quale, testo.substr(0, testo.size() - 1), riletta).empty(), "una nota tagliata presa per intera");
  }
  const test::TestBench banco;
  const std::string& cartella = banco.environment.CartellaLocale;
  const PercorsiNota percorsi(cartella, "sospeso-1");
  WriteLocalFile(percorsi.nota, quale == FileNota::Contenuto ? testo : "lumoscad-nota 1\nfine\n");
  if (quale != FileNota::Contenuto) {
    WriteLocalFile(quale == FileNota::Fase ? percorsi.fase : percorsi.archivio, testo);
  }
  const std::vector<Nota> note = LeggiNote(cartella);
  // One that was put aside long ago goes.
  const bool scaduta = rifiuto.empty() && quale == FileNota::Archivio && note.empty();
  Esigi(scaduta || (note.size() == 1 && note[0].errore.empty() == rifiuto.empty()), "una nota persa o non spiegata");
}

} // namespace lumoscad::fuzz
