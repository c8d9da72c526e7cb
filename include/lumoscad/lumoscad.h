#ifndef LUMOSCAD_H
#define LUMOSCAD_H

#include <stddef.h> /* NOLINT(modernize-deprecated-headers): C programs read this header too */

#ifdef __cplusplus
extern "C" {
#endif

/* Runs one command line (UTF-8, ended by a zero byte) and copies its result, ended by a zero byte, into
 * `risultato`, a buffer of `dimensione` bytes. Returns the length of the whole result without the zero byte: a value
 * of `dimensione` or more means that the copy was cut. A null `comando` counts as an empty line; a null `risultato`
 * or a `dimensione` of 0 copies nothing. One call runs at a time, on the thread of the windows (that of the process'
 * QApplication, or else the one that gave the first command, for good); any other is refused with "error" and a line on
 * the standard error. Never throws. */
size_t lumoscad_esegui(const char* comando, char* risultato, size_t dimensione);

/* What commands have left over that ended before host and database were seen to agree. The three functions copy an
 * Italian text for the person into `testo`, and return its length, as `lumoscad_esegui` does with its result; `stato`
 * (which may be null) receives how it went. They may be called on any thread, one call at a time: another one, or a
 * command that runs, is LUMOSCAD_ERRORE. None asks the host. Never throw. */
#define LUMOSCAD_RIUSCITO 0    /* all could be read; or nothing of the note is open any more */
#define LUMOSCAD_ERRORE 1      /* something could not be read; or something is still open: `testo` says what */
#define LUMOSCAD_DA_CHIEDERE 3 /* nothing was done: `testo` ends with the question for the person, if there is one */

/* Lists what is left over; nothing is changed, but that what was put aside 90 days ago goes. `opzioni` are the
 * "-DB2..." options of the database that is to be asked what it holds now; null or empty: none is. */
size_t lumoscad_in_sospeso(const char* opzioni, int* stato, char* testo, size_t dimensione);

/* Finishes the change of the note `nota`. With `conferma` 0 it tells what it would do and changes nothing; otherwise
 * the person has answered yes to what it told last: where that is no longer so nothing is changed, and it tells anew,
 * with LUMOSCAD_DA_CHIEDERE. A note of which this process was told nothing is finished as it is found. */
size_t lumoscad_riallinea(const char* nota, const char* opzioni, int conferma, int* stato, char* testo,
                          size_t dimensione);

/* Puts the note `nota` aside, with the reason `motivo`. */
size_t lumoscad_archivia(const char* nota, const char* motivo, int* stato, char* testo, size_t dimensione);

#ifdef __cplusplus
}
#endif

#endif
