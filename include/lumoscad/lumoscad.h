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

#ifdef __cplusplus
}
#endif

#endif
