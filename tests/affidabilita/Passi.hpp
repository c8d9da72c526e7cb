#pragma once

#include <string>
#include <string_view>

/// The steps of a command as the process takes them, one after the other: what it does on the host, in its own
/// directory and in the database. A terminal can be made to die at any one of them.
///
/// The steps below the interfaces of the component (a statement sent and not yet answered, a file copied and not yet in
/// its place) are seen by standing in for a few functions of the libraries: SQLPrepare, SQLExecute, SQLExecDirect,
/// SQLEndTran, send, fork, fsync, fdatasync, fchmod, rename, renameat2 and unlink.
namespace lumoscad::test::passi {

/// From now on every step is counted from 1; each one's name is appended to the file `elenco` (none: empty), and at
/// the step number `morte` the process kills itself with SIGKILL (0: never). `cartella` is the local work directory.
void Conta(const std::string& elenco, long morte, const std::string& cartella);

/// The command has come to a step.
void Punto(std::string_view nome);

/// What the next statement's steps are called by: the text that the component is about to send.
void ProssimaIstruzione(std::string_view testo);

/// What the program's start and the copying of a file are called by, while an operation of the host link runs.
void OperazioneHost(std::string_view nome);

} // namespace lumoscad::test::passi
