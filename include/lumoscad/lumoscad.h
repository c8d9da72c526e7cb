#ifndef LUMOSCAD_H
#define LUMOSCAD_H

#include <stddef.h> /* NOLINT(modernize-deprecated-headers): C programs read this header too */

/** @file
 * The one stable interface, for C and for whatever can call C. Texts are UTF-8 and end with a zero byte, both ways.
 * Nothing but results comes out of it: no exception, no end of the process, no signal handler, no change of locale, and
 * no output but a message that could not be shown, which goes to the standard error. Module-level values (the options
 * that stay in force, the link to the host, the windows) are one set a process, however many handles are open; two
 * copies of the library in one process are not provided for. */

#ifdef __cplusplus
extern "C" {
#endif

/* NOLINTBEGIN(modernize-use-using, readability-identifier-naming): in the language and the manner of C */

/** Runs one command line (UTF-8, ended by a zero byte) and copies its result, ended by a zero byte, into
 * `risultato`, a buffer of `dimensione` bytes. Returns the length of the whole result without the zero byte: a value
 * of `dimensione` or more means that the copy was cut. A null `comando` counts as an empty line; a null `risultato`
 * or a `dimensione` of 0 copies nothing. One call runs at a time, on the thread of the windows (that of the process'
 * QApplication, or else the one that gave the first command, for good); any other is refused with "error" and a line on
 * the standard error. Never throws. */
size_t lumoscad_esegui(const char* comando, char* risultato, size_t dimensione);

/** The same for a command line of `lunghezza` bytes, whichever they are. The result is empty, "closed" or "error". */
size_t lumoscad_esegui_n(const char* comando, size_t lunghezza, char* risultato, size_t dimensione);

/* What commands have left over that ended before host and database were seen to agree. The three functions copy an
 * Italian text for the person into `testo`, and return its length, as `lumoscad_esegui` does with its result; `stato`
 * (which may be null) receives how it went. They may be called on any thread, one call at a time: another one, or a
 * command that runs, is LUMOSCAD_ERRORE. None asks the host. Never throw. */
#define LUMOSCAD_RIUSCITO 0    /**< all could be read; or nothing of the note is open any more */
#define LUMOSCAD_ERRORE 1      /**< something could not be read; or something is still open: `testo` says what */
#define LUMOSCAD_DA_CHIEDERE 3 /**< nothing was done: `testo` ends with the question for the person, if any */

/** Lists what is left over; nothing is changed, but that what was put aside 90 days ago goes. `opzioni` are the
 * "-DB2..." options of the database that is to be asked what it holds now; null or empty: none is. */
size_t lumoscad_in_sospeso(const char* opzioni, int* stato, char* testo, size_t dimensione);

/** Finishes the change of the note `nota`. With `conferma` 0 it tells what it would do and changes nothing; otherwise
 * the person has answered yes to what it told last: where that is no longer so nothing is changed, and it tells anew,
 * with LUMOSCAD_DA_CHIEDERE. A note of which this process was told nothing is finished as it is found. */
size_t lumoscad_riallinea(const char* nota, const char* opzioni, int conferma, int* stato, char* testo,
                          size_t dimensione);

/** Puts the note `nota` aside, with the reason `motivo`. */
size_t lumoscad_archivia(const char* nota, const char* motivo, int* stato, char* testo, size_t dimensione);

/* The numbers that the functions below return. Later versions may add some. */
#define LUMOSCAD_CHIUSO 4        /**< the person left the screen without a change */
#define LUMOSCAD_RIFIUTATO 5     /**< another call runs, or the windows belong to another thread: nothing was done */
#define LUMOSCAD_ARGOMENTO 6     /**< an argument is missing, where null is not said to be allowed: nothing was done */
#define LUMOSCAD_NON_UTF8 7      /**< an argument is not UTF-8: nothing was done */
#define LUMOSCAD_SENZA_MEMORIA 8 /**< no memory to begin with, or for what was found; never after a command */
#define LUMOSCAD_INTERROTTO 9    /**< the caller's own function ended the test */

/** The version of the library that runs, as "1.2.3", for good; on any thread. */
const char* lumoscad_versione(void);

/** The same as a number: 10203. */
unsigned long lumoscad_versione_numero(void);

/** A caller: what it has set, and its last error. It costs memory and nothing else. One thread at a time may use it;
 * several may be open at once, and all of them share the one turn. */
typedef struct lumoscad_maniglia lumoscad_maniglia;

/** Opens a handle, and puts null into `*maniglia` where it fails. What is opened is to be closed by lumoscad_chiudi. */
int lumoscad_apri(lumoscad_maniglia** maniglia);

/** Closes a handle; null is allowed. Results that it gave stay. Not while one of its own calls runs. */
void lumoscad_chiudi(lumoscad_maniglia* maniglia);

/** The number that the last call on this handle returned. Of a null handle LUMOSCAD_ARGOMENTO. */
int lumoscad_errore(const lumoscad_maniglia* maniglia);

/** What a person reads of it; empty after LUMOSCAD_RIUSCITO. It stays until the next call on the handle. */
const char* lumoscad_errore_testo(const lumoscad_maniglia* maniglia);

/** Over which window of the caller's the windows of this handle's commands open, and stay: on X11 its number, 0 for
 * none (so it is at first). Elsewhere it is ignored: on Wayland a window has no number that another part of the program
 * could name it by. A number that is no window's is the window manager's to ignore. What the caller's own window does
 * meanwhile is the caller's business. */
int lumoscad_finestra_madre(lumoscad_maniglia* maniglia, unsigned long finestra);

/** With 0 the texts of this handle's calls are taken as they come; otherwise (so it is at first) each must be UTF-8.
 * For a password, say, that the database wants in another character set. */
int lumoscad_controlla_testi(lumoscad_maniglia* maniglia, int controlla);

/** A result: texts by the number of their field, and entries, each of which is a result too. */
typedef struct lumoscad_esito lumoscad_esito;

#define LUMOSCAD_CAMPO_TESTO 1       /**< the result of a command; else what a person reads of it all */
#define LUMOSCAD_CAMPO_MESSAGGIO 2   /**< what a command last told the person */
#define LUMOSCAD_CAMPO_ERRORE 3      /**< why nothing, or not all, is known of it; empty when all is well */
#define LUMOSCAD_CAMPO_NOME 4        /**< of a list, of a note, of one of its rows */
#define LUMOSCAD_CAMPO_CHI 5         /**< who holds the list; whose command it was */
#define LUMOSCAD_CAMPO_QUANDO 6      /**< since when */
#define LUMOSCAD_CAMPO_IMPRONTA 7    /**< what tells it from every other, and from itself after a change */
#define LUMOSCAD_CAMPO_STATO 8       /**< of a row: "come prima", "fatta", "cambiata da altri" */
#define LUMOSCAD_CAMPO_TIPO 9        /**< of a key: "ssh-ed25519" */
#define LUMOSCAD_CAMPO_RIGA 10       /**< the line that makes a key known */
#define LUMOSCAD_CAMPO_FILE 11       /**< the file of known hosts */
#define LUMOSCAD_CAMPO_NOTA 12       /**< yes or no: the key is known already */
#define LUMOSCAD_CAMPO_PRESO 13      /**< yes or no: somebody holds the list */
#define LUMOSCAD_CAMPO_IN_CORSO 14   /**< yes or no: the note's command runs still, or somebody is realigning it */
#define LUMOSCAD_CAMPO_ARCHIVIATA 15 /**< yes or no: the note was put aside */
#define LUMOSCAD_CAMPO_HOST 16       /**< what the host has answered, or that it is not known */
#define LUMOSCAD_CAMPO_BASE_DATI 17  /**< how far the command had come in the database */
#define LUMOSCAD_CAMPO_CONSIGLIO 18  /**< what to do next */
#define LUMOSCAD_CAMPO_DOMANDA 19    /**< what must be answered yes before the note is realigned; empty: nothing */

/** A field's text, which stays until the result is freed, and its length in `*lunghezza` (which may be null); the empty
 * text where the result has no such field, and of a null result. */
const char* lumoscad_campo(const lumoscad_esito* esito, int campo, size_t* lunghezza);

/** 1 where a field that says yes or no says yes, else 0. */
int lumoscad_campo_vero(const lumoscad_esito* esito, int campo);

/** How many entries a result has; of a null one none. */
size_t lumoscad_voci(const lumoscad_esito* esito);

/** The entry at `indice`, from 0; null beyond the last. It belongs to its result. */
const lumoscad_esito* lumoscad_voce(const lumoscad_esito* esito, size_t indice);

/** Frees a result, not an entry; null is allowed. */
void lumoscad_libera(lumoscad_esito* esito);

/* The functions below return one of the numbers, and leave it in the handle with its text. Where `esito` is not null,
 * `*esito` receives a result to be freed, or null where there is none: after LUMOSCAD_RIUSCITO there always is one. */

/** Runs one command line, as lumoscad_esegui does and on the same terms: LUMOSCAD_RIUSCITO where that gives the empty
 * text, LUMOSCAD_CHIUSO for "closed", LUMOSCAD_ERRORE for "error", with what the person was told last as the text.
 * LUMOSCAD_RIFIUTATO where it was refused. The result has LUMOSCAD_CAMPO_TESTO and LUMOSCAD_CAMPO_MESSAGGIO. */
int lumoscad_esegui_riga(lumoscad_maniglia* maniglia, const char* riga, lumoscad_esito** esito);

/* What the administrator of the link to a host, and of the database, needs; on any thread. All but the first two use
 * the link that commands use, one call at a time: the others are LUMOSCAD_RIFIUTATO, and so is a command meanwhile. */

/** Asks a host for its key; nobody is logged in. The result has TIPO, IMPRONTA, RIGA, FILE and NOTA. A key that speaks
 * against a known one is LUMOSCAD_ERRORE. */
int lumoscad_chiave_host(lumoscad_maniglia* maniglia, const char* host, lumoscad_esito** esito);

/** Makes a key known: `riga` and `file` are those of lumoscad_chiave_host after LUMOSCAD_RIUSCITO. */
int lumoscad_registra_chiave(lumoscad_maniglia* maniglia, const char* riga, const char* file);

/** Is told how one operation went, on the thread of the call; `utente` is the caller's own pointer. Anything but 0 ends
 * the test, which still removes its file and its lock. What it throws (in C++) goes no further, and ends it too. */
typedef int (*lumoscad_mostra)(void* utente, const char* operazione, int riuscito, const char* dettaglio);

/** Runs through the operations of the link with a file of its own, and through those of a lock that no list uses.
 * A null or empty `programma`: the back-end program is looked for and not started; otherwise `programma` is run without
 * parameters. LUMOSCAD_RIUSCITO when everything works. A refusal is told to `mostra` too. */
int lumoscad_prova_host(lumoscad_maniglia* maniglia, const char* host, const char* programma, lumoscad_mostra mostra,
                        void* utente);

/** Looks at the database that the "-DB2..." options name; nothing is written, and no text holds the password. */
int lumoscad_prova_base_dati(lumoscad_maniglia* maniglia, const char* opzioni, lumoscad_mostra mostra, void* utente);

/** Looks at every lock on the host and changes nothing: an entry for each of the lists, and for each of a test that is
 * held, with NOME, PRESO, CHI, QUANDO, IMPRONTA and ERRORE. LUMOSCAD_ERRORE where one could not be read. */
int lumoscad_blocchi(lumoscad_maniglia* maniglia, const char* host, lumoscad_esito** esito);

/** The same of one list, in the result itself. */
int lumoscad_blocco(lumoscad_maniglia* maniglia, const char* host, const char* lista, lumoscad_esito** esito);

/** Removes the lock of `lista` that `impronta` (of a look at it) tells from others, and no other: one that has changed
 * since stays. Who took it is not told. LUMOSCAD_CAMPO_TESTO says that somebody else had removed it already. */
int lumoscad_libera_blocco(lumoscad_maniglia* maniglia, const char* host, const char* lista, const char* impronta,
                           lumoscad_esito** esito);

/** Looks at what is left over, as lumoscad_in_sospeso does: TESTO, and an entry for each note, oldest first, those put
 * aside last, as lumoscad_nota gives it. A null `opzioni` asks no database. */
int lumoscad_note(lumoscad_maniglia* maniglia, const char* opzioni, lumoscad_esito** esito);

/** One note: NOME, ERRORE, IN_CORSO, ARCHIVIATA, CHI, QUANDO, HOST, BASE_DATI, CONSIGLIO, DOMANDA, TESTO, IMPRONTA, and
 * an entry for each row, with NOME and STATO. LUMOSCAD_ERRORE where it, or its rows, could not be read. */
int lumoscad_nota(lumoscad_maniglia* maniglia, const char* nome, const char* opzioni, lumoscad_esito** esito);

/** Finishes the change of a note that lumoscad_nota has given, whose question must have been answered yes: `impronta`
 * is that look's. A note that has changed since, or whose command runs, is LUMOSCAD_ERRORE. The host is not asked.
 * LUMOSCAD_RIUSCITO when nothing of it is open any more; TESTO either way. */
int lumoscad_riallinea_nota(lumoscad_maniglia* maniglia, const char* nome, const char* impronta, const char* opzioni,
                            lumoscad_esito** esito);

/** Puts a note aside, with the reason. TESTO says how it went. */
int lumoscad_archivia_nota(lumoscad_maniglia* maniglia, const char* nome, const char* motivo, lumoscad_esito** esito);

/* NOLINTEND(modernize-use-using, readability-identifier-naming) */

#ifdef __cplusplus
}
#endif

#endif
