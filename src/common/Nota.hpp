#pragma once

#include "common/Accesso.hpp"
#include "common/ModificaChiesta.hpp"
#include "platform/DurableFile.hpp"
#include "platform/SystemClock.hpp"

#include <cstddef>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad {

/// How far the command of a note has come; the last that it could write down.
enum class FaseNota {
  Avviata,         ///< the host's program was about to be started; whether it did its work is not known
  Accettata,       ///< the host said yes; the database holds nothing of the change yet
  Rifiutata,       ///< the host said no
  ConfermaInviata, ///< the host said yes, and COMMIT was about to be sent; what came of it is not known
  Applicata,       ///< the host said yes, and the database holds the change but for `righeRimaste`
  NonApplicata,    ///< the host said yes, and the database kept nothing
  Sconosciuta      ///< the host said yes, and nobody knows whether the database kept the change
};

/// That somebody put a note aside.
struct ArchivioNota {
  std::string motivo;
  DateTime momento;
};

/// A command under way, or one that ended while host and database differed, or may differ. It holds no password.
struct Nota {
  std::string nome;   ///< by which a person names it
  std::string errore; ///< why it cannot be read; empty where it can. The rest is then what could be read
  int versione = 0;
  DateTime inizio;         ///< when the host's program was about to be started
  std::string postazione;  ///< the workstation's identifier
  long processo = 0;       ///< the number of the process whose command it is
  std::string tipoComando; ///< as "BANCA /CREDITI"
  std::string azienda;     ///< the company code
  std::string host;        ///< the host's address
  std::string programma;   ///< the program on the host
  std::string richiesta;   ///< the request file's name on the host; empty where the request has none
  std::string origineDati; ///< the ODBC data source's name
  DatoAccesso utente;      ///< of the database
  DatoAccesso schema;      ///< of the database
  std::vector<std::string> parametriHost;
  ModificaChiesta modifica;
  FaseNota fase = FaseNota::Avviata;
  DateTime momentoFase;     ///< of a note without a later phase its beginning
  std::string rispostaHost; ///< what the host's program, or the link to it, said; may be empty
  std::string transazione;  ///< by what the database can be asked for the transaction; may be empty
  std::vector<std::string>
      righeRimaste; ///< of `Applicata`: rows that somebody else had changed, as the person knows them
  std::optional<ArchivioNota> archiviata;
  bool inCorso = false; ///< its command still runs, or somebody is at work on it
};

/// The notes of a local directory, the oldest first, archived ones included. One that cannot be read is among them,
/// with its reason. Notes archived longer than 90 days ago are removed, and what is left of others. Raises error 75
/// when the directory cannot be read; one that is not there has none.
[[nodiscard]] std::vector<Nota> LeggiNote(const std::string& cartella);

/// The note `nome`. Raises error 53 where there is none, and for a name that cannot be a note's.
[[nodiscard]] Nota LeggiNota(const std::string& cartella, std::string_view nome);

/// A note in the hands of whoever finishes it: nobody else gets it meanwhile.
class NotaPresa {
 public:
  /// Raises error 53 where there is none, 75 while its command runs or somebody else has it.
  NotaPresa(const std::string& cartella, std::string_view nome);

  [[nodiscard]] Nota Leggi() const;
  /// Writes down the phase of `nota`, with all that belongs to it. Raises error 75.
  void SegnaFase(const Nota& nota) const;
  /// Puts it aside. Raises error 75.
  void Archivia(std::string_view motivo) const;
  /// Removes it. Raises error 75.
  void Cancella();

 private:
  std::string cartella_;
  std::string nome_;
  HeldFile presa_;
};

/// The same in one step.
void CancellaNota(const std::string& cartella, std::string_view nome);
void ArchiviaNota(const std::string& cartella, std::string_view nome, std::string_view motivo);

/// Where the files of a note stand.
struct PercorsiNota {
  PercorsiNota(const std::string& cartella, std::string_view nome);
  std::string nota;     ///< what the command asks; written once
  std::string fase;     ///< how far it has come; replaced at each phase
  std::string conferma; ///< that COMMIT was about to be sent, where there was no room to write that phase: what this
                        ///< file holds, if anything, is the phase before
  std::string archivio; ///< that it was put aside
  std::string parte;    ///< what is being written of one of them
};

/// The beginning of the names of a workstation's notes: never that of its requests, of a lock or of a temporary file.
[[nodiscard]] std::string_view InizioNome(std::string_view postazione);

/// Removes notes archived longer than 90 days ago, and what is left of notes that are gone. What cannot be removed
/// stays. No more than `quanti` files of the directory are looked at.
void TogliNoteScadute(const std::string& cartella,
                      std::size_t quanti = std::numeric_limits<std::size_t>::max()) noexcept;

/// Removes the files of a note. False where the note itself stays.
bool TogliNota(const PercorsiNota& percorsi) noexcept;

} // namespace lumoscad
