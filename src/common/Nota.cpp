#include "common/Nota.hpp"

#include "common/Testo.hpp"
#include "common/TestoNota.hpp"
#include "platform/LocalFile.hpp"
#include "platform/RuntimeError.hpp"
#include "platform/Services.hpp"
#include "platform/base/SystemError.hpp"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <limits>
#include <system_error>
#include <utility>

namespace lumoscad {
namespace {

constexpr std::string_view Inizio = "sospeso-";
constexpr std::string_view AltroInizio = "in-sospeso-";

constexpr std::string_view DellaNota = ".nota";
constexpr std::string_view DellaFase = ".fase";
constexpr std::string_view DellaConferma = ".conferma";
constexpr std::string_view DellArchivio = ".archivio";
constexpr std::string_view DellaParte = ".parte";

/// How much of a file is read, in bytes: a list of hundreds of thousands of rows, and what no command has ever written.
constexpr std::size_t MassimoNota = std::size_t{256} * 1024 * 1024;
constexpr std::chrono::days DurataArchivio{90};
constexpr std::chrono::hours DurataParte{1};

bool ConInizio(std::string_view nome) {
  return nome.starts_with(Inizio) || nome.starts_with(AltroInizio);
}

bool NomeAmmesso(std::string_view nome) {
  static constexpr std::size_t Massimo = 100;
  const bool caratteri = std::all_of(
      nome.begin(), nome.end(), [](char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || c == '-'; });
  return caratteri && nome.size() <= Massimo && ConInizio(nome);
}

[[noreturn]] void NotaAssente(std::string_view nome) {
  throw RuntimeError(errors::FileNotFound, "Non c'è nessuna nota di nome «" + std::string(nome) + "».");
}

/// Reads one file of a note with `leggi`; one that is not there leaves the note as it is, and is told as false.
template <typename Lettura> bool LeggiFile(const std::string& percorso, Nota& nota, Lettura leggi) {
  try {
    leggi(ReadLocalFile(percorso, MassimoNota), nota);
  } catch (const RuntimeError& errore) {
    if (errore.Number() == errors::FileNotFound) {
      return false;
    }
    nota.errore = nota.errore.empty() ? errore.Text() : nota.errore;
  }
  return true;
}

/// A phase that was only marked. Whatever the one before it holds of a transaction is of another.
void LeggiConferma(std::string_view testo, Nota& nota) {
  if (!testo.empty()) {
    testoNota::LeggiFase(testo, nota);
  }
  nota.fase = FaseNota::ConfermaInviata;
  nota.transazione.clear();
}

/// The note of these files; nothing where it is gone.
std::optional<Nota> Letta(const PercorsiNota& percorsi, std::string_view nome) {
  Nota nota;
  nota.nome = nome;
  nota.inCorso = HeldBySomebody(percorsi.nota);
  try {
    testoNota::LeggiContenuto(ReadLocalFile(percorsi.nota, MassimoNota), nota);
  } catch (const RuntimeError& errore) {
    if (errore.Number() == errors::FileNotFound) {
      return std::nullopt;
    }
    nota.errore = errore.Text();
  }
  LeggiFile(percorsi.fase, nota, testoNota::LeggiFase);
  // A mark is of a COMMIT whose phase could not be written; what was written since counts more.
  if (nota.fase == FaseNota::Avviata || nota.fase == FaseNota::Accettata) {
    if (!LeggiFile(percorsi.conferma, nota, LeggiConferma) && MarkedInPlace(percorsi.nota)) {
      LeggiConferma({}, nota);
    }
  }
  LeggiFile(percorsi.archivio, nota, testoNota::LeggiArchivio);
  nota.inCorso = nota.inCorso || WriterMayLive(percorsi.nota, nota.processo);
  return nota;
}

/// What of a name is left when `fine` is taken from its end; nothing where it ends otherwise.
std::optional<std::string> Senza(std::string_view nome, std::string_view fine) {
  return nome.ends_with(fine) ? std::optional<std::string>(nome.substr(0, nome.size() - fine.size())) : std::nullopt;
}

/// The names of the notes' files among the first `quanti` of a directory.
std::vector<std::string> NomiFile(const std::string& cartella,
                                  std::size_t quanti = std::numeric_limits<std::size_t>::max()) {
  std::vector<std::string> nomi;
  std::error_code errore;
  for (std::filesystem::directory_iterator voce(cartella, errore), fine; !errore && voce != fine && quanti > 0;
       voce.increment(errore), --quanti) {
    std::string nome = voce->path().filename().string();
    if (ConInizio(nome)) {
      nomi.push_back(std::move(nome));
    }
  }
  if (errore && errore != std::errc::no_such_file_or_directory) {
    throw RuntimeError(errors::FileAccess, "Impossibile leggere la cartella locale " + cartella + ": " +
                                               base::SystemErrorText(errore.value()));
  }
  return nomi;
}

std::chrono::sys_days GiornoDi(const DateTime& momento) {
  return std::chrono::year_month_day(std::chrono::year(momento.year),
                                     std::chrono::month(static_cast<unsigned>(momento.month)),
                                     std::chrono::day(static_cast<unsigned>(momento.day)));
}

bool Scaduta(const PercorsiNota& percorsi) {
  Nota nota;
  LeggiFile(percorsi.archivio, nota, testoNota::LeggiArchivio);
  return nota.archiviata &&
         GiornoDi(ActiveServices().localTime()) - GiornoDi(nota.archiviata->momento) > DurataArchivio;
}

/// What is left of a note that is gone, or that a command which died had begun to write.
bool Resto(const std::string& cartella, const std::string& file) {
  std::error_code errore;
  if (const auto nome = Senza(file, DellaParte)) {
    const auto ora = std::filesystem::file_time_type::clock::now();
    const auto inizio = std::filesystem::last_write_time(cartella + "/" + file, errore);
    return !errore && NomeAmmesso(*nome) && ora - inizio > DurataParte;
  }
  for (const auto fine : {DellaFase, DellaConferma, DellArchivio}) {
    if (const auto nome = Senza(file, fine)) {
      const PercorsiNota percorsi(cartella, *nome);
      // Not to be told is not to be gone.
      return NomeAmmesso(*nome) &&
             std::filesystem::symlink_status(percorsi.nota, errore).type() == std::filesystem::file_type::not_found;
    }
  }
  return false;
}

void TogliScadute(const std::string& cartella, std::size_t quanti) {
  for (const std::string& file : NomiFile(cartella, quanti)) {
    std::error_code errore;
    if (const auto nome = Senza(file, DellaNota)) {
      const PercorsiNota percorsi(cartella, *nome);
      if (Scaduta(percorsi) && !HeldBySomebody(percorsi.nota)) {
        TogliNota(percorsi);
      }
    } else if (Resto(cartella, file)) {
      std::filesystem::remove(cartella + "/" + file, errore);
    }
  }
}

} // namespace

PercorsiNota::PercorsiNota(const std::string& cartella, std::string_view nome) {
  const std::string inizio = (cartella + "/").append(nome);
  nota = inizio + std::string(DellaNota);
  fase = inizio + std::string(DellaFase);
  conferma = inizio + std::string(DellaConferma);
  archivio = inizio + std::string(DellArchivio);
  parte = inizio + std::string(DellaParte);
}

std::string_view InizioNome(std::string_view postazione) {
  // A request's name begins with the workstation's identifier, a lock's with "VB", a temporary file's with ".": no two
  // of these beginnings share a first character with both of ours.
  return SenzaSpaziAiLati(postazione).starts_with(Inizio.front()) ? AltroInizio : Inizio;
}

std::vector<Nota> LeggiNote(const std::string& cartella) {
  TogliNoteScadute(cartella);
  std::vector<Nota> note;
  for (const std::string& file : NomiFile(cartella)) {
    const auto nome = Senza(file, DellaNota);
    if (!nome || !NomeAmmesso(*nome)) {
      continue;
    }
    if (auto nota = Letta(PercorsiNota(cartella, *nome), *nome)) {
      note.push_back(std::move(*nota));
    }
  }
  // The time in the names counts, not by which of the two beginnings they have.
  std::sort(note.begin(), note.end(), [](const Nota& prima, const Nota& altra) {
    const auto parte = [](std::string_view nome) {
      return nome.substr((nome.starts_with(Inizio) ? Inizio : AltroInizio).size());
    };
    return std::pair(parte(prima.nome), std::string_view(prima.nome)) <
           std::pair(parte(altra.nome), std::string_view(altra.nome));
  });
  return note;
}

Nota LeggiNota(const std::string& cartella, std::string_view nome) {
  auto nota = NomeAmmesso(nome) ? Letta(PercorsiNota(cartella, nome), nome) : std::nullopt;
  if (!nota) {
    NotaAssente(nome);
  }
  return std::move(*nota);
}

NotaPresa::NotaPresa(const std::string& cartella, std::string_view nome) : cartella_(cartella), nome_(nome) {
  if (!NomeAmmesso(nome)) {
    NotaAssente(nome);
  }
  try {
    auto file = HeldFile::Take(PercorsiNota(cartella, nome).nota);
    if (!file) {
      throw RuntimeError(errors::FileAccess, "La nota «" + nome_ +
                                                 "» è di un comando ancora in corso, o qualcuno ci sta già "
                                                 "lavorando.");
    }
    presa_ = std::move(*file);
    const auto nota = Letta(PercorsiNota(cartella, nome), nome);
    if (nota && WriterMayLive(PercorsiNota(cartella, nome).nota, nota->processo)) {
      presa_.LetGo();
      throw RuntimeError(errors::FileAccess,
                         "La cartella locale non ha blocchi, e il programma che ha scritto la nota «" + nome_ +
                             "» è ancora aperto: chiuderlo, e ripetere (processo " + std::to_string(nota->processo) +
                             ").");
    }
  } catch (const RuntimeError& errore) {
    if (errore.Number() == errors::FileNotFound) {
      NotaAssente(nome);
    }
    throw;
  }
}

Nota NotaPresa::Leggi() const {
  auto nota = Letta(PercorsiNota(cartella_, nome_), nome_);
  if (!nota) {
    NotaAssente(nome_);
  }
  nota->inCorso = false;
  return std::move(*nota);
}

void NotaPresa::SegnaFase(const Nota& nota) const {
  const PercorsiNota percorsi(cartella_, nome_);
  std::string testo;
  testoNota::ComponiFase(testo, {nota.fase, nota.momentoFase, nota.rispostaHost, nota.transazione}, nota.righeRimaste);
  ReplaceLocalFile(percorsi.fase, percorsi.parte, testo,
                   nota.fase == FaseNota::ConfermaInviata ? Durable::NameToo : Durable::Content);
}

void NotaPresa::Archivia(std::string_view motivo) const {
  const PercorsiNota percorsi(cartella_, nome_);
  ReplaceLocalFile(percorsi.archivio, percorsi.parte,
                   testoNota::DiArchivio({std::string(motivo), ActiveServices().localTime()}));
}

void NotaPresa::Cancella() {
  const PercorsiNota percorsi(cartella_, nome_);
  if (!TogliNota(percorsi)) {
    throw RuntimeError(errors::FileAccess, "Impossibile cancellare la nota «" + nome_ + "».");
  }
  presa_.LetGo();
}

void CancellaNota(const std::string& cartella, std::string_view nome) {
  NotaPresa(cartella, nome).Cancella();
}

void ArchiviaNota(const std::string& cartella, std::string_view nome, std::string_view motivo) {
  NotaPresa(cartella, nome).Archivia(motivo);
}

void TogliNoteScadute(const std::string& cartella, std::size_t quanti) noexcept {
  try {
    TogliScadute(cartella, quanti);
  } catch (...) { // NOLINT(bugprone-empty-catch): what is left stays for the next one
  }
}

bool TogliNota(const PercorsiNota& percorsi) noexcept {
  // The phase last: a note without one would tell less than is known.
  if (!RemoveLocalFile(percorsi.nota)) {
    return false;
  }
  for (const std::string* resto : {&percorsi.fase, &percorsi.conferma, &percorsi.archivio, &percorsi.parte}) {
    RemoveLocalFile(*resto);
  }
  return true;
}

} // namespace lumoscad
