#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad {

// What the administrator of the link to a host, and of the database, needs. Everything here takes the settings of the
// environment, returns Italian texts, never throws, and may be called on any thread.

/// The key that a host on the network presents, before anything is entrusted to it.
struct ChiavePresentata {
  std::string errore;   ///< why there is no key to register; empty when all is well
  bool nota = false;    ///< the key is known already
  std::string tipo;     ///< "ssh-ed25519"
  std::string impronta; ///< "SHA256:..."
  std::string riga;     ///< the line that makes it known
  std::string file;     ///< the file of known hosts
};

/// Connects to a host and asks for its key; nobody is logged in. A key that speaks against a known one is an error.
[[nodiscard]] ChiavePresentata ChiediChiaveHost(std::string_view host) noexcept;

/// Makes a key known that `ChiediChiaveHost` gave without an error. Returns the empty text, or why it failed.
[[nodiscard]] std::string RegistraChiaveHost(const ChiavePresentata& chiave) noexcept;

/// How one operation of the link went.
struct PassoProva {
  std::string operazione; ///< the operation's name
  bool riuscito = false;
  std::string dettaglio; ///< what was seen, or why it does not work
};

/// Runs through the five operations of the link with a file of its own in the host's /tmp, which it removes again, and
/// hands each outcome to `mostra`. With an empty `programma` it looks for the back-end program without starting it;
/// otherwise it runs `programma` without parameters and expects an XML answer. Then it takes a lock that no list uses
/// (PROVA0 to PROVA9, the first that is free), reads it, says who may read it, and frees it; and says whether the note
/// of a command that is cut short can be written in the local directory. True when everything works; what `mostra`
/// raises ends the test, and its file and its lock are removed all the same. It uses the link that commands use: while
/// a command or another test runs, on whatever thread, it is refused, and so is a command while it runs.
[[nodiscard]] bool ProvaHost(std::string_view host, std::string_view programma,
                             const std::function<void(const PassoProva&)>& mostra) noexcept;

/// Looks at the database that the "-DB2..." options of `comando` name and hands each outcome to `mostra`; nothing is
/// written. True when everything is as the commands need it. No text holds the password. It takes the turn as
/// `ProvaHost` does.
[[nodiscard]] bool ProvaBaseDati(std::string_view comando,
                                 const std::function<void(const PassoProva&)>& mostra) noexcept;

/// The lock of a list on the host, as it was seen.
struct BloccoLista {
  std::string lista;    ///< "CREDITI", "DEBITI", "PRESUNTI", or of a test "PROVA0" to "PROVA9"
  bool preso = false;   ///< somebody holds it
  std::string chi;      ///< who: the lock's first line, without control characters and not over 200 of them
  std::string quando;   ///< since when: its second line
  std::string impronta; ///< what tells it from every other lock of the same list
  std::string errore;   ///< why nothing is known of it; empty when all is well
};

/// Looks at every lock on the host and changes nothing: those of the lists, whether held or not, and those of tests
/// that are held. It uses the link as `ProvaHost` does; where that is refused each lock says why.
[[nodiscard]] std::vector<BloccoLista> LeggiBlocchi(std::string_view host) noexcept;

/// The same for one list; an unknown one is an error.
[[nodiscard]] BloccoLista LeggiBlocco(std::string_view host, std::string_view lista) noexcept;

/// What became of a lock that was to be removed.
struct EsitoBlocco {
  bool tolto = false;    ///< this lock holds the list no more
  std::string dettaglio; ///< why not, or that somebody else had removed it already; else empty
};

/// Removes a lock that `LeggiBlocco` has given, and no other: it is looked at once more, and one that has changed since
/// stays. The program that took it is not told; it goes on as if it held the list.
[[nodiscard]] EsitoBlocco TogliBlocco(std::string_view host, const BloccoLista& visto) noexcept;

/// One record of a change that was left over, as the database holds it now.
struct RigaInSospeso {
  std::string riga;  ///< as the person knows it from the screen
  std::string stato; ///< "come prima", "fatta", "cambiata da altri"
};

/// What is known of a command that ended, or was ended, before host and database were seen to agree.
struct NotaInSospeso {
  std::string nome;     ///< the note's name, by which the functions below are told which one is meant
  std::string errore;   ///< why the note, or what the database holds of it, could not be read; empty when all is well
  bool inCorso = false; ///< its command runs still, or somebody is realigning it
  bool archiviata = false;          ///< put aside; `consiglio` holds the reason
  std::string chi;                  ///< the command, its workstation, company and host
  std::string quando;               ///< since when
  std::string host;                 ///< what the host has answered, or that it is not known
  std::string baseDati;             ///< how far the command had come in the database
  std::vector<RigaInSospeso> righe; ///< what the database holds now; empty where it was not asked
  std::string consiglio;            ///< what to do next
  std::string domanda;  ///< what must be answered yes before `RiallineaInSospeso`; empty where there is nothing to ask
  std::string testo;    ///< all of this in lines, but for the question
  std::string impronta; ///< what tells it from the same note after a change
};

/// All that is left over, in the local directory of this workstation.
struct ElencoInSospeso {
  bool riuscito = false;           ///< everything could be read
  std::vector<NotaInSospeso> note; ///< oldest first, those that were put aside last
  std::string testo;               ///< what a person reads of it, also why nothing could be read
};

/// Looks at what is left over; nothing is changed, but that what was put aside 90 days ago goes. With "-DB2..." options
/// in `comando` that database is asked what it holds of each change; without any it is left alone. It takes the turn as
/// `ProvaHost` does.
[[nodiscard]] ElencoInSospeso LeggiInSospeso(std::string_view comando) noexcept;

/// The same for one of them.
[[nodiscard]] NotaInSospeso LeggiNotaInSospeso(std::string_view nome, std::string_view comando) noexcept;

/// What became of a note that was to be realigned or put aside.
struct EsitoInSospeso {
  bool riuscito = false; ///< nothing of it is open any more
  std::string testo;     ///< what a person reads of it
};

/// Finishes a change that `LeggiNotaInSospeso` has given: what the database holds as before is written as the command
/// would have written it, in one transaction, and the note goes when nothing is open. What others have changed stays,
/// and so does the note. `vista.domanda` must have been answered yes. A note that has changed since it was looked at is
/// refused, and so is one whose command runs. The host is not asked. It takes the turn as `ProvaHost` does.
[[nodiscard]] EsitoInSospeso RiallineaInSospeso(const NotaInSospeso& vista, std::string_view comando) noexcept;

/// Puts a note aside, with the reason: it is listed apart from then on, and removed in time.
[[nodiscard]] EsitoInSospeso ArchiviaInSospeso(std::string_view nome, std::string_view motivo) noexcept;

} // namespace lumoscad
